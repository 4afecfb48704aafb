#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/random.h>
#include <vxclassifier/total_data_generator.h>

#include "tests/support/expect_error.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

namespace {

using Pairs = std::vector<vxPair<double>>;

vx_ClassDataGenerator categoryAround(double mean, std::size_t measurements, long count) {
    return vx_ClassDataGenerator(Pairs(measurements, vxPair<double>(mean, 1.0)), count);
}

/// The places that the shuffling gives to 0 .. size - 1, straight from its description.
std::vector<long> expectedOrder(long size) {
    std::vector<long> order;
    for (long i = 0; i < size; ++i) {
        order.push_back(i);
    }
    vxRandomUniform random(1);
    for (long i = 0; i < size; ++i) {
        long j = static_cast<long>(random.next(0.0, static_cast<double>(size)));
        if (j == size) {
            j = size - 1;
        }
        std::swap(order[static_cast<std::size_t>(i)], order[static_cast<std::size_t>(j)]);
    }
    return order;
}

} // namespace

TEST(TotalDataGenerator, TakesAsManyPatternsAsThereAreMeasurementsInShuffledOrder) {
    for (const std::size_t measurements : {1U, 2U, 3U, 7U, 20U}) {
        vx_ClassDataGenerator first = categoryAround(0.0, measurements, 25);
        vx_ClassDataGenerator second = categoryAround(10.0, measurements, 25);
        vx_TotalDataGenerator generator({first, second});
        const vxClassifierDataProviderMemory data = generator.generateData();

        // The first category alone contributes as many as are taken, so all are of the category 0.
        const vxClassifierDataProviderMemory category = first.generateData();
        const std::vector<long> order = expectedOrder(static_cast<long>(measurements));
        ASSERT_EQ(data.numPatterns(), static_cast<long>(measurements));
        for (long i = 0; i < data.numPatterns(); ++i) {
            EXPECT_EQ(data.categoryLabel(i), 0);
            EXPECT_EQ(*data.featurePattern(i), *category.featurePattern(order[static_cast<std::size_t>(i)]));
        }
    }
}

TEST(TotalDataGenerator, TakesEachPatternOnce) {
    vx_TotalDataGenerator generator({categoryAround(0.0, 30, 30)});
    const vxClassifierDataProviderMemory data = generator.generateData();
    std::set<const vxFeaturePattern*> distinct;
    for (long i = 0; i < data.numPatterns(); ++i) {
        distinct.insert(data.featurePattern(i).get());
    }
    EXPECT_EQ(distinct.size(), 30U);
}

TEST(TotalDataGenerator, ShufflesBySwappingWithAPlaceDrawnFromAll) {
    const std::vector<long> order = expectedOrder(30);
    EXPECT_FALSE(std::is_sorted(order.begin(), order.end()));
}

TEST(TotalDataGenerator, LabelsByThePlaceOfTheCategoryOnceAnEarlierOneGivesTooFew) {
    // A category without patterns contributes none, so the next one fills the set, with its own place as the
    // label.
    vx_TotalDataGenerator generator({categoryAround(0.0, 4, 0), categoryAround(5.0, 4, 10)});
    const vxClassifierDataProviderMemory data = generator.generateData();
    ASSERT_EQ(data.numPatterns(), 4);
    for (long i = 0; i < 4; ++i) {
        EXPECT_EQ(data.categoryLabel(i), 1);
    }
}

TEST(TotalDataGenerator, GivesTheSamePatternObjectsAgain) {
    vx_TotalDataGenerator generator({categoryAround(0.0, 3, 10), categoryAround(1.0, 3, 10)});
    const vxClassifierDataProviderMemory first = generator.generateData();
    const vxClassifierDataProviderMemory second = generator.generateData();
    ASSERT_EQ(second.numPatterns(), 3);
    for (long i = 0; i < 3; ++i) {
        EXPECT_EQ(first.featurePattern(i), second.featurePattern(i));
    }
}

TEST(TotalDataGenerator, UsesTheDataOfAClassGeneratorThatHasDrawnAlready) {
    vx_ClassDataGenerator category = categoryAround(0.0, 2, 5);
    const vxClassifierDataProviderMemory drawn = category.generateData();
    vx_TotalDataGenerator generator({category});
    const vxClassifierDataProviderMemory data = generator.generateData();
    const std::set<const vxFeaturePattern*> taken = {data.featurePattern(0).get(),
                                                     data.featurePattern(1).get()};
    const std::set<const vxFeaturePattern*> first = {drawn.featurePattern(0).get(),
                                                     drawn.featurePattern(1).get()};
    EXPECT_EQ(taken, first);
}

TEST(TotalDataGenerator, FailsForACategoryWithFewerPatternsThanMeasurementsAndStaysAsItWas) {
    vx_TotalDataGenerator generator({categoryAround(0.0, 5, 9), categoryAround(1.0, 5, 2)});
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_ERROR(generator.generateData(), vxClassifierDefs::BadIndex,
                     L"Feature pattern index must be >=0 and < number of patterns.");
    }
}

TEST(TotalDataGenerator, FailsForCategoriesWithDifferentNumbersOfMeasurements) {
    vx_TotalDataGenerator generator({categoryAround(0.0, 2, 9), categoryAround(1.0, 3, 9)});
    EXPECT_ERROR(generator.generateData(), vxClassifierDefs::BadFeatures,
                 L"Feature pattern must have the same number of measurements as the rest of the data.");
}

TEST(TotalDataGenerator, GivesNothingWithoutCategoriesOrMeasurements) {
    vx_TotalDataGenerator withoutCategories(std::vector<vx_ClassDataGenerator>{});
    EXPECT_EQ(withoutCategories.generateData().numPatterns(), 0);
    vx_TotalDataGenerator withoutMeasurements({categoryAround(0.0, 0, 5)});
    EXPECT_EQ(withoutMeasurements.generateData().numPatterns(), 0);
}

TEST(TotalDataGenerator, ACopyCarriesTheGeneratedData) {
    vx_TotalDataGenerator generator({categoryAround(0.0, 3, 10)});
    const vxClassifierDataProviderMemory data = generator.generateData();
    vx_TotalDataGenerator copy(generator);
    vx_TotalDataGenerator assigned(std::vector<vx_ClassDataGenerator>{});
    assigned = generator;
    EXPECT_EQ(copy.generateData().featurePattern(2), data.featurePattern(2));
    EXPECT_EQ(assigned.generateData().featurePattern(2), data.featurePattern(2));
}
