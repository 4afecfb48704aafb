#ifndef PLATFORM_STATISTICS_WHITENING_H
#define PLATFORM_STATISTICS_WHITENING_H

#include "platform/statistics/lanes.h"
#include "platform/statistics/linear_algebra.h"

#include <cstddef>
#include <vector>

namespace detail {

/// A measurement that varies within the data, and its place in a pattern.
struct VaryingMeasurement {
    std::size_t index;
    double mean;
    double deviation; // > 0 and finite
};

/// Turns correlated measurements into independent ones of mean 0 and deviation 1.
///
/// It multiplies by the inverse of the Cholesky factor instead of solving with the factor: a solution waits
/// for each of its numbers before it can begin the next one, a product does not. All that it reads lies in
/// one block of memory in the order in which it is read.
class Whitening {
public:
    /// Of no measurements.
    Whitening() = default;

    /// `factor` is the Cholesky factor of the correlation matrix, in the order of `measurements`.
    Whitening(const std::vector<VaryingMeasurement>& measurements, const PackedLower& factor);

    /// The sum of the squares of the whitened measurements. `values` and `standardised`, which may be the
    /// same, hold a number for each measurement; the latter is left with their distances from the means in
    /// deviations. If one of these is not finite, the result is NaN or infinite.
    double squaredLength(const double* values, double* standardised) const noexcept {
        return hasAvx2() ? squaredLengthInWideLanes(block_.data(), order_, values, standardised)
                         : squaredLengthInNarrowLanes(block_.data(), order_, values, standardised);
    }

    /// What whitening_kernel.h reads; lives as long as this.
    const double* block() const noexcept { return block_.data(); }

private:
    // The former to be called where hasAvx2() only.
    static double squaredLengthInWideLanes(const double* block, std::size_t order, const double* values,
                                           double* standardised) noexcept;
    static double squaredLengthInNarrowLanes(const double* block, std::size_t order, const double* values,
                                             double* standardised) noexcept;

    std::size_t order_ = 0;
    // Means, reciprocal deviations, and the rows of the inverse factor eight at a time, column by column;
    // each filled up with zeros to a multiple of eight rows.
    std::vector<double> block_;
};

} // namespace detail

#endif
