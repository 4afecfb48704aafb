#include "platform/random/normal_quantile.h"

#include "tests/platform/random/random_tables.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr double unit = std::numeric_limits<double>::epsilon();

TEST(NormalQuantile, AgreesWithExactValues) {
    for (const test::Point& point : test::quantiles) {
        const double size = std::fabs(point.y);
        EXPECT_NEAR(detail::normalQuantile(point.x), point.y, 6.0 * unit * size) << "p = " << point.x;
    }
}

TEST(NormalQuantile, TheMiddleIsZero) {
    EXPECT_EQ(detail::normalQuantile(0.5), 0.0);
}

TEST(NormalQuantile, GrowsWithTheProbability) {
    double before = detail::normalQuantile(0x1p-60);
    for (int i = 1; i < 4096; ++i) {
        const double next = detail::normalQuantile(i / 4096.0);
        EXPECT_GT(next, before);
        before = next;
    }
}

TEST(NormalQuantile, IsSymmetric) {
    for (int i = 1; i < 2048; ++i) {
        const double p = i / 4096.0; // 1 - p is exact
        EXPECT_EQ(detail::normalQuantile(1.0 - p), -detail::normalQuantile(p));
    }
}

TEST(PortableLog, AgreesWithExactValues) {
    for (const test::Point& point : test::logarithms) {
        EXPECT_NEAR(detail::portableLog(point.x), point.y, 2.0 * unit * std::fabs(point.y))
            << "x = " << point.x;
    }
}

TEST(PortableLog, TheLogarithmOfOneIsZero) {
    EXPECT_EQ(detail::portableLog(1.0), 0.0);
}

} // namespace
