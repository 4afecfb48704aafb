#include <vxclassifier/decision_tree.h>

#include "tests/clastool/tree/trees.h"
#include "tests/support/archives.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/vtable_slots.h"

#include <gtest/gtest.h>

#include <array>
#include <type_traits>

namespace {

/// Leaves everything that has a base version to the base.
struct BaseOnly : vxDecisionTree {
    std::vector<long> categoryLabels() const override { return {5, 5, 7}; }
    vxPtrHandle<vxDecisionTree> clone() const override {
        return vxPtrHandle<vxDecisionTree>(new BaseOnly(*this));
    }
    static std::size_t dispatchSlot() { return test::slotOf(&BaseOnly::dispatchSerialize); }
    void serializeOnly(vxArchive& archive, unsigned char version) { serialize_(archive, version); }
};

/// Exchanges the base level twice, as a class with two ways to it would.
struct Doubled : BaseOnly {
protected:
    void dispatchSerialize(vxArchive& archive) override {
        vxDecisionTree::dispatchSerialize(archive);
        vxDecisionTree::dispatchSerialize(archive);
    }
};

TEST(DecisionTree, TheVirtualFunctionsStandInTheirPublishedOrder) {
    EXPECT_EQ(BaseOnly::dispatchSlot(), 2U);
    EXPECT_EQ(test::slotOf(&vxDecisionTree::reInit), 3U);
    EXPECT_EQ(test::slotOf(&vxDecisionTree::loadSimple), 4U);
    EXPECT_EQ(test::slotOf(&vxDecisionTree::categoryLabels), 5U);
    EXPECT_EQ(test::slotOf(&vxDecisionTree::clone), 6U);
    EXPECT_EQ(test::slotOf(&vxDecisionTree::isEqual), 7U);
}

TEST(DecisionTree, IsAbstractAndBasedOnTheArchiveAndTheCount) {
    EXPECT_TRUE(std::is_abstract_v<vxDecisionTree>);
    EXPECT_TRUE((std::is_convertible_v<vxDecisionTree*, vxPersistent*>));
    EXPECT_TRUE((std::is_convertible_v<vxDecisionTree*, vxRepBase*>));
}

TEST(DecisionTree, TheBaseHoldsThatAnyTwoAreEqual) {
    EXPECT_TRUE(BaseOnly().isEqual(vxDecisionTreeNode()));
}

TEST(DecisionTree, NumCategoriesCountsTheLabelsAsTheyAreListed) {
    EXPECT_EQ(BaseOnly().numCategories(), 3);
}

TEST(DecisionTree, AssigningTheBaseCopiesNothing) {
    vxDecisionTreeLeaf leaf(test::resultOf({1}));
    const vxDecisionTreeLeaf other(test::resultOf({2}));
    vxDecisionTree& base = leaf;
    EXPECT_EQ(&(base = other), &base);
    EXPECT_EQ(leaf.classifierResult(), test::resultOf({1}));
}

TEST(DecisionTree, TheBaseLevelIsItsVersionAndTheRoot) {
    EXPECT_EQ(test::stored(BaseOnly()), test::archiveOf([](vxArchive& archive) {
                  test::putBytes(archive, {0, 0});
              }));
}

TEST(DecisionTree, ALevelMetTwiceIsExchangedOnce) {
    EXPECT_EQ(test::stored(Doubled()), test::stored(BaseOnly()));
}

TEST(DecisionTree, AnotherVersionIsRefusedWithoutAPlace) {
    BaseOnly tree;
    for (const auto& versions : {std::array<unsigned char, 2>{1, 0}, std::array<unsigned char, 2>{0, 1}}) {
        const test::Bytes bytes = test::archiveOf([&](vxArchive& archive) {
            test::putBytes(archive, {versions[0], versions[1]});
        });
        EXPECT_UNKNOWN_VERSION(test::load(bytes, tree), nullptr, 0);
    }
    vxStoringArchive archive;
    EXPECT_UNKNOWN_VERSION(tree.serializeOnly(archive, 1), nullptr, 0);
}

} // namespace
