#include "platform/statistics/normal_density.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace detail {

namespace {

/// The smallest eigenvalue that a correlation matrix of this order may have and still be taken for regular.
/// It leaves room for condition numbers of 10^12, and lies well above the rounding errors of a factorisation.
double smallestRegularEigenvalue(std::size_t order) noexcept {
    return 512.0 * std::numeric_limits<double>::epsilon() * std::max(1.0, static_cast<double>(order) / 64.0);
}

PackedLower correlationsOf(const std::vector<VaryingMeasurement>& measurements,
                           const vmath_nmmatrix& covariance) {
    PackedLower correlation(measurements.size());
    for (std::size_t column = 0; column < measurements.size(); ++column) {
        const VaryingMeasurement& a = measurements[column];
        correlation(column, column) = 1.0;
        for (std::size_t row = column + 1; row < measurements.size(); ++row) {
            const VaryingMeasurement& b = measurements[row];
            // One division after the other: the product of two deviations may overflow or underflow.
            const double r = covariance.rows[b.index][a.index] / a.deviation / b.deviation;
            correlation(row, column) = std::min(1.0, std::max(-1.0, r));
        }
    }
    return correlation;
}

void shrink(PackedLower& correlation, double weight) noexcept {
    for (std::size_t column = 0; column < correlation.order(); ++column) {
        for (std::size_t row = column + 1; row < correlation.order(); ++row) {
            correlation(row, column) *= 1.0 - weight;
        }
    }
}

/// What the smallest eigenvalue becomes. A clearly singular matrix gets the square root of the resolution of
/// doubles: rounding errors disturb the density by their ratio to it, it disturbs the rest of the density by
/// itself, and so neither is seen. The tolerance and half of it are joined by a continuous way.
double replacementOf(double smallest, double tolerance) {
    const double ofSingular = std::ldexp(1.0, -26);
    const double way = std::min(1.0, std::max(0.0, 2.0 * (tolerance - smallest) / tolerance));
    return tolerance * std::pow(ofSingular / tolerance, way);
}

/// How far a singular correlation matrix has to be drawn towards independent measurements.
double shrinkingWeight(const PackedLower& correlation, std::int64_t numSamples) {
    const double order = static_cast<double>(correlation.order());
    const double unseenDirections = 1.0 - static_cast<double>(numSamples - 1) / order;
    const double tolerance = smallestRegularEigenvalue(correlation.order());
    const double smallest = smallestEigenvalue(correlation);
    const double forReplacement = (replacementOf(smallest, tolerance) - smallest) / (1.0 - smallest);
    return std::min(1.0, std::max({0.0, unseenDirections, forReplacement}));
}

bool isRegular(const PackedLower& correlation) {
    PackedLower unused;
    return choleskyFactor(correlation, smallestRegularEigenvalue(correlation.order()), unused);
}

/// The factor of the matrix drawn by `weight` towards the identity, and further where rounding has still left
/// it indefinite; that ends, because the identity has a factor.
PackedLower factorOfShrunk(PackedLower& correlation, double weight) {
    shrink(correlation, weight);
    PackedLower factor;
    double more = smallestRegularEigenvalue(correlation.order());
    while (!choleskyFactor(correlation, 0.0, factor)) {
        shrink(correlation, more);
        more = std::min(1.0, 2.0 * more);
    }
    return factor;
}

PackedLower factorOfRegularised(PackedLower& correlation, std::int64_t numSamples) {
    if (correlation.order() < 2) {
        return correlation;
    }
    return factorOfShrunk(correlation,
                          isRegular(correlation) ? 0.0 : shrinkingWeight(correlation, numSamples));
}

} // namespace

NormalDensity::NormalDensity(const vmath_nmmatrix& mean, const vmath_nmmatrix& covariance,
                             std::int64_t numSamples) {
    std::vector<VaryingMeasurement> varying;
    for (std::size_t i = 0; i < static_cast<std::size_t>(mean.numRows); ++i) {
        const double centre = mean.rows[i][0];
        const double deviation = std::sqrt(std::max(0.0, covariance.rows[i][i]));
        if (ConstantMeasurement::isConstant(centre, deviation)) {
            constant_.emplace_back(i, centre, numSamples);
        } else {
            varying.push_back({i, centre, deviation});
        }
    }
    correlation_ = correlationsOf(varying, covariance);
    const PackedLower factor = factorOfRegularised(correlation_, numSamples);
    varying_ = CorrelatedNormal(std::move(varying), factor);
}

double NormalDensity::addConstant(double sum, const double* values) const noexcept {
    for (const ConstantMeasurement& constant : constant_) {
        sum += constant.logValue(values[constant.index()]);
    }
    return sum;
}

double NormalDensity::marginalLogValue(const double* values, const unsigned char* valid) const {
    double sum = marginal(valid).logValue(values);
    for (const ConstantMeasurement& constant : constant_) {
        if (valid[constant.index()] != 0) {
            sum += constant.logValue(values[constant.index()]);
        }
    }
    return sum;
}

/// A part of the correlation matrix is never closer to singular than the whole, so it is not shrunk again.
CorrelatedNormal NormalDensity::marginal(const unsigned char* valid) const {
    const std::vector<VaryingMeasurement>& all = varying_.measurements();
    std::vector<std::size_t> chosen;
    std::vector<VaryingMeasurement> measurements;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (valid[all[i].index] != 0) {
            chosen.push_back(i);
            measurements.push_back(all[i]);
        }
    }
    PackedLower part(chosen.size());
    for (std::size_t column = 0; column < chosen.size(); ++column) {
        for (std::size_t row = column; row < chosen.size(); ++row) {
            part(row, column) = correlation_(chosen[row], chosen[column]);
        }
    }
    return CorrelatedNormal(std::move(measurements), factorOfShrunk(part, 0.0));
}

} // namespace detail
