#ifndef PLATFORM_STATISTICS_STACKED_NORMALS_H
#define PLATFORM_STATISTICS_STACKED_NORMALS_H

#include "platform/statistics/independent_normals.h"

#include <cstddef>
#include <vector>

namespace detail {

/// Several IndependentNormals of the same measurements, whose log values are added up side by side: each sum
/// has one addition after the other, but four sums are made at once.
class StackedNormals {
public:
    /// Whether the densities read the same measurements in the same order as those that are there already.
    bool canTake(const IndependentNormals& normals) const noexcept;

    /// Takes over what they know.
    void append(const IndependentNormals& normals);

    /// Puts the sums of the log values of each member, added from 0 in the order of its densities, into
    /// `sums`, which has room for paddedToLanes(size()) numbers. False, if one of the log values may be none
    /// that NormalDensity gives.
    bool addUp(const double* values, double* sums) const;

    std::size_t size() const noexcept { return size_; }

private:
    std::size_t size_ = 0;
    bool areLeading_ = true; // the indices are 0, 1, 2, ...
    std::vector<std::size_t> indices_;
    std::vector<double> blocks_; // one for each four members
};

} // namespace detail

#endif
