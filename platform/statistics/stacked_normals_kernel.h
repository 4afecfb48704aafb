#ifndef PLATFORM_STATISTICS_STACKED_NORMALS_KERNEL_H
#define PLATFORM_STATISTICS_STACKED_NORMALS_KERNEL_H

#include "platform/statistics/lanes.h"

#include <cstddef>

namespace detail {

/// What StackedNormals computes, from the block of four of its members: for each measurement four means, four
/// reciprocal deviations, and four log densities at the mean.
template <class Lanes>
VXCLASSIFIER_INLINE void addUpLogValuesIn(const double* block, const double* values, std::size_t number,
                                          double* sums) noexcept {
    using Four = typename Lanes::Half;
    Four fourSums;
    for (std::size_t i = 0; i < number; ++i) {
        Four distances;
        Four reciprocals;
        Four logValues;
        distances.load(block);
        reciprocals.load(block + Four::size);
        logValues.load(block + 2 * Four::size);
        distances.subtractFrom(values[i]);
        distances.multiply(reciprocals);
        distances.multiply(distances);
        logValues.addProduct(distances, -0.5);
        fourSums.add(logValues);
        block += 3 * Four::size;
    }
    fourSums.store(sums);
}

} // namespace detail

#endif
