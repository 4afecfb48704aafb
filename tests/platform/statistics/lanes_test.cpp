#include "platform/statistics/independent_normals.h"
#include "platform/statistics/independent_normals_kernel.h"
#include "platform/statistics/sample_block_kernel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

// Vector code has the same bits in registers of any width.

namespace {

using detail::BlockDifferences;
using detail::BlockWeights;
using detail::NarrowLanes;
using detail::numLanes;
using detail::PackedLower;
using detail::paddedToLanes;
using detail::WideLanes;

std::vector<double> anyNumbers(std::size_t number) {
    std::vector<double> numbers;
    for (std::size_t i = 0; i < number; ++i) {
        numbers.push_back(std::sin(static_cast<double>(3 * i + number)));
    }
    return numbers;
}

TEST(Lanes, AreDividedIntoTheSameNumbers) {
    const std::vector<double> numbers = anyNumbers(numLanes);
    NarrowLanes lanes;
    lanes.load(numbers.data());
    lanes.multiply(lanes);
    lanes.addProduct(lanes, 2.0);
    std::vector<double> results(numLanes);
    lanes.store(results.data());
    for (std::size_t i = 0; i < numLanes; ++i) {
        const double square = numbers[i] * numbers[i];
        EXPECT_EQ(results[i], square + square * 2.0);
    }
}

/// The upper triangle of a covariance after a block has entered.
class EnteredBlock {
public:
    explicit EnteredBlock(std::size_t size)
        : entries(anyNumbers(size * size)), size_(size), stride_(paddedToLanes(size)),
          numbers_(anyNumbers((18 + BlockDifferences::productRows) * stride_)),
          rests_(anyNumbers(size * (size + 1) / 2)) {
        for (double& rest : rests_) {
            rest *= 1e-17;
        }
    }

    template <class Lanes>
    VXCLASSIFIER_INLINE void enterIn() {
        const double* const sums = numbers_.data() + 16 * stride_;
        const BlockDifferences block = {
            numbers_.data(), 16, stride_, sums, sums + stride_, numbers_.data() + 18 * stride_};
        detail::enterBlockIn<Lanes>(
            block, BlockWeights{0.0625, 0.00390625}, size_,
            [this](std::size_t i) { return entries.data() + i * size_ + i; },
            [this](std::size_t i) { return rests_.data() + i * size_ - i * (i - 1) / 2; });
    }

    /// The same one number after the other.
    void enterPlainly() {
        const double* const sums = numbers_.data() + 16 * stride_;
        const double* const shifts = sums + stride_;
        double* rest = rests_.data();
        for (std::size_t i = 0; i < size_; ++i) {
            for (std::size_t j = i; j < size_; ++j) {
                double product = 0.0;
                for (std::size_t sample = 0; sample < 16; ++sample) {
                    product += numbers_[sample * stride_ + i] * numbers_[sample * stride_ + j];
                }
                double& entry = entries[i * size_ + j];
                const double scatter = product - shifts[i] * sums[j];
                const double increment = (scatter * 0.00390625 - entry * 0.0625) - *rest * 0.0625;
                detail::addToAverage(entry, *rest++, increment);
            }
        }
    }

    std::vector<double> entries;

private:
    std::size_t size_;
    std::size_t stride_;
    std::vector<double> numbers_;
    std::vector<double> rests_;
};

TEST(Lanes, EnterABlockWithTheBitsOfOneNumberAfterTheOther) {
    for (std::size_t size = 1; size < 40; ++size) {
        EnteredBlock plain(size);
        EnteredBlock narrow(size);
        plain.enterPlainly();
        narrow.enterIn<NarrowLanes>();
        EXPECT_EQ(narrow.entries, plain.entries) << size;
    }
}

constexpr double largest = std::numeric_limits<double>::max();
constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(Lanes, TakeASampleAndSeeWhetherItIsFinite) {
    for (std::size_t size = 1; size < 20; ++size) {
        for (std::size_t odd = 0; odd < size; ++odd) {
            for (const double number : {0.0, -0.0, largest, -largest, infinity, -infinity, std::nan("")}) {
                std::vector<double> values = anyNumbers(size);
                values[odd] = number;
                std::vector<double> row(paddedToLanes(size));
                EXPECT_EQ(detail::takeSampleIn<NarrowLanes>(values.data(), size, row.data()),
                          std::isfinite(number));
                row.resize(size);
                EXPECT_EQ(std::memcmp(row.data(), values.data(), size * sizeof(double)), 0);
            }
        }
    }
}

/// Samples, the mean and its rounding errors; differences and their sums.
class Differences {
public:
    explicit Differences(std::size_t padded)
        : samples(anyNumbers(5 * padded)), values(5 * padded, -1.0), sums(padded, -1.0), padded_(padded),
          means_(anyNumbers(padded + 1)), rests_(anyNumbers(padded + 2)) {}

    template <class Lanes>
    VXCLASSIFIER_INLINE bool makeIn(double limit) {
        return detail::makeDifferencesIn<Lanes>(samples.data(), 5, padded_, means_.data(), rests_.data(),
                                                limit, values.data(), sums.data());
    }

    bool makePlainly(double limit) {
        bool areWithin = true;
        for (std::size_t i = 0; i < padded_; ++i) {
            sums[i] = 0.0;
            for (std::size_t place = i; place < samples.size(); place += padded_) {
                values[place] = (samples[place] - means_[i]) - rests_[i];
                sums[i] += values[place];
                areWithin = areWithin && std::fabs(values[place]) <= limit;
            }
        }
        return areWithin;
    }

    std::vector<double> samples;
    std::vector<double> values;
    std::vector<double> sums;

private:
    std::size_t padded_;
    std::vector<double> means_;
    std::vector<double> rests_;
};

TEST(Lanes, MakeDifferencesAsOneNumberAfterTheOtherDoes) {
    for (std::size_t padded = numLanes; padded <= 40; padded += numLanes) {
        Differences plain(padded);
        Differences narrow(padded);
        EXPECT_TRUE(plain.makePlainly(9.0));
        EXPECT_TRUE(narrow.makeIn<NarrowLanes>(9.0));
        EXPECT_EQ(narrow.values, plain.values);
        EXPECT_EQ(narrow.sums, plain.sums);
        for (std::size_t place = 0; place < 5 * padded; ++place) {
            for (const double far : {20.0, -20.0, infinity}) {
                Differences one(padded);
                one.samples[place] = far;
                EXPECT_FALSE(one.makeIn<NarrowLanes>(9.0));
                EXPECT_EQ(one.makeIn<NarrowLanes>(30.0), far != infinity);
            }
        }
    }
}

TEST(Lanes, TakeADifferenceOfTheLimitForWithinIt) {
    Differences one(numLanes);
    EXPECT_TRUE(one.makePlainly(9.0));
    double most = 0.0;
    for (const double value : one.values) {
        most = std::max(most, std::fabs(value));
    }
    EXPECT_TRUE(one.makeIn<NarrowLanes>(most));
    EXPECT_FALSE(one.makeIn<NarrowLanes>(std::nextafter(most, 0.0)));
}

#if VXCLASSIFIER_HAS_AVX2
VXCLASSIFIER_AVX2 void enterInWideLanes(EnteredBlock& block) {
    block.enterIn<WideLanes>();
}
VXCLASSIFIER_AVX2 bool makeInWideLanes(Differences& differences, double limit) {
    return differences.makeIn<WideLanes>(limit);
}
VXCLASSIFIER_AVX2 bool takeSampleInWideLanes(const double* values, std::size_t size, double* row) {
    return detail::takeSampleIn<WideLanes>(values, size, row);
}
VXCLASSIFIER_AVX2 void toLogValuesInWideLanes(const double* block, std::size_t padded, double* values) {
    detail::toLogValuesIn<WideLanes>(block, padded, values);
}

TEST(Lanes, OfEachWidthEnterABlockWithTheSameBits) {
    if (!detail::hasAvx2()) {
        GTEST_SKIP() << "this processor has no wide registers";
    }
    for (std::size_t size = 1; size < 40; ++size) {
        EnteredBlock narrow(size);
        EnteredBlock wide(size);
        narrow.enterIn<NarrowLanes>();
        enterInWideLanes(wide);
        EXPECT_EQ(narrow.entries, wide.entries) << size;
        EXPECT_NE(narrow.entries, anyNumbers(size * size));
    }
}

TEST(Lanes, OfEachWidthTakeTheSameSamples) {
    if (!detail::hasAvx2()) {
        GTEST_SKIP() << "this processor has no wide registers";
    }
    for (std::size_t size = 1; size < 20; ++size) {
        const std::vector<double> values = anyNumbers(size);
        std::vector<double> row(paddedToLanes(size));
        EXPECT_TRUE(takeSampleInWideLanes(values.data(), size, row.data()));
        row.resize(size);
        EXPECT_EQ(row, values);
        for (std::size_t odd = 0; odd < size; ++odd) {
            for (const double number : {largest, -largest, infinity, -infinity, std::nan("")}) {
                std::vector<double> one = values;
                one[odd] = number;
                row.assign(paddedToLanes(size), 0.0);
                EXPECT_EQ(takeSampleInWideLanes(one.data(), size, row.data()), std::isfinite(number));
            }
        }
    }
}

TEST(Lanes, OfEachWidthMakeTheSameDifferences) {
    if (!detail::hasAvx2()) {
        GTEST_SKIP() << "this processor has no wide registers";
    }
    for (std::size_t padded = numLanes; padded <= 40; padded += numLanes) {
        Differences narrow(padded);
        Differences wide(padded);
        EXPECT_TRUE(narrow.makeIn<NarrowLanes>(9.0));
        EXPECT_TRUE(makeInWideLanes(wide, 9.0));
        EXPECT_EQ(wide.values, narrow.values);
        EXPECT_EQ(wide.sums, narrow.sums);
        for (std::size_t place = 0; place < 5 * padded; ++place) {
            Differences one(padded);
            one.samples[place] = -20.0;
            EXPECT_FALSE(makeInWideLanes(one, 9.0));
        }
    }
}

TEST(Lanes, OfEachWidthGiveTheSameLogValues) {
    if (!detail::hasAvx2()) {
        GTEST_SKIP() << "this processor has no wide registers";
    }
    for (std::size_t padded = 0; padded <= 80; padded += numLanes) {
        const std::vector<double> block = anyNumbers(3 * padded);
        std::vector<double> narrow = anyNumbers(padded);
        std::vector<double> wide = narrow;
        detail::toLogValuesIn<NarrowLanes>(block.data(), padded, narrow.data());
        toLogValuesInWideLanes(block.data(), padded, wide.data());
        EXPECT_EQ(narrow, wide);
    }
}
#endif

} // namespace
