#include "platform/archive/count_limit.h"

#include "tests/support/expect_error.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace {

TEST(CountLimit, LetsEveryCountPassThatFits) {
    EXPECT_EQ(detail::countWithin(5, 0, L"too many"), 0U);
    EXPECT_EQ(detail::countWithin(5, 5, L"too many"), 5U);
    EXPECT_EQ(detail::countWithin(0xffffffffU, 0xffffffffU, L"too many"), 0xffffffffU);
}

TEST(CountLimit, RefusesTheOthersWithTheGivenMessage) {
    EXPECT_ERROR(detail::countWithin(5, 6, L"six are too many"), vxArchive::TooLarge, L"six are too many");
    EXPECT_ERROR(detail::countWithin(0xffffffffU, std::size_t{1} << 32U, L"too many"), vxArchive::TooLarge,
                 L"too many");
}

} // namespace
