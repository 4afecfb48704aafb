#include "tests/clastool/tree/small_stack.h"
#include "tests/clastool/tree/trees.h"
#include "tests/support/archives.h"

#include <vxclassifier/classifier_decision_tree.h>

#include <gtest/gtest.h>

// A tree a million nodes deep, on a stack of 256 KiB.

namespace {

using test::Bytes;
using test::leaf;
using test::Predicate;
using test::Tree;

constexpr long depth = 1000000;

enum class Side { trueBranch, falseBranch, bothInTurn };

std::string nameOf(const testing::TestParamInfo<Side>& side) {
    switch (side.param) {
    case Side::trueBranch:
        return "ToTheTrueSide";
    case Side::falseBranch:
        return "ToTheFalseSide";
    case Side::bothInTurn:
        break;
    }
    return "InTurn";
}

/// A chain of nodes above one leaf, with leaves beside it.
Tree chain(Side side, long bottomLabel) {
    const Predicate yes = test::always();
    const Predicate no = test::has(99);
    const Tree beside = leaf({1});
    Tree tree = leaf({bottomLabel});
    for (long i = 0; i < depth; ++i) {
        const bool toTheTrueSide = side == Side::bothInTurn ? i % 2 == 0 : side == Side::trueBranch;
        tree = toTheTrueSide ? test::node(yes, tree, beside) : test::node(no, beside, tree);
    }
    return tree;
}

class Depth : public testing::TestWithParam<Side> {};

TEST_P(Depth, EverythingWorksOnASmallStack) {
    test::onSmallStack([] {
        Tree tree = chain(GetParam(), 2);
        EXPECT_EQ(tree->numCategories(), 2);

        vx_ClassifierDecisionTree classifier;
        classifier.trainManual(*tree);
        vxClassifierResult result;
        classifier.run(test::patternOf({0.0}), result);
        EXPECT_EQ(result, test::resultOf({2}));
        EXPECT_TRUE(classifier == vx_ClassifierDecisionTree(classifier));

        EXPECT_TRUE(tree->isEqual(*tree->clone()));
        EXPECT_TRUE(tree->isEqual(*chain(GetParam(), 2)));
        EXPECT_FALSE(tree->isEqual(*chain(GetParam(), 3)));
        tree.reset();
        classifier.untrain();
    });
}

TEST(DepthPersistence, ADeepTreeIsStoredAndLoadedOnASmallStack) {
    test::onSmallStack([] {
        Tree tree = chain(Side::bothInTurn, 2);
        const Bytes bytes = test::stored(tree);
        Tree loaded;
        test::load(bytes, loaded);
        EXPECT_TRUE(tree->isEqual(*loaded));
        EXPECT_EQ(test::stored(loaded), bytes);
    });
}

INSTANTIATE_TEST_SUITE_P(Chain, Depth, testing::Values(Side::trueBranch, Side::falseBranch, Side::bothInTurn),
                         nameOf);

} // namespace
