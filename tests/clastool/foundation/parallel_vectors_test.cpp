#include "clss/clastool/foundation/parallel_vectors.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(ParallelVectors, HaveTheRowsThatAllOfThemHave) {
    const std::vector<long> three{1, 2, 3};
    const std::vector<double> two{1.0, 2.0};
    const std::vector<std::string> none;
    EXPECT_EQ(detail::commonRows(three), 3U);
    EXPECT_EQ(detail::commonRows(three, two), 2U);
    EXPECT_EQ(detail::commonRows(two, three), 2U);
    EXPECT_EQ(detail::commonRows(three, two, none), 0U);
}

TEST(ParallelVectors, MakingRoomDropsWhatIsNoRowAndReservesTheNext) {
    std::vector<long> three{1, 2, 3};
    std::vector<double> two{1.0, 2.0};
    detail::makeRoomForRow(three, two);
    EXPECT_EQ(three, (std::vector<long>{1, 2}));
    EXPECT_EQ(two, (std::vector<double>{1.0, 2.0}));
    EXPECT_GE(three.capacity(), 3U);
    EXPECT_GE(two.capacity(), 3U);
}

TEST(ParallelVectors, TheFirstRowHasRoomToo) {
    std::vector<long> labels;
    std::vector<double> values;
    detail::makeRoomForRow(labels, values);
    EXPECT_GE(labels.capacity(), 1U);
    EXPECT_GE(values.capacity(), 1U);
}

TEST(ParallelVectors, GrowInProportionToTheirSize) {
    std::vector<long> labels;
    std::vector<double> values;
    std::size_t growths = 0;
    for (long i = 0; i < 10000; ++i) {
        const std::size_t before = labels.capacity();
        detail::makeRoomForRow(labels, values);
        growths += labels.capacity() != before ? 1U : 0U;
        labels.push_back(i);
        values.push_back(0.0);
    }
    EXPECT_EQ(labels.size(), 10000U);
    EXPECT_LT(growths, 20U);
}

} // namespace
