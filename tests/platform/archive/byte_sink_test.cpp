#include "platform/archive/byte_sink.h"

#include "tests/support/failing_allocation.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

namespace {

using detail::ByteSink;

void append(ByteSink& sink, std::size_t size, unsigned char value) {
    if (!sink.hasRoomFor(size)) {
        sink.prepare(size, 2 * sink.size());
    }
    unsigned char* to = sink.extend(size);
    for (std::size_t i = 0; i < size; ++i) {
        to[i] = value;
    }
}

TEST(ByteSink, IsEmptyAtFirst) {
    ByteSink sink;
    EXPECT_EQ(sink.size(), 0U);
    EXPECT_TRUE(sink.hasRoomFor(0));
    EXPECT_FALSE(sink.hasRoomFor(1));
    EXPECT_TRUE(sink.take().empty());
}

TEST(ByteSink, KeepsWhatIsAppended) {
    ByteSink sink;
    std::vector<unsigned char> expected;
    for (std::size_t size = 0; size < 700; ++size) {
        const auto value = static_cast<unsigned char>(size);
        append(sink, size, value);
        expected.insert(expected.end(), size, value);
        ASSERT_EQ(sink.size(), expected.size());
    }
    append(sink, 100000, 5);
    expected.insert(expected.end(), 100000, 5);
    EXPECT_EQ(sink.take(), expected);
}

TEST(ByteSink, GivesUpItsEnd) {
    ByteSink sink;
    append(sink, 10, 1);
    append(sink, 10, 2);
    sink.cutTo(12);
    append(sink, 1, 3);
    EXPECT_EQ(*sink.at(12), 3);
    EXPECT_EQ(sink.take(), (std::vector<unsigned char>{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 3}));
}

TEST(ByteSink, StaysAsItIsWhenMemoryRunsOut) {
    ByteSink sink;
    append(sink, 3, 1);
    const std::size_t more = 1000000;
    EXPECT_EQ(test::failEachAllocation([&] { append(sink, more, 2); }, [&] { EXPECT_EQ(sink.size(), 3U); }),
              1);
    EXPECT_EQ(sink.take().size(), 3 + more);
}

} // namespace
