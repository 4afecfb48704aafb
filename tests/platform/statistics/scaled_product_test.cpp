#include "platform/statistics/scaled_product.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using detail::ScaledProduct;

TEST(ScaledProduct, OfNothingIsOne) {
    EXPECT_EQ(ScaledProduct().logarithm(), 0.0);
}

TEST(ScaledProduct, NeitherOverflowsNorUnderflows) {
    ScaledProduct product;
    for (int i = 0; i < 1000; ++i) {
        product.multiply(1e300);
    }
    EXPECT_NEAR(product.logarithm() / (300000.0 * std::log(10.0)), 1.0, 1e-15);
    for (int i = 0; i < 2000; ++i) {
        product.multiply(1e-300);
    }
    EXPECT_NEAR(product.logarithm() / (-300000.0 * std::log(10.0)), 1.0, 1e-15);
    product.multiply(std::numeric_limits<double>::denorm_min());
    EXPECT_TRUE(std::isfinite(product.logarithm()));
}

TEST(ScaledProduct, OfFactorsThatCancelIsExact) {
    ScaledProduct product;
    for (int i = 0; i < 100; ++i) {
        product.multiply(std::ldexp(3.0, 900));
        product.multiply(std::ldexp(1.0, -900));
        product.multiply(1.0 / 3.0);
    }
    EXPECT_NEAR(product.logarithm(), 0.0, 3e-14);
}

} // namespace
