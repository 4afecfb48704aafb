#ifndef PLATFORM_STATISTICS_CONSTANT_MEASUREMENT_H
#define PLATFORM_STATISTICS_CONSTANT_MEASUREMENT_H

#include <cstddef>
#include <cstdint>

namespace detail {

/// The score of a measurement that has had one value only, in place of a density that it does not have:
///
///     1 / (unit * (1 + |x - value| / width))
///
/// `unit` is a sixteenth of the value, or 1 if the value is 0; `width` is the unit, halved for each further
/// sample that had the same value, down to the resolution of doubles. docs/numerics.md gives the reasons.
class ConstantMeasurement {
public:
    ConstantMeasurement(std::size_t index, double value, std::int64_t numSamples) noexcept;

    /// Whether a deviation is nothing but the rounding of values of the mean's size.
    static bool isConstant(double mean, double deviation) noexcept;

    std::size_t index() const noexcept { return index_; }

    /// The logarithm of the score at x; finite unless x is NaN.
    double logValue(double x) const noexcept;

private:
    std::size_t index_;
    double value_;
    double logUnit_;
    double width_; // > 0
};

} // namespace detail

#endif
