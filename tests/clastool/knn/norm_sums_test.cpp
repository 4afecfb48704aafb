#include "clss/clastool/knn/norm_sums.h"

#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/pattern_distance_metric_norm.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

double sumOf(const std::vector<double>& values, double order) {
    double sum = 0.0;
    for (const double value : values) {
        sum += order == 1.0 ? value : value * value;
    }
    return sum;
}

/// The published distance from the origin.
double distanceOf(const std::vector<double>& values, double order) {
    const std::vector<double> origin(values.size(), 0.0);
    return vxPatternDistanceMetricNorm(order).distance(vxFeaturePattern(origin, {}),
                                                       vxFeaturePattern(values, {}));
}

TEST(NormSums, BeyondTheLimitTheDistanceIsGreater) {
    std::mt19937_64 engine(1);
    for (const double order : {1.0, 2.0}) {
        for (int i = 0; i < 20000; ++i) {
            std::vector<double> nearer(1 + engine() % 12);
            const double size = std::ldexp(1.0, static_cast<int>(engine() % 900) - 460);
            for (double& value : nearer) {
                value = static_cast<double>(engine() >> 11U) * 0x1p-53 * size;
            }
            const double sum = sumOf(nearer, order);
            const double limit = detail::sumLimit(sum, nearer.size());
            // One measurement that makes a sum just beyond the limit, and the others 0.
            std::vector<double> farther(nearer.size(), 0.0);
            farther[0] = order == 1.0 ? limit : std::sqrt(limit);
            while (!(sumOf(farther, order) > limit)) {
                farther[0] = std::nextafter(farther[0], 1e300);
            }
            ASSERT_GT(distanceOf(farther, order), distanceOf(nearer, order)) << "order " << order;
        }
    }
}

TEST(NormSums, TheLimitGrowsWithWhatSoManyTermsMayLoseByRounding) {
    for (const std::size_t width : {1UL, 16UL, 1000UL, 1UL << 20}) {
        const double leastMargin = (2.0 * static_cast<double>(width) + 41.0) * 0x1p-52;
        EXPECT_GE(detail::sumLimit(1.0, width), 1.0 + leastMargin) << width << " measurements";
    }
}

TEST(NormSums, TheLimitIsNotFarFromTheSum) {
    EXPECT_GT(detail::sumLimit(1.0, 16), 1.0);
    EXPECT_LT(detail::sumLimit(1.0, 16), 1.0 + 1e-12);
    EXPECT_LT(detail::sumLimit(0.0, 16), 1e-200);
    EXPECT_GT(detail::sumLimit(0.0, 16), 0.0);
}

} // namespace
