#include "tests/support/archive_bytes.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/range.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using test::Payload;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double largest = std::numeric_limits<double>::max();

TEST(Range, BothBoundsBelongToIt) {
    const vxRange range(-1.5, 2.0);
    EXPECT_EQ(range.lower(), -1.5);
    EXPECT_EQ(range.upper(), 2.0);
    EXPECT_TRUE(range.isWithin(-1.5));
    EXPECT_TRUE(range.isWithin(0.0));
    EXPECT_TRUE(range.isWithin(2.0));
    EXPECT_FALSE(range.isWithin(std::nextafter(-1.5, -2.0)));
    EXPECT_FALSE(range.isWithin(std::nextafter(2.0, 3.0)));
    EXPECT_FALSE(range.isWithin(infinity));
    EXPECT_FALSE(range.isWithin(-infinity));
    EXPECT_FALSE(range.isWithin(nan));
}

TEST(Range, TheFullRangeHoldsEverythingButNaN) {
    for (const vxRange& range : {vxRange::FullRange(), vxRange()}) {
        for (const double value : {0.0, -0.0, largest, -largest, infinity, -infinity, 5e-324}) {
            EXPECT_TRUE(range.isWithin(value)) << value;
        }
        EXPECT_FALSE(range.isWithin(nan));
        EXPECT_EQ(range.lower(), -infinity);
        EXPECT_EQ(range.upper(), infinity);
    }
}

TEST(Range, OneOfASinglePointHoldsThatPoint) {
    const vxRange range(0.0, -0.0);
    EXPECT_TRUE(range.isWithin(0.0));
    EXPECT_TRUE(range.isWithin(-0.0));
    EXPECT_FALSE(range.isWithin(5e-324));
}

TEST(Range, SwappedBoundsOrNaNHoldNothing) {
    for (const vxRange& range :
         {vxRange(1.0, 0.0), vxRange(nan, 1.0), vxRange(0.0, nan), vxRange(nan, nan)}) {
        for (const double value : {0.0, 0.5, 1.0, infinity, -infinity, nan}) {
            EXPECT_FALSE(range.isWithin(value));
        }
    }
}

TEST(Range, EqualMeansEqualBounds) {
    EXPECT_TRUE(vxRange(0.0, 1.0) == vxRange(-0.0, 1.0));
    EXPECT_FALSE(vxRange(0.0, 1.0) != vxRange(0.0, 1.0));
    EXPECT_TRUE(vxRange(0.0, 1.0) != vxRange(0.0, 1.5));
    EXPECT_TRUE(vxRange(0.0, 1.0) != vxRange(0.5, 1.0));
    const vxRange strange(nan, 1.0);
    EXPECT_TRUE(strange != strange);
}

TEST(Range, IsArchivedAsAVersionAndItsBounds) {
    EXPECT_EQ(test::payload(test::stored(vxRange(0.25, infinity))),
              Payload().byte(0).real(0.25).real(infinity).bytes());
    vxRange loaded(7.0, 8.0);
    test::load(test::stored(vxRange(3.0, -2.0)), loaded);
    EXPECT_EQ(loaded, vxRange(3.0, -2.0)) << "loading does not judge the bounds";
}

TEST(Range, AnotherVersionIsRefused) {
    vxRange range(1.0, 2.0);
    EXPECT_ERROR(test::load(Payload().byte(1).real(0.0).real(0.0).sealed(), range), vxArchive::UnknownVersion,
                 L"The archive has a version that this release does not know.");
    EXPECT_EQ(range, vxRange(1.0, 2.0));
}

} // namespace
