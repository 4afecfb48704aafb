#ifndef PLATFORM_STATISTICS_CORRELATED_NORMAL_H
#define PLATFORM_STATISTICS_CORRELATED_NORMAL_H

#include "platform/statistics/linear_algebra.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace detail {

/// No log density is less than this, so that sums over many dependency sets stay finite too.
constexpr double lowestLogDensity = -1e280;

/// A measurement that varies within the data, and its place in a pattern.
struct VaryingMeasurement {
    std::size_t index;
    double mean;
    double deviation; // > 0 and finite
};

/// The textbook normal density of measurements with given means, deviations and correlations.
///
/// Working with standardised values instead of the covariance keeps the squares of very large and very small
/// measurements from overflowing and underflowing.
class CorrelatedNormal {
public:
    /// The density of no measurements.
    CorrelatedNormal() = default;

    /// `factor` is the Cholesky factor of the correlation matrix, in the order of `measurements`.
    CorrelatedNormal(std::vector<VaryingMeasurement> measurements, PackedLower factor);

    const std::vector<VaryingMeasurement>& measurements() const noexcept { return measurements_; }

    /// At the values of a pattern, of which the measurements' own are read. NaN if one of those is NaN, else
    /// finite and not below lowestLogDensity.
    double logValue(const double* values) const;

private:
    enum class Standardised { near, far, notANumber };
    Standardised standardise(const double* values, double* standardised) const noexcept;
    double squaredDistance(double* standardised) const noexcept;

    std::vector<VaryingMeasurement> measurements_;
    PackedLower factor_; // of order measurements_.size()
    double logNormaliser_ = 0.0;
};

} // namespace detail

#endif
