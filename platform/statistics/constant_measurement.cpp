#include "platform/statistics/constant_measurement.h"

#include <cmath>
#include <limits>

namespace detail {

namespace {

using Limits = std::numeric_limits<double>;

// Halving a unit this often reaches the distance of neighbouring doubles; and the smallest unit, halved this
// often, is the smallest double above 0.
constexpr std::int64_t maxHalvings = 52;

double unitOf(double value) noexcept {
    if (std::fabs(value) > 0.0) {
        const double sixteenth = std::fabs(value) / 16.0;
        return sixteenth < Limits::min() ? Limits::min() : sixteenth;
    }
    return 1.0;
}

int halvings(std::int64_t numSamples) noexcept {
    return static_cast<int>(numSamples - 1 < maxHalvings ? numSamples - 1 : maxHalvings);
}

} // namespace

ConstantMeasurement::ConstantMeasurement(std::size_t index, double value, std::int64_t numSamples) noexcept
    : index_(index), value_(value), logUnit_(std::log(unitOf(value))),
      width_(std::ldexp(unitOf(value), -halvings(numSamples))) {}

bool ConstantMeasurement::isConstant(double mean, double deviation) noexcept {
    return deviation <= 4.0 * Limits::epsilon() * std::fabs(mean);
}

double ConstantMeasurement::logValue(double x) const noexcept {
    double distance = std::fabs(x - value_);
    if (distance > Limits::max()) {
        distance = Limits::max();
    }
    const double widths = distance / width_;
    if (widths > Limits::max()) {
        return -logUnit_ - (std::log(distance) - std::log(width_));
    }
    return -logUnit_ - std::log1p(widths);
}

} // namespace detail
