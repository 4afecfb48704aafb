#include "clss/clastool/knn/nearest_neighbors.h"

#include "tests/clastool/knn/knn_fixtures.h"
#include "tests/support/expect_error.h"
#include "tests/support/slow_neighbors.h"

#include <vxclassifier/pattern_distance_metric_norm.h>
#include <vxclassifier/platform/attention.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace {

using test::SlowNeighbors;
using test::slowNeighbors;
using MetricHandle = vxPtrHandle_const<vxPatternDistanceMetric>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

detail::NeighborList search(const std::vector<double>& query, const vxClassifierDataProviderMemory& store,
                            const MetricHandle& metric, long k) {
    detail::NeighborList list(k, store.numPatterns());
    detail::offerStoredPatterns(*test::pattern(query), store, metric, list);
    return list;
}

std::vector<std::uint64_t> bits(const std::vector<double>& values) {
    std::vector<std::uint64_t> result;
    for (const double value : values) {
        result.push_back(test::bits(value));
    }
    return result;
}

void expectSame(detail::NeighborList found, const SlowNeighbors& expected) {
    EXPECT_EQ(found.indices(), expected.indices);
    EXPECT_EQ(bits(found.distances()), bits(expected.distances));
}

/// Calls `action` with every sequence of `length` of the given values.
template <class Action>
void forEverySequence(const std::vector<double>& values, std::size_t length, Action action) {
    std::vector<std::size_t> digits(length, 0);
    std::vector<double> sequence(length);
    for (;;) {
        for (std::size_t i = 0; i < length; ++i) {
            sequence[i] = values[digits[i]];
        }
        action(sequence);
        std::size_t i = 0;
        while (i < length && ++digits[i] == values.size()) {
            digits[i++] = 0;
        }
        if (i == length) {
            return;
        }
    }
}

TEST(NearestNeighbors, AgreeWithTheSlowSearchForEveryPatternOfTies) {
    const MetricHandle manhattan(new vxPatternDistanceMetricNorm(1.0));
    forEverySequence({0.0, 1.0, 2.0}, 5, [&](const std::vector<double>& distances) {
        std::vector<double> positions = distances; // on both sides of the query
        for (std::size_t i = 0; i < positions.size(); i += 2) {
            positions[i] = -positions[i];
        }
        const vxClassifierDataProviderMemory store = test::line(positions);
        for (long k = 1; k <= 6; ++k) {
            SCOPED_TRACE(::testing::PrintToString(distances) + ", k = " + std::to_string(k));
            expectSame(search({0.0}, store, manhattan, k), slowNeighbors(distances, k));
        }
    });
}

TEST(NearestNeighbors, AgreeWithTheSlowSearchForEverySequenceOfOddDistances) {
    const vxClassifierDataProviderMemory store = test::indexed(5);
    forEverySequence({-infinity, 1.0, infinity, notANumber}, 5, [&](const std::vector<double>& distances) {
        const MetricHandle metric(new test::ScriptedMetric(test::lookUp(distances)));
        for (long k = 1; k <= 6; ++k) {
            SCOPED_TRACE(::testing::PrintToString(distances) + ", k = " + std::to_string(k));
            expectSame(search({0.0}, store, metric, k), slowNeighbors(distances, k));
        }
    });
}

/// Patterns on a coarse grid, so that many distances are equal, or anywhere.
std::vector<std::vector<double>> randomPatterns(std::mt19937_64& engine, std::size_t count, std::size_t width,
                                                bool onGrid) {
    std::vector<std::vector<double>> patterns(count, std::vector<double>(width));
    for (std::vector<double>& measurements : patterns) {
        for (double& value : measurements) {
            value = onGrid ? static_cast<double>(engine() % 3) : static_cast<double>(engine()) / 1e18;
        }
    }
    return patterns;
}

void compareAtRandom(std::uint64_t seed, double order, std::size_t width, bool onGrid) {
    SCOPED_TRACE("seed " + std::to_string(seed) + ", order " + std::to_string(order));
    std::mt19937_64 engine(seed);
    const MetricHandle metric(new vxPatternDistanceMetricNorm(order));
    for (const std::size_t count : {1u, 2u, 7u, 60u}) {
        const std::vector<std::vector<double>> patterns = randomPatterns(engine, count, width, onGrid);
        const std::vector<double> query = randomPatterns(engine, 1, width, onGrid).front();
        vxClassifierDataProviderMemory store;
        std::vector<double> distances;
        for (const std::vector<double>& measurements : patterns) {
            store.addData(test::pattern(measurements), 0);
            distances.push_back(test::slowNorm(query, measurements, order));
        }
        for (const long k : {1L, 2L, 5L, 59L, 60L, 1000L}) {
            expectSame(search(query, store, metric, k), slowNeighbors(distances, k));
        }
    }
}

TEST(NearestNeighbors, AgreeWithTheSlowSearchAtRandom) {
    std::uint64_t seed = 1;
    for (const double order : {1.0, 2.0, 0.5, 3.0, 2.5, 40.0}) {
        for (const std::size_t width : {1u, 2u, 3u, 8u, 17u}) {
            for (const bool onGrid : {true, false}) {
                compareAtRandom(seed++, order, width, onGrid);
            }
        }
    }
}

TEST(NearestNeighbors, AreMeasuredFromTheQueryToTheStoredPattern) {
    const vxClassifierDataProviderMemory store = test::line({10.0, 20.0});
    const auto script = std::make_shared<test::MetricScript>();
    std::vector<std::vector<double>> calls;
    script->distance = [&](const vxFeaturePattern& first, const vxFeaturePattern& second) {
        calls.push_back({first.featureMeasurement(0, true), second.featureMeasurement(0, true)});
        return 1.0;
    };
    search({7.0}, store, MetricHandle(new test::ScriptedMetric(script)), 2);
    EXPECT_EQ(calls, (std::vector<std::vector<double>>{{7.0, 10.0}, {7.0, 20.0}}));
}

TEST(NearestNeighbors, NeedAMetricAsSoonAsThereIsAPattern) {
    const MetricHandle none;
    EXPECT_ERROR_CLASS(search({7.0}, test::line({1.0}), none, 1), vxBadPointer);
    EXPECT_TRUE(search({7.0}, vxClassifierDataProviderMemory(), none, 1).indices().empty());
}

TEST(NearestNeighbors, NeedEveryStoredPattern) {
    vxClassifierDataProviderMemory store;
    store.addData(test::PatternHandle(), 0);
    const MetricHandle metric(new test::ScriptedMetric);
    EXPECT_ERROR_CLASS(search({7.0}, store, metric, 1), vxBadPointer);
}

/// A check that fails from the n-th poll on.
struct Polls {
    long made = 0;
    long allowed = std::numeric_limits<long>::max();

    static long check(void* context) {
        Polls& polls = *static_cast<Polls*>(context);
        return ++polls.made > polls.allowed ? vsys_attention_cancelled : 0;
    }
};

TEST(NearestNeighbors, PollOncePerStoredPatternBeforeLookingAtIt) {
    const vxClassifierDataProviderMemory store = test::indexed(5);
    for (long allowed = 0; allowed <= 5; ++allowed) {
        const auto script = std::make_shared<test::MetricScript>();
        const MetricHandle metric(new test::ScriptedMetric(script));
        Polls polls;
        polls.allowed = allowed;
        const vxAttentionScope scope(&Polls::check, &polls);
        if (allowed < 5) {
            EXPECT_ERROR_CLASS(search({0.0}, store, metric, 2), vxInterrupted);
            EXPECT_EQ(polls.made, allowed + 1);
        } else {
            search({0.0}, store, metric, 2);
            EXPECT_EQ(polls.made, 5);
        }
        EXPECT_EQ(script->asked, allowed);
    }
}

TEST(NearestNeighbors, PollBeforeANullPatternIsMet) {
    vxClassifierDataProviderMemory store;
    store.addData(test::PatternHandle(), 0);
    Polls polls;
    polls.allowed = 0;
    const vxAttentionScope scope(&Polls::check, &polls);
    EXPECT_ERROR_CLASS(search({7.0}, store, MetricHandle(), 1), vxInterrupted);
}

/// A store that says that it grows while it is searched, up to what it holds.
struct GrowingStore : vxClassifierDataProviderMemory {
    long numPatterns() const override {
        ++asked;
        return std::min(asked, vxClassifierDataProviderMemory::numPatterns());
    }
    mutable long asked = 0;
};

TEST(NearestNeighbors, AskForTheNumberOfPatternsEachTime) {
    GrowingStore store;
    const test::PatternHandle any = test::pattern({1.0});
    store.data({any, any, any, any}, {0, 1, 2, 3});
    detail::NeighborList list(10, 0);
    detail::offerStoredPatterns(*any, store, MetricHandle(new test::ScriptedMetric), list);
    EXPECT_EQ(list.indices(), (std::vector<long>{3, 2, 1, 0}));
}

} // namespace
