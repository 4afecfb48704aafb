#include "clss/clastool/knn/neighbor_list.h"

#include "tests/support/expect_error.h"

#include <vxclassifier/classifier_defs.h>

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

using detail::NeighborList;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/// The indices that a list of `k` places holds after distances were offered in turn.
std::vector<long> kept(long k, const std::vector<double>& distances) {
    NeighborList list(k, static_cast<long>(distances.size()));
    for (std::size_t i = 0; i < distances.size(); ++i) {
        list.offer(static_cast<long>(i), distances[i]);
    }
    return list.indices();
}

using Indices = std::vector<long>;

TEST(NeighborList, HoldsTheNearestByAscendingDistance) {
    EXPECT_EQ(kept(3, {5.0, 1.0, 4.0, 2.0, 3.0}), (Indices{1, 3, 4}));
}

TEST(NeighborList, HoldsAllThatWereOfferedWhenItHasMorePlaces) {
    EXPECT_EQ(kept(9, {5.0, 1.0, 4.0}), (Indices{1, 2, 0}));
    EXPECT_EQ(kept(9, {}), Indices{});
}

TEST(NeighborList, PutsTheLaterOfEqualDistancesFirst) {
    EXPECT_EQ(kept(3, {1.0, 1.0, 1.0}), (Indices{2, 1, 0}));
}

TEST(NeighborList, TakesNothingThatOnlyEqualsTheLastPlaceOnceItIsFull) {
    EXPECT_EQ(kept(2, {1.0, 1.0, 1.0}), (Indices{1, 0}));
    EXPECT_EQ(kept(2, {1.0, 2.0, 2.0, 1.0}), (Indices{3, 0}));
}

TEST(NeighborList, TreatsBothZerosAsEqual) {
    EXPECT_EQ(kept(3, {0.0, -0.0, 0.0}), (Indices{2, 1, 0}));
    EXPECT_EQ(kept(1, {0.0, -0.0}), Indices{0});
}

TEST(NeighborList, TreatsInfinityAsAnyOtherDistance) {
    EXPECT_EQ(kept(3, {infinity, 1.0, infinity}), (Indices{1, 2, 0}));
    EXPECT_EQ(kept(2, {infinity, infinity, infinity, 1.0}), (Indices{3, 1}));
    EXPECT_EQ(kept(1, {-infinity, -1.0, -infinity}), Indices{0});
}

TEST(NeighborList, PutsNaNBehindEverything) {
    EXPECT_EQ(kept(5, {notANumber, 1.0, infinity, notANumber, 0.0}), (Indices{4, 1, 2, 0, 3}));
}

TEST(NeighborList, LetsNaNDriveNothingOut) {
    EXPECT_EQ(kept(1, {1.0, notANumber}), Indices{0});
    EXPECT_EQ(kept(2, {infinity, infinity, notANumber}), (Indices{1, 0}));
    EXPECT_EQ(kept(2, {notANumber, notANumber, notANumber}), (Indices{0, 1}));
}

TEST(NeighborList, LetsEveryFiniteDistanceDriveNaNOut) {
    EXPECT_EQ(kept(1, {notANumber, 1e308}), Indices{1});
    EXPECT_EQ(kept(2, {notANumber, notANumber, 5.0, 4.0}), (Indices{3, 2}));
    EXPECT_EQ(kept(1, {notANumber, infinity}), Indices{0}) << "both count as infinite";
}

TEST(NeighborList, KeepsTheDistancesInStep) {
    NeighborList list(2, 3);
    list.offer(10, 3.0);
    list.offer(20, notANumber);
    list.offer(30, 1.5);
    EXPECT_EQ(list.indices(), (Indices{30, 10}));
    EXPECT_EQ(list.distances(), (std::vector<double>{1.5, 3.0}));
}

TEST(NeighborList, TakesMemoryForNoMoreThanTheCandidates) {
    constexpr long huge = std::numeric_limits<long>::max();
    for (const long candidates : {3L, 0L, -1L, -huge}) {
        NeighborList list(huge, candidates);
        EXPECT_LE(list.indices().capacity(), 3u);
        EXPECT_LE(list.distances().capacity(), 3u);
    }
    NeighborList few(2, huge);
    EXPECT_LE(few.indices().capacity(), 2u);
}

TEST(NeighborList, GrowsWhenMoreAreOfferedThanAnnounced) {
    NeighborList list(100, 1);
    for (long i = 0; i < 50; ++i) {
        list.offer(i, static_cast<double>(-i));
    }
    EXPECT_EQ(list.indices().size(), 50u);
    EXPECT_EQ(list.indices().front(), 49);
}

TEST(NeighborList, NeedsAtLeastOnePlace) {
    EXPECT_EQ(detail::requireNeighborCount(1), 1);
    EXPECT_ERROR(detail::requireNeighborCount(0), vxClassifierDefs::BadParams, L"K must be >= 1");
    EXPECT_ERROR(detail::requireNeighborCount(-3), vxClassifierDefs::BadParams, L"K must be >= 1");
}

} // namespace
