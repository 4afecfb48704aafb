#include "clss/clastool/foundation/stable_merge_sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

namespace {

struct Entry {
    double key;
    std::size_t place;
};

bool operator==(const Entry& a, const Entry& b) {
    return a.key == b.key && a.place == b.place;
}

bool lessKey(const Entry& a, const Entry& b) {
    return a.key < b.key;
}

std::vector<std::size_t> placesOf(const std::vector<Entry>& entries) {
    std::vector<std::size_t> places;
    for (const Entry& entry : entries) {
        places.push_back(entry.place);
    }
    return places;
}

bool isPermutation(std::vector<std::size_t> places) {
    std::sort(places.begin(), places.end());
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (places[i] != i) {
            return false;
        }
    }
    return true;
}

/// Entries with few different keys, so that many are equal.
std::vector<Entry> entriesWithTies(std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<Entry> entries;
    for (std::size_t i = 0; i < size; ++i) {
        entries.push_back({static_cast<double>(random() % (size / 3 + 1)), i});
    }
    return entries;
}

// Around the length of the runs that are sorted by insertion, and around the lengths of the merged ones.
const std::size_t sizes[] = {0,  1,  2,   3,   31,  32,  33,  63,  64,  65,   95,
                             96, 97, 100, 127, 128, 129, 255, 256, 257, 1000, 4097};

TEST(StableMergeSort, SortsAsTheStandardStableSortDoes) {
    for (const std::size_t size : sizes) {
        for (unsigned seed = 0; seed < 5; ++seed) {
            std::vector<Entry> entries = entriesWithTies(size, seed);
            std::vector<Entry> expected = entries;
            std::stable_sort(expected.begin(), expected.end(), lessKey);
            detail::stableMergeSort(entries, lessKey);
            EXPECT_EQ(entries, expected) << size << " entries, seed " << seed;
        }
    }
}

TEST(StableMergeSort, KeepsTheOrderWhenNothingIsLess) {
    for (const std::size_t size : sizes) {
        std::vector<Entry> entries = entriesWithTies(size, 1);
        const std::vector<Entry> before = entries;
        detail::stableMergeSort(entries, [](const Entry&, const Entry&) { return false; });
        EXPECT_EQ(entries, before);
    }
}

TEST(StableMergeSort, LosesNothingWhateverTheComparisonSays) {
    for (const std::size_t size : sizes) {
        std::mt19937 random(7);
        std::vector<Entry> always = entriesWithTies(size, 2);
        detail::stableMergeSort(always, [](const Entry&, const Entry&) { return true; });
        EXPECT_TRUE(isPermutation(placesOf(always))) << size;

        std::vector<Entry> arbitrary = entriesWithTies(size, 3);
        detail::stableMergeSort(arbitrary,
                                [&random](const Entry&, const Entry&) { return random() % 2 == 0; });
        EXPECT_TRUE(isPermutation(placesOf(arbitrary))) << size;
    }
}

TEST(StableMergeSort, LosesNothingAmongNotANumbers) {
    for (const std::size_t size : sizes) {
        std::vector<Entry> entries = entriesWithTies(size, 4);
        for (std::size_t i = 0; i < size; i += 3) {
            entries[i].key = std::numeric_limits<double>::quiet_NaN();
        }
        detail::stableMergeSort(entries, lessKey);
        EXPECT_TRUE(isPermutation(placesOf(entries))) << size;
    }
}

TEST(StableMergeSort, ComparesAboutAsOftenAsASortMust) {
    std::vector<Entry> entries = entriesWithTies(100000, 5);
    std::size_t comparisons = 0;
    detail::stableMergeSort(entries, [&comparisons](const Entry& a, const Entry& b) {
        ++comparisons;
        return a.key < b.key;
    });
    EXPECT_TRUE(std::is_sorted(entries.begin(), entries.end(), lessKey));
    EXPECT_LT(comparisons, 100000U * 32U);
}

} // namespace
