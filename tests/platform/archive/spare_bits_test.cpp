#include <vxclassifier/platform/detail/spare_bits.h>

#include "platform/archive/object_tracker.h"
#include "platform/archive/persistent_access.h"
#include "platform/archive/tracking_mark.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

using detail::SpareBits;
using Bit = detail::SpareBits::Bit;

struct Note : vxPersistent {};

TEST(SpareBits, AreSetAndClearedEachByItself) {
    const Note note;
    EXPECT_FALSE(SpareBits::isSet(note, Bit::first));
    EXPECT_FALSE(SpareBits::isSet(note, Bit::second));
    SpareBits::set(note, Bit::first);
    EXPECT_TRUE(SpareBits::isSet(note, Bit::first));
    EXPECT_FALSE(SpareBits::isSet(note, Bit::second));
    SpareBits::set(note, Bit::second);
    SpareBits::set(note, Bit::second);
    SpareBits::clear(note, Bit::first);
    EXPECT_FALSE(SpareBits::isSet(note, Bit::first));
    EXPECT_TRUE(SpareBits::isSet(note, Bit::second));
}

TEST(SpareBits, StayWithThePlaceInMemory) {
    Note from;
    Note to;
    SpareBits::set(from, Bit::first);
    SpareBits::set(to, Bit::second);
    to = from;
    EXPECT_FALSE(SpareBits::isSet(to, Bit::first));
    EXPECT_TRUE(SpareBits::isSet(to, Bit::second));
    const Note copy(from);
    EXPECT_FALSE(SpareBits::isSet(copy, Bit::first));
}

TEST(SpareBits, DoNotMakeAnObjectTracked) {
    Note note;
    SpareBits::set(note, Bit::first);
    SpareBits::set(note, Bit::second);
    EXPECT_FALSE(note.isTracked_());
    {
        detail::ObjectTracker tracker;
        tracker.track(note, 5);
        EXPECT_TRUE(note.isTracked_());
        SpareBits::clear(note, Bit::first);
        EXPECT_TRUE(note.isTracked_());
        EXPECT_EQ(tracker.numberAt(&note), 5U);
        note.mutating_();
        EXPECT_FALSE(note.isTracked_());
        EXPECT_TRUE(SpareBits::isSet(note, Bit::second));
    }
    EXPECT_TRUE(SpareBits::isSet(note, Bit::second));
}

/// Calls both at once, very often; each gives how often it found what the other one must leave alone changed.
template <class First, class Second>
int lossesOf(First first, Second second) {
    std::atomic<int> missing{2};
    std::atomic<int> losses{0};
    const auto repeat = [&](auto change) {
        --missing;
        while (missing > 0) {
        }
        for (int i = 0; i < 1'000'000; ++i) {
            losses += change();
        }
    };
    std::thread other([&] { repeat(first); });
    repeat(second);
    other.join();
    return losses;
}

int changesOf(const Note& note, Bit bit) {
    SpareBits::set(note, bit);
    SpareBits::set(note, bit);
    const int lost = SpareBits::isSet(note, bit) ? 0 : 1;
    SpareBits::clear(note, bit);
    return lost + (SpareBits::isSet(note, bit) ? 1 : 0);
}

TEST(SpareBits, AreNotLostWhenTwoThreadsChangeThem) {
    const Note note;
    EXPECT_EQ(
        lossesOf([&] { return changesOf(note, Bit::first); }, [&] { return changesOf(note, Bit::second); }),
        0);
}

TEST(SpareBits, AndAStampAreNotLostWhenTwoThreadsChangeThem) {
    const Note note;
    detail::TrackingMark::Word& word = detail::PersistentAccess::tracking(note);
    const auto stampAndRemove = [&] {
        const bool isFirst = detail::TrackingMark::tryStamp(word, 7);
        const int lost = isFirst && detail::TrackingMark::stampOf(word) == 7 ? 0 : 1;
        detail::TrackingMark::removeStamp(word, 7);
        return lost + (detail::TrackingMark::stampOf(word) == 0 ? 0 : 1);
    };
    EXPECT_EQ(lossesOf(stampAndRemove, [&] { return changesOf(note, Bit::second); }), 0);
}

} // namespace
