// What exceptions promise when memory runs out.

#include <vxclassifier/platform/exception.h>

#include "tests/support/failing_allocation.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(HostileException, AMessageComesWholeOrNotAtAll) {
    const std::wstring text(5000, L'x');
    const vxBadPointer error(text);
    std::wstring message;
    const long failures = test::failEachAllocation([&] { message = error.message(); }, [] {});
    EXPECT_GT(failures, 0);
    EXPECT_EQ(message, text);
}

} // namespace
