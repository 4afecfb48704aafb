#ifndef PLATFORM_RANDOM_NORMAL_QUANTILE_H
#define PLATFORM_RANDOM_NORMAL_QUANTILE_H

namespace detail {

/// The natural logarithm of a positive, finite, normal number, by exactly rounded operations only: the
/// mathematical functions of the standard library differ in the last bit from one to another. Good to a few
/// units in the last place.
double portableLog(double x) noexcept;

/// The value below which a standard normal variable lies with probability p, for 0 < p < 1; relative accuracy
/// about 1e-15.
double normalQuantile(double p) noexcept;

} // namespace detail

#endif
