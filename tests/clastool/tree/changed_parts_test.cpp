#include "tests/clastool/tree/trees.h"
#include "tests/support/archives.h"

#include <vxclassifier/classifier_decision_tree.h>

#include <gtest/gtest.h>

#include <utility>

// A classifier's own tree is out of reach but for its parts that somebody else holds: an archive that brought
// the tree along by itself leaves such handles, and so does a caller's clone(). What is changed through them
// is what the next run walks over.

namespace {

using test::leaf;
using test::node;
using test::patternOf;
using test::Predicate;
using test::Tree;

vxRangePredicate upTo(double limit) {
    return vxRangePredicate(vxRange(0.0, limit), {0});
}

long decisionOf(const vx_Classifier& classifier, double measurement) {
    vxClassifierResult result;
    classifier.run(patternOf({measurement}), result);
    return result.categoryResults().front().categoryLabel();
}

/// A classifier whose tree asks the first question of two, and the two parts of the second.
struct Held {
    vxPtrHandle<vxRangePredicate> predicate{new vxRangePredicate(upTo(2.0))};
    Tree lower{node(Predicate(predicate.get()), leaf({2}), leaf({3}))};
    vx_ClassifierDecisionTree classifier;

    Held() {
        classifier.trainManual(*node(Predicate(new vxRangePredicate(upTo(1.0))), leaf({1}), lower));
        EXPECT_EQ(decisionOf(classifier, 1.0), 1);
        EXPECT_EQ(decisionOf(classifier, 2.0), 2);
        EXPECT_EQ(decisionOf(classifier, 3.0), 3);
    }

    vxDecisionTreeNode& second() const { return dynamic_cast<vxDecisionTreeNode&>(*lower); }
};

TEST(ChangedParts, ABranchThatIsReplacedIsWalked) {
    const Held held;
    held.second().trueTree(*leaf({4}));
    EXPECT_EQ(decisionOf(held.classifier, 2.0), 4);
    EXPECT_EQ(decisionOf(held.classifier, 3.0), 3);
}

TEST(ChangedParts, TheOtherBranchToo) {
    const Held held;
    held.second().falseTree(*leaf({4}));
    EXPECT_EQ(decisionOf(held.classifier, 2.0), 2);
    EXPECT_EQ(decisionOf(held.classifier, 3.0), 4);
}

TEST(ChangedParts, APredicateThatIsReplacedIsAsked) {
    const Held held;
    held.second().predicateFunction(upTo(3.0));
    EXPECT_EQ(decisionOf(held.classifier, 3.0), 2);
}

TEST(ChangedParts, APredicateThatIsAssignedToIsAsked) {
    const Held held;
    *held.predicate = upTo(3.0);
    EXPECT_EQ(decisionOf(held.classifier, 3.0), 2);
}

TEST(ChangedParts, ANodeThatIsAssignedToIsWalked) {
    const Held held;
    held.second() = vxDecisionTreeNode(upTo(3.0), *leaf({4}), *leaf({5}));
    EXPECT_EQ(decisionOf(held.classifier, 3.0), 4);
    EXPECT_EQ(decisionOf(held.classifier, 4.0), 5);
}

TEST(ChangedParts, WhatIsLoadedInPlaceCounts) {
    const Held held;
    test::load(test::stored(upTo(3.0)), *held.predicate);
    EXPECT_EQ(decisionOf(held.classifier, 3.0), 2);

    const Held other;
    test::load(test::stored(vxDecisionTreeNode(upTo(3.0), *leaf({4}), *leaf({5}))), other.second());
    EXPECT_EQ(decisionOf(other.classifier, 3.0), 4);
}

TEST(ChangedParts, ACopyOfTheClassifierSeesTheSameTree) {
    const Held held;
    const vxPtrHandle<vx_Classifier> copy = held.classifier.clone();
    held.second().trueTree(*leaf({4}));
    EXPECT_EQ(decisionOf(*copy, 2.0), 4);
}

TEST(ChangedParts, ATreeTrainedWithAfterwardsIsWalkedAsItIsThen) {
    Held held;
    held.second().trueTree(*leaf({4}));
    held.classifier.trainManual(*held.lower);
    EXPECT_EQ(decisionOf(held.classifier, 2.0), 4);
    held.second().trueTree(*leaf({5})); // the classifier has a clone of this node
    EXPECT_EQ(decisionOf(held.classifier, 2.0), 4);
}

TEST(ChangedParts, AnArchiveCanShareATreeWithAClassifier) {
    vx_ClassifierDecisionTree stored;
    stored.trainManual(vxDecisionTreeNode(upTo(1.0), *leaf({1}), *leaf({2})));
    const test::Bytes bytes = test::archiveOf([&](vxArchive& archive) {
        vxPtrHandle_const<vxDecisionTree> tree = stored.decisionTree();
        archive || tree || stored;
    });
    vxLoadingArchive archive(bytes);
    Tree tree;
    vx_ClassifierDecisionTree loaded;
    archive || tree || loaded;
    archive.finish();
    ASSERT_EQ(tree.get(), loaded.decisionTree().get());
    dynamic_cast<vxDecisionTreeNode&>(*tree).trueTree(*leaf({3}));
    EXPECT_EQ(decisionOf(loaded, 1.0), 3);
    EXPECT_EQ(decisionOf(loaded, 2.0), 2);
}

} // namespace
