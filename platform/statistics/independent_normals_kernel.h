#ifndef PLATFORM_STATISTICS_INDEPENDENT_NORMALS_KERNEL_H
#define PLATFORM_STATISTICS_INDEPENDENT_NORMALS_KERNEL_H

#include "platform/statistics/lanes.h"

#include <cstddef>

namespace detail {

/// What IndependentNormals computes, from its block: turns `padded` values into log values.
template <class Lanes>
VXCLASSIFIER_INLINE void toLogValuesIn(const double* block, std::size_t padded, double* values) noexcept {
    for (std::size_t i = 0; i < padded; i += numLanes) {
        Lanes distances;
        Lanes means;
        Lanes reciprocals;
        Lanes logValues;
        distances.load(values + i);
        means.load(block + 3 * i);
        reciprocals.load(block + 3 * i + numLanes);
        logValues.load(block + 3 * i + 2 * numLanes);
        distances.subtract(means);
        distances.multiply(reciprocals);
        Lanes squares;
        squares.addProduct(distances, distances);
        logValues.addProduct(squares, -0.5);
        logValues.store(values + i);
    }
}

} // namespace detail

#endif
