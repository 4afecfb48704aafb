#ifndef CLSS_CLASTOOL_KNN_CELL_FILTER_H
#define CLSS_CLASTOOL_KNN_CELL_FILTER_H

#include "clss/clastool/knn/norm_sums.h"

#include <cstddef>
#include <cstdint>

namespace detail {

/// The inner loops of a search over compact patterns, made for one kind of processor. All kinds compute the
/// same numbers, but that sums may be added in another order.
///
/// A query has a table for each measurement: for each cell how much a value in it adds to the norm's sum at
/// least, in units of the caller's choice, rounded down, at most 255. What the tables say of a pattern,
/// summed, is therefore never more than the sum itself.
struct CellFilter {
    static constexpr std::size_t tableSize = 16;

    /// Patterns with more measurements than this are summed in groups, each up to 255, in 16 bits.
    static constexpr std::size_t narrow = 16;
    static constexpr std::size_t groupSize = 8;

    /// Fills the tables of `width` measurements from the cells of CompactPatterns. `unitsPerSum` must be
    /// finite and above 0.
    void (*tabulate)(CheapNorm norm, const double* query, const double* cells, std::size_t width,
                     double unitsPerSum, std::uint8_t* tables);

    /// For each pattern of the blocks the sum of the first `summed` tables' entries, at most 255; and for
    /// each of the 64 places in a block the smallest of these scores.
    void (*score)(const std::uint8_t* codes, std::size_t width, std::size_t summed,
                  const std::uint8_t* tables, std::size_t blocks, std::uint8_t* scores,
                  std::uint8_t* smallest);

    /// For each block a bit for each pattern, set if its score is at most `bound`.
    void (*atMost)(const std::uint8_t* scores, std::uint8_t bound, std::size_t blocks,
                   std::uint64_t* selected);

    /// For each block a bit for each pattern, set if the sum of all entries is less than `units`, which must
    /// be unitsFor(width).
    void (*select)(const std::uint8_t* codes, std::size_t width, const std::uint8_t* tables,
                   std::uint16_t units, std::size_t blocks, std::uint64_t* selected);

    /// The norm's sum of `width` measurements.
    double (*sum)(CheapNorm norm, const double* a, const double* b, std::size_t width);

    /// How many units the limit of a selection stands for.
    static std::uint16_t unitsFor(std::size_t width) noexcept;
};

/// The fastest that this processor runs.
const CellFilter& bestCellFilter() noexcept;

/// Runs everywhere.
const CellFilter& portableCellFilter() noexcept;

/// Null where the compiler or the processor does not know these instructions.
const CellFilter* avx2CellFilter() noexcept;

} // namespace detail

#endif
