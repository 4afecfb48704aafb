#include "platform/statistics/correlated_normal.h"

#include "platform/statistics/scaled_product.h"
#include "platform/statistics/scratch.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace detail {

namespace {

// Beyond this many deviations the log density is below the lowest value whatever the correlations are,
// because the squared distance is never less than the square of one standardised value. Below it nothing
// overflows.
constexpr double farAway = 1.5e140;

bool areLeadingMeasurements(const std::vector<VaryingMeasurement>& measurements) noexcept {
    for (std::size_t i = 0; i < measurements.size(); ++i) {
        if (measurements[i].index != i) {
            return false;
        }
    }
    return true;
}

} // namespace

CorrelatedNormal::CorrelatedNormal(std::vector<VaryingMeasurement> measurements, const PackedLower& factor)
    : measurements_(std::move(measurements)), whitening_(measurements_, factor),
      areLeading_(areLeadingMeasurements(measurements_)) {
    constexpr double halfLog2Pi = 0.91893853320467274178;
    ScaledProduct rootOfDeterminant;
    for (std::size_t i = 0; i < measurements_.size(); ++i) {
        rootOfDeterminant.multiply(measurements_[i].deviation);
        rootOfDeterminant.multiply(factor(i, i));
    }
    logNormaliser_ = -static_cast<double>(measurements_.size()) * halfLog2Pi - rootOfDeterminant.logarithm();
}

double CorrelatedNormal::logValue(const double* values) const {
    Scratch<double> scratch(measurements_.size());
    double* const own = scratch.data();
    if (!areLeading_) {
        std::transform(measurements_.begin(), measurements_.end(), own,
                       [values](const VaryingMeasurement& measurement) { return values[measurement.index]; });
        values = own;
    }
    const double squaredLength = whitening_.squaredLength(values, own);
    return squaredLength <= surelyNear ? logNormaliser_ - 0.5 * squaredLength
                                       : extremeLogValue(own, squaredLength);
}

double CorrelatedNormal::extremeLogValue(const double* standardised, double squaredLength) const noexcept {
    const double* const end = standardised + measurements_.size();
    if (std::any_of(standardised, end, [](double distance) { return std::isnan(distance); })) {
        return std::nan("");
    }
    if (std::any_of(standardised, end, [](double distance) { return std::fabs(distance) > farAway; })) {
        return lowestLogDensity;
    }
    return std::max(lowestLogDensity, logNormaliser_ - 0.5 * squaredLength);
}

} // namespace detail
