#include "platform/archive/stamps.h"

#include "platform/archive/persistent_access.h"
#include "platform/archive/tracking_mark.h"
#include "tests/platform/archive/test_objects.h"

#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <set>

namespace {

using detail::Stamps;

TEST(Stamps, APlaceIsFoundByItsStamp) {
    Stamps stamps;
    Stamps others;
    constexpr std::uint32_t places = 10000;
    std::set<std::uint32_t> all;
    for (std::uint32_t place = 0; place < places; ++place) {
        all.insert(stamps.at(place));
        all.insert(others.at(place));
    }
    EXPECT_EQ(all.size(), 2 * places) << "no stamp is given twice";
    EXPECT_EQ(all.count(0), 0U);
    int found = 0;
    for (const std::uint32_t stamp : all) {
        const std::uint32_t mine = stamps.placeOf(stamp);
        const std::uint32_t theirs = others.placeOf(stamp);
        ASSERT_NE(mine == Stamps::none, theirs == Stamps::none);
        ASSERT_LT(mine == Stamps::none ? theirs : mine, places);
        found += mine == Stamps::none ? 0 : 1;
    }
    EXPECT_EQ(found, static_cast<int>(places));
}

TEST(Stamps, EachPlaceHasOneOfItsOwn) {
    Stamps stamps;
    for (std::uint32_t place = 0; place < 1000; ++place) {
        const std::uint32_t stamp = stamps.at(place);
        EXPECT_EQ(stamps.at(place), stamp);
        EXPECT_EQ(stamps.placeOf(stamp), place);
    }
}

TEST(Stamps, PlacesCanBeLeftOut) {
    Stamps stamps;
    for (std::uint32_t place : {3U, 15U, 16U, 1000U, 100000U}) {
        EXPECT_EQ(stamps.placeOf(stamps.at(place)), place);
    }
}

/// Each archive here takes half of all stamps, the last quarter of them in one block.
TEST(Stamps, AreNever0WhenAllHaveBeenGivenAndTheyBeginAnew) {
    constexpr std::uint32_t places = 0x7ffffff0; // that its blocks have
    for (int archive = 0; archive < 8; ++archive) {
        Stamps few; // lets the next ones begin somewhere else
        few.at(20);
        Stamps stamps;
        for (std::uint32_t place = places - 1000; place < places; ++place) {
            const std::uint32_t stamp = stamps.at(place);
            ASSERT_NE(stamp, 0U);
            ASSERT_EQ(stamps.placeOf(stamp), place);
        }
    }
}

TEST(Stamps, ZeroIsNoStamp) {
    const Stamps unused;
    EXPECT_EQ(unused.placeOf(0), Stamps::none);
    Stamps stamps;
    stamps.at(0);
    EXPECT_EQ(stamps.placeOf(0), Stamps::none);
}

TEST(Stamps, TheyGoOnBehindTheLastOfAll) {
    // More than all that there are, so that the count of them runs over at least once.
    for (int archive = 0; archive < 5; ++archive) {
        Stamps stamps;
        constexpr std::uint32_t far = std::uint32_t{1} << 30;
        EXPECT_EQ(stamps.placeOf(stamps.at(far)), far);
        EXPECT_EQ(stamps.placeOf(0), Stamps::none);
    }
}

std::uint32_t stampOf(const vxPersistent& object) {
    return detail::TrackingMark::stampOf(detail::PersistentAccess::tracking(object));
}

/// Gives stamps away until `next` is the next one. As 0 is left out, 16 comes when all have been given.
void giveAwayUpTo(std::uint32_t next) {
    const std::uint32_t end = next == 16 ? 0 : next;
    std::uint32_t given = 0;
    do {
        Stamps stamps;
        std::uint32_t place = 0;
        std::uint32_t size = 16; // of the next block
        do {
            given = stamps.at(place) + size;
            place += size;
            size *= 2;
        } while (size <= end - given && size <= 0 - given && place < std::uint32_t{1} << 29);
    } while (given != end);
}

TEST(Stamps, ThoseOfAnArchiveThatOutlivedAllOthersAreNotTakenForOnesOwn) {
    using Handle = vxPtrHandle<test::Node>;
    Handle old(new test::Node(1));
    Handle fresh(new test::Node(2));
    vxStoringArchive first;
    first || old;
    const std::uint32_t stamp = stampOf(*old);
    ASSERT_NE(stamp, 0U);
    giveAwayUpTo(stamp);

    vxStoringArchive second;
    second || fresh;
    ASSERT_EQ(stampOf(*fresh), stamp) << "the same one again";
    second || old;
    second || old;
    second.finish();
    vxLoadingArchive loading(second.bytes());
    Handle loaded[3];
    loading || loaded[0];
    loading || loaded[1];
    loading || loaded[2];
    loading.finish();
    EXPECT_EQ(loaded[0]->value, 2);
    EXPECT_EQ(loaded[1]->value, 1);
    EXPECT_EQ(loaded[1].get(), loaded[2].get());
}

} // namespace
