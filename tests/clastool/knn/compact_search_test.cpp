#include "clss/clastool/knn/compact_search.h"

#include "clss/clastool/knn/nearest_neighbors.h"
#include "tests/clastool/knn/compact_fixtures.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/pattern_distance_metric_norm.h>
#include <vxclassifier/platform/attention.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <random>

namespace {

using detail::CellFilter;
using detail::CompactPatterns;
using detail::CompactSearch;
using test::Measurements;
using Store = vxClassifierDataProviderMemory;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

std::vector<const CellFilter*> allFilters() {
    std::vector<const CellFilter*> filters{&detail::portableCellFilter()};
    if (detail::avx2CellFilter() != nullptr) {
        filters.push_back(detail::avx2CellFilter());
    }
    return filters;
}

std::vector<long> sorted(std::vector<long> indices) {
    std::sort(indices.begin(), indices.end());
    return indices;
}

/// What the neighbours are by definition.
std::vector<long> scanned(const vxFeaturePattern& query, const Store& store, double order, long k) {
    detail::NeighborList list(k, store.numPatterns());
    const vxPtrHandle_const<vxPatternDistanceMetric> metric(new vxPatternDistanceMetricNorm(order));
    detail::offerStoredPatterns(query, store, metric, list);
    return sorted(list.indices());
}

/// A store, what describes it, and searches in it.
class Searched {
public:
    explicit Searched(const std::vector<Measurements>& patterns)
        : store_(test::storeOf(patterns)), compact_(CompactPatterns::describe(store_)) {}

    const Store& store() const { return store_; }

    std::vector<long> find(const vxFeaturePattern& query, double order, long k,
                           const CellFilter& filter = detail::bestCellFilter()) const {
        const vxPatternDistanceMetricNorm metric(order);
        if (!CompactSearch::isPossible(query, store_, compact_.get(), &metric)) {
            ADD_FAILURE() << "the search is not possible";
            return {};
        }
        CompactSearch::makeCallersChecks(store_);
        return sorted(CompactSearch(query, store_, *compact_, metric, k, filter).neighbors());
    }

    /// Expects all filters to find what the plain scan finds.
    void compare(const Measurements& measurements, double order, long k) const {
        const test::PatternHandle query = test::pattern(measurements);
        const std::vector<long> expected = scanned(*query, store_, order, k);
        for (const CellFilter* filter : allFilters()) {
            EXPECT_EQ(find(*query, order, k, *filter), expected) << "order " << order << ", k = " << k;
        }
    }

private:
    Store store_;
    std::unique_ptr<CompactPatterns> compact_;
};

void compareAtRandom(const test::Data& data, std::size_t count, std::size_t width,
                     const std::vector<long>& neighbors) {
    SCOPED_TRACE(data.name + ", " + std::to_string(count) + " patterns of " + std::to_string(width));
    std::mt19937_64 engine(count * 1000 + width);
    const std::vector<Measurements> patterns = test::draw(data, engine, count, width);
    const Searched searched(patterns);
    for (const long k : neighbors) {
        for (const double order : {1.0, 2.0}) {
            searched.compare(test::draw(data, engine, width), order, k);
            searched.compare(patterns[engine() % count], order, k);
            searched.compare(test::draw(test::kindsOfData().front(), engine, width), order, k);
        }
    }
}

TEST(CompactSearch, FindsWhatThePlainScanFindsWhateverTheDataAre) {
    for (const test::Data& data : test::kindsOfData()) {
        for (const std::size_t width : {1u, 3u, 4u, 5u, 15u, 16u, 17u, 25u}) {
            compareAtRandom(data, 500, width, {1, 5});
        }
        compareAtRandom(data, 2500, 4, {5});
        compareAtRandom(data, 200, 64, {5});
        compareAtRandom(data, 195, 257, {5});
    }
}

TEST(CompactSearch, FindsWhatThePlainScanFindsWithAnyNumberOfPatterns) {
    const test::Data anywhere = test::kindsOfData().front();
    for (const std::size_t count : {1u,   2u,   4u,   5u,   6u,   31u,  32u,  33u,   63u,   64u,   65u,
                                    191u, 192u, 193u, 255u, 256u, 257u, 320u, 1023u, 1024u, 1025u, 1100u}) {
        compareAtRandom(anywhere, count, 3, {1, 2, 5, 32, 33, 64, 192, 255, 256, 1000, 2000});
    }
}

TEST(CompactSearch, FindsWhatThePlainScanFindsAmongPatternsThatAreAllEquallyFar) {
    std::mt19937_64 engine(1);
    for (const std::size_t width : {1u, 2u, 7u, 16u, 40u}) {
        std::vector<Measurements> patterns;
        for (std::size_t i = 0; i < 3000; ++i) {
            patterns.emplace_back(width, 0.0);
            patterns.back()[engine() % width] = engine() % 2 == 0 ? 1.0 : -1.0;
        }
        for (const std::size_t nearer : {300u, 301u, 2999u}) {
            patterns[nearer].assign(width, 1.0 / static_cast<double>(width + 1));
        }
        const Searched searched(patterns);
        for (const long k : {1L, 2L, 5L, 100L}) {
            searched.compare(Measurements(width, 0.0), 1.0, k);
            searched.compare(Measurements(width, 0.0), 2.0, k);
        }
    }
}

/// So few patterns have no codes, and the search among them ends with the K-th that equals the query.
TEST(CompactSearch, FindsTheFirstOfFewPatternsThatAllEqualTheQuery) {
    const Searched searched(std::vector<Measurements>(190, {1.0, 2.0}));
    for (const long k : {1L, 2L, 5L}) {
        std::vector<long> first(static_cast<std::size_t>(k));
        std::iota(first.begin(), first.end(), 0L);
        for (const CellFilter* filter : allFilters()) {
            EXPECT_EQ(searched.find(*test::pattern({1.0, 2.0}), 2.0, k, *filter), first);
        }
        searched.compare({1.0, 2.0}, 1.0, k);
    }
}

/// Differences whose powers, and sums of powers, a plain product gets wrong by a bit now and then: nearly
/// tied neighbours are told apart by the published distance only.
TEST(CompactSearch, LeavesNearTiesToThePublishedDistance) {
    std::mt19937_64 engine(2);
    std::vector<Measurements> patterns;
    for (std::size_t i = 0; i < 4000; ++i) {
        Measurements measurements{0.3, 0.7, 0.9, 0.1, 0.6};
        std::shuffle(measurements.begin(), measurements.end(), engine);
        measurements[engine() % 5] *= 1.0 + static_cast<double>(engine() % 5) * 0x1p-52;
        patterns.push_back(measurements);
    }
    const Searched searched(patterns);
    for (const long k : {1L, 2L, 3L, 10L, 50L}) {
        searched.compare(Measurements(5, 0.0), 1.0, k);
        searched.compare(Measurements(5, 0.0), 2.0, k);
        searched.compare(Measurements(5, 0.05), 2.0, k);
    }
}

TEST(CompactSearch, FindsNeighborsThatComeLateAndNeighborsThatComeFirst) {
    for (const bool nearLast : {false, true}) {
        std::vector<Measurements> patterns;
        for (std::size_t i = 0; i < 5000; ++i) {
            const double distance = static_cast<double>(nearLast ? 5000 - i : i);
            patterns.push_back({distance, 1.0, 2.0});
        }
        const Searched searched(patterns);
        for (const long k : {1L, 5L, 40L, 3000L}) {
            searched.compare({0.0, 1.0, 2.0}, 2.0, k);
            searched.compare({2500.2, 1.0, 2.0}, 2.0, k);
        }
    }
}

constexpr std::size_t roomOfSearch = 64; // blocks that are selected from at once

/// The most blocks that a search had selected from at once.
std::size_t mostBlocks = 0;

void countBlocks(const std::uint8_t* codes, std::size_t width, const std::uint8_t* tables,
                 std::uint16_t units, std::size_t blocks, std::uint64_t* selected) {
    mostBlocks = std::max(mostBlocks, blocks);
    // A search that asks for more is to fail the test, and not to overwrite what lies behind its room.
    detail::portableCellFilter().select(codes, width, tables, units, std::min(blocks, roomOfSearch),
                                        selected);
}

TEST(CompactSearch, SelectsFromAsManyBlocksAtOnceAsItHasRoomForAndNeverFromMore) {
    CellFilter counting = detail::portableCellFilter();
    counting.select = &countBlocks;
    const auto mostOf = [&](std::size_t count, std::size_t width) {
        std::mt19937_64 engine(width);
        const test::Data anywhere = test::kindsOfData().front();
        const Searched searched(test::draw(anywhere, engine, count, width));
        const test::PatternHandle query = test::pattern(test::draw(anywhere, engine, width));
        mostBlocks = 0;
        EXPECT_EQ(searched.find(*query, 2.0, 5, counting), scanned(*query, searched.store(), 2.0, 5));
        return mostBlocks;
    };
    for (const std::size_t width : {1u, 2u, 4u, 8u}) {
        EXPECT_EQ(mostOf(roomOfSearch * CompactPatterns::blockSize, width), roomOfSearch);
        EXPECT_EQ(mostOf(100 * CompactPatterns::blockSize, width), roomOfSearch);
    }
    EXPECT_EQ(mostOf(6 * CompactPatterns::blockSize, 1), 6U);
    for (const std::size_t width : {9u, 513u}) {
        const std::size_t most = mostOf(10 * CompactPatterns::blockSize, width);
        EXPECT_GT(most, 0U);
        EXPECT_LE(most, 10U);
    }
}

TEST(CompactSearch, IsPossibleForOrders1And2OfTheNormItselfOnly) {
    struct Derived : vxPatternDistanceMetricNorm {
        using vxPatternDistanceMetricNorm::vxPatternDistanceMetricNorm;
    };
    const Store store = test::line({1.0, 2.0});
    const auto compact = CompactPatterns::describe(store);
    const test::PatternHandle query = test::pattern({1.0});
    const auto isPossible = [&](const vxPatternDistanceMetric* metric) {
        return CompactSearch::isPossible(*query, store, compact.get(), metric);
    };
    for (const double order : {1.0, 2.0, 3.0, 0.5, 2.5, infinity}) {
        const vxPatternDistanceMetricNorm norm(order);
        EXPECT_EQ(isPossible(&norm), order == 1.0 || order == 2.0) << order;
    }
    const Derived derived(2.0);
    EXPECT_FALSE(isPossible(&derived));
    const test::ScriptedMetric scripted;
    EXPECT_FALSE(isPossible(&scripted));
    EXPECT_FALSE(isPossible(nullptr));
}

TEST(CompactSearch, IsPossibleForQueriesWithoutOddValuesOnly) {
    const Store store = test::line({1.0, 2.0});
    const auto compact = CompactPatterns::describe(store);
    const vxPatternDistanceMetricNorm norm(2.0);
    const auto isPossible = [&](const test::PatternHandle& query) {
        return CompactSearch::isPossible(*query, store, compact.get(), &norm);
    };
    EXPECT_TRUE(isPossible(test::pattern({1.0})));
    EXPECT_TRUE(isPossible(test::pattern({-CompactPatterns::largest})));
    EXPECT_FALSE(isPossible(test::pattern({1.1 * CompactPatterns::largest})));
    EXPECT_FALSE(isPossible(test::pattern({notANumber})));
    EXPECT_FALSE(isPossible(test::pattern({-infinity})));
    EXPECT_FALSE(isPossible(test::pattern({1.0}, {0})));
    EXPECT_FALSE(isPossible(test::pattern({1.0, 1.0})));
    EXPECT_FALSE(isPossible(test::pattern({})));
    EXPECT_FALSE(CompactSearch::isPossible(*test::pattern({1.0}), store, nullptr, &norm));
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

std::vector<Measurements> somePatterns(std::size_t count, std::size_t width) {
    std::mt19937_64 engine(3);
    return test::draw(test::kindsOfData().front(), engine, count, width);
}

TEST(CompactSearch, MakesTheCallersCheckOncePerStoredPattern) {
    for (const long count : {3L, 100L, 1000L}) {
        const Searched searched(somePatterns(static_cast<std::size_t>(count), 2));
        for (const long k : {2L, 5000L}) {
            Polls polls;
            const vxAttentionScope scope(&Polls::check, &polls);
            searched.find(*test::pattern({0.5, 0.5}), 2.0, k);
            EXPECT_EQ(polls.made, count);
        }
    }
}

TEST(CompactSearch, MakesTheCallersCheckOncePerStoredPatternAmongTies) {
    const Searched searched(std::vector<Measurements>(2000, {1.0, 2.0}));
    Polls polls;
    const vxAttentionScope scope(&Polls::check, &polls);
    searched.find(*test::pattern({0.5, 0.5}), 2.0, 3);
    EXPECT_EQ(polls.made, 2000);
}

TEST(CompactSearch, EndsWithTheCallersCheckThatFails) {
    const Searched searched(somePatterns(300, 2));
    for (const long allowed : {0L, 1L, 64L, 299L}) {
        Polls polls;
        polls.allowed = allowed;
        const vxAttentionScope scope(&Polls::check, &polls);
        EXPECT_ERROR_CLASS(searched.find(*test::pattern({0.5, 0.5}), 2.0, 2), vxInterrupted);
        EXPECT_EQ(polls.made, allowed + 1);
    }
}

TEST(CompactSearch, EndsWithACancelFlagThatIsSetBeforehand) {
    for (const std::size_t count : {3u, 100u, 1000u}) {
        const Searched searched(somePatterns(count, 2));
        for (const long k : {2L, 5000L}) {
            vxCancelFlag flag;
            const vxAttentionScope scope(flag);
            EXPECT_NO_THROW(searched.find(*test::pattern({0.5, 0.5}), 2.0, k));
            flag.set();
            EXPECT_ERROR_CLASS(searched.find(*test::pattern({0.5, 0.5}), 2.0, k), vxInterrupted);
        }
    }
}

} // namespace
