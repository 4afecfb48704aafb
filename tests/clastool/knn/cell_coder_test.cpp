#include "clss/clastool/knn/cell_coder.h"

#include "clss/clastool/knn/cell_sample.h"
#include "tests/clastool/knn/compact_fixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <random>
#include <set>

namespace {

using detail::CellCoder;
using detail::CompactPatterns;
using test::Measurements;

constexpr std::size_t blockSize = CompactPatterns::blockSize;
constexpr std::size_t numCells = CompactPatterns::numCells;
constexpr double infinity = std::numeric_limits<double>::infinity();

using Ends = std::array<double, CompactPatterns::cellDoubles>;

std::vector<const double*> rowsOf(const std::vector<Measurements>& patterns) {
    std::vector<const double*> rows;
    for (const Measurements& measurements : patterns) {
        rows.push_back(measurements.data());
    }
    return rows;
}

std::vector<Ends> cellsOf(const std::vector<Measurements>& patterns) {
    std::vector<Ends> cells(patterns.front().size());
    detail::makeCells(rowsOf(patterns).data(), patterns.size(), cells.size(), cells.front().data());
    return cells;
}

/// The cell of a value, found by looking at one bound after the other.
std::size_t plainCell(double value, const Ends& ends) {
    return static_cast<std::size_t>(std::count_if(ends.begin() + numCells, ends.end() - 1,
                                                  [value](double high) { return high < value; }));
}

class CellCoders : public ::testing::TestWithParam<const CellCoder*> {
protected:
    void SetUp() override {
        if (GetParam() == nullptr) {
            GTEST_SKIP() << "this processor does not know the instructions";
        }
    }
};

constexpr std::array<const char*, 3> names{"Portable", "Avx2", "Avx512"};

INSTANTIATE_TEST_SUITE_P(All, CellCoders,
                         ::testing::Values(&detail::portableCellCoder(), detail::avx2CellCoder(),
                                           detail::avx512CellCoder()),
                         [](const auto& test) { return names[test.index]; });

TEST_P(CellCoders, FindTheCellsThatAPlainCountFinds) {
    std::mt19937_64 engine(1);
    for (const test::Data& data : test::kindsOfData()) {
        SCOPED_TRACE(data.name);
        for (const std::size_t count : {1u, 3u, 40u, 256u}) {
            const Ends ends = cellsOf(test::draw(data, engine, count, 1)).front();
            Measurements values = test::draw(data, engine, blockSize);
            std::copy(ends.begin() + numCells, ends.end() - 1, values.begin()); // the ends themselves
            std::replace(values.begin(), values.end(), infinity, values.back());
            std::array<std::uint8_t, blockSize> cells;
            double greatest = -infinity;
            const bool areWithin = GetParam()->findCells(values.data(), ends.data(), cells.data(), greatest);
            EXPECT_EQ(greatest, *std::max_element(values.begin(), values.end()));
            bool expected = true;
            for (std::size_t i = 0; i < blockSize; ++i) {
                ASSERT_EQ(cells[i], plainCell(values[i], ends)) << values[i];
                expected = expected && ends[cells[i]] <= values[i];
            }
            EXPECT_EQ(areWithin, expected);
        }
    }
}

TEST_P(CellCoders, NoticeOneValueBelowItsCellWhereverItStands) {
    Ends ends;
    ends.fill(infinity);
    for (std::size_t cell = 0; cell < numCells; ++cell) {
        ends[cell] = static_cast<double>(cell) + 0.5;
        ends[numCells + cell] = static_cast<double>(cell) + 1.0;
    }
    for (std::size_t cell = 0; cell < numCells; ++cell) {
        for (std::size_t place = 0; place < blockSize; ++place) {
            Measurements values(blockSize, ends[numCells - 1]);
            std::array<std::uint8_t, blockSize> cells;
            double greatest = 100.0;
            values[place] = ends[cell];
            EXPECT_TRUE(GetParam()->findCells(values.data(), ends.data(), cells.data(), greatest));
            values[place] = static_cast<double>(cell) + 0.25;
            EXPECT_FALSE(GetParam()->findCells(values.data(), ends.data(), cells.data(), greatest));
            EXPECT_EQ(cells[place], cell);
            EXPECT_EQ(greatest, 100.0); // was greater before
        }
    }
}

TEST_P(CellCoders, TurnRowsIntoColumns) {
    std::mt19937_64 engine(2);
    const std::vector<Measurements> patterns = test::draw(test::kindsOfData().front(), engine, blockSize, 23);
    for (const std::size_t first : {0u, 3u, 16u}) {
        for (std::size_t last = first; last <= 23; ++last) {
            Measurements columns((last - first) * blockSize + 1, 7.0);
            EXPECT_TRUE(GetParam()->gather(rowsOf(patterns).data(), first, last, columns.data()));
            EXPECT_EQ(columns.back(), 7.0); // behind what is asked for
            for (std::size_t j = first; j < last; ++j) {
                for (std::size_t i = 0; i < blockSize; ++i) {
                    ASSERT_EQ(columns[(j - first) * blockSize + i], patterns[i][j]);
                }
            }
        }
    }
}

TEST_P(CellCoders, RefuseOneOddValueWhereverItStands) {
    constexpr std::size_t width = 7;
    std::vector<Measurements> patterns(blockSize, Measurements(width, -CompactPatterns::largest));
    Measurements columns(width * blockSize);
    for (const double odd : {std::numeric_limits<double>::quiet_NaN(), infinity, -infinity,
                             1.0000001 * CompactPatterns::largest, -1.0000001 * CompactPatterns::largest}) {
        for (Measurements& pattern : patterns) {
            for (double& value : pattern) {
                ASSERT_TRUE(GetParam()->gather(rowsOf(patterns).data(), 0, width, columns.data()));
                value = odd;
                EXPECT_FALSE(GetParam()->gather(rowsOf(patterns).data(), 0, width, columns.data())) << odd;
                value = CompactPatterns::largest;
            }
        }
    }
}

TEST(CellSample, MakesCellsThatBeginAndEndWithValuesOfTheSample) {
    std::mt19937_64 engine(3);
    for (const test::Data& data : test::kindsOfData()) {
        SCOPED_TRACE(data.name);
        for (const std::size_t count : {1u, 2u, 17u, 127u, 128u, 129u, 200u, 256u}) {
            const std::vector<Measurements> patterns = test::draw(data, engine, count, 6);
            const std::vector<Ends> cells = cellsOf(patterns);
            for (std::size_t j = 0; j < cells.size(); ++j) {
                const Ends& ends = cells[j];
                std::array<std::size_t, numCells> members{};
                std::array<double, numCells> least;
                least.fill(infinity);
                for (const Measurements& measurements : patterns) {
                    const std::size_t cell = plainCell(measurements[j], ends);
                    ++members[cell];
                    least[cell] = std::min(least[cell], measurements[j]);
                    ASSERT_LE(measurements[j], ends[numCells + cell]);
                }
                for (std::size_t cell = 0; cell < numCells; ++cell) {
                    EXPECT_EQ(ends[cell], least[cell]) << "cell " << cell;
                    EXPECT_EQ(members[cell] == 0, ends[cell] == infinity);
                }
            }
        }
    }
}

TEST(CellSample, MakesCellsOfLikeShares) {
    std::vector<Measurements> patterns;
    for (std::size_t i = 0; i < 256; ++i) {
        const double shuffled = static_cast<double>(i * 77 % 256);
        patterns.push_back({shuffled, -shuffled, shuffled < 200.0 ? 0.0 : shuffled});
    }
    const std::vector<Ends> cells = cellsOf(patterns);
    for (std::size_t cell = 0; cell + 1 < numCells; ++cell) {
        EXPECT_EQ(cells[0][numCells + cell], 16.0 * static_cast<double>(cell + 1));
        EXPECT_EQ(cells[1][numCells + cell], -255.0 + 16.0 * static_cast<double>(cell + 1));
    }
    EXPECT_EQ(cells[2][numCells], 0.0); // the value that fills many shares has one cell
    EXPECT_EQ(cells[2][1], 200.0);
}

TEST(CellSample, GivesUpTo16ValuesACellEach) {
    std::mt19937_64 engine(4);
    for (std::size_t numKinds = 1; numKinds <= 17; ++numKinds) {
        std::vector<Measurements> patterns;
        for (std::size_t i = 0; i < 200; ++i) {
            // The first ones make sure that every kind is there.
            const std::size_t kind = i < numKinds ? i : std::min(engine() % 40, numKinds - 1);
            patterns.push_back({static_cast<double>(kind) * 0.7});
        }
        std::shuffle(patterns.begin(), patterns.end(), engine);
        const Ends ends = cellsOf(patterns).front();
        std::set<std::size_t> cells;
        for (const Measurements& measurements : patterns) {
            cells.insert(plainCell(measurements.front(), ends));
        }
        EXPECT_EQ(cells.size() == numKinds, numKinds <= 16) << numKinds;
    }
}

TEST(CellSample, TakesNoMoreThanThereAre) {
    for (const std::size_t count : {1u, 127u, 128u, 129u, 193u, 511u, 512u, 100000u}) {
        const std::size_t taken = detail::cellSampleOf(count);
        EXPECT_LE(taken, std::min(count, detail::cellSampleSize));
        EXPECT_GE(taken, std::min<std::size_t>(count, 128));
    }
}

} // namespace
