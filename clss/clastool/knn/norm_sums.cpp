#include "clss/clastool/knn/norm_sums.h"

#include <vxclassifier/pattern_distance_metric_norm.h>

#include <algorithm>
#include <typeinfo>

namespace detail {

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

double sumLimit(double sum, std::size_t width) noexcept {
    constexpr double unit = 0x1p-52;
    constexpr double leastCertain = 1e-280; // below it what is lost by underflow may count
    const double margin = (4.0 * static_cast<double>(width) + 128.0) * unit;
    return std::max(sum * (1.0 + margin), leastCertain);
}

} // namespace detail
