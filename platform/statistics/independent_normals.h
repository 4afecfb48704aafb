#ifndef PLATFORM_STATISTICS_INDEPENDENT_NORMALS_H
#define PLATFORM_STATISTICS_INDEPENDENT_NORMALS_H

#include "platform/statistics/lanes.h"
#include "platform/statistics/normal_density.h"

#include <cstddef>
#include <vector>

namespace detail {

/// Normal densities of single measurements, evaluated side by side with the bits of NormalDensity.
class IndependentNormals {
public:
    /// Whether a density is the normal density of one measurement that varies.
    static bool canTake(const NormalDensity& density) noexcept;

    /// Takes over what such a density knows; it reads the value at `index` of a pattern.
    void append(const NormalDensity& density, std::size_t index);

    std::size_t size() const noexcept { return indices_.size(); }

    /// Puts the log value of each density at the values of a pattern into `logValues`, which has room for
    /// paddedToLanes(size()) numbers; there is at least one. One that is not above leastCertain is not the
    /// answer of NormalDensity, which has a least value and one kind of NaN.
    void logValues(const double* values, double* logValues) const noexcept;

    static constexpr double leastCertain = -1e269;

    /// Whether all log values of a sum were certain: one that is not would have made the sum as odd.
    static bool isCertainSum(double sum) noexcept { return sum >= 0.1 * leastCertain; }

    /// The measurements that the densities read.
    const std::vector<std::size_t>& indices() const noexcept { return indices_; }

    /// Whether these are the first ones of a pattern, in order.
    bool areLeading() const noexcept { return areLeading_; }

    /// What is known of one density.
    struct Parameters {
        double mean;
        double reciprocalDeviation;
        double logNormaliser; // the log density at the mean
    };

    Parameters operator[](std::size_t i) const noexcept {
        const double* const group = block_.data() + 3 * (i - i % numLanes) + i % numLanes;
        return {group[0], group[numLanes], group[2 * numLanes]};
    }

private:
    std::vector<std::size_t> indices_;
    bool areLeading_ = true; // the indices are 0, 1, 2, ...
    // Eight densities at a time: eight means, eight reciprocal deviations, eight log densities at the mean.
    std::vector<double> block_;
};

} // namespace detail

#endif
