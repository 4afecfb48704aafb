#include "platform/archive/stamps.h"

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

} // namespace
