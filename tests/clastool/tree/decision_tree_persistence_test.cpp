#include "tests/clastool/tree/trees.h"
#include "tests/support/archives.h"
#include "tests/support/expect_unknown_version.h"

#include <gtest/gtest.h>

// How nodes and leaves are archived.

namespace {

using test::Bytes;
using test::leaf;
using test::Predicate;
using test::resultOf;
using test::Tree;

struct NodeAccess : vxDecisionTreeNode {
    void body(vxArchive& archive, unsigned char version) { serialize_(archive, version); }
};

struct LeafAccess : vxDecisionTreeLeaf {
    LeafAccess() : vxDecisionTreeLeaf(vxClassifierResult()) {}
    void body(vxArchive& archive, unsigned char version) { serialize_(archive, version); }
};

void putVersions(vxArchive& archive, std::initializer_list<unsigned char> versions) {
    test::putBytes(archive, versions);
}

Bytes leafRecord(std::initializer_list<unsigned char> versions) {
    return test::archiveOf([&](vxArchive& archive) {
        putVersions(archive, versions);
        test::putResult(archive, {}, 0.75);
    });
}

void putPointer(vxArchive& archive, vxPersistent* object) {
    vxPersistent* unused = nullptr;
    vxPersistent::serializePointer(archive, object, unused);
}

/// The record of a node with any objects in place of its parts.
Bytes nodeRecord(std::initializer_list<unsigned char> versions, vxPersistent* trueTree,
                 vxPersistent* falseTree, vxPersistent* predicate) {
    return test::archiveOf([&](vxArchive& archive) {
        putVersions(archive, versions);
        putPointer(archive, trueTree);
        putPointer(archive, falseTree);
        putPointer(archive, predicate);
    });
}

const vxDecisionTreeNode& asNode(const Tree& tree) {
    return dynamic_cast<const vxDecisionTreeNode&>(*tree);
}

Tree storedAndLoaded(const Tree& tree) {
    const Bytes bytes = test::stored(tree);
    Tree loaded;
    test::load(bytes, loaded);
    return loaded;
}

TEST(DecisionTreeLeafPersistence, TheRecordIsThreeVersionsAndTheResult) {
    const vxDecisionTreeLeaf stored(resultOf({3, 1}, 0.5));
    EXPECT_EQ(test::stored(stored), test::archiveOf([&](vxArchive& archive) {
                  putVersions(archive, {0, 0, 0});
                  vxClassifierResult result = resultOf({3, 1}, 0.5);
                  archive || result;
              }));
}

TEST(DecisionTreeLeafPersistence, LoadingReplacesTheResult) {
    vxDecisionTreeLeaf loaded(resultOf({3, 1}));
    test::load(leafRecord({0, 0, 0}), loaded);
    EXPECT_TRUE(loaded.categoryLabels().empty());
    EXPECT_EQ(loaded.classifierResult().matchScoreFactorLog(), 0.75);
}

TEST(DecisionTreeLeafPersistence, AnotherVersionAtAnyLevelIsRefusedWithoutAPlace) {
    LeafAccess loaded;
    EXPECT_UNKNOWN_VERSION(test::load(leafRecord({1, 0, 0}), loaded), nullptr, 0);
    EXPECT_UNKNOWN_VERSION(test::load(leafRecord({0, 1, 0}), loaded), nullptr, 0);
    EXPECT_UNKNOWN_VERSION(test::load(leafRecord({0, 0, 1}), loaded), nullptr, 0);
    vxStoringArchive archive;
    EXPECT_UNKNOWN_VERSION(loaded.body(archive, 1), nullptr, 0);
}

TEST(DecisionTreeLeafPersistence, IsRegistered) {
    const Tree loaded = storedAndLoaded(leaf({3, 1}));
    ASSERT_FALSE(loaded.isNull());
    EXPECT_TRUE(leaf({3, 1})->isEqual(*loaded));
}

TEST(DecisionTreeNodePersistence, TheRecordIsThreeVersionsAndThePartsTrueFalsePredicate) {
    const Tree yes = leaf({1});
    const Tree no = leaf({2});
    const Predicate predicate = test::has(3);
    const Tree node = test::node(predicate, yes, no);
    EXPECT_EQ(test::stored(asNode(node)), nodeRecord({0, 0, 0}, yes.get(), no.get(), predicate.get()));
}

TEST(DecisionTreeNodePersistence, LoadingReplacesThePartsAndReleasesTheOldOnes) {
    const Tree yes = leaf({1});
    const Tree no = leaf({2});
    const Predicate predicate = test::has(3);
    vxDecisionTreeNode loaded;
    const auto old = loaded.trueTree();
    test::load(nodeRecord({0, 0, 0}, yes.get(), no.get(), predicate.get()), loaded);
    EXPECT_TRUE(loaded.isEqual(*test::node(predicate, yes, no)));
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*old), 1);
}

TEST(DecisionTreeNodePersistence, AnotherVersionAtAnyLevelIsRefusedWithoutAPlace) {
    NodeAccess loaded;
    EXPECT_UNKNOWN_VERSION(test::load(nodeRecord({1, 0, 0}, nullptr, nullptr, nullptr), loaded), nullptr, 0);
    EXPECT_UNKNOWN_VERSION(test::load(nodeRecord({0, 1, 0}, nullptr, nullptr, nullptr), loaded), nullptr, 0);
    EXPECT_UNKNOWN_VERSION(test::load(nodeRecord({0, 0, 1}, nullptr, nullptr, nullptr), loaded), nullptr, 0);
    vxStoringArchive archive;
    EXPECT_UNKNOWN_VERSION(loaded.body(archive, 1), nullptr, 0);
}

TEST(DecisionTreeNodePersistence, NullPartsComeBackAsNull) {
    vxDecisionTreeNode loaded;
    test::load(nodeRecord({0, 0, 0}, nullptr, nullptr, nullptr), loaded);
    EXPECT_TRUE(loaded.trueTree().isNull());
    EXPECT_TRUE(loaded.falseTree().isNull());
    EXPECT_TRUE(loaded.predicateFunction().isNull());
    EXPECT_EQ(test::stored(loaded), nodeRecord({0, 0, 0}, nullptr, nullptr, nullptr));
}

TEST(DecisionTreeNodePersistence, APartOfTheWrongClassComesBackAsNull) {
    const Tree tree = leaf({1});
    const Predicate predicate = test::has(3);
    vxDecisionTreeNode loaded;
    test::load(nodeRecord({0, 0, 0}, predicate.get(), tree.get(), tree.get()), loaded);
    EXPECT_TRUE(loaded.trueTree().isNull());
    EXPECT_TRUE(tree->isEqual(*loaded.falseTree()));
    EXPECT_TRUE(loaded.predicateFunction().isNull());
}

TEST(DecisionTreeNodePersistence, IsRegistered) {
    const Tree tree = test::node(test::has(1), leaf({1}), leaf({2}));
    const Tree loaded = storedAndLoaded(tree);
    ASSERT_FALSE(loaded.isNull());
    EXPECT_TRUE(tree->isEqual(*loaded));
}

TEST(DecisionTreeNodePersistence, TheOneLeafOfADefaultNodeStaysOne) {
    const Tree loaded = storedAndLoaded(Tree(new vxDecisionTreeNode));
    const auto tree = asNode(loaded).trueTree();
    EXPECT_EQ(tree, asNode(loaded).falseTree());
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*tree), 3); // two branches and `tree`

    vxDecisionTreeNode byValue(vxValidityPredicate(), *leaf({1}), *leaf({2}));
    test::load(test::stored(vxDecisionTreeNode()), byValue);
    EXPECT_EQ(byValue.trueTree(), byValue.falseTree());
}

TEST(DecisionTreeNodePersistence, SharedSubtreesAreWrittenOnceAndComeBackShared) {
    const Tree shared = test::node(test::has(1), leaf({1}), leaf({2}));
    const Tree left = test::node(test::has(2), shared, leaf({3}));
    const Tree right = test::node(test::has(3), leaf({4}), shared);
    const Tree loaded = storedAndLoaded(test::node(test::has(4), left, right));
    const auto& loadedLeft = dynamic_cast<const vxDecisionTreeNode&>(*asNode(loaded).trueTree());
    const auto& loadedRight = dynamic_cast<const vxDecisionTreeNode&>(*asNode(loaded).falseTree());
    EXPECT_EQ(loadedLeft.trueTree(), loadedRight.falseTree());
    EXPECT_TRUE(shared->isEqual(*loadedLeft.trueTree()));
}

TEST(DecisionTreeNodePersistence, ChangesAreNotReportedToAnArchiveThatTracksTheNode) {
    vxDecisionTreeNode node;
    vxDecisionTreeLeaf leaf(resultOf({1}));
    vxRangePredicate predicate;
    vxStoringArchive archive;
    putPointer(archive, &node);
    putPointer(archive, &leaf);
    putPointer(archive, &predicate);
    ASSERT_TRUE(node.isTracked_() && leaf.isTracked_() && predicate.isTracked_());
    node.trueTree(leaf);
    node.falseTree(leaf);
    node.predicateFunction(predicate);
    node = vxDecisionTreeNode();
    leaf.classifierResult(resultOf({2}));
    leaf = vxDecisionTreeLeaf(resultOf({3}));
    predicate = vxRangePredicate();
    EXPECT_TRUE(node.isTracked_());
    EXPECT_TRUE(leaf.isTracked_());
    EXPECT_TRUE(predicate.isTracked_());
}

} // namespace
