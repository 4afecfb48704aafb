#include "platform/statistics/independent_normals.h"
#include "platform/statistics/independent_normals_kernel.h"
#include "platform/statistics/sample_block_kernel.h"

#include <gtest/gtest.h>

#include <cmath>
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
          numbers_(anyNumbers(19 * stride_)), rests_(anyNumbers(size * (size + 1) / 2)) {
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

    std::vector<double> entries;

private:
    std::size_t size_;
    std::size_t stride_;
    std::vector<double> numbers_;
    std::vector<double> rests_;
};

#if VXCLASSIFIER_HAS_AVX2
VXCLASSIFIER_AVX2 void enterInWideLanes(EnteredBlock& block) {
    block.enterIn<WideLanes>();
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
