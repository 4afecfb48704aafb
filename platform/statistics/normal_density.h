#ifndef PLATFORM_STATISTICS_NORMAL_DENSITY_H
#define PLATFORM_STATISTICS_NORMAL_DENSITY_H

#include "platform/statistics/constant_measurement.h"
#include "platform/statistics/correlated_normal.h"
#include "platform/statistics/linear_algebra.h"

#include <vxclassifier/platform/pdf_multivariate_normal.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace detail {

/// The density that statistics describe, ready for evaluation: the measurements that vary together by their
/// normal density, the constant ones one by one. docs/numerics.md derives the rule.
///
/// Complete in itself: it looks at the statistics only while it is made.
class NormalDensity {
public:
    /// The density of no measurements.
    NormalDensity() = default;

    /// The mean has one column and as many rows as the covariance has rows and columns; the mean and the
    /// lower triangle of the covariance are finite; `numSamples` is positive. Any such numbers will do, also
    /// those that no data can have.
    NormalDensity(const vmath_nmmatrix& mean, const vmath_nmmatrix& covariance, std::int64_t numSamples);

    /// At the values of a complete pattern, all of them valid.
    double logValue(const double* values) const {
        const double ofVarying = varying_.logValue(values);
        return constant_.empty() ? ofVarying : addConstant(ofVarying, values);
    }

    /// The marginal density of the measurements whose entry in `valid` is not 0.
    double marginalLogValue(const double* values, const unsigned char* valid) const;

    const CorrelatedNormal& varying() const noexcept { return varying_; }
    const std::vector<ConstantMeasurement>& constant() const noexcept { return constant_; }

private:
    double addConstant(double sum, const double* values) const noexcept;
    CorrelatedNormal marginal(const unsigned char* valid) const;

    CorrelatedNormal varying_;
    PackedLower correlation_; // of varying_, as it enters the density
    std::vector<ConstantMeasurement> constant_;
};

} // namespace detail

#endif
