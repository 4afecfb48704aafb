#ifndef PLATFORM_STATISTICS_SCALED_PRODUCT_H
#define PLATFORM_STATISTICS_SCALED_PRODUCT_H

#include <cstdint>

namespace detail {

/// A product of positive finite numbers that neither overflows nor underflows, for its logarithm: one
/// logarithm of a product is off by a few roundings, a sum of large logarithms that cancel is not.
class ScaledProduct {
public:
    void multiply(double factor) noexcept;

    double logarithm() const noexcept;

private:
    double mantissa_ = 1.0; // in [0.5, 1]
    std::int64_t exponent_ = 0;
};

} // namespace detail

#endif
