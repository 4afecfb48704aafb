#include "clss/clastool/knn/cell_sample.h"

#include "clss/clastool/knn/compact_patterns.h"

#include <algorithm>
#include <array>
#include <limits>

namespace detail {

namespace {

constexpr std::size_t numCells = CompactPatterns::numCells;
constexpr std::size_t numBounds = numCells - 1;
constexpr double infinity = std::numeric_limits<double>::infinity();

/// Measurements that are sorted together: an exchange costs little more for several than for one.
constexpr std::size_t lanes = 4;
using Lanes = std::array<double, lanes>;

void order(Lanes& a, Lanes& b) noexcept {
    Lanes less;
    Lanes greater;
    for (std::size_t i = 0; i < lanes; ++i) {
        less[i] = b[i] < a[i] ? b[i] : a[i];
    }
    for (std::size_t i = 0; i < lanes; ++i) {
        greater[i] = a[i] < b[i] ? b[i] : a[i];
    }
    a = less;
    b = greater;
}

/// Sorts each lane by Batcher's merging exchange: which places are compared depends on no value, so the lanes
/// need not agree and no branch is guessed wrong. `size` is a power of 2.
void sortLanes(Lanes* values, std::size_t size) noexcept {
    for (std::size_t merged = 1; merged < size; merged *= 2) {
        for (std::size_t gap = merged; gap > 0; gap /= 2) {
            for (std::size_t first = gap % merged; first + gap < size; first += 2 * gap) {
                for (std::size_t a = first; a < first + gap; ++a) {
                    // Only within what is merged in this round.
                    if ((a ^ (a + gap)) < 2 * merged) {
                        order(values[a], values[a + gap]);
                    }
                }
            }
        }
    }
}

/// The greatest values of all cells but the last that is needed; infinite from there on. Each is a value of
/// the sample below its largest, so that no cell is empty.
void chooseBounds(const double* sorted, std::size_t count, double* bounds) {
    std::array<double, numCells> kinds;
    std::size_t numKinds = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (i == 0 || sorted[i - 1] < sorted[i]) {
            if (numKinds < numCells) {
                kinds[numKinds] = sorted[i];
            }
            ++numKinds;
        }
    }
    std::size_t made = 0;
    if (numKinds <= numCells) {
        made = numKinds - 1;
        std::copy_n(kinds.begin(), made, bounds);
    } else {
        for (std::size_t i = 1; i <= numBounds; ++i) {
            const double bound = sorted[i * count / numCells];
            if (bound < sorted[count - 1] && (made == 0 || bounds[made - 1] < bound)) {
                bounds[made++] = bound;
            }
        }
    }
    std::fill(bounds + made, bounds + numCells, infinity);
}

void makeCellsOfOne(const double* sorted, std::size_t count, double* lows) {
    double* highs = lows + numCells;
    chooseBounds(sorted, count, highs);
    std::fill_n(lows, numCells, infinity);
    lows[0] = sorted[0];
    for (std::size_t cell = 0; highs[cell] < infinity; ++cell) {
        lows[cell + 1] = *std::upper_bound(sorted, sorted + count, highs[cell]);
    }
}

} // namespace

std::size_t cellSampleOf(std::size_t count) noexcept {
    return std::min(count, count < 2 * cellSampleSize ? cellSampleSize / 2 : cellSampleSize);
}

void makeCells(const double* const* rows, std::size_t count, std::size_t width, double* cells) {
    static_assert((cellSampleSize & (cellSampleSize - 1)) == 0, "is sorted as a power of 2");
    const std::size_t size = count <= cellSampleSize / 2 ? cellSampleSize / 2 : cellSampleSize;
    std::array<Lanes, cellSampleSize> values;
    std::array<double, cellSampleSize> sorted;
    for (std::size_t first = 0; first < width; first += lanes) {
        const std::size_t some = std::min(lanes, width - first);
        for (std::size_t i = 0; i < size; ++i) {
            values[i].fill(infinity); // stays behind all that is taken
        }
        for (std::size_t i = 0; i < count; ++i) {
            std::copy_n(rows[i] + first, some, values[i].begin());
        }
        sortLanes(values.data(), size);
        for (std::size_t j = 0; j < some; ++j) {
            for (std::size_t i = 0; i < count; ++i) {
                sorted[i] = values[i][j];
            }
            makeCellsOfOne(sorted.data(), count, cells + (first + j) * CompactPatterns::cellDoubles);
        }
    }
}

} // namespace detail
