#ifndef CLSS_CLASTOOL_KNN_CELL_CODER_H
#define CLSS_CLASTOOL_KNN_CELL_CODER_H

#include "clss/clastool/knn/compact_patterns.h"

#include <cstddef>
#include <cstdint>

namespace detail {

/// The inner loops of describing patterns, made for one kind of processor. All kinds find the same cells.
struct CellCoder {
    /// From the rows of a block's patterns the measurements from `first` to `last` - 1, turned: 64 values of
    /// one measurement, then those of the next. False if one is NaN or beyond CompactPatterns::largest.
    bool (*gather)(const double* const* rows, std::size_t first, std::size_t last, double* columns);

    /// The cells of 64 values of a measurement, none of them NaN, whose cells have the ends `ends` (as
    /// CompactPatterns keeps them): for each value how many of the first 15 greatest values are less. Raises
    /// `greatest` to the greatest value. Returns whether no value is below the low end of its cell.
    bool (*findCells)(const double* values, const double* ends, std::uint8_t* cells, double& greatest);
};

/// How many of a measurement's first 15 greatest values are less than the value.
inline std::size_t cellOf(double value, const double* ends) noexcept {
    const double* highs = ends + CompactPatterns::numCells;
    std::size_t cell = highs[7] < value ? 8 : 0;
    cell += highs[cell + 3] < value ? 4 : 0;
    cell += highs[cell + 1] < value ? 2 : 0;
    cell += highs[cell] < value ? 1 : 0;
    return cell;
}

/// The fastest that this processor runs.
const CellCoder& bestCellCoder() noexcept;

/// Runs everywhere.
const CellCoder& portableCellCoder() noexcept;

/// Null where the compiler or the processor does not know these instructions.
const CellCoder* avx2CellCoder() noexcept;
const CellCoder* avx512CellCoder() noexcept;

} // namespace detail

#endif
