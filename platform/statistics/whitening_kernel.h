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

/// Distances from the means in deviations.
template <class Lanes>
VXCLASSIFIER_INLINE void standardiseIn(const double* means, const double* reciprocals, std::size_t order,
                                       const double* values, double* standardised) noexcept {
    using Numbers = Register<typename Lanes::Numbers>;
    std::size_t i = 0;
    for (; i + Numbers::size <= order; i += Numbers::size) {
        Numbers distances;
        Numbers other;
        distances.load(values + i);
        other.load(means + i);
        distances.subtract(other);
        other.load(reciprocals + i);
        distances.multiply(other);
        distances.store(standardised + i);
    }
    for (; i < order; ++i) {
        standardised[i] = (values[i] - means[i]) * reciprocals[i];
    }
}

/// Up to eight rows of a product with a triangle. Each whitened number is a sum in the order of the columns.
template <class Rows>
VXCLASSIFIER_INLINE void whitenIn(const double* entries, std::size_t numColumns, const double* standardised,
                                  Rows& whitened) noexcept {
    for (std::size_t column = 0; column < numColumns; ++column) {
        Rows rows;
        rows.load(entries);
        whitened.addProduct(rows, standardised[column]);
        entries += numLanes;
    }
}

/// The sum of the squares if all rows are in the first half of the lanes: the other half would add zeros.
template <class Lanes>
VXCLASSIFIER_INLINE double squaredLengthOfFewIn(const double* entries, std::size_t order,
                                                const double* standardised) noexcept {
    typename Lanes::Half whitened;
    whitenIn(entries, order, standardised, whitened);
    whitened.multiply(whitened);
    double sums[Lanes::Half::size];
    whitened.store(sums);
    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

/// What Whitening computes, from its block. The squares of the whitened numbers are added up in eight lanes.
template <class Lanes>
VXCLASSIFIER_INLINE double squaredLengthIn(const double* block, std::size_t order, const double* values,
                                           double* standardised) noexcept {
    const std::size_t padded = paddedToLanes(order);
    standardiseIn<Lanes>(block, block + padded, order, values, standardised);
    const double* entries = block + 2 * padded;
    if (order <= Lanes::Half::size) {
        return squaredLengthOfFewIn<Lanes>(entries, order, standardised);
    }
    Lanes squares;
    for (std::size_t top = 0; top < order; top += numLanes) {
        Lanes whitened;
        whitenIn(entries, numColumns(top, order), standardised, whitened);
        entries += numColumns(top, order) * numLanes;
        squares.addProduct(whitened, whitened);
    }
    double sums[numLanes];
    squares.store(sums);
    return ((sums[0] + sums[1]) + (sums[2] + sums[3])) + ((sums[4] + sums[5]) + (sums[6] + sums[7]));
}

} // namespace detail

#endif
