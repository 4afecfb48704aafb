#include "platform/archive/tracking_mark.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using detail::TrackingMark;

constexpr int mostMarks = 63;
constexpr std::uint64_t trackedBits = 0x1ffffffffU;

TEST(TrackingMark, AMarkIsValidUntilAChange) {
    TrackingMark::Word word{0};
    std::uint32_t changes = 9;
    ASSERT_TRUE(TrackingMark::tryAdd(word, changes));
    EXPECT_EQ(changes, 0U);
    EXPECT_NE(word & trackedBits, 0U);
    EXPECT_TRUE(TrackingMark::isValid(word, changes));
    TrackingMark::change(word);
    EXPECT_FALSE(TrackingMark::isValid(word, changes));
    EXPECT_EQ(word & trackedBits, 0U);

    std::uint32_t later = 9;
    ASSERT_TRUE(TrackingMark::tryAdd(word, later));
    EXPECT_EQ(later, 1U);
    EXPECT_FALSE(TrackingMark::isValid(word, changes));
    EXPECT_TRUE(TrackingMark::isValid(word, later));
}

TEST(TrackingMark, AMarkThatAChangeTookIsNotTakenBackOnceMore) {
    TrackingMark::Word word{0};
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    ASSERT_TRUE(TrackingMark::tryAdd(word, first));
    TrackingMark::change(word);
    ASSERT_TRUE(TrackingMark::tryAdd(word, second));
    TrackingMark::remove(word, first);
    EXPECT_NE(word & trackedBits, 0U);
    TrackingMark::remove(word, second);
    EXPECT_EQ(word & trackedBits, 0U);
}

TEST(TrackingMark, HoldsSoManyMarksAndNoMore) {
    TrackingMark::Word word{0};
    std::uint32_t changes = 0;
    for (int i = 0; i < mostMarks; ++i) {
        ASSERT_TRUE(TrackingMark::tryAdd(word, changes));
    }
    const std::uint64_t full = word;
    EXPECT_FALSE(TrackingMark::tryAdd(word, changes));
    EXPECT_EQ(word, full);
    for (int i = 0; i < mostMarks; ++i) {
        EXPECT_NE(word & trackedBits, 0U);
        TrackingMark::remove(word, changes);
    }
    EXPECT_EQ(word, 0U);
}

TEST(TrackingMark, TrackersAreCountedApart) {
    TrackingMark::Word word{0};
    std::uint32_t changes = 0;
    TrackingMark::addTracker(word);
    TrackingMark::addTracker(word);
    ASSERT_TRUE(TrackingMark::tryAdd(word, changes));
    TrackingMark::change(word);
    EXPECT_TRUE(TrackingMark::hasTrackers(word));
    TrackingMark::removeTracker(word);
    EXPECT_TRUE(TrackingMark::hasTrackers(word));
    EXPECT_NE(word & trackedBits, 0U);
    TrackingMark::removeTracker(word);
    EXPECT_FALSE(TrackingMark::hasTrackers(word));
    EXPECT_EQ(word & trackedBits, 0U);
}

TEST(TrackingMark, AChangeThatNobodyRemembersIsNotCounted) {
    TrackingMark::Word word{0};
    TrackingMark::addTracker(word);
    TrackingMark::change(word);
    TrackingMark::removeTracker(word);
    EXPECT_EQ(word, 0U);
}

TEST(TrackingMark, TheCountOfChangesRunsOver) {
    TrackingMark::Word word{~std::uint64_t{0} << 33};
    std::uint32_t changes = 0;
    ASSERT_TRUE(TrackingMark::tryAdd(word, changes));
    EXPECT_EQ(changes, 0x7fffffffU);
    TrackingMark::change(word);
    EXPECT_EQ(word, 0U);
}

} // namespace
