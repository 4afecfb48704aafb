#include <vxclassifier/platform/random.h>

#include "platform/random/normal_quantile.h"

#include <cstdint>
#include <random>

namespace detail {

/// 53 random bits at a time. The engine's sequence is fixed by the language standard.
class RandomBits {
public:
    explicit RandomBits(long seed) : engine_(static_cast<std::uint32_t>(seed)) {}

    /// A whole number in [0, 2^53), which a double holds exactly.
    double next() { return static_cast<double>(engine_() >> 11); }

private:
    std::mt19937_64 engine_;
};

} // namespace detail

namespace {

constexpr double twoToMinus53 = 0x1p-53;

} // namespace

vxRandomUniform::vxRandomUniform(long seed) : bits_(std::make_unique<detail::RandomBits>(seed)) {}
vxRandomUniform::vxRandomUniform(const vxRandomUniform& other)
    : bits_(std::make_unique<detail::RandomBits>(*other.bits_)) {}
vxRandomUniform& vxRandomUniform::operator=(const vxRandomUniform& other) {
    *bits_ = *other.bits_;
    return *this;
}
vxRandomUniform::~vxRandomUniform() = default;

double vxRandomUniform::next(double low, double high) {
    const double u = bits_->next() * twoToMinus53;
    return low + (high - low) * u;
}

vxRandomGaussian::vxRandomGaussian(long seed) : bits_(std::make_unique<detail::RandomBits>(seed)) {}
vxRandomGaussian::vxRandomGaussian(const vxRandomGaussian& other)
    : bits_(std::make_unique<detail::RandomBits>(*other.bits_)) {}
vxRandomGaussian& vxRandomGaussian::operator=(const vxRandomGaussian& other) {
    *bits_ = *other.bits_;
    return *this;
}
vxRandomGaussian::~vxRandomGaussian() = default;

double vxRandomGaussian::next(double mean, double standardDeviation) {
    // The middle of a part is never 0 or 1. In the upper half it is no double, but its distance from 1 is
    // one.
    const double part = bits_->next();
    const bool isLower = part < 0x1p52;
    const double fromEnd = isLower ? part + 0.5 : 0x1p53 - part - 0.5;
    const double z = detail::normalQuantile(fromEnd * twoToMinus53);
    return mean + standardDeviation * (isLower ? z : -z);
}
