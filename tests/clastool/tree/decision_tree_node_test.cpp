#include <vxclassifier/decision_tree_node.h>

#include "tests/clastool/tree/trees.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <stdexcept>

namespace {

using Labels = std::vector<long>;
using test::leaf;
using test::resultOf;
using test::Tree;

long sharesOf(const vxRepBase& object) {
    return vx_PtrHandleBase_RepAccessor::count(object);
}

/// A node over two leaves with one label each.
vxDecisionTreeNode nodeOver(long trueLabel, long falseLabel) {
    return vxDecisionTreeNode(vxValidityPredicate(), *leaf({trueLabel}), *leaf({falseLabel}));
}

TEST(DecisionTreeNode, ADefaultOneHasADefaultRangePredicateAndOneEmptyLeaf) {
    const vxDecisionTreeNode node;
    EXPECT_TRUE(vxRangePredicate().isEqual(*node.predicateFunction()));
    EXPECT_TRUE(vxDecisionTreeLeaf(vxClassifierResult()).isEqual(*node.trueTree()));
    EXPECT_EQ(node.trueTree(), node.falseTree());
    EXPECT_EQ(sharesOf(*node.trueTree()), 3); // two branches and the handle returned here
}

TEST(DecisionTreeNode, MakeGivesADefaultOne) {
    const std::unique_ptr<vxPersistent> made(vxDecisionTreeNode::make());
    EXPECT_EQ(dynamic_cast<const vxDecisionTreeNode&>(*made), vxDecisionTreeNode());
}

TEST(DecisionTreeNode, StoresClonesOfItsParts) {
    const vxComparisonPredicate predicate(2, 1);
    vxDecisionTreeLeaf yes(resultOf({1}));
    vxDecisionTreeLeaf no(resultOf({2}));
    const vxDecisionTreeNode node(predicate, yes, no);
    EXPECT_NE(node.predicateFunction().get(), &predicate);
    EXPECT_TRUE(predicate.isEqual(*node.predicateFunction()));
    yes.classifierResult(resultOf({7}));
    no.classifierResult(resultOf({8}));
    EXPECT_EQ(node.trueTree()->categoryLabels(), Labels{1});
    EXPECT_EQ(node.falseTree()->categoryLabels(), Labels{2});
}

TEST(DecisionTreeNode, TheAccessorsShareTheStoredObjects) {
    const vxDecisionTreeNode node = nodeOver(1, 2);
    EXPECT_EQ(node.predicateFunction(), node.predicateFunction());
    EXPECT_EQ(node.trueTree(), node.trueTree());
    EXPECT_EQ(node.falseTree(), node.falseTree());
    EXPECT_NE(node.trueTree(), node.falseTree());
}

TEST(DecisionTreeNode, EachPartCanBeReplacedByAClone) {
    vxDecisionTreeNode node;
    node.predicateFunction(vxComparisonPredicate(5, 6));
    EXPECT_TRUE(vxComparisonPredicate(5, 6).isEqual(*node.predicateFunction()));
    vxDecisionTreeLeaf part(resultOf({3}));
    node.trueTree(part);
    part.classifierResult(resultOf({4}));
    node.falseTree(part);
    part.classifierResult(resultOf({5}));
    EXPECT_EQ(node.trueTree()->categoryLabels(), Labels{3});
    EXPECT_EQ(node.falseTree()->categoryLabels(), Labels{4});
}

TEST(DecisionTreeNode, ReplacingAPartReleasesTheOldOne) {
    vxDecisionTreeNode node = nodeOver(1, 2);
    const auto predicate = node.predicateFunction();
    const auto yes = node.trueTree();
    const auto no = node.falseTree();
    node.predicateFunction(vxRangePredicate());
    node.trueTree(*leaf({3}));
    node.falseTree(*leaf({4}));
    EXPECT_EQ(sharesOf(*predicate), 1);
    EXPECT_EQ(sharesOf(*yes), 1);
    EXPECT_EQ(sharesOf(*no), 1);
}

TEST(DecisionTreeNode, NothingChangesWhenTheCloneIsThePartAlreadyHeld) {
    const Tree part = leaf({1});
    vxDecisionTreeNode node;
    node.trueTree(test::GivenTree(part));
    EXPECT_EQ(sharesOf(*part), 2);
    node.trueTree(test::GivenTree(part));
    EXPECT_EQ(node.trueTree().get(), part.get());
    EXPECT_EQ(sharesOf(*part), 2);
}

TEST(DecisionTreeNode, APartMayBeReplacedByAPartOfItself) {
    vxDecisionTreeNode node(vxValidityPredicate(), nodeOver(1, 2), *leaf({3}));
    const auto& below = dynamic_cast<const vxDecisionTreeNode&>(*node.trueTree());
    node.trueTree(*below.falseTree());
    EXPECT_EQ(node.trueTree()->categoryLabels(), Labels{2});
    node.falseTree(node);
    EXPECT_EQ(node.categoryLabels(), (Labels{3, 2}));
    EXPECT_EQ(node.falseTree()->categoryLabels(), (Labels{3, 2}));
}

TEST(DecisionTreeNode, ACopyAndACloneShareThePartsAndAreObjectsOfTheirOwn) {
    const vxDecisionTreeNode node = nodeOver(1, 2);
    const vxDecisionTreeNode copy(node);
    EXPECT_EQ(copy.trueTree(), node.trueTree());
    EXPECT_EQ(copy.falseTree(), node.falseTree());
    EXPECT_EQ(copy.predicateFunction(), node.predicateFunction());
    EXPECT_EQ(sharesOf(*node.trueTree()), 3);

    const Tree clone = node.clone();
    EXPECT_NE(clone.get(), &node);
    EXPECT_EQ(dynamic_cast<const vxDecisionTreeNode&>(*clone).falseTree(), node.falseTree());
    EXPECT_EQ(sharesOf(*clone), 1);
}

TEST(DecisionTreeNode, AssignmentSharesThePartsAndReleasesTheOldOnes) {
    vxDecisionTreeNode node = nodeOver(1, 2);
    const auto old = node.trueTree();
    const vxDecisionTreeNode other = nodeOver(3, 4);
    EXPECT_EQ(&(node = other), &node);
    EXPECT_EQ(node.trueTree(), other.trueTree());
    EXPECT_EQ(node.falseTree(), other.falseTree());
    EXPECT_EQ(node.predicateFunction(), other.predicateFunction());
    EXPECT_EQ(sharesOf(*old), 1);
    const vxDecisionTreeNode& itself = node;
    node = itself;
    EXPECT_EQ(node, other);
}

TEST(DecisionTreeNode, MayBeAssignedAPartOfItself) {
    vxDecisionTreeNode node(vxValidityPredicate(), nodeOver(1, 2), *leaf({3}));
    const auto& below = dynamic_cast<const vxDecisionTreeNode&>(*node.trueTree());
    node = below; // goes with the old branch
    EXPECT_EQ(node, nodeOver(1, 2));
}

TEST(DecisionTreeNode, DestroyingItReleasesItsParts) {
    auto node = std::make_unique<vxDecisionTreeNode>(nodeOver(1, 2));
    const auto predicate = node->predicateFunction();
    const auto yes = node->trueTree();
    const auto no = node->falseTree();
    node.reset();
    EXPECT_EQ(sharesOf(*predicate), 1);
    EXPECT_EQ(sharesOf(*yes), 1);
    EXPECT_EQ(sharesOf(*no), 1);
}

TEST(DecisionTreeNode, ListsTheFalseBranchFirstAndThenWhatIsNewInTheTrueBranch) {
    const vxDecisionTreeNode node(vxValidityPredicate(), *leaf({1, 3}), *leaf({2, 1}));
    EXPECT_EQ(node.categoryLabels(), (Labels{2, 1, 3}));
    EXPECT_EQ(node.numCategories(), 3);
}

TEST(DecisionTreeNode, TheLabelsAreNotSorted) {
    const vxDecisionTreeNode node(vxValidityPredicate(), nodeOver(9, 4), nodeOver(4, 6));
    EXPECT_EQ(node.categoryLabels(), (Labels{6, 4, 9}));
}

TEST(DecisionTreeNode, OnlyTheFirstLeafKeepsItsRepeatedLabels) {
    const vxDecisionTreeLeaf repeated(test::archivedResultOf({5, 5, 6, 5}));
    const vxDecisionTreeNode first(vxValidityPredicate(), *leaf({7, 6}), repeated);
    EXPECT_EQ(first.categoryLabels(), (Labels{5, 5, 6, 5, 7}));
    const vxDecisionTreeNode second(vxValidityPredicate(), repeated, *leaf({7, 6}));
    EXPECT_EQ(second.categoryLabels(), (Labels{7, 6, 5}));
    const vxDecisionTreeNode afterNothing(vxValidityPredicate(), repeated, *leaf({}));
    EXPECT_EQ(afterNothing.categoryLabels(), (Labels{5, 6}));
}

TEST(DecisionTreeNode, ListingMeetsANullFalseBranchBeforeANullTrueBranch) {
    // A tree whose labels cannot be listed shows how far the listing went.
    const Tree refuses(new test::GivenTree(nullptr));
    EXPECT_THROW(test::node(test::always(), nullptr, refuses)->categoryLabels(), std::logic_error);
    EXPECT_THROW(test::node(test::always(), refuses, nullptr)->categoryLabels(), vxBadPointer);
    EXPECT_THROW(test::node(test::always(), nullptr, leaf({1}))->categoryLabels(), vxBadPointer);
    EXPECT_THROW(test::node(test::always(), nullptr, leaf({1}))->numCategories(), vxBadPointer);
    EXPECT_EQ(test::node(nullptr, leaf({2}), leaf({1}))->categoryLabels(), (Labels{1, 2}));
}

TEST(DecisionTreeNode, IsEqualToOneWithEqualPartsInTheSamePlaces) {
    const vxDecisionTreeNode node = nodeOver(1, 2);
    EXPECT_TRUE(node.isEqual(nodeOver(1, 2)));
    EXPECT_FALSE(node.isEqual(nodeOver(1, 3)));
    EXPECT_FALSE(node.isEqual(nodeOver(3, 2)));
    EXPECT_FALSE(node.isEqual(nodeOver(2, 1)));
    EXPECT_FALSE(node.isEqual(vxDecisionTreeNode(vxRangePredicate(), *leaf({1}), *leaf({2}))));
}

TEST(DecisionTreeNode, IsNotEqualToALeaf) {
    EXPECT_FALSE(vxDecisionTreeNode().isEqual(*leaf({})));
    const vxDecisionTreeNode deep(vxValidityPredicate(), nodeOver(1, 2), *leaf({3}));
    const vxDecisionTreeNode flat(vxValidityPredicate(), *leaf({1}), *leaf({3}));
    EXPECT_FALSE(deep.isEqual(flat));
    EXPECT_FALSE(flat.isEqual(deep));
}

TEST(DecisionTreeNode, TheOperatorsTakeAnyTree) {
    const vxDecisionTreeNode node = nodeOver(1, 2);
    EXPECT_TRUE(node == nodeOver(1, 2));
    EXPECT_FALSE(node != nodeOver(1, 2));
    EXPECT_FALSE(node == *leaf({1}));
    EXPECT_TRUE(node != *leaf({1}));
}

TEST(DecisionTreeNode, OneAboveANaNIsUnequalEvenToItself) {
    const vxDecisionTreeNode node(vxValidityPredicate(), *leaf({1}),
                                  vxDecisionTreeLeaf(resultOf({2}, test::nan)));
    EXPECT_FALSE(node.isEqual(node));
    EXPECT_FALSE(node == vxDecisionTreeNode(node));
}

TEST(DecisionTreeNode, ComparingMeetsThePartsInTheOrderPredicateTrueFalse) {
    using test::always;
    const Tree whole = test::node(always(), leaf({1}), leaf({2}));
    const auto compare = [&](const Tree& tree) { return tree->isEqual(*whole); };
    const auto compareReversed = [&](const Tree& tree) { return whole->isEqual(*tree); };
    for (const auto& equal :
         {std::function<bool(const Tree&)>(compare), std::function<bool(const Tree&)>(compareReversed)}) {
        EXPECT_THROW(equal(test::node(nullptr, leaf({1}), leaf({2}))), vxBadPointer);
        EXPECT_THROW(equal(test::node(always(), nullptr, leaf({2}))), vxBadPointer);
        EXPECT_THROW(equal(test::node(always(), leaf({1}), nullptr)), vxBadPointer);
        // A difference met before ends the comparison.
        EXPECT_FALSE(equal(test::node(test::has(9), nullptr, nullptr)));
        EXPECT_FALSE(equal(test::node(always(), leaf({8}), nullptr)));
        EXPECT_THROW(equal(test::node(always(), nullptr, leaf({8}))), vxBadPointer);
        EXPECT_THROW(equal(test::node(nullptr, leaf({8}), leaf({8}))), vxBadPointer);
    }
    EXPECT_FALSE(leaf({1})->isEqual(*test::node(nullptr, nullptr, nullptr)));
    EXPECT_FALSE(test::node(nullptr, nullptr, nullptr)->isEqual(*leaf({1})));
}

// Classes that callers derive.

struct LikesEverything : vxDecisionTreeNode {
    using vxDecisionTreeNode::vxDecisionTreeNode;
    std::vector<long> categoryLabels() const override { return {100}; }
    vxPtrHandle<vxDecisionTree> clone() const override { return Tree(new LikesEverything(*this)); }
    bool isEqual(const vxDecisionTree&) const override { return true; }
};

TEST(DecisionTreeNode, TheOverridesOfADerivedNodeAreCalled) {
    const vxDecisionTreeNode derived(vxValidityPredicate(), LikesEverything(), *leaf({1}));
    const vxDecisionTreeNode plain(vxValidityPredicate(), *leaf({9}), *leaf({1}));
    EXPECT_EQ(derived.categoryLabels(), (Labels{1, 100}));
    EXPECT_TRUE(derived == plain);  // the derived node is asked
    EXPECT_FALSE(plain == derived); // the leaf is asked
    EXPECT_TRUE(LikesEverything() == plain);
}

TEST(DecisionTreeNode, ComparingAsksItsOwnPredicate) {
    struct LikesEveryPredicate : vxValidityPredicate {
        vxPtrHandle<vxPredicateFunction> clone() const override {
            return vxPtrHandle<vxPredicateFunction>(new LikesEveryPredicate(*this));
        }
        bool isEqual(const vxPredicateFunction&) const override { return true; }
    };
    const vxDecisionTreeNode likes(LikesEveryPredicate(), *leaf({1}), *leaf({2}));
    const vxDecisionTreeNode plain(vxComparisonPredicate(0, 1), *leaf({1}), *leaf({2}));
    EXPECT_TRUE(likes == plain);
    EXPECT_FALSE(plain == likes);
}

TEST(DecisionTreeNode, AnExactNodeTakesADerivedOneForANode) {
    const vxDecisionTreeNode below = nodeOver(1, 2);
    const LikesEverything derived(vxValidityPredicate(), *leaf({1}), *leaf({2}));
    EXPECT_TRUE(below == derived);
    EXPECT_FALSE(nodeOver(1, 3) == derived);
}

/// Equal to one whose value is near, so that two that equal the same one need not equal each other.
struct NearPredicate : vxPredicateFunction {
    explicit NearPredicate(int value) : value_(value) {}
    bool outcome(const vxFeaturePattern&) const override { return true; }
    vxPtrHandle<vxPredicateFunction> clone() const override {
        return test::Predicate(new NearPredicate(*this));
    }
    bool isEqual(const vxPredicateFunction& other) const override {
        return std::abs(value_ - dynamic_cast<const NearPredicate&>(other).value_) <= 1;
    }
    int value_;
};

TEST(DecisionTreeNode, WhatEqualsTheSameByACallersPredicateNeedNotBeEqual) {
    const auto near = [](int value) {
        return test::node(test::Predicate(new NearPredicate(value)), leaf({1}), leaf({2}));
    };
    const auto fourOf = [](const Tree& a, const Tree& b, const Tree& c, const Tree& d) {
        return test::node(test::always(), test::node(test::always(), a, b), test::node(test::always(), c, d));
    };
    const Tree low = near(0);
    const Tree middle = near(1);
    const Tree high = near(2);
    const Tree highest = near(3);
    EXPECT_TRUE(fourOf(low, high, high, high)->isEqual(*fourOf(middle, middle, highest, highest)));
    EXPECT_FALSE(fourOf(low, high, high, low)->isEqual(*fourOf(middle, middle, highest, highest)));
}

/// Leaves a word when it is cloned.
struct TellingLeaf : vxDecisionTreeLeaf {
    TellingLeaf(std::vector<std::string>& words, std::string word)
        : vxDecisionTreeLeaf(vxClassifierResult()), words_(words), word_(std::move(word)) {}
    vxPtrHandle<vxDecisionTree> clone() const override {
        words_.push_back(word_);
        return Tree(new TellingLeaf(*this));
    }
    std::vector<std::string>& words_;
    std::string word_;
};

struct TellingPredicate : vxValidityPredicate {
    explicit TellingPredicate(std::vector<std::string>& words) : words_(words) {}
    vxPtrHandle<vxPredicateFunction> clone() const override {
        words_.emplace_back("predicate");
        return test::Predicate(new TellingPredicate(*this));
    }
    std::vector<std::string>& words_;
};

TEST(DecisionTreeNode, ClonesItsPartsInTheOrderOfTheArguments) {
    std::vector<std::string> words;
    const vxDecisionTreeNode node(TellingPredicate(words), TellingLeaf(words, "true"),
                                  TellingLeaf(words, "false"));
    EXPECT_EQ(words, (std::vector<std::string>{"predicate", "true", "false"}));
}

} // namespace
