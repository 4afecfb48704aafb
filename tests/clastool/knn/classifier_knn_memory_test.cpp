// What makes a classifier quick takes memory of its own. Where that is short it is left out and not missed.

#include "tests/clastool/knn/knn_fixtures.h"
#include "tests/support/failing_allocation.h"

#include <vxclassifier/pattern_distance_metric_norm.h>

#include <gtest/gtest.h>

#include <new>
#include <random>

namespace {

using test::OpenKNN;
using Store = vxClassifierDataProviderMemory;
using Results = std::vector<vxClassifierResult>;

std::vector<double> drawn(std::mt19937_64& engine) {
    std::vector<double> measurements(3);
    for (double& value : measurements) {
        value = static_cast<double>(engine() % 1000) * 0.001;
    }
    return measurements;
}

Store randomStore(long count) {
    std::mt19937_64 engine(1);
    Store store;
    for (long i = 0; i < count; ++i) {
        store.addData(test::pattern(drawn(engine)), static_cast<long>(engine() % 50));
    }
    return store;
}

/// Of queries anywhere, and of one next to the pattern that is trained below.
Results resultsOf(const OpenKNN& classifier) {
    std::mt19937_64 engine(2);
    Results results{test::run(classifier, {2.9, 3.0, 3.1})};
    for (int i = 0; i < 10; ++i) {
        results.push_back(test::run(classifier, drawn(engine)));
    }
    return results;
}

enum class Outcome { refused, trainedAllTheSame, trainedWithoutFailure };

Outcome trainWithFailure(OpenKNN& classifier, const vxFeaturePattern& pattern, long number) {
    try {
        const test::FailingAllocation failing(number);
        classifier.trainIncremental(pattern, 60);
        return test::FailingAllocation::happened() ? Outcome::trainedAllTheSame
                                                   : Outcome::trainedWithoutFailure;
    } catch (const std::bad_alloc&) {
        return Outcome::refused;
    }
}

/// Fails each allocation of training one pattern more than `count`. Expects the pattern to be trained, or an
/// exception and all as before; returns how many failures were of the first kind.
long failuresThatDoNotShow(long count) {
    const vxClassifierTrainParamsKNN params(3, vxPatternDistanceMetricNorm(2.0), vxClassifierCosts(1.0));
    const vxFeaturePattern pattern({3.0, 3.0, 3.0}, {});
    const OpenKNN before = test::trained(randomStore(count), params);
    OpenKNN after = before;
    after.trainIncremental(pattern, 60);
    const Results resultsBefore = resultsOf(before);
    const Results resultsAfter = resultsOf(after);
    EXPECT_NE(resultsBefore, resultsAfter);
    long quiet = 0;
    for (long number = 1;; ++number) {
        SCOPED_TRACE(number);
        const long held = test::liveAllocations();
        Outcome outcome = Outcome::refused;
        {
            OpenKNN classifier = before;
            outcome = trainWithFailure(classifier, pattern, number);
            EXPECT_EQ(classifier, outcome == Outcome::refused ? before : after);
            EXPECT_EQ(resultsOf(classifier), outcome == Outcome::refused ? resultsBefore : resultsAfter);
        }
        EXPECT_EQ(test::liveAllocations(), held);
        if (outcome == Outcome::trainedWithoutFailure) {
            return quiet;
        }
        quiet += outcome == Outcome::trainedAllTheSame ? 1 : 0;
    }
}

TEST(KNNMemory, AFailureThatOnlySlowsAClassifierDownDoesNotShow) {
    EXPECT_EQ(failuresThatDoNotShow(100), 0);
    EXPECT_GT(failuresThatDoNotShow(192), 1); // the first codes
    EXPECT_EQ(failuresThatDoNotShow(250), 0);
    EXPECT_EQ(failuresThatDoNotShow(256), 1); // the codes of a further block
}

/// The same for training anew.
TEST(KNNMemory, TrainingAnewSucceedsWithoutWhatOnlyMakesItQuick) {
    const vxClassifierTrainParamsKNN params(3, vxPatternDistanceMetricNorm(2.0), vxClassifierCosts(1.0));
    const Store store = randomStore(300);
    const OpenKNN expected = test::trained(store, params);
    const Results results = resultsOf(expected);
    long quiet = 0;
    for (long number = 1;; ++number) {
        SCOPED_TRACE(number);
        OpenKNN classifier;
        bool happened = true;
        try {
            const test::FailingAllocation failing(number);
            classifier.train(store, params);
            happened = test::FailingAllocation::happened();
        } catch (const std::bad_alloc&) {
            continue; // tests/failures looks at what is left
        }
        EXPECT_EQ(classifier, expected);
        EXPECT_EQ(resultsOf(classifier), results);
        if (!happened) {
            break;
        }
        ++quiet;
    }
    EXPECT_GT(quiet, 1);
}

} // namespace
