#include "platform/archive/tracking_mark.h"

#include <gtest/gtest.h>

namespace {

using detail::TrackingMark;

TEST(TrackingMark, TheFirstStampStays) {
    TrackingMark::Word word{0};
    EXPECT_EQ(TrackingMark::stampOf(word), 0U);
    EXPECT_TRUE(TrackingMark::tryStamp(word, 0xfffffff7U));
    EXPECT_FALSE(TrackingMark::tryStamp(word, 8));
    EXPECT_EQ(TrackingMark::stampOf(word), 0xfffffff7U);
    TrackingMark::removeStamp(word, 0xfffffff7U);
    EXPECT_EQ(word, 0U);
}

TEST(TrackingMark, AStampOfAnotherIsNotTakenBack) {
    TrackingMark::Word word{0};
    ASSERT_TRUE(TrackingMark::tryStamp(word, 7));
    TrackingMark::removeStamp(word, 8);
    EXPECT_EQ(TrackingMark::stampOf(word), 7U);
    TrackingMark::removeAnyStamp(word);
    EXPECT_EQ(word, 0U);
    TrackingMark::removeStamp(word, 7);
    EXPECT_EQ(word, 0U);
}

TEST(TrackingMark, TrackersAreCountedApart) {
    TrackingMark::Word word{0};
    ASSERT_TRUE(TrackingMark::tryStamp(word, 7));
    EXPECT_FALSE(TrackingMark::hasTrackers(word));
    TrackingMark::addTracker(word);
    TrackingMark::addTracker(word);
    TrackingMark::removeAnyStamp(word);
    EXPECT_TRUE(TrackingMark::hasTrackers(word));
    ASSERT_TRUE(TrackingMark::tryStamp(word, 9));
    TrackingMark::removeTracker(word);
    EXPECT_TRUE(TrackingMark::hasTrackers(word));
    TrackingMark::removeStamp(word, 9);
    EXPECT_TRUE(TrackingMark::hasTrackers(word));
    TrackingMark::removeTracker(word);
    EXPECT_EQ(word, 0U);
}

TEST(TrackingMark, LeavesTheSpareBitsAlone) {
    constexpr std::uint64_t spare = TrackingMark::oneTracker - 1;
    TrackingMark::Word word{spare};
    EXPECT_FALSE(TrackingMark::hasTrackers(word));
    EXPECT_EQ(TrackingMark::stampOf(word), 0U);
    ASSERT_TRUE(TrackingMark::tryStamp(word, 7));
    TrackingMark::addTracker(word);
    EXPECT_EQ(TrackingMark::stampOf(word), 7U);
    EXPECT_TRUE(TrackingMark::hasTrackers(word));
    TrackingMark::removeTracker(word);
    EXPECT_FALSE(TrackingMark::hasTrackers(word));
    TrackingMark::removeStamp(word, 7);
    EXPECT_EQ(word, spare);
    ASSERT_TRUE(TrackingMark::tryStamp(word, 9));
    TrackingMark::removeAnyStamp(word);
    EXPECT_EQ(word, spare);
}

} // namespace
