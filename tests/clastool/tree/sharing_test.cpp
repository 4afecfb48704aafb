#include "tests/clastool/tree/small_stack.h"
#include "tests/clastool/tree/trees.h"
#include "tests/support/archives.h"

#include <vxclassifier/classifier_decision_tree.h>

#include <gtest/gtest.h>

#include <numeric>

// Trees whose subtrees lie on more paths than anything could walk. None of these tests would end if it did.

namespace {

using Labels = std::vector<long>;
using test::always;
using test::leaf;
using test::Predicate;
using test::Tree;

constexpr int levels = 64;

/// Both branches of each node are one object.
Tree doubled(Tree tree, int times = levels, const Predicate& predicate = always()) {
    for (int i = 0; i < times; ++i) {
        tree = test::node(predicate, tree, tree);
    }
    return tree;
}

/// The same by the published constructor alone, which makes a clone for each branch.
Tree doubledByClones(const Tree& tree) {
    Tree top = tree;
    for (int i = 0; i < levels; ++i) {
        top = Tree(new vxDecisionTreeNode(*always(), *top, *top));
    }
    return top;
}

/// Each node stands above the next one and the one after it.
Tree ladder(const Tree& bottom) {
    Tree next = bottom;
    Tree top = bottom;
    for (int i = 0; i < 2 * levels; ++i) {
        const Tree node = test::node(always(), top, next);
        next = top;
        top = node;
    }
    return top;
}

TEST(Sharing, EqualTreesAreFoundEqual) {
    EXPECT_TRUE(doubled(leaf({1}))->isEqual(*doubled(leaf({1}))));
    EXPECT_TRUE(doubled(leaf({1}))->isEqual(*doubledByClones(leaf({1}))));
    EXPECT_TRUE(doubledByClones(leaf({1}))->isEqual(*doubled(leaf({1}))));
    EXPECT_TRUE(ladder(leaf({1}))->isEqual(*ladder(leaf({1}))));
    const Tree tree = doubled(leaf({1}));
    EXPECT_TRUE(tree->isEqual(*tree));
    EXPECT_TRUE(tree->isEqual(*tree->clone()));
}

TEST(Sharing, ADifferenceAtTheEndIsFound) {
    EXPECT_FALSE(doubled(leaf({1}))->isEqual(*doubled(leaf({2}))));
    EXPECT_FALSE(doubled(leaf({1}))->isEqual(*doubled(leaf({1}), levels - 1)));
    EXPECT_FALSE(doubled(leaf({1}))->isEqual(*doubled(leaf({1}), levels + 1)));

    const Tree left = doubled(leaf({1}));
    EXPECT_FALSE(test::node(always(), left, leaf({2}))->isEqual(*test::node(always(), left, leaf({3}))));
}

TEST(Sharing, ANaNIsFoundAndMakesATreeUnequalToItself) {
    const Tree tree = doubled(Tree(new vxDecisionTreeLeaf(test::resultOf({1}, test::nan))));
    EXPECT_FALSE(tree->isEqual(*tree));
}

TEST(Sharing, ANullAtTheEndIsFound) {
    const Tree broken = doubled(test::node(always(), leaf({1}), nullptr));
    EXPECT_THROW(broken->isEqual(*broken), vxBadPointer);
    EXPECT_THROW(broken->isEqual(*doubled(test::node(always(), leaf({1}), leaf({2})))), vxBadPointer);
    EXPECT_FALSE(broken->isEqual(*doubled(test::node(always(), leaf({2}), leaf({2})))));
    EXPECT_THROW(broken->categoryLabels(), vxBadPointer);
}

TEST(Sharing, LabelsAreListed) {
    EXPECT_EQ(doubled(leaf({3, 1}))->categoryLabels(), (Labels{3, 1}));
    EXPECT_EQ(doubledByClones(leaf({3, 1}))->numCategories(), 2);
    EXPECT_EQ(ladder(leaf({3, 1}))->categoryLabels(), (Labels{3, 1}));
}

TEST(Sharing, CallersClassesAreComparedOncePerPair) {
    /// Sends every comparison to itself by a virtual call.
    struct OwnNode : vxDecisionTreeNode {
        using vxDecisionTreeNode::vxDecisionTreeNode;
        vxPtrHandle<vxDecisionTree> clone() const override { return Tree(new OwnNode(*this)); }
    };
    struct OwnPredicate : vxValidityPredicate {
        vxPtrHandle<vxPredicateFunction> clone() const override { return Predicate(new OwnPredicate(*this)); }
    };
    const auto ownDoubled = [] {
        Tree tree = leaf({1});
        for (int i = 0; i < levels; ++i) {
            tree = Tree(
                new OwnNode(test::GivenPredicate(always()), test::GivenTree(tree), test::GivenTree(tree)));
        }
        return tree;
    };
    EXPECT_TRUE(ownDoubled()->isEqual(*ownDoubled()));
    EXPECT_EQ(ownDoubled()->categoryLabels(), Labels{1});
    const Predicate own(new OwnPredicate);
    EXPECT_TRUE(doubled(leaf({1}), levels, own)->isEqual(*doubled(leaf({1}), levels, own)));
}

/// Equal to any whose value is at most 1 away: so 0 equals 1 and 1 equals 2, but 0 does not equal 2.
struct Tolerant : vxValidityPredicate {
    explicit Tolerant(long number) : value(number) {}
    vxPtrHandle<vxPredicateFunction> clone() const override { return Predicate(new Tolerant(*this)); }
    bool isEqual(const vxPredicateFunction& other) const override {
        const auto* tolerant = dynamic_cast<const Tolerant*>(&other);
        return tolerant != nullptr && value - tolerant->value <= 1 && tolerant->value - value <= 1;
    }
    long value;
};

TEST(Sharing, WhatACallersPredicateFindsEqualIsNotPassedOn) {
    const auto nodeOf = [](long value) {
        return test::node(Predicate(new Tolerant(value)), leaf({1}), leaf({2}));
    };
    const Tree zero = nodeOf(0);
    const Tree one = nodeOf(1);
    const Tree two = nodeOf(2);
    // These meet in turn: 0 and 1, 2 and 1, and in the end 0 and 2.
    const Tree left = test::node(always(), test::node(always(), zero, two), zero);
    const Tree right = test::node(always(), test::node(always(), one, one), two);
    EXPECT_FALSE(left->isEqual(*right));
    EXPECT_FALSE(right->isEqual(*left));
}

/// A full binary tree above these trees, whose number is a power of two.
Tree fanned(std::vector<Tree> trees) {
    while (trees.size() > 1) {
        for (std::size_t i = 0; i < trees.size() / 2; ++i) {
            trees[i] = test::node(always(), trees[2 * i], trees[2 * i + 1]);
        }
        trees.resize(trees.size() / 2);
    }
    return trees.front();
}

Tree longTail(int length) {
    Tree tail = leaf({1});
    for (int i = 0; i < length; ++i) {
        tail = test::node(always(), tail, leaf({2}));
    }
    return tail;
}

TEST(Sharing, ManyEqualPartsNeedNotMeetPairByPair) {
    constexpr int fanLevels = 12;
    constexpr std::size_t tails = std::size_t{1} << fanLevels;
    constexpr int tailLength = 50;
    // On the left the first half of a path is without effect and the second half chooses the tail, on the
    // right it is the other way round. So each of the 4096 tails of one side meets each of the other: pair by
    // pair that would be 16 million comparisons of 50 nodes.
    std::vector<Tree> below;
    std::vector<Tree> above;
    for (std::size_t i = 0; i < tails; ++i) {
        below.push_back(longTail(tailLength));
        above.push_back(doubled(longTail(tailLength), fanLevels));
    }
    const Tree left = doubled(fanned(below), fanLevels);
    const Tree right = fanned(above);
    EXPECT_TRUE(left->isEqual(*right));
    EXPECT_TRUE(right->isEqual(*left));
}

TEST(Sharing, ManyLabelsAreListedInLinearTime) {
    // A search through the list for each label would make 4 * 10^10 comparisons.
    constexpr std::size_t count = 200000;
    Labels labels(count);
    std::iota(labels.begin(), labels.end(), 0);
    const Tree half = leaf(Labels(labels.begin(), labels.begin() + count / 2));
    const Tree otherHalf = leaf(Labels(labels.begin() + count / 2, labels.end()));
    const Tree tree = test::node(always(), test::node(always(), otherHalf, half), half);
    EXPECT_EQ(tree->categoryLabels(), labels);
}

TEST(Sharing, ArchivesHoldEachSubtreeOnceAndBringItBackShared) {
    test::onSmallStack([] {
        const Tree tree = doubled(leaf({1}));
        const test::Bytes bytes = test::stored(tree);
        Tree loaded;
        test::load(bytes, loaded);
        EXPECT_TRUE(loaded->isEqual(*tree));
        EXPECT_EQ(test::stored(loaded), bytes);
        const auto& node = dynamic_cast<const vxDecisionTreeNode&>(*loaded);
        EXPECT_EQ(node.trueTree(), node.falseTree());

        vx_ClassifierDecisionTree classifier;
        classifier.trainManual(*loaded);
        vxClassifierResult result;
        classifier.run(test::patternOf({}), result);
        EXPECT_EQ(result, test::resultOf({1}));
    });
}

} // namespace
