#ifndef CLSS_CLASTOOL_KNN_CELL_SAMPLE_H
#define CLSS_CLASTOOL_KNN_CELL_SAMPLE_H

#include <cstddef>

namespace detail {

/// The most patterns that the cells are made from: enough for cells of like shares, few enough that sorting
/// their values takes less time than coding some hundred patterns.
constexpr std::size_t cellSampleSize = 256;

/// How many of `count` patterns to take, at most count: of few patterns fewer, since sorting is all the work.
std::size_t cellSampleOf(std::size_t count) noexcept;

/// Makes the cells of `width` measurements, as CompactPatterns keeps them, from the values in `count` rows, 1
/// to cellSampleSize, none of them NaN. About equally many values lie in each cell; of at most 16 different
/// values each gets a cell for itself. Between the cells that are needed stands the greatest value that
/// belongs to the lower one; the greatest value of the last one is left infinite, and so are the ends of
/// those that are not needed.
void makeCells(const double* const* rows, std::size_t count, std::size_t width, double* cells);

} // namespace detail

#endif
