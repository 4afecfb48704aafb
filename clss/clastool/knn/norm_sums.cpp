#include "clss/clastool/knn/norm_sums.h"

#include <vxclassifier/pattern_distance_metric_norm.h>

#include <algorithm>
#include <cmath>
#include <typeinfo>

namespace detail {

namespace {

struct Size {
    static double of(double difference) noexcept { return std::fabs(difference); }
};

struct Square {
    static double of(double difference) noexcept { return difference * difference; }
};

/// Several sums side by side, since each addition waits for the one before.
template <class Term>
double sumOf(const double* a, const double* b, std::size_t numberOf) {
    double sum[4] = {};
    std::size_t i = 0;
    for (; i + 4 <= numberOf; i += 4) {
        for (std::size_t k = 0; k < 4; ++k) {
            sum[k] += Term::of(a[i + k] - b[i + k]);
        }
    }
    for (; i < numberOf; ++i) {
        sum[0] += Term::of(a[i] - b[i]);
    }
    return (sum[0] + sum[1]) + (sum[2] + sum[3]);
}

} // namespace

CheapNorm cheapNorm(const vxPatternDistanceMetric* metric) noexcept {
    if (metric == nullptr || typeid(*metric) != typeid(vxPatternDistanceMetricNorm)) {
        return CheapNorm::none;
    }
    const double order = static_cast<const vxPatternDistanceMetricNorm*>(metric)->order();
    if (order == 1.0) {
        return CheapNorm::manhattan;
    }
    return order == 2.0 ? CheapNorm::euclidean : CheapNorm::none;
}

NormSum normSum(CheapNorm norm) noexcept {
    return norm == CheapNorm::manhattan ? &sumOf<Size> : &sumOf<Square>;
}

double sumLimit(double sum, std::size_t width) noexcept {
    constexpr double unit = 0x1p-52;
    constexpr double leastCertain = 1e-280; // below it what is lost by underflow may count
    const double margin = (4.0 * static_cast<double>(width) + 128.0) * unit;
    return std::max(sum * (1.0 + margin), leastCertain);
}

} // namespace detail
