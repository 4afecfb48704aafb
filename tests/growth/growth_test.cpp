// How much more a work of twice the size takes, counted: the memory that is allocated, the number of
// allocations, and how often a work asks whether it is interrupted. Time is measured by the program growth,
// which scripts/growth runs.

#include "tests/growth/works.h"
#include "tests/support/memory_meter.h"

#include <vxclassifier/platform/attention.h>

#include <gtest/gtest.h>

#include <cctype>
#include <cstdint>
#include <ostream>

namespace growth {

static void PrintTo(const Work& work, std::ostream* out) {
    *out << work.name;
}

} // namespace growth

namespace {

struct Counts {
    std::int64_t bytes = 0;
    std::int64_t allocations = 0;
    std::int64_t polls = 0;
};

Counts countsOf(const growth::Work& work, long size) {
    const auto perform = work.prepare(size);
    perform(); // what is made once and kept does not count
    Counts counts;
    const auto poll = [](void* polls) -> long {
        ++*static_cast<std::int64_t*>(polls);
        return 0;
    };
    const vxAttentionScope scope(poll, &counts.polls);
    const test::MemoryMeter meter;
    perform();
    counts.bytes = meter.total();
    counts.allocations = meter.allocations();
    return counts;
}

class Growth : public testing::TestWithParam<growth::Work> {};

/// Vectors that double their memory, and what does not depend on the size, move each ratio away from 2.
void expectAtMostDoubled(std::int64_t once, std::int64_t twice, std::int64_t small, const char* what) {
    EXPECT_LE(static_cast<double>(twice), 2.6 * static_cast<double>(once) + static_cast<double>(small))
        << what << ": " << once << ", then " << twice;
}

TEST_P(Growth, OfTheWorkIsAtMostThatOfItsSize) {
    // Below, memory that is taken once from a certain size on would count as growth.
    Counts before = countsOf(GetParam(), 1000);
    for (const long size : {2000L, 4000L}) {
        const Counts now = countsOf(GetParam(), size);
        expectAtMostDoubled(before.bytes, now.bytes, 256, "bytes");
        expectAtMostDoubled(before.allocations, now.allocations, 4, "allocations");
        expectAtMostDoubled(before.polls, now.polls, 2, "polls");
        before = now;
    }
}

std::string testName(const testing::TestParamInfo<growth::Work>& info) {
    std::string name;
    for (const char character : info.param.name) {
        name += std::isalnum(static_cast<unsigned char>(character)) != 0 ? character : '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Of, Growth, testing::ValuesIn(growth::works()), testName);

} // namespace
