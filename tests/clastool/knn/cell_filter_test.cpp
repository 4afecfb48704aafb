#include "clss/clastool/knn/cell_filter.h"

#include "tests/clastool/knn/compact_fixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>

namespace {

using detail::CellFilter;
using detail::CheapNorm;
using detail::CompactPatterns;

constexpr std::size_t blocks = 5;

std::vector<std::uint8_t> randomBytes(std::mt19937_64& engine, std::size_t count, std::uint64_t below) {
    std::vector<std::uint8_t> bytes(count);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(engine() % below);
    }
    return bytes;
}

/// Codes and tables as a search has them, with small or large entries.
struct Tables {
    Tables(std::size_t numMeasurements, std::uint64_t entriesBelow)
        : engine(numMeasurements + entriesBelow), width(numMeasurements),
          codes(randomBytes(engine, blocks * width * CompactPatterns::rowBytes, 256)),
          tables(randomBytes(engine, width * CellFilter::tableSize, entriesBelow)) {}

    std::uint32_t entry(std::size_t block, std::size_t place, std::size_t measurement) const {
        const std::size_t row = (block * width + measurement) * CompactPatterns::rowBytes;
        const std::uint8_t code = codes[row + place % CompactPatterns::rowBytes];
        const std::uint32_t cell = place < CompactPatterns::rowBytes ? code % 16U : code / 16U;
        return tables[measurement * CellFilter::tableSize + cell];
    }

    /// The sum of entries, at most 255.
    std::uint32_t sum(std::size_t block, std::size_t place, std::size_t first, std::size_t last) const {
        std::uint32_t total = 0;
        for (std::size_t j = first; j < last; ++j) {
            total += entry(block, place, j);
        }
        return std::min<std::uint32_t>(total, 255);
    }

    /// As the selection adds them up.
    std::uint32_t total(std::size_t block, std::size_t place) const {
        if (width <= CellFilter::narrow) {
            return sum(block, place, 0, width);
        }
        std::uint32_t result = 0;
        for (std::size_t first = 0; first < width; first += CellFilter::groupSize) {
            result += sum(block, place, first, std::min(first + CellFilter::groupSize, width));
        }
        return result;
    }

    std::mt19937_64 engine;
    std::size_t width;
    std::vector<std::uint8_t> codes;
    std::vector<std::uint8_t> tables;
};

class CellFilters : public ::testing::TestWithParam<const CellFilter*> {
protected:
    void SetUp() override {
        if (GetParam() == nullptr) {
            GTEST_SKIP() << "this processor does not know the instructions";
        }
    }
};

INSTANTIATE_TEST_SUITE_P(All, CellFilters,
                         ::testing::Values(&detail::portableCellFilter(), detail::avx2CellFilter()),
                         [](const auto& test) { return test.index == 0 ? "Portable" : "Avx2"; });

TEST_P(CellFilters, ScoreEachPatternByItsEntries) {
    for (const std::size_t width : {1u, 2u, 15u, 16u, 17u, 64u, 70u}) {
        for (const std::uint64_t below : {2u, 30u, 256u}) {
            const Tables tables(width, below);
            const std::size_t summed = std::min<std::size_t>(width, 64);
            std::vector<std::uint8_t> scores(blocks * CompactPatterns::blockSize);
            std::vector<std::uint8_t> smallest(CompactPatterns::blockSize);
            GetParam()->score(tables.codes.data(), width, summed, tables.tables.data(), blocks, scores.data(),
                              smallest.data());
            for (std::size_t place = 0; place < CompactPatterns::blockSize; ++place) {
                std::uint32_t least = 255;
                for (std::size_t block = 0; block < blocks; ++block) {
                    const std::uint32_t expected = tables.sum(block, place, 0, summed);
                    ASSERT_EQ(scores[block * CompactPatterns::blockSize + place], expected);
                    least = std::min(least, expected);
                }
                ASSERT_EQ(smallest[place], least);
            }
        }
    }
}

TEST_P(CellFilters, TellWhichScoresAreAtMostABound) {
    std::mt19937_64 engine(1);
    const std::vector<std::uint8_t> scores = randomBytes(engine, blocks * CompactPatterns::blockSize, 256);
    for (const std::uint8_t bound : {std::uint8_t{0}, std::uint8_t{77}, std::uint8_t{255}}) {
        std::vector<std::uint64_t> selected(blocks);
        GetParam()->atMost(scores.data(), bound, blocks, selected.data());
        for (std::size_t i = 0; i < scores.size(); ++i) {
            ASSERT_EQ(selected[i / 64] >> i % 64 & 1U, scores[i] <= bound ? 1U : 0U);
        }
    }
}

TEST_P(CellFilters, SelectWhatHasLessThanTheUnits) {
    for (const std::size_t width : {1u, 2u, 3u, 8u, 15u, 16u, 17u, 23u, 24u, 25u, 64u, 257u, 2500u}) {
        for (const std::uint64_t below : {2u, 12u, 20u, 33u, 60u, 256u}) {
            const Tables tables(width, below);
            const std::uint16_t units = CellFilter::unitsFor(width);
            std::vector<std::uint64_t> selected(blocks);
            GetParam()->select(tables.codes.data(), width, tables.tables.data(), units, blocks,
                               selected.data());
            for (std::size_t i = 0; i < blocks * 64; ++i) {
                ASSERT_EQ(selected[i / 64] >> i % 64 & 1U, tables.total(i / 64, i % 64) < units ? 1U : 0U)
                    << "width " << width << ", entries below " << below;
            }
        }
    }
}

TEST_P(CellFilters, SayNeverMoreThanTheSumItself) {
    std::mt19937_64 engine(4);
    for (const test::Data& data : test::kindsOfData()) {
        SCOPED_TRACE(data.name);
        const std::size_t width = 6;
        const vxClassifierDataProviderMemory store = test::storeOf(test::draw(data, engine, 300, width));
        const auto compact = CompactPatterns::describe(store);
        const test::Measurements query = test::draw(data, engine, width);
        for (const CheapNorm norm : {CheapNorm::manhattan, CheapNorm::euclidean}) {
            double largest = 1e-280;
            for (long i = 0; i < 300; ++i) {
                const auto& stored = store.featurePattern(i)->featureMeasurements(true);
                largest = std::max(largest, GetParam()->sum(norm, query.data(), stored.data(), width));
            }
            const double unitsPerSum = 200.0 / largest;
            Tables tables(width, 1);
            GetParam()->tabulate(norm, query.data(), compact->cells(), width, unitsPerSum,
                                 tables.tables.data());
            for (std::size_t i = 0; i < 300; ++i) {
                tables.codes.assign(compact->codes(0), compact->codes(compact->numBlocks()));
                const auto pattern = store.featurePattern(static_cast<long>(i));
                const double sum =
                    GetParam()->sum(norm, query.data(), pattern->featureMeasurements(true).data(), width);
                ASSERT_LE(tables.sum(i / 64, i % 64, 0, width), sum * unitsPerSum * (1.0 + 1e-12));
            }
        }
    }
}

TEST(CellFilterTables, AreTheSameForAllProcessors) {
    if (detail::avx2CellFilter() == nullptr) {
        GTEST_SKIP() << "this processor runs the portable ones only";
    }
    std::mt19937_64 engine(5);
    for (const test::Data& data : test::kindsOfData()) {
        const std::size_t width = 9;
        const auto compact = CompactPatterns::describe(test::storeOf(test::draw(data, engine, 300, width)));
        const test::Measurements query = test::draw(data, engine, width);
        for (const CheapNorm norm : {CheapNorm::manhattan, CheapNorm::euclidean}) {
            for (const double unitsPerSum : {1e-290, 1.0, 300.0, 1e284}) {
                std::vector<std::uint8_t> portable(width * CellFilter::tableSize);
                std::vector<std::uint8_t> avx2 = portable;
                detail::portableCellFilter().tabulate(norm, query.data(), compact->cells(), width,
                                                      unitsPerSum, portable.data());
                detail::avx2CellFilter()->tabulate(norm, query.data(), compact->cells(), width, unitsPerSum,
                                                   avx2.data());
                EXPECT_EQ(portable, avx2) << data.name;
            }
        }
    }
}

TEST_P(CellFilters, AddUpTheNorm) {
    for (const std::size_t width : {0u, 1u, 3u, 4u, 5u, 8u, 11u, 12u, 15u, 16u, 17u, 64u}) {
        test::Measurements a;
        test::Measurements b;
        double sizes = 0.0;
        double squares = 0.0;
        for (std::size_t i = 0; i < width; ++i) { // whole numbers: every sum is exact
            a.push_back(static_cast<double>(i * i));
            b.push_back(i % 3 == 0 ? 7.0 : 100.0);
            sizes += std::fabs(a[i] - b[i]);
            squares += (a[i] - b[i]) * (a[i] - b[i]);
        }
        EXPECT_EQ(GetParam()->sum(CheapNorm::manhattan, a.data(), b.data(), width), sizes);
        EXPECT_EQ(GetParam()->sum(CheapNorm::euclidean, a.data(), b.data(), width), squares);
    }
}

} // namespace
