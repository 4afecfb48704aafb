#ifndef PLATFORM_STATISTICS_STACKED_NORMALS_KERNEL_H
#define PLATFORM_STATISTICS_STACKED_NORMALS_KERNEL_H

#include "platform/statistics/lanes.h"

#include <cstddef>

namespace detail {

/// So many members of StackedNormals are evaluated side by side.
constexpr std::size_t membersOfStack = numLanes / 2;

/// The sums of four members, from their block: for each measurement four means, four reciprocal deviations,
/// and four log densities at the mean.
template <class Lanes>
VXCLASSIFIER_INLINE void addUpLogValuesIn(const double* block, const double* values, std::size_t number,
                                          double* sums) noexcept {
    using Four = typename Lanes::Half;
    static_assert(Four::size == membersOfStack);
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

/// What StackedNormals computes, from the blocks of its members.
template <class Lanes>
VXCLASSIFIER_INLINE void addUpStacksIn(const double* blocks, std::size_t size, const double* values,
                                       std::size_t number, double* sums) noexcept {
    for (std::size_t first = 0; first < size; first += membersOfStack) {
        addUpLogValuesIn<Lanes>(blocks, values, number, sums + first);
        blocks += 3 * membersOfStack * number;
    }
}

} // namespace detail

#endif
