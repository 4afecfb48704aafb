#include "tests/clastool/knn/knn_fixtures.h"
#include "tests/support/archives.h"
#include "tests/support/expect_unknown_version.h"

#include <vxclassifier/pattern_distance_metric_norm.h>

namespace {

using Params = vxClassifierTrainParamsKNN;
using Store = vxClassifierDataProviderMemory;
using test::labels;
using test::line;
using test::pattern;
using test::run;
using test::trained;
using Labels = std::vector<long>;

/// A classifier's record written by hand; one level of it may claim to be newer.
template <class ParamsHandle, class StoreHandle>
test::Bytes record(ParamsHandle params, StoreHandle store, int newerLevel = -1) {
    return test::archiveOf([&](vxArchive& archive) {
        test::putLevels(archive, 3, newerLevel); // own, base, root
        archive || params || store;
    });
}

vxPtrHandle<Store> held(const Store& data) {
    return vxPtrHandle<Store>(new Store(data));
}

TEST(ClassifierKNNArchive, HoldsTheLevelsTheParametersAndTheStore) {
    const Params params(2);
    const Store data = line({0.0, 9.0});
    EXPECT_EQ(test::stored(trained(data, params)), record(params.clone(), held(data)));
}

TEST(ClassifierKNNArchive, HoldsNullForTheStoreOfAnUntrainedClassifier) {
    const vxPtrHandle<vxClassifierTrainParams> noParams;
    EXPECT_EQ(test::stored(vx_ClassifierKNN()), record(noParams, vxPtrHandle<Store>()));
}

TEST(ClassifierKNNArchive, BringsAnEqualClassifierBack) {
    const vx_ClassifierKNN classifier = trained(line({0.0, 9.0}), Params(2));
    vx_ClassifierKNN loaded;
    test::load(test::stored(classifier), loaded);
    EXPECT_TRUE(loaded.isTrained());
    EXPECT_TRUE(loaded == classifier);
    EXPECT_EQ(test::stored(loaded), test::stored(classifier));
}

TEST(ClassifierKNNArchive, BringsAClassifierBackThroughAPointer) {
    vx_ClassifierKNN classifier = trained(line({0.0, 9.0}), Params(2));
    vxPtrHandle<vx_Classifier> loaded;
    test::load(test::storedPointer(&classifier), loaded);
    ASSERT_FALSE(loaded.isNull());
    EXPECT_TRUE(classifier.isEquivalent(*loaded));
}

TEST(ClassifierKNNArchive, BringsTheUntrainedStateBack) {
    vx_ClassifierKNN loaded = trained(line({0.0}), Params(2));
    test::load(test::stored(vx_ClassifierKNN()), loaded);
    EXPECT_FALSE(loaded.isTrained());
}

TEST(ClassifierKNNArchive, DoesNotHoldTheWorkingParameters) {
    vxClassifierCosts costs(1.0);
    costs.misclassificationCostOverride(1, 0, 8.0);
    const vx_ClassifierKNN classifier =
        trained(line({0.0, 9.0}), Params(2, vxPatternDistanceMetricNorm(1.0), costs));
    ASSERT_EQ(labels(run(classifier, {1.0})), (Labels{1, 0}));
    vx_ClassifierKNN loaded;
    test::load(test::stored(classifier), loaded);
    EXPECT_EQ(labels(run(loaded, {1.0})), Labels{0}) << "one neighbour, as before any training";
    loaded.retrain(*loaded.trainParams());
    EXPECT_EQ(run(loaded, {1.0}), run(classifier, {1.0}));
}

TEST(ClassifierKNNArchive, LeavesTheWorkingParametersOfTheLoadingObjectAlone) {
    vx_ClassifierKNN loaded = trained(line({5.0}), Params(2));
    test::load(test::stored(trained(line({0.0, 9.0}), Params(1))), loaded);
    EXPECT_EQ(labels(run(loaded, {1.0})), (Labels{0, 1}));
}

TEST(ClassifierKNNArchive, LeavesTheWorkingParametersOfAnUntrainedObjectAlone) {
    const test::Bytes bytes = test::stored(trained(line({1.0, 2.0, 3.0}), Params(1)));
    vx_ClassifierKNN into = trained(line({5.0}), Params(3));
    into.untrain();
    test::load(bytes, into);
    EXPECT_EQ(run(into, {1.0}).categoryResults().size(), 3U) << "untraining gives up the data only";
}

TEST(ClassifierKNNArchive, BringsAStoreThatCanLearnMore) {
    vx_ClassifierKNN loaded;
    test::load(test::stored(trained(line({0.0}), Params(1))), loaded);
    loaded.trainIncremental(*pattern({9.0}), 4);
    EXPECT_EQ(labels(run(loaded, {8.0})), Labels{4});
}

TEST(ClassifierKNNArchive, KeepsPatternsSharedThatTheParametersOrOthersHold) {
    Store data;
    data.addData(pattern({1.0}), 0);
    data.addData(data.featurePattern(0), 1);
    Store twice;
    twice.addData(pattern({1.0}), 0);
    twice.addData(pattern({1.0}), 1);
    EXPECT_LT(test::stored(trained(data, Params(1))).size(), test::stored(trained(twice, Params(1))).size());
}

TEST(ClassifierKNNArchive, RefusesToLoadAnotherVersionOfAnyLevel) {
    for (int level = 0; level < 3; ++level) {
        vx_ClassifierKNN loaded;
        EXPECT_UNKNOWN_VERSION(test::load(record(Params(2).clone(), held(line({0.0})), level), loaded),
                               nullptr, 0);
    }
}

TEST(ClassifierKNNArchive, LeavesTheClassifierUntrainedWhereTheStoreIsOfAnotherClass) {
    vx_ClassifierKNN loaded = trained(line({0.0}), Params(2));
    test::load(record(Params(2).clone(), pattern({1.0})), loaded);
    EXPECT_FALSE(loaded.isTrained());
}

TEST(ClassifierKNNArchive, LearnsOfAnAssignmentToAnObjectThatItTracks) {
    const vx_ClassifierKNN first = trained(line({0.0}), Params(1));
    const vx_ClassifierKNN second = trained(line({9.0}), Params(1));
    vx_ClassifierKNN changing = first;
    const test::Bytes sealed = test::archiveOf([&](vxArchive& archive) {
        vxPersistent* unused = nullptr;
        vxPersistent::serializePointer(archive, &changing, unused);
        EXPECT_TRUE(changing.isTracked_());
        changing = second;
        EXPECT_FALSE(changing.isTracked_());
        vxPersistent::serializePointer(archive, &changing, unused);
    });
    vxPtrHandle<vx_Classifier> loadedFirst;
    vxPtrHandle<vx_Classifier> loadedSecond;
    vxLoadingArchive archive(sealed);
    archive || loadedFirst || loadedSecond;
    archive.finish();
    ASSERT_FALSE(loadedFirst.isNull() || loadedSecond.isNull());
    EXPECT_TRUE(first.isEquivalent(*loadedFirst));
    EXPECT_TRUE(second.isEquivalent(*loadedSecond)) << "the changed object is written anew";
}

} // namespace
