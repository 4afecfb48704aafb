#include <vxclassifier/classifier_decision_tree.h>

#include "tests/clastool/tree/trees.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"

#include <vxclassifier/classifier_defs.h>

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

/// Parameters that take any others for equal, and remember who was asked last.
struct AskedParams : vxClassifierTrainParams {
    AskedParams() = default;
    AskedParams(const AskedParams& other) : vxPersistent(), vxRepBase(), vxClassifierTrainParams(other) {}
    static vxPersistent* make() { return new AskedParams; }
    vxPtrHandle<vxClassifierTrainParams> clone() const override {
        return vxPtrHandle<vxClassifierTrainParams>(new AskedParams(*this));
    }
    bool isEqual_(const vxClassifierTrainParams&) const override {
        asked = this;
        return true;
    }
    bool isSameTechnique_(const vxClassifierTrainParams&) const override { return true; }
    vx_Classifier* newClassifier_() const override { return nullptr; }

    static const vxClassifierTrainParams* asked;
};

const vxClassifierTrainParams* AskedParams::asked = nullptr;
const vx_Instantiator askedParamsExemplar(typeid(AskedParams), &AskedParams::make);

/// A classifier with parameters, which only an archive can bring.
vx_ClassifierDecisionTree loadedWithParams(const Tree& tree) {
    vx_ClassifierDecisionTree loaded;
    test::load(test::archiveOf([&](vxArchive& archive) {
                   vxPtrHandle<vxClassifierTrainParams> params(new AskedParams);
                   Tree stored = tree;
                   test::putBytes(archive, {0, 0, 0});
                   archive || params || stored;
               }),
               loaded);
    return loaded;
}

TEST(ClassifierDecisionTreePersistence, LoadedParametersAreSharedByCopiesAndAssignments) {
    const vx_ClassifierDecisionTree loaded = loadedWithParams(leaf({1}));
    const vx_ClassifierDecisionTree copy(loaded);
    vx_ClassifierDecisionTree assigned;
    assigned = loaded;
    EXPECT_EQ(copy.trainParams(), loaded.trainParams());
    EXPECT_EQ(assigned.trainParams(), loaded.trainParams());
}

TEST(ClassifierDecisionTreePersistence, IsEquivalentAsksTheOwnParametersAndTheOperatorTheOthers) {
    const vx_ClassifierDecisionTree classifier = loadedWithParams(leaf({1}));
    const vx_ClassifierDecisionTree other = loadedWithParams(leaf({1}));
    EXPECT_TRUE(classifier.isEquivalent(other));
    EXPECT_EQ(AskedParams::asked, classifier.trainParams().get());
    EXPECT_TRUE(classifier == other);
    EXPECT_EQ(AskedParams::asked, other.trainParams().get());
}

TEST(ClassifierDecisionTreePersistence, TrainingByHandDropsLoadedParametersWithAndWithoutALoadedTree) {
    for (const Tree& tree : {leaf({1}), Tree()}) {
        vx_ClassifierDecisionTree loaded = loadedWithParams(tree);
        loaded.trainManual(*leaf({2}));
        EXPECT_ERROR(loaded.trainParams(), vxClassifierDefs::BadMethod,
                     L"Classifier tool was not automatically trained.");
    }
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
