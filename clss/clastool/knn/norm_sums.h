#ifndef CLSS_CLASTOOL_KNN_NORM_SUMS_H
#define CLSS_CLASTOOL_KNN_NORM_SUMS_H

#include <cstddef>

class vxPatternDistanceMetric;

namespace detail {

/// The norms whose sums are cheap: their powers need no `pow`.
enum class CheapNorm { none, manhattan, euclidean };

/// The cheap norm that this metric is: only an object of the very class of the norms, not a derived one, and
/// only with order 1 or 2.
CheapNorm cheapNorm(const vxPatternDistanceMetric* metric) noexcept;

/// A norm's sum in plain arithmetic is the sum of the differences' sizes (Manhattan) or squares (Euclidean),
/// added in any order. What it says of the published distances, which are made with `pow` and have other last
/// bits: a pattern whose sum is above sumLimit(s, width) has a greater distance than any pattern whose sum is
/// at most s. The proof is in docs/numerics.md; it needs sums below 1e290.
double sumLimit(double sum, std::size_t width) noexcept;

} // namespace detail

#endif
