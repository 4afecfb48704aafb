#include <vxclassifier/platform/detail/spare_bits.h>

#include "platform/archive/object_tracker.h"

#include <gtest/gtest.h>

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

} // namespace
