// A classifier whose metric is the norm leaves most patterns alone. One with a metric that is the norm in all
// but its class measures every pattern; both must always agree.

#include "tests/clastool/knn/knn_fixtures.h"
#include "tests/clastool/knn/loaded_objects.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/hand_written.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/pattern_distance_metric_norm.h>
#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/status.h>

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace {

using test::OpenKNN;
using test::PatternHandle;
using Store = vxClassifierDataProviderMemory;

/// The norm, but of a class of its own.
class ScanningNorm : public vxPatternDistanceMetricNorm {
public:
    using vxPatternDistanceMetricNorm::vxPatternDistanceMetricNorm;
    vxPtrHandle<vxPatternDistanceMetric> clone() const override {
        return vxPtrHandle<vxPatternDistanceMetric>(new ScanningNorm(*this));
    }
};

std::vector<double> drawn(std::mt19937_64& engine) {
    std::vector<double> measurements(3);
    for (double& value : measurements) {
        value = static_cast<double>(engine() % 1000) * 0.001;
    }
    return measurements;
}

Store randomStore(std::mt19937_64& engine, long count) {
    std::vector<PatternHandle> patterns;
    std::vector<long> labels;
    for (long i = 0; i < count; ++i) {
        patterns.push_back(test::pattern(drawn(engine)));
        labels.push_back(static_cast<long>(engine() % 50));
    }
    Store store;
    store.data(patterns, labels);
    return store;
}

vxClassifierTrainParamsKNN params(const vxPatternDistanceMetric& metric, long k = 5) {
    return {k, metric, vxClassifierCosts(1.0)};
}

/// Expects this classifier to decide as one that scans its patterns.
void expectPlainResults(const vx_Classifier& classifier, std::mt19937_64& engine, double order = 2.0,
                        long k = 5) {
    vxPtrHandle<vx_Classifier> scanning = classifier.clone();
    scanning->retrain(params(ScanningNorm(order), k));
    for (int i = 0; i < 30; ++i) {
        const std::vector<double> query = drawn(engine);
        EXPECT_EQ(test::run(classifier, query), test::run(*scanning, query));
    }
}

TEST(FastKNN, DecidesAsTheScanAfterTraining) {
    std::mt19937_64 engine(1);
    for (const long count : {1L, 4L, 100L, 1000L}) {
        for (const double order : {1.0, 2.0, 3.0}) {
            for (const long k : {1L, 5L, 2000L}) {
                const OpenKNN classifier =
                    test::trained(randomStore(engine, count), params(vxPatternDistanceMetricNorm(order), k));
                expectPlainResults(classifier, engine, order, k);
            }
        }
    }
}

TEST(FastKNN, DecidesAsTheScanAfterEachIncrementalTraining) {
    std::mt19937_64 engine(2);
    for (const long count : {1L, 150L, 600L}) {
        OpenKNN classifier =
            test::trained(randomStore(engine, count), params(vxPatternDistanceMetricNorm(2.0)));
        for (int i = 0; i < 100; ++i) {
            std::vector<double> measurements = drawn(engine);
            measurements[0] += i % 10 == 0 ? 5.0 : 0.0;
            classifier.trainIncremental(*test::pattern(measurements), 7);
            if (i % 10 == 0) {
                expectPlainResults(classifier, engine);
            }
        }
    }
}

TEST(FastKNN, DecidesAsTheScanWhenAPatternChangesBeforeAnIncrementalTraining) {
    std::mt19937_64 engine(10);
    const vxPtrHandle<vxFeaturePattern> changing(new vxFeaturePattern({9.0, 9.0, 9.0}, {}));
    for (const long count : {100L, 500L}) {
        *changing = vxFeaturePattern({9.0, 9.0, 9.0}, {});
        Store store = randomStore(engine, count);
        store.addData(changing, 60);
        OpenKNN classifier = test::trained(store, params(vxPatternDistanceMetricNorm(2.0), 1));
        *changing = vxFeaturePattern({-7.0, -7.0, -7.0}, {});
        classifier.trainIncremental(*test::pattern({-9.0, -9.0, -9.0}), 61);
        EXPECT_EQ(test::labels(test::run(classifier, {-7.5, -7.0, -7.0})), std::vector<long>{60});
        EXPECT_EQ(test::labels(test::run(classifier, {-8.5, -9.0, -9.0})), std::vector<long>{61});
        expectPlainResults(classifier, engine, 2.0, 1);
    }
}

/// A valid pattern whose archive had a mark too many, so that it is not kept as others are.
vxPtrHandle<vxFeaturePattern> withASurplusMark(const std::vector<double>& measurements) {
    vxPtrHandle<vxFeaturePattern> pattern(new vxFeaturePattern({}, {}));
    const std::vector<bool> marks(measurements.size() + 1, true);
    test::load(test::HandWritten().byte(0).byte(0).reals(measurements).flags(marks).sealed(), *pattern);
    return pattern;
}

TEST(FastKNN, DecidesAsTheScanWhenAPatternWithASurplusMarkChanges) {
    std::mt19937_64 engine(11);
    for (const long count : {100L, 500L}) {
        const vxPtrHandle<vxFeaturePattern> changing = withASurplusMark({9.0, 9.0, 9.0});
        Store store = randomStore(engine, count);
        store.addData(changing, 60);
        const OpenKNN classifier = test::trained(store, params(vxPatternDistanceMetricNorm(2.0), 1));
        EXPECT_EQ(test::labels(test::run(classifier, {8.0, 9.0, 9.0})), std::vector<long>{60});
        *changing = vxFeaturePattern({-7.0, -7.0, -7.0}, {});
        EXPECT_EQ(test::labels(test::run(classifier, {-7.5, -7.0, -7.0})), std::vector<long>{60});
        EXPECT_NE(test::labels(test::run(classifier, {8.0, 9.0, 9.0})), std::vector<long>{60});
        expectPlainResults(classifier, engine, 2.0, 1);
    }
}

TEST(FastKNN, DecidesAsTheScanWhenAPatternIsLoadedInPlaceOrHalfOfIt) {
    std::mt19937_64 engine(12);
    const std::vector<double> there{-7.0, -7.0, -7.0};
    test::HandWritten inOneStep;
    inOneStep.byte(0).byte(0).reals(there).flags({true, true, true});
    test::HandWritten levelByLevel;
    levelByLevel.byte(0).byte(0).reals(there).flags({true, true, true, true});
    test::HandWritten half;
    half.byte(0).byte(0).reals(there).byte(1);
    for (const test::Bytes& sealed : {inOneStep.sealed(), levelByLevel.sealed(), half.sealed()}) {
        for (const long count : {100L, 500L}) {
            const PatternHandle changing = test::pattern({9.0, 9.0, 9.0});
            Store store = randomStore(engine, count);
            store.addData(changing, 60);
            const OpenKNN classifier = test::trained(store, params(vxPatternDistanceMetricNorm(2.0), 1));
            EXPECT_EQ(test::labels(test::run(classifier, {8.0, 9.0, 9.0})), std::vector<long>{60});
            try {
                test::load(sealed, const_cast<vxFeaturePattern&>(*changing));
            } catch (const vxArchive::UnknownVersion&) { // of the marks, when the measurements were read
            }
            EXPECT_EQ(changing->featureMeasurements(true), there);
            EXPECT_EQ(test::labels(test::run(classifier, {-7.5, -7.0, -7.0})), std::vector<long>{60});
            EXPECT_NE(test::labels(test::run(classifier, {8.0, 9.0, 9.0})), std::vector<long>{60});
            expectPlainResults(classifier, engine, 2.0, 1);
        }
    }
}

TEST(FastKNN, FindsAPatternThatWasJustTrained) {
    std::mt19937_64 engine(3);
    OpenKNN classifier = test::trained(randomStore(engine, 500), params(vxPatternDistanceMetricNorm(2.0), 1));
    for (const double far : {3.0, -2.0, 1e100, -1e150, 7.0}) {
        classifier.trainIncremental(*test::pattern({far, 0.5, 0.5}), 100);
        EXPECT_EQ(test::labels(test::run(classifier, {far, 0.5, 0.5})), std::vector<long>{100}) << far;
    }
}

TEST(FastKNN, StaysWithPatternsThatGetTrainedWithInvalidMeasurements) {
    std::mt19937_64 engine(4);
    OpenKNN classifier = test::trained(randomStore(engine, 500), params(vxPatternDistanceMetricNorm(2.0)));
    classifier.trainIncremental(*test::pattern({1.0, 2.0, 3.0}, {1}), 0);
    EXPECT_ERROR(test::run(classifier, {0.0, 0.0, 0.0}), vxClassifierDefs::BadFeatures,
                 L"Access to full feature vector requires that all features are valid.");
}

TEST(FastKNN, DecidesAsTheScanAfterRetraining) {
    std::mt19937_64 engine(5);
    OpenKNN classifier = test::trained(randomStore(engine, 500), params(vxPatternDistanceMetricNorm(2.0)));
    for (const double order : {1.0, 3.0, 2.0}) {
        classifier.retrain(params(vxPatternDistanceMetricNorm(order), 9));
        expectPlainResults(classifier, engine, order, 9);
    }
}

TEST(FastKNN, DecidesAsTheScanWhenLoaded) {
    std::mt19937_64 engine(6);
    const OpenKNN classifier =
        test::trained(randomStore(engine, 500), params(vxPatternDistanceMetricNorm(2.0)));
    OpenKNN loaded = test::trained(randomStore(engine, 300), params(vxPatternDistanceMetricNorm(2.0)));
    test::load(test::stored(classifier), loaded);
    expectPlainResults(loaded, engine); // its parameters are those from before
    EXPECT_EQ(test::run(loaded, {0.1, 0.2, 0.3}), test::run(classifier, {0.1, 0.2, 0.3}));
}

TEST(FastKNN, StoresTheSameBytesWhateverTheMetric) {
    std::mt19937_64 engine(7);
    const Store store = randomStore(engine, 500);
    const OpenKNN fast = test::trained(store, params(vxPatternDistanceMetricNorm(2.0)));
    OpenKNN loaded;
    test::load(test::stored(fast), loaded);
    EXPECT_EQ(test::stored(loaded), test::stored(fast));
    EXPECT_EQ(loaded, fast);
}

TEST(FastKNN, CopiesGoTheirOwnWays) {
    std::mt19937_64 engine(8);
    OpenKNN original = test::trained(randomStore(engine, 500), params(vxPatternDistanceMetricNorm(2.0)));
    OpenKNN assigned;
    assigned = original;
    OpenKNN copy(original);
    copy.trainIncremental(*test::pattern({9.0, 9.0, 9.0}), 77);
    original.trainIncremental(*test::pattern({-9.0, 9.0, 9.0}), 78);
    for (const OpenKNN* classifier : {&original, &copy, &assigned}) {
        expectPlainResults(*classifier, engine);
    }
    copy.retrain(params(vxPatternDistanceMetricNorm(2.0), 1));
    EXPECT_EQ(test::labels(test::run(copy, {9.0, 9.0, 9.0})), std::vector<long>{77});
    const OpenKNN& itself = original;
    original = itself;
    expectPlainResults(original, engine);
    original = OpenKNN();
    EXPECT_FALSE(original.isTrained_());
}

TEST(FastKNN, SeesThatASharedPatternWasAssignedTo) {
    std::mt19937_64 engine(9);
    Store store = randomStore(engine, 500);
    const vxPtrHandle<vxFeaturePattern> shared(new vxFeaturePattern({0.5, 0.5, 0.5}, {}));
    store.addData(shared, 100);
    const OpenKNN classifier = test::trained(store, params(vxPatternDistanceMetricNorm(2.0), 1));
    EXPECT_EQ(test::labels(test::run(classifier, {0.5, 0.5, 0.5})), std::vector<long>{100});
    *shared = vxFeaturePattern({8.0, 8.0, 8.0}, {});
    EXPECT_EQ(test::labels(test::run(classifier, {8.0, 8.0, 8.0})), std::vector<long>{100});
    expectPlainResults(classifier, engine, 2.0, 1);
    *shared = vxFeaturePattern({8.0}, {});
    EXPECT_ERROR(test::run(classifier, {8.0, 8.0, 8.0}), vxClassifierDefs::BadFeatures,
                 L"Pattern distance function requires the number of measurementsin the two patterns to be "
                 L"equal");
}

TEST(FastKNN, SeesThatAStoreThatAnArchiveSharedOutHasChanged) {
    std::mt19937_64 engine(10);
    vxPtrHandle<Store> store(new Store(randomStore(engine, 500)));
    const test::Bytes record = test::archiveOf([&](vxArchive& archive) {
        archive || store;
        test::putLevels(archive, 3);
        vxPtrHandle<vxClassifierTrainParams> given = vxClassifierTrainParamsKNN(1).clone();
        archive || given || store;
    });
    OpenKNN classifier;
    vxPtrHandle<Store> shared;
    vxLoadingArchive archive(record);
    archive || shared || classifier;
    archive.finish();
    shared->addData(test::pattern({8.0, 8.0, 8.0}), 100);
    EXPECT_EQ(test::labels(test::run(classifier, {8.0, 8.0, 8.0})), std::vector<long>{100});
    shared->data({test::pattern({1.0, 2.0, 3.0})}, {101});
    EXPECT_EQ(test::labels(test::run(classifier, {8.0, 8.0, 8.0})), std::vector<long>{101});
}

/// A check that trains the classifier that makes it, when it is made for the first time.
struct Training {
    vx_Classifier* classifier;
    long more;
    long made = 0;

    static long check(void* context) {
        Training& training = *static_cast<Training*>(context);
        if (++training.made == 1) {
            for (long i = 0; i < training.more; ++i) {
                training.classifier->trainIncremental(vxFeaturePattern({-1.0}, {}), 7);
            }
        }
        return vxStatus::success;
    }
};

TEST(FastKNN, ACheckMayTrainTheClassifierThatMakesIt) {
    for (const long more : {0L, 1L, 1000L}) {
        Store store;
        for (long i = 0; i < 300; ++i) {
            store.addData(test::pattern({static_cast<double>(i)}), 1);
        }
        vx_ClassifierKNN classifier;
        classifier.train(store, params(vxPatternDistanceMetricNorm(2.0), 1));
        Training training{&classifier, more};
        const vxAttentionScope scope(&Training::check, &training);
        vxClassifierResult result;
        classifier.run(vxFeaturePattern({-1.0}, {}), result);
        EXPECT_EQ(result.categoryResults().front().categoryLabel(), more == 0 ? 1 : 7);
        EXPECT_EQ(training.made, 300 + more + 1) << "for each pattern, and for the category";
    }
}

/// A check that does something when it is made for the first time.
struct DoingOnce {
    std::function<void()> action;
    long made = 0;

    static long check(void* context) {
        DoingOnce& doing = *static_cast<DoingOnce*>(context);
        if (++doing.made == 1) {
            doing.action();
        }
        return vxStatus::success;
    }
};

TEST(FastKNN, ACheckMayTrainAPatternThatIsTooOddToLeaveAnyOut) {
    Store store;
    for (long i = 0; i < 300; ++i) {
        store.addData(test::pattern({static_cast<double>(i)}), 1);
    }
    OpenKNN classifier = test::trained(store, params(vxPatternDistanceMetricNorm(2.0), 1));
    DoingOnce doing;
    doing.action = [&] {
        classifier.trainIncremental(*test::pattern({1e200}), 6);
        classifier.trainIncremental(*test::pattern({-1.0}), 7);
    };
    const vxAttentionScope scope(&DoingOnce::check, &doing);
    EXPECT_EQ(test::labels(test::run(classifier, {-1.0})), std::vector<long>{7});
    EXPECT_EQ(doing.made, 302 + 1) << "for each pattern, and for the category";
}

TEST(FastKNN, ARunWhoseCheckTrainsAnewIsThatOfThePatternsFromBefore) {
    Store rising;
    Store falling; // with the same labels
    for (long i = 0; i < 300; ++i) {
        rising.addData(test::pattern({static_cast<double>(i)}), i);
        falling.addData(test::pattern({static_cast<double>(299 - i)}), i);
    }
    const auto own = params(vxPatternDistanceMetricNorm(2.0), 1);
    OpenKNN classifier = test::trained(rising, own);
    DoingOnce doing;
    doing.action = [&] { classifier.train(falling, own); };
    {
        const vxAttentionScope scope(&DoingOnce::check, &doing);
        EXPECT_EQ(test::labels(test::run(classifier, {0.2})), std::vector<long>{0});
    }
    EXPECT_GE(doing.made, 300);
    EXPECT_EQ(test::labels(test::run(classifier, {0.2})), std::vector<long>{299});
}

TEST(FastKNN, RefusesANeighborOfUnknownCategory) {
    std::mt19937_64 engine(11);
    OpenKNN classifier = test::trained(randomStore(engine, 500), params(vxPatternDistanceMetricNorm(2.0), 2));
    classifier.trainIncremental(*test::pattern({3.0, 3.0, 3.0}), -1);
    EXPECT_ERROR(test::run(classifier, {3.0, 3.0, 3.0}), vxClassifierDefs::BadLabel,
                 L"Category labels must be >= 0");
    EXPECT_NO_THROW(test::run(classifier, {-3.0, -3.0, -3.0}));
}

} // namespace
