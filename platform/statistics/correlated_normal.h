#ifndef PLATFORM_STATISTICS_CORRELATED_NORMAL_H
#define PLATFORM_STATISTICS_CORRELATED_NORMAL_H

#include "platform/statistics/linear_algebra.h"
#include "platform/statistics/whitening.h"

#include <cstddef>
#include <vector>

namespace detail {

/// No log density is less than this, so that sums over many dependency sets stay finite too.
constexpr double lowestLogDensity = -1e280;

/// The textbook normal density of measurements with given means, deviations and correlations.
///
/// Working with standardised values instead of the covariance keeps the squares of very large and very small
/// measurements from overflowing and underflowing.
class CorrelatedNormal {
public:
    /// The density of no measurements.
    CorrelatedNormal() = default;

    /// `factor` is the Cholesky factor of the correlation matrix, in the order of `measurements`.
    CorrelatedNormal(std::vector<VaryingMeasurement> measurements, const PackedLower& factor);

    const std::vector<VaryingMeasurement>& measurements() const noexcept { return measurements_; }

    /// At the values of a pattern, of which the measurements' own are read. NaN if one of those is NaN, else
    /// finite and not below lowestLogDensity.
    double logValue(const double* values) const;

    const Whitening& whitening() const noexcept { return whitening_; }

    /// A squared distance up to here is that of standardised values none of which is far away.
    static constexpr double surelyNear = 1e270;

    /// The logarithm of the density at the mean.
    double logNormaliser() const noexcept { return logNormaliser_; }

private:
    double extremeLogValue(const double* standardised, double squaredLength) const noexcept;

    std::vector<VaryingMeasurement> measurements_;
    Whitening whitening_;
    bool areLeading_ = true; // the measurements are the first ones of a pattern, in order
    double logNormaliser_ = 0.0;
};

} // namespace detail

#endif
