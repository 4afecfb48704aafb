#include "platform/statistics/scaled_product.h"

#include <cmath>

namespace detail {

void ScaledProduct::multiply(double factor) noexcept {
    int ofFactor = 0;
    int ofProduct = 0;
    mantissa_ = std::frexp(mantissa_ * std::frexp(factor, &ofFactor), &ofProduct);
    exponent_ += static_cast<std::int64_t>(ofFactor) + ofProduct;
}

double ScaledProduct::logarithm() const noexcept {
    constexpr double log2 = 0.69314718055994530942;
    return std::log(mantissa_) + static_cast<double>(exponent_) * log2;
}

} // namespace detail
