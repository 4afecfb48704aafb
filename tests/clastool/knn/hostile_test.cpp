#include "tests/clastool/knn/loaded_objects.h"
#include "tests/support/announcing_data.h"
#include "tests/support/expect_error.h"
#include "tests/support/fake_technique.h"
#include "tests/support/slow_neighbors.h"

#include <vxclassifier/classifier_defs.h>

#include <cmath>
#include <limits>

namespace {

using Params = vxClassifierTrainParamsKNN;
using test::labels;
using test::line;
using test::loadedClassifier;
using test::loadedParams;
using test::loadedStore;
using test::OpenKNN;
using test::pattern;
using test::run;
using test::trained;
using Labels = std::vector<long>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

TEST(KNNHostile, MeasuresByTheRulesOfArithmeticWithAnyLoadedOrder) {
    const std::vector<double> values{0.0, -0.0, 1.0, -3.5, 1e308, infinity, -infinity, notANumber};
    for (const double order : {0.0, -0.0, -1.0, -infinity, infinity, notANumber}) {
        const vxPatternDistanceMetricNorm norm = test::loadedNorm(order);
        for (const double a : values) {
            for (const double b : values) {
                const double found = norm.distance(*pattern({a, 1.0}), *pattern({b, 3.0}));
                const double expected = test::slowNorm({a, 1.0}, {b, 3.0}, order);
                EXPECT_TRUE(std::isnan(expected) ? std::isnan(found)
                                                 : test::bits(found) == test::bits(expected))
                    << order << ": " << a << ", " << b;
            }
        }
    }
}

TEST(KNNHostile, CountsNaNMeasurementsAsFarAway) {
    const vx_ClassifierKNN classifier = trained(line({notANumber, 1e300, 3.0}), Params(1));
    EXPECT_EQ(labels(run(classifier, {0.0})), Labels{2});
    EXPECT_EQ(labels(run(classifier, {notANumber})), Labels{0}) << "all are equally far, none is driven out";
}

TEST(KNNHostile, LetsNaNDriveNothingOut) {
    const auto nearest = [](long k, const std::vector<double>& distances) {
        const test::ScriptedMetric metric(test::lookUp(distances));
        const Params params(k, metric, vxClassifierCosts(1.0));
        return labels(run(trained(test::indexed(distances.size()), params), {0.0}));
    };
    EXPECT_EQ(nearest(3, {notANumber, notANumber, notANumber}), (Labels{0, 1, 2}));
    EXPECT_EQ(nearest(2, {notANumber, 1.0, notANumber, 2.0, notANumber}), (Labels{1, 3}));
}

TEST(KNNHostile, TakesNoMemoryForNeighboursThatThereAreNot) {
    const vx_ClassifierKNN classifier = trained(line({0.0, 1.0, 2.0}), Params(2147483647));
    EXPECT_EQ(labels(run(classifier, {0.0})), (Labels{0, 1, 2}));
}

TEST(KNNHostile, RefusesToRunWithALoadedKBelowOne) {
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

TEST(KNNHostile, RefusesToRunWithoutAMetric) {
    const vxPtrHandle<vxPatternDistanceMetric> none;
    OpenKNN classifier;
    classifier.train(line({0.0}), loadedParams(1, none));
    EXPECT_ERROR_CLASS(run(classifier, {0.0}), vxBadPointer);
}

TEST(KNNHostile, RefusesToRunOverANullPattern) {
    EXPECT_ERROR_CLASS(run(loadedClassifier(loadedStore({test::PatternHandle()}, {0})), {0.0}), vxBadPointer);
    EXPECT_ERROR_CLASS(
        run(loadedClassifier(loadedStore({pattern({0.0}), test::PatternHandle()}, {0, 1})), {0.0}),
        vxBadPointer);
}

TEST(KNNHostile, LooksOnlyAtPatternsThatHaveALabel) {
    EXPECT_EQ(labels(run(loadedClassifier(loadedStore({pattern({5.0}), pattern({0.0})}, {3})), {0.0})),
              Labels{3});
    EXPECT_ERROR(run(loadedClassifier(loadedStore({pattern({5.0})}, {})), {0.0}),
                 vxClassifierDefs::InsufficientTrainData, L"No valid data was provided for training.");
}

TEST(KNNHostile, RefusesToRunOverPatternsOfDifferentLength) {
    EXPECT_ERROR(
        run(loadedClassifier(loadedStore({pattern({5.0}), pattern({0.0, 1.0})}, {3, 4})), {0.0}),
        vxClassifierDefs::BadFeatures,
        L"Pattern distance function requires the number of measurementsin the two patterns to be equal");
}

TEST(KNNHostile, RefusesALoadedNegativeLabelAmongTheNeighbours) {
    const vx_ClassifierKNN classifier =
        loadedClassifier(loadedStore({pattern({0.0}), pattern({9.0})}, {-7, 1}));
    EXPECT_EQ(labels(run(classifier, {8.0})), Labels{1});
    EXPECT_ERROR(run(classifier, {1.0}), vxClassifierDefs::BadLabel, L"Category labels must be >= 0");
}

TEST(KNNHostile, TakesOnlyThePatternsThatAProviderHas) {
    for (const long announced : {0L, -1L, std::numeric_limits<long>::min()}) {
        OpenKNN classifier = trained(test::AnnouncingData(announced, line({0.0})), Params(1));
        EXPECT_ERROR(classifier.checkRunnable_(), vxClassifierDefs::InsufficientTrainData,
                     L"No valid data was provided for training.");
    }
    const test::AnnouncingData tooMany(std::numeric_limits<long>::max(), line({0.0, 1.0}));
    OpenKNN classifier;
    EXPECT_ERROR_CLASS(classifier.train(tooMany, Params(1)), vxClassifierDefs::BadIndex);
}

TEST(KNNHostile, TakesNoParametersOfAnotherTechnique) {
    const vxPtrHandle<vxClassifierTrainParams> foreign(new test::FakeParams);
    for (const auto& stored : {foreign, vxPtrHandle<vxClassifierTrainParams>()}) {
        OpenKNN classifier = loadedClassifier(line({0.0}), stored);
        EXPECT_EQ(labels(run(classifier, {0.0})), Labels{0}) << "they are not what a run looks at";
        EXPECT_ERROR(classifier.retrain(Params(1)), vxClassifierDefs::BadMethod,
                     L"Cannot retrain with a different classification technique.");
        EXPECT_ERROR_CLASS(classifier.train_(line({0.0}), *foreign), vxBadPointer);
        EXPECT_ERROR_CLASS(classifier.retrain_(*foreign), vxBadPointer);
    }
}

TEST(KNNHostile, AsksForTheMeasurementsOfAPatternOnceAndNotForEach) {
    // All measurements are valid, but the mark behind them is not, so that they have to be looked through
    // whenever they are asked for: for each measurement anew that would be 10^12 steps.
    constexpr std::size_t million = 1000000;
    vxFeaturePattern odd({}, {});
    test::load(test::archiveOf([&](vxArchive& archive) {
                   std::vector<double> measurements(million, 1.0);
                   std::vector<bool> validity(million, true);
                   validity.push_back(false);
                   test::putLevels(archive, 2);
                   archive || measurements || validity;
               }),
               odd);
    EXPECT_EQ(vxPatternDistanceMetricNorm(1.0).distance(odd, odd), 0.0);
}

TEST(KNNHostile, CanBeTrainedAndRetrainedWithItsOwnParameters) {
    OpenKNN classifier = trained(line({0.0, 9.0}), Params(2));
    // Held by nobody but the classifier when it is used.
    const auto own = [&]() -> const vxClassifierTrainParams& { return *classifier.trainParams(); };
    classifier.retrain(own());
    EXPECT_EQ(labels(run(classifier, {1.0})), (Labels{0, 1}));
    classifier.train(line({0.0, 1.0, 9.0}), own());
    EXPECT_EQ(labels(run(classifier, {0.0})), (Labels{0, 1}));
}

} // namespace
