// With this file the tests of a program run as on a processor without wide registers.

#include "platform/statistics/lanes.h"
#include "tests/digest/processor.h"

#include <gtest/gtest.h>

namespace {

const bool isHidden = (digest::hideAvx2(), true);

TEST(NarrowLanes, AreTakenWithoutAvx2) {
    EXPECT_TRUE(isHidden);
    EXPECT_FALSE(detail::hasAvx2());
}

} // namespace
