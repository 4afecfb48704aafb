#include "tests/clastool/knn/knn_fixtures.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/pattern_distance_metric_norm.h>

namespace {

using Params = vxClassifierTrainParamsKNN;
using Store = vxClassifierDataProviderMemory;
using test::labels;
using test::line;
using test::OpenKNN;
using test::pattern;
using test::run;
using Labels = std::vector<long>;

vx_ClassifierKNN trained(const vxClassifierDataProvider& data, const Params& params) {
    vx_ClassifierKNN classifier;
    classifier.train(data, params);
    return classifier;
}

/// A classifier's record written by hand; one level of it may claim to be newer.
template <class ParamsHandle, class StoreHandle>
test::Bytes record(ParamsHandle params, StoreHandle store, int newerLevel = -1) {
    return test::archiveOf([&](vxArchive& archive) {
        for (int level = 0; level < 3; ++level) { // own, base, root
            test::putVersion(archive, level == newerLevel ? 1 : 0);
        }
        archive || params || store;
    });
}

vxPtrHandle<Store> held(const Store& data) {
    return vxPtrHandle<Store>(new Store(data));
}

/// Parameters as an archive brings them, whose values no constructor would take.
template <class MetricHandle>
Params loadedParams(long k, MetricHandle metric) {
    Params params(1);
    test::load(test::archiveOf([&](vxArchive& archive) {
                   for (int level = 0; level < 3; ++level) {
                       test::putVersion(archive);
                   }
                   vxClassifierCosts costs(1.0);
                   archive || k || metric || costs;
               }),
               params);
    return params;
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

TEST(ClassifierKNNArchive, RefusesToRunWithALoadedKBelowOne) {
    for (const long k : {0L, -1L, -2147483647L - 1L}) {
        OpenKNN classifier;
        classifier.train(line({0.0}), loadedParams(k, vxPatternDistanceMetricNorm(2.0).clone()));
        EXPECT_NO_THROW(classifier.checkRunnable_());
        EXPECT_ERROR(run(classifier, {0.0}), vxClassifierDefs::BadParams, L"K must be >= 1");
        classifier.retrain(Params(1));
        EXPECT_EQ(labels(run(classifier, {0.0})), Labels{0});
        classifier.retrain(loadedParams(k, vxPatternDistanceMetricNorm(2.0).clone()));
        EXPECT_ERROR(run(classifier, {0.0}), vxClassifierDefs::BadParams, L"K must be >= 1");
    }
}

TEST(ClassifierKNNArchive, RefusesToRunWithoutAMetric) {
    const vxPtrHandle<vxPatternDistanceMetric> none;
    OpenKNN classifier;
    classifier.train(line({0.0}), loadedParams(1, none));
    EXPECT_ERROR_CLASS(run(classifier, {0.0}), vxBadPointer);
}

/// A store as an archive brings it: with null patterns or vectors of different length.
Store loadedStore(std::vector<test::PatternHandle> patterns, std::vector<long> patternLabels) {
    Store store;
    test::load(test::archiveOf([&](vxArchive& archive) {
                   for (int level = 0; level < 3; ++level) {
                       test::putVersion(archive);
                   }
                   std::wstring text;
                   archive || text || text || patterns || patternLabels;
               }),
               store);
    return store;
}

vx_ClassifierKNN withStore(const Store& store) {
    vx_ClassifierKNN classifier;
    test::load(record(Params(1).clone(), held(store)), classifier);
    return classifier;
}

TEST(ClassifierKNNArchive, RefusesToRunOverANullPattern) {
    EXPECT_ERROR_CLASS(run(withStore(loadedStore({test::PatternHandle()}, {0})), {0.0}), vxBadPointer);
    EXPECT_ERROR_CLASS(run(withStore(loadedStore({pattern({0.0}), test::PatternHandle()}, {0, 1})), {0.0}),
                       vxBadPointer);
}

TEST(ClassifierKNNArchive, LooksOnlyAtPatternsThatHaveALabel) {
    EXPECT_EQ(labels(run(withStore(loadedStore({pattern({5.0}), pattern({0.0})}, {3})), {0.0})), Labels{3});
    EXPECT_ERROR(run(withStore(loadedStore({pattern({5.0})}, {})), {0.0}),
                 vxClassifierDefs::InsufficientTrainData, L"No valid data was provided for training.");
}

TEST(ClassifierKNNArchive, RefusesToRunOverPatternsOfDifferentLength) {
    EXPECT_ERROR(
        run(withStore(loadedStore({pattern({5.0}), pattern({0.0, 1.0})}, {3, 4})), {0.0}),
        vxClassifierDefs::BadFeatures,
        L"Pattern distance function requires the number of measurementsin the two patterns to be equal");
}

TEST(ClassifierKNNArchive, RefusesALoadedNegativeLabelAmongTheNeighbours) {
    const vx_ClassifierKNN classifier = withStore(loadedStore({pattern({0.0}), pattern({9.0})}, {-7, 1}));
    EXPECT_EQ(labels(run(classifier, {8.0})), Labels{1});
    EXPECT_ERROR(run(classifier, {1.0}), vxClassifierDefs::BadLabel, L"Category labels must be >= 0");
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
