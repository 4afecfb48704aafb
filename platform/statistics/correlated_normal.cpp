#include "platform/statistics/correlated_normal.h"

#include "platform/statistics/scaled_product.h"
#include "platform/statistics/scratch.h"

#include <cmath>

namespace detail {

namespace {

// Beyond this many deviations the log density is below the lowest value whatever the correlations are,
// because the squared distance is never less than the square of one standardised value. Below it nothing
// overflows.
constexpr double farAway = 1.5e140;

} // namespace

CorrelatedNormal::CorrelatedNormal(std::vector<VaryingMeasurement> measurements, PackedLower factor)
    : measurements_(std::move(measurements)), factor_(std::move(factor)) {
    constexpr double halfLog2Pi = 0.91893853320467274178;
    ScaledProduct rootOfDeterminant;
    for (std::size_t i = 0; i < measurements_.size(); ++i) {
        rootOfDeterminant.multiply(measurements_[i].deviation);
        rootOfDeterminant.multiply(factor_(i, i));
    }
    logNormaliser_ = -static_cast<double>(measurements_.size()) * halfLog2Pi - rootOfDeterminant.logarithm();
}

double CorrelatedNormal::logValue(const double* values) const {
    Scratch<double> standardised(measurements_.size());
    switch (standardise(values, standardised.data())) {
    case Standardised::notANumber:
        return std::nan("");
    case Standardised::far:
        return lowestLogDensity;
    case Standardised::near:
        break;
    }
    const double value = logNormaliser_ - 0.5 * squaredDistance(standardised.data());
    return value < lowestLogDensity ? lowestLogDensity : value;
}

CorrelatedNormal::Standardised CorrelatedNormal::standardise(const double* values,
                                                             double* standardised) const noexcept {
    Standardised kind = Standardised::near;
    for (std::size_t i = 0; i < measurements_.size(); ++i) {
        const VaryingMeasurement& measurement = measurements_[i];
        const double distance = (values[measurement.index] - measurement.mean) / measurement.deviation;
        standardised[i] = distance;
        if (std::isnan(distance)) {
            return Standardised::notANumber;
        }
        if (std::fabs(distance) > farAway) {
            kind = Standardised::far;
        }
    }
    return kind;
}

/// Solves with the factor column by column, so that each value's own sum runs in one fixed order and a
/// compiler can still work on several of them at a time.
double CorrelatedNormal::squaredDistance(double* standardised) const noexcept {
    const std::size_t order = measurements_.size();
    double sum = 0.0;
    for (std::size_t i = 0; i < order; ++i) {
        const double* column = factor_.column(i);
        const double solved = standardised[i] / column[0];
        sum += solved * solved;
        for (std::size_t below = 1; below < order - i; ++below) {
            standardised[i + below] -= column[below] * solved;
        }
    }
    return sum;
}

} // namespace detail
