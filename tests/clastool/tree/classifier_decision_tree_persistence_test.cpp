#include <vxclassifier/classifier_decision_tree.h>

#include "tests/clastool/tree/trees.h"
#include "tests/support/archives.h"
#include "tests/support/expect_unknown_version.h"

#include <gtest/gtest.h>

namespace {

using test::Bytes;
using test::leaf;
using test::Tree;

struct Access : vx_ClassifierDecisionTree {
    void body(vxArchive& archive, unsigned char version) { serialize_(archive, version); }
};

/// The record of a classifier without parameters and with any object in place of its tree.
Bytes record(std::initializer_list<unsigned char> versions, vxPersistent* tree) {
    return test::archiveOf([&](vxArchive& archive) {
        vxPersistent* unused = nullptr;
        test::putBytes(archive, versions);
        vxPersistent::serializePointer(archive, nullptr, unused);
        vxPersistent::serializePointer(archive, tree, unused);
    });
}

TEST(ClassifierDecisionTreePersistence, TheRecordIsThreeVersionsNoParametersAndTheTree) {
    const Tree tree = test::node(test::has(1), leaf({1}), leaf({2}));
    vx_ClassifierDecisionTree classifier;
    classifier.trainManual(*tree);
    EXPECT_EQ(test::stored(classifier), record({0, 0, 0}, tree.get()));
}

TEST(ClassifierDecisionTreePersistence, AnUntrainedOneHasANullTree) {
    EXPECT_EQ(test::stored(vx_ClassifierDecisionTree()), record({0, 0, 0}, nullptr));
    vx_ClassifierDecisionTree loaded;
    loaded.trainManual(*leaf({1}));
    const auto old = loaded.decisionTree();
    test::load(record({0, 0, 0}, nullptr), loaded);
    EXPECT_FALSE(loaded.isTrained());
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*old), 1);
}

TEST(ClassifierDecisionTreePersistence, ALoadedOneRunsAndIsEqual) {
    vx_ClassifierDecisionTree classifier;
    classifier.trainManual(*test::node(test::has(1), leaf({1}), leaf({2})));
    vx_ClassifierDecisionTree loaded;
    test::load(test::stored(classifier), loaded);
    EXPECT_TRUE(loaded == classifier);
    EXPECT_TRUE(loaded.isEquivalent(classifier));
    vxClassifierResult result;
    loaded.run(test::patternOf({1.0, 2.0}), result);
    EXPECT_EQ(result, test::resultOf({1}));
}

TEST(ClassifierDecisionTreePersistence, ATreeOfTheWrongClassComesBackAsNull) {
    const test::Predicate predicate = test::always();
    vx_ClassifierDecisionTree loaded;
    loaded.trainManual(*leaf({1}));
    test::load(record({0, 0, 0}, predicate.get()), loaded);
    EXPECT_FALSE(loaded.isTrained());
}

TEST(ClassifierDecisionTreePersistence, AnotherVersionAtAnyLevelIsRefusedWithoutAPlace) {
    Access loaded;
    EXPECT_UNKNOWN_VERSION(test::load(record({1, 0, 0}, nullptr), loaded), nullptr, 0);
    EXPECT_UNKNOWN_VERSION(test::load(record({0, 1, 0}, nullptr), loaded), nullptr, 0);
    EXPECT_UNKNOWN_VERSION(test::load(record({0, 0, 1}, nullptr), loaded), nullptr, 0);
    vxStoringArchive archive;
    EXPECT_UNKNOWN_VERSION(loaded.body(archive, 1), nullptr, 0);
}

TEST(ClassifierDecisionTreePersistence, IsRegistered) {
    vx_ClassifierDecisionTree classifier;
    classifier.trainManual(*leaf({1}));
    const vxPtrHandle<vx_Classifier> stored = classifier.clone();
    const Bytes bytes = test::stored(stored);
    vxPtrHandle<vx_Classifier> loaded;
    test::load(bytes, loaded);
    ASSERT_FALSE(loaded.isNull());
    EXPECT_TRUE(classifier.isEquivalent(*loaded));
}

TEST(ClassifierDecisionTreePersistence, AnAssignmentIsReportedToAnArchiveThatTracksTheClassifier) {
    vx_ClassifierDecisionTree classifier;
    vxStoringArchive archive;
    vxPersistent* unused = nullptr;
    vxPersistent::serializePointer(archive, &classifier, unused);
    ASSERT_TRUE(classifier.isTracked_());
    classifier = vx_ClassifierDecisionTree();
    EXPECT_FALSE(classifier.isTracked_());
}

} // namespace
