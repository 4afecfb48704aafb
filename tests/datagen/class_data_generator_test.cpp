#include <vxclassifier/class_data_generator.h>
#include <vxclassifier/platform/random.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

namespace {

using Pairs = std::vector<vxPair<double>>;

double value(const vxClassifierDataProviderMemory& data, long pattern, long measurement) {
    return data.featurePattern(pattern)->featureMeasurement(measurement, true);
}

} // namespace

TEST(ClassDataGenerator, DrawsPatternByPatternAndMeasurementByMeasurementFromTheSeedOne) {
    const Pairs pairs = {{1.0, 0.5}, {-3.0, 2.0}, {0.0, 0.0}};
    vx_ClassDataGenerator generator(pairs, 4);
    const vxClassifierDataProviderMemory data = generator.generateData();

    vxRandomGaussian random(1);
    ASSERT_EQ(data.numPatterns(), 4);
    ASSERT_EQ(data.numMeasurements(), 3);
    for (long i = 0; i < 4; ++i) {
        for (long m = 0; m < 3; ++m) {
            const vxPair<double>& pair = pairs[static_cast<std::size_t>(m)];
            EXPECT_EQ(value(data, i, m), random.next(pair.first, pair.second)) << i << ", " << m;
        }
    }
}

TEST(ClassDataGenerator, LabelsEveryPatternZeroAndMarksAllMeasurementsValid) {
    vx_ClassDataGenerator generator(Pairs{{1.0, 1.0}, {2.0, 1.0}}, 5);
    const vxClassifierDataProviderMemory data = generator.generateData();
    for (long i = 0; i < data.numPatterns(); ++i) {
        EXPECT_EQ(data.categoryLabel(i), 0);
        EXPECT_EQ(data.featurePattern(i)->numInvalid(), 0);
    }
    EXPECT_EQ(data.name(), L"");
    EXPECT_EQ(data.description(), L"");
}

TEST(ClassDataGenerator, GivesTheSamePatternObjectsAgain) {
    vx_ClassDataGenerator generator(Pairs{{0.0, 1.0}}, 3);
    const vxClassifierDataProviderMemory first = generator.generateData();
    const vxClassifierDataProviderMemory second = generator.generateData();
    ASSERT_EQ(second.numPatterns(), 3);
    for (long i = 0; i < 3; ++i) {
        EXPECT_EQ(first.featurePattern(i), second.featurePattern(i));
    }
}

TEST(ClassDataGenerator, GivesEqualDataForEqualDescriptions) {
    const Pairs pairs = {{5.0, 0.25}, {6.0, 4.0}};
    vx_ClassDataGenerator one(pairs, 10);
    vx_ClassDataGenerator other(pairs, 10);
    EXPECT_TRUE(one.generateData() == other.generateData());
}

TEST(ClassDataGenerator, AShorterSetIsTheBeginningOfALongerOne) {
    const Pairs pairs = {{5.0, 0.25}, {6.0, 4.0}};
    vx_ClassDataGenerator shorter(pairs, 3);
    vx_ClassDataGenerator longer(pairs, 8);
    const vxClassifierDataProviderMemory few = shorter.generateData();
    const vxClassifierDataProviderMemory many = longer.generateData();
    for (long i = 0; i < 3; ++i) {
        EXPECT_EQ(*few.featurePattern(i), *many.featurePattern(i));
    }
}

TEST(ClassDataGenerator, ACountBelowOneGivesAnEmptyProviderEveryTime) {
    for (const long count : {0L, -1L, -1000000L}) {
        vx_ClassDataGenerator generator(Pairs{{1.0, 1.0}}, count);
        EXPECT_EQ(generator.generateData().numPatterns(), 0) << count;
        EXPECT_EQ(generator.generateData().numPatterns(), 0) << count;
    }
}

TEST(ClassDataGenerator, WithoutMeasurementsEachCallAppendsEmptyPatterns) {
    vx_ClassDataGenerator generator(Pairs{}, 2);
    EXPECT_EQ(generator.generateData().numPatterns(), 2);
    EXPECT_EQ(generator.generateData().numPatterns(), 4);
    EXPECT_EQ(generator.generateData().numMeasurements(), 0);
}

TEST(ClassDataGenerator, WhatTheCallerDoesToTheDataDoesNotReachTheGenerator) {
    vx_ClassDataGenerator generator(Pairs{{1.0, 1.0}}, 2);
    vxClassifierDataProviderMemory data = generator.generateData();
    data.setName(L"mine");
    data.data({}, {});
    EXPECT_EQ(generator.generateData().numPatterns(), 2);
    EXPECT_EQ(generator.generateData().name(), L"");
}

TEST(ClassDataGenerator, ACopyCarriesTheGeneratedData) {
    vx_ClassDataGenerator generator(Pairs{{1.0, 1.0}}, 2);
    const vxClassifierDataProviderMemory data = generator.generateData();
    vx_ClassDataGenerator copy(generator);
    vx_ClassDataGenerator assigned(Pairs{}, 0);
    assigned = generator;
    EXPECT_EQ(copy.generateData().featurePattern(1), data.featurePattern(1));
    EXPECT_EQ(assigned.generateData().featurePattern(1), data.featurePattern(1));
}

TEST(ClassDataGenerator, TheDrawnValuesHaveTheDescribedMeanAndSpread) {
    constexpr long count = 20000;
    vx_ClassDataGenerator generator(Pairs{{10.0, 2.0}, {-1.0, 0.5}}, count);
    const vxClassifierDataProviderMemory data = generator.generateData();
    for (const auto& [measurement, mean, deviation] :
         {std::tuple{0L, 10.0, 2.0}, std::tuple{1L, -1.0, 0.5}}) {
        double sum = 0.0;
        double squares = 0.0;
        for (long i = 0; i < count; ++i) {
            const double offset = value(data, i, measurement) - mean;
            sum += offset;
            squares += offset * offset;
        }
        // Four standard errors of the mean and of the variance.
        EXPECT_LT(std::fabs(sum / count), 4.0 * deviation / std::sqrt(1.0 * count));
        EXPECT_LT(std::fabs(squares / count / (deviation * deviation) - 1.0), 4.0 * std::sqrt(2.0 / count));
    }
}

TEST(ClassDataGenerator, TheDrawnValuesFollowTheNormalDistribution) {
    constexpr long count = 20000;
    vx_ClassDataGenerator generator(Pairs{{0.0, 1.0}}, count);
    const vxClassifierDataProviderMemory data = generator.generateData();
    // Sixteen equally likely classes, by the quantiles of the standard normal distribution.
    const std::vector<double> bounds = {
        -1.5341205443525463, -1.1503493803760083, -0.8871465590188761, -0.6744897501960817,
        -0.4887764111146694, -0.3186393639643752, -0.1573106846101707, 0.0,
        0.1573106846101707,  0.3186393639643752,  0.4887764111146694,  0.6744897501960817,
        0.8871465590188761,  1.1503493803760083,  1.5341205443525463};
    std::vector<long> found(bounds.size() + 1);
    for (long i = 0; i < count; ++i) {
        const auto place = std::upper_bound(bounds.begin(), bounds.end(), value(data, i, 0));
        ++found[static_cast<std::size_t>(place - bounds.begin())];
    }
    const double expected = 1.0 * count / static_cast<double>(found.size());
    double chiSquare = 0.0;
    for (const long number : found) {
        chiSquare +=
            (static_cast<double>(number) - expected) * (static_cast<double>(number) - expected) / expected;
    }
    EXPECT_LT(chiSquare, 37.697); // the 99.9 % point for 15 degrees of freedom
    EXPECT_GT(chiSquare, 3.483);  // the 0.1 % point: not suspiciously even either
}
