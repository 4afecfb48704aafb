#ifndef PLATFORM_STATISTICS_WHITENING_KERNEL_H
#define PLATFORM_STATISTICS_WHITENING_KERNEL_H

#include "platform/statistics/lanes.h"

#include <algorithm>
#include <cstddef>

namespace detail {

/// The number of columns that the eight rows of a triangle from `top` on reach into.
constexpr std::size_t numColumns(std::size_t top, std::size_t order) noexcept {
    return std::min(top + numLanes, order);
}

/// What Whitening computes, from its block. Each whitened number is a sum in the order of the columns; their
/// squares are added up in eight lanes.
template <class Lanes>
VXCLASSIFIER_INLINE double squaredLengthIn(const double* block, std::size_t order, double* values) noexcept {
    const std::size_t padded = paddedToLanes(order);
    for (std::size_t i = 0; i < padded; i += numLanes) {
        Lanes distances;
        Lanes means;
        Lanes reciprocals;
        distances.load(values + i);
        means.load(block + i);
        reciprocals.load(block + padded + i);
        distances.subtract(means);
        distances.multiply(reciprocals);
        distances.store(values + i);
    }
    const double* entries = block + 2 * padded;
    Lanes squares;
    for (std::size_t top = 0; top < order; top += numLanes) {
        Lanes whitened;
        for (std::size_t column = 0; column < numColumns(top, order); ++column) {
            Lanes rows;
            rows.load(entries);
            whitened.addProduct(rows, values[column]);
            entries += numLanes;
        }
        squares.addProduct(whitened, whitened);
    }
    double sums[numLanes];
    squares.store(sums);
    return ((sums[0] + sums[1]) + (sums[2] + sums[3])) + ((sums[4] + sums[5]) + (sums[6] + sums[7]));
}

} // namespace detail

#endif
