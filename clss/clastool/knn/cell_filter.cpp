#include "clss/clastool/knn/cell_filter.h"

#include "clss/clastool/knn/compact_patterns.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace detail {

namespace {

constexpr std::size_t rowBytes = CompactPatterns::rowBytes;
constexpr std::size_t blockSize = CompactPatterns::blockSize;
constexpr std::size_t numCells = CompactPatterns::numCells;
static_assert(CellFilter::tableSize == numCells, "a table has an entry for each cell");

void tabulate(CheapNorm norm, const double* query, const double* cells, std::size_t width, double unitsPerSum,
              std::uint8_t* tables) {
    for (std::size_t j = 0; j < width; ++j, cells += CompactPatterns::cellDoubles) {
        for (std::size_t cell = 0; cell < numCells; ++cell) {
            const double gap = std::max({cells[cell] - query[j], query[j] - cells[numCells + cell], 0.0});
            const double least = norm == CheapNorm::manhattan ? gap : gap * gap;
            tables[j * numCells + cell] = static_cast<std::uint8_t>(std::min(least * unitsPerSum, 255.0));
        }
    }
}

std::uint8_t addUpTo255(std::uint8_t a, std::uint8_t b) noexcept {
    return static_cast<std::uint8_t>(std::min(a + b, 255));
}

/// Adds what the tables from `first` to `last` - 1 say to the block's sums.
void addTables(const std::uint8_t* block, std::size_t first, std::size_t last, const std::uint8_t* tables,
               std::uint8_t* sums) {
    for (std::size_t j = first; j < last; ++j) {
        const std::uint8_t* row = block + j * rowBytes;
        const std::uint8_t* table = tables + j * numCells;
        for (std::size_t i = 0; i < rowBytes; ++i) {
            sums[i] = addUpTo255(sums[i], table[row[i] & 15U]);
            sums[rowBytes + i] = addUpTo255(sums[rowBytes + i], table[row[i] >> 4U]);
        }
    }
}

void score(const std::uint8_t* codes, std::size_t width, std::size_t summed, const std::uint8_t* tables,
           std::size_t blocks, std::uint8_t* scores, std::uint8_t* smallest) {
    std::fill_n(scores, blocks * blockSize, std::uint8_t{0});
    std::fill_n(smallest, blockSize, std::uint8_t{255});
    for (std::size_t b = 0; b < blocks; ++b, scores += blockSize) {
        addTables(codes + b * width * rowBytes, 0, summed, tables, scores);
        for (std::size_t i = 0; i < blockSize; ++i) {
            smallest[i] = std::min(smallest[i], scores[i]);
        }
    }
}

void atMost(const std::uint8_t* scores, std::uint8_t bound, std::size_t blocks, std::uint64_t* selected) {
    for (std::size_t b = 0; b < blocks; ++b) {
        selected[b] = 0;
        for (std::size_t i = 0; i < blockSize; ++i) {
            selected[b] |= static_cast<std::uint64_t>(scores[b * blockSize + i] <= bound) << i;
        }
    }
}

std::uint64_t selectInBlock(const std::uint8_t* block, std::size_t width, const std::uint8_t* tables,
                            std::uint32_t units) {
    std::uint32_t total[blockSize] = {};
    const std::size_t step = width <= CellFilter::narrow ? width : CellFilter::groupSize;
    for (std::size_t first = 0; first < width; first += step) {
        std::uint8_t sums[blockSize] = {};
        addTables(block, first, std::min(first + step, width), tables, sums);
        for (std::size_t i = 0; i < blockSize; ++i) {
            total[i] += sums[i];
        }
    }
    std::uint64_t selected = 0;
    for (std::size_t i = 0; i < blockSize; ++i) {
        selected |= static_cast<std::uint64_t>(total[i] < units) << i;
    }
    return selected;
}

void select(const std::uint8_t* codes, std::size_t width, const std::uint8_t* tables, std::uint16_t units,
            std::size_t blocks, std::uint64_t* selected) {
    for (std::size_t b = 0; b < blocks; ++b) {
        selected[b] = selectInBlock(codes + b * width * rowBytes, width, tables, units);
    }
}

struct Size {
    static double of(double difference) noexcept { return std::fabs(difference); }
};

struct Square {
    static double of(double difference) noexcept { return difference * difference; }
};

/// Several sums side by side, since each addition waits for the one before.
template <class Term>
double sumOf(const double* a, const double* b, std::size_t width) {
    constexpr std::size_t parts = 4;
    std::array<double, parts> sums{};
    std::size_t i = 0;
    for (; i + parts <= width; i += parts) {
        for (std::size_t part = 0; part < parts; ++part) {
            sums[part] += Term::of(a[i + part] - b[i + part]);
        }
    }
    for (; i < width; ++i) {
        sums[0] += Term::of(a[i] - b[i]);
    }
    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

double sum(CheapNorm norm, const double* a, const double* b, std::size_t width) {
    return norm == CheapNorm::manhattan ? sumOf<Size>(a, b, width) : sumOf<Square>(a, b, width);
}

constexpr CellFilter portable{&tabulate, &score, &atMost, &select, &sum};

} // namespace

std::uint16_t CellFilter::unitsFor(std::size_t width) noexcept {
    if (width <= narrow) {
        return 255;
    }
    // Half of what a group can say, so that a pattern which is far in few measurements is found out as well.
    const std::size_t groups = (width + groupSize - 1) / groupSize;
    return static_cast<std::uint16_t>(std::min<std::size_t>(128 * groups, 32768));
}

const CellFilter& portableCellFilter() noexcept {
    return portable;
}

const CellFilter& bestCellFilter() noexcept {
    static const CellFilter& best = avx2CellFilter() != nullptr ? *avx2CellFilter() : portable;
    return best;
}

} // namespace detail
