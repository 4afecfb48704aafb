#include "clss/datagen/drawn_place.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(DrawnPlace, IsTheIntegerPart) {
    EXPECT_EQ(detail::placeOf(0.0, 3), 0);
    EXPECT_EQ(detail::placeOf(0.999, 3), 0);
    EXPECT_EQ(detail::placeOf(1.0, 3), 1);
    EXPECT_EQ(detail::placeOf(2.999, 3), 2);
}

TEST(DrawnPlace, OfTheUpperBoundOrBeyondIsTheLast) {
    for (const double drawn : {3.0, 3.5, 1e300, infinity}) {
        EXPECT_EQ(detail::placeOf(drawn, 3), 2);
    }
}

TEST(DrawnPlace, OfANegativeNumberOrNaNIsTheFirst) {
    for (const double drawn :
         {-0.0, -0.5, -1.0, -1e300, -infinity, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(detail::placeOf(drawn, 3), 0);
    }
}

} // namespace
