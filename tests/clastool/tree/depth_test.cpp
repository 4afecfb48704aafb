#include "tests/clastool/tree/small_stack.h"
#include "tests/clastool/tree/trees.h"
#include "tests/support/archives.h"

#include <vxclassifier/classifier_decision_tree.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <ostream>

// Trees up to a million nodes deep, on a stack of 256 KiB.

namespace {

using test::Bytes;
using test::leaf;
using test::Predicate;
using test::Tree;

constexpr long million = 1000000;

enum class Side { trueBranch, falseBranch, bothInTurn };

/// A chain of nodes above one leaf, with another leaf beside them.
Tree chain(Side side, long depth, long bottomLabel) {
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

struct Chain {
    Side side;
    long depth;
};

std::ostream& operator<<(std::ostream& out, const Chain& chain) {
    constexpr std::array<const char*, 3> names{"true", "false", "both"};
    return out << names[static_cast<std::size_t>(chain.side)] << ", " << chain.depth;
}

class Depth : public testing::TestWithParam<Chain> {};

TEST_P(Depth, EverythingWorksOnASmallStack) {
    test::onSmallStack([side = GetParam().side, depth = GetParam().depth] {
        Tree tree = chain(side, depth, 2);
        EXPECT_EQ(tree->numCategories(), 2);

        vx_ClassifierDecisionTree classifier;
        classifier.trainManual(*tree);
        vxClassifierResult result;
        classifier.run(test::patternOf({0.0}), result);
        EXPECT_EQ(result, test::resultOf({2}));
        EXPECT_TRUE(classifier == vx_ClassifierDecisionTree(classifier));

        EXPECT_TRUE(tree->isEqual(*tree->clone()));
        EXPECT_TRUE(tree->isEqual(*chain(side, depth, 2)));
        EXPECT_FALSE(tree->isEqual(*chain(side, depth, 3)));
        tree.reset();
        classifier.untrain();
    });
}

TEST(DepthPersistence, ADeepTreeIsStoredAndLoadedOnASmallStack) {
    test::onSmallStack([] {
        Tree tree = chain(Side::bothInTurn, million, 2);
        const Bytes bytes = test::stored(tree);
        Tree loaded;
        test::load(bytes, loaded);
        EXPECT_TRUE(tree->isEqual(*loaded));
    });
}

INSTANTIATE_TEST_SUITE_P(Chains, Depth,
                         testing::Values(Chain{Side::trueBranch, million / 10},
                                         Chain{Side::falseBranch, million / 10},
                                         Chain{Side::bothInTurn, million}));

} // namespace
