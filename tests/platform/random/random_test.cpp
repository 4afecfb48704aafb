#include "tests/platform/random/random_tables.h"

#include <vxclassifier/platform/random.h>

#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace {

constexpr int many = 200000;

/// The mean of many numbers and of their squares.
struct Moments {
    double mean = 0.0;
    double meanSquare = 0.0;
};

template <class Generator>
Moments momentsOf(Generator generator, double first, double second) {
    Moments moments;
    for (int i = 0; i < many; ++i) {
        const double value = generator.next(first, second);
        moments.mean += value / many;
        moments.meanSquare += value * value / many;
    }
    return moments;
}

/// Pearson's statistic of 100 equally likely classes; `share` gives the probability of a smaller value.
template <class Generator, class Share>
double chiSquare(Generator generator, Share share) {
    constexpr int classes = 100;
    std::vector<double> counts(classes, 0.0);
    for (int i = 0; i < many; ++i) {
        const int found = static_cast<int>(share(generator.next(0.0, 1.0)) * classes);
        counts.at(static_cast<std::size_t>(found)) += 1.0;
    }
    double statistic = 0.0;
    for (const double count : counts) {
        const double expected = static_cast<double>(many) / classes;
        statistic += (count - expected) * (count - expected) / expected;
    }
    return statistic;
}

// With 99 degrees of freedom, one sample in a thousand lies below the one bound and one above the other.
constexpr double leastChiSquare = 61.1;
constexpr double mostChiSquare = 148.2;

TEST(RandomUniform, TheFirstNumbersAreTheseForEver) {
    vxRandomUniform generator(1);
    ASSERT_EQ(std::size(test::firstUniform), 100U);
    for (const double expected : test::firstUniform) {
        EXPECT_EQ(generator.next(0.0, 1.0), expected);
    }
}

TEST(RandomUniform, FillsTheGivenInterval) {
    vxRandomUniform plain(1);
    vxRandomUniform scaled(1);
    for (int i = 0; i < 1000; ++i) {
        const double u = plain.next(0.0, 1.0);
        const double value = scaled.next(-3.0, 5.0);
        EXPECT_EQ(value, -3.0 + 8.0 * u);
        EXPECT_GE(u, 0.0);
        EXPECT_LT(u, 1.0);
    }
    EXPECT_EQ(plain.next(2.5, 2.5), 2.5);
}

TEST(RandomUniform, IsUniform) {
    const Moments moments = momentsOf(vxRandomUniform(12345), -1.0, 3.0);
    // Four standard errors: the variance is 16/12, that of the square 6.756.
    EXPECT_NEAR(moments.mean, 1.0, 4.0 * std::sqrt(16.0 / 12.0 / many));
    EXPECT_NEAR(moments.meanSquare, 1.0 + 16.0 / 12.0, 4.0 * std::sqrt(6.756 / many));
    const double statistic = chiSquare(vxRandomUniform(12345), [](double value) { return value; });
    EXPECT_GT(statistic, leastChiSquare);
    EXPECT_LT(statistic, mostChiSquare);
}

TEST(RandomGaussian, TheFirstNumbersAreTheseForEver) {
    vxRandomGaussian generator(1);
    ASSERT_EQ(std::size(test::firstGaussian), 100U);
    for (const double expected : test::firstGaussian) {
        EXPECT_EQ(generator.next(0.0, 1.0), expected);
    }
}

TEST(RandomGaussian, HasTheGivenMeanAndSpread) {
    vxRandomGaussian plain(1);
    vxRandomGaussian scaled(1);
    for (int i = 0; i < 1000; ++i) {
        const double z = plain.next(0.0, 1.0);
        EXPECT_EQ(scaled.next(10.0, 0.5), 10.0 + 0.5 * z);
        EXPECT_LT(std::fabs(z), 8.3);
    }
    EXPECT_EQ(plain.next(4.0, 0.0), 4.0);
}

TEST(RandomGaussian, IsNormal) {
    const Moments moments = momentsOf(vxRandomGaussian(12345), 2.0, 3.0);
    // Four standard errors: the variance is 9, that of the square 4*4*9 + 2*81.
    EXPECT_NEAR(moments.mean, 2.0, 4.0 * std::sqrt(9.0 / many));
    EXPECT_NEAR(moments.meanSquare, 13.0, 4.0 * std::sqrt(306.0 / many));
    const double statistic = chiSquare(vxRandomGaussian(12345),
                                       [](double value) { return 0.5 * std::erfc(-value / std::sqrt(2.0)); });
    EXPECT_GT(statistic, leastChiSquare);
    EXPECT_LT(statistic, mostChiSquare);
}

template <class Generator>
class Random : public ::testing::Test {};

using Generators = ::testing::Types<vxRandomUniform, vxRandomGaussian>;
struct GeneratorName {
    template <class Generator>
    static std::string GetName(int) {
        return std::is_same_v<Generator, vxRandomUniform> ? "vxRandomUniform" : "vxRandomGaussian";
    }
};
TYPED_TEST_SUITE(Random, Generators, GeneratorName);

TYPED_TEST(Random, ACopyContinuesWhereTheOriginalIs) {
    TypeParam original(1);
    for (int i = 0; i < 400; ++i) {
        original.next(0.0, 1.0);
    }
    TypeParam copy(original);
    TypeParam assigned(2);
    assigned = original;
    TypeParam& same = assigned;
    assigned = same;
    for (int i = 0; i < 400; ++i) {
        const double expected = original.next(0.0, 1.0);
        EXPECT_EQ(copy.next(0.0, 1.0), expected);
        EXPECT_EQ(assigned.next(0.0, 1.0), expected);
    }
}

TYPED_TEST(Random, OnlyTheLow32BitsOfTheSeedCount) {
    TypeParam one(1);
    TypeParam two(2);
    EXPECT_NE(one.next(0.0, 1.0), two.next(0.0, 1.0));
    if (std::numeric_limits<long>::digits > 32) {
        TypeParam minusOne(-1);
        TypeParam unsignedOne(static_cast<long>(0xffffffffUL));
        EXPECT_EQ(minusOne.next(0.0, 1.0), unsignedOne.next(0.0, 1.0));
    }
}

} // namespace
