#include <vxclassifier/decision_tree_leaf.h>

#include "tests/clastool/tree/trees.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

namespace {

using Labels = std::vector<long>;
using test::resultOf;

TEST(DecisionTreeLeaf, HoldsACopyOfItsResult) {
    vxClassifierResult result = resultOf({3, 1});
    const vxDecisionTreeLeaf leaf(result);
    result = resultOf({5});
    EXPECT_EQ(leaf.classifierResult(), resultOf({3, 1}));
}

TEST(DecisionTreeLeaf, MakeGivesAnEmptyResult) {
    const std::unique_ptr<vxPersistent> made(vxDecisionTreeLeaf::make());
    EXPECT_EQ(dynamic_cast<const vxDecisionTreeLeaf&>(*made).classifierResult(), vxClassifierResult());
    EXPECT_FALSE(std::is_default_constructible_v<vxDecisionTreeLeaf>);
}

TEST(DecisionTreeLeaf, TheResultCanBeReplaced) {
    vxDecisionTreeLeaf leaf(resultOf({3}));
    leaf.classifierResult(resultOf({4, 2}));
    EXPECT_EQ(leaf.classifierResult(), resultOf({4, 2}));
    leaf.classifierResult(leaf.classifierResult());
    EXPECT_EQ(leaf.classifierResult(), resultOf({4, 2}));
}

TEST(DecisionTreeLeaf, ListsTheLabelsInTheOrderOfTheResult) {
    EXPECT_EQ(vxDecisionTreeLeaf(resultOf({3, 1, 2})).categoryLabels(), (Labels{3, 1, 2}));
    EXPECT_EQ(vxDecisionTreeLeaf(resultOf({3, 1, 2})).numCategories(), 3);
}

TEST(DecisionTreeLeaf, AnEmptyResultHasNoLabels) {
    EXPECT_TRUE(vxDecisionTreeLeaf(vxClassifierResult()).categoryLabels().empty());
    EXPECT_EQ(vxDecisionTreeLeaf(vxClassifierResult()).numCategories(), 0);
}

TEST(DecisionTreeLeaf, RepeatedLabelsStay) {
    EXPECT_EQ(vxDecisionTreeLeaf(test::archivedResultOf({3, 3, 1, 3})).categoryLabels(),
              (Labels{3, 3, 1, 3}));
}

TEST(DecisionTreeLeaf, IsEqualToALeafWithAnEqualResult) {
    const vxDecisionTreeLeaf leaf(resultOf({3, 1}, 0.5));
    EXPECT_TRUE(leaf.isEqual(vxDecisionTreeLeaf(resultOf({3, 1}, 0.5))));
    EXPECT_FALSE(leaf.isEqual(vxDecisionTreeLeaf(resultOf({1, 3}, 0.5))));
    EXPECT_FALSE(leaf.isEqual(vxDecisionTreeLeaf(resultOf({3, 1}, 0.25))));
}

TEST(DecisionTreeLeaf, IsEqualToADerivedLeafWithAnEqualResult) {
    struct Derived : vxDecisionTreeLeaf {
        using vxDecisionTreeLeaf::vxDecisionTreeLeaf;
    };
    const Derived derived(resultOf({3, 1}));
    EXPECT_TRUE(vxDecisionTreeLeaf(resultOf({3, 1})).isEqual(derived));
    EXPECT_TRUE(derived.isEqual(vxDecisionTreeLeaf(resultOf({3, 1}))));
}

TEST(DecisionTreeLeaf, IsNotEqualToANode) {
    EXPECT_FALSE(vxDecisionTreeLeaf(vxClassifierResult()).isEqual(vxDecisionTreeNode()));
}

TEST(DecisionTreeLeaf, OneWithANaNIsUnequalEvenToItself) {
    const vxDecisionTreeLeaf leaf(resultOf({1}, test::nan));
    EXPECT_FALSE(leaf.isEqual(leaf));
    EXPECT_TRUE(leaf != leaf);
}

TEST(DecisionTreeLeaf, TheOperatorsTakeAnyTree) {
    const vxDecisionTreeLeaf leaf(resultOf({3}));
    EXPECT_TRUE(leaf == vxDecisionTreeLeaf(resultOf({3})));
    EXPECT_FALSE(leaf != vxDecisionTreeLeaf(resultOf({3})));
    EXPECT_FALSE(leaf == vxDecisionTreeNode());
    EXPECT_TRUE(leaf != vxDecisionTreeNode());
}

TEST(DecisionTreeLeaf, ClonesCopiesAndAssignmentsAreEqual) {
    const vxDecisionTreeLeaf leaf(resultOf({3, 4}));
    const test::Tree clone = leaf.clone();
    EXPECT_NE(clone.get(), &leaf);
    EXPECT_TRUE(leaf.isEqual(*clone));
    EXPECT_EQ(vxDecisionTreeLeaf(leaf), leaf);
    vxDecisionTreeLeaf assigned{vxClassifierResult()};
    EXPECT_EQ(&(assigned = leaf), &assigned);
    EXPECT_EQ(assigned, leaf);
}

} // namespace
