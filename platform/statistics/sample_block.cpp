#include "platform/statistics/sample_block.h"

#include "platform/statistics/sample_block_kernel.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace detail {

namespace {

// Products of differences up to here, and sums of as many as a block has, do not overflow.
constexpr double largestDifference = 1e150;

std::uint64_t bitsOf(double number) noexcept {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

/// Adding to the lowest bit of an exponent of ones, and to no other, carries into the sign.
bool areFinite(const double* values, std::size_t size) noexcept {
    constexpr std::uint64_t exponent = 0x7ff0000000000000;
    constexpr std::uint64_t lowestOfExponent = 0x0010000000000000;
    std::uint64_t carries = 0;
    for (std::size_t i = 0; i < size; ++i) {
        carries |= (bitsOf(values[i]) & exponent) + lowestOfExponent;
    }
    return carries >> 63 == 0;
}

/// Positive doubles are ordered as their bits are.
bool areModerate(const double* differences, std::size_t number) noexcept {
    constexpr std::uint64_t magnitude = 0x7fffffffffffffff;
    const std::uint64_t most = bitsOf(largestDifference);
    std::uint64_t borrows = 0;
    for (std::size_t i = 0; i < number; ++i) {
        borrows |= most - (bitsOf(differences[i]) & magnitude);
    }
    return borrows >> 63 == 0;
}

void subtract(const double* __restrict values, const double* __restrict means, const double* __restrict rests,
              double* __restrict differences, double* __restrict sums, std::size_t size) noexcept {
    for (std::size_t i = 0; i < size; ++i) {
        differences[i] = (values[i] - means[i]) - rests[i];
        sums[i] += differences[i];
    }
}

template <class Lanes>
VXCLASSIFIER_INLINE void enterIn(const BlockDifferences& block, const BlockWeights& weights,
                                 const vmath_nmmatrix& covariance, PackedLower& rest) noexcept {
    enterBlockIn<Lanes>(
        block, weights, rest.order(), [&](std::size_t i) { return covariance.rows[i] + i; },
        [&](std::size_t i) { return rest.column(i); });
}

#if VXCLASSIFIER_HAS_AVX2
VXCLASSIFIER_AVX2 void enterInWideLanes(const BlockDifferences& block, const BlockWeights& weights,
                                        const vmath_nmmatrix& covariance, PackedLower& rest) noexcept {
    enterIn<WideLanes>(block, weights, covariance, rest);
}
#endif

void enter(const BlockDifferences& block, const BlockWeights& weights, const vmath_nmmatrix& covariance,
           PackedLower& rest) noexcept {
#if VXCLASSIFIER_HAS_AVX2
    if (hasAvx2()) {
        enterInWideLanes(block, weights, covariance, rest);
        return;
    }
#endif
    enterIn<NarrowLanes>(block, weights, covariance, rest);
}

} // namespace

void SampleBlock::reserve(std::size_t size) {
    if (samples_.empty() || size != size_) {
        samples_.assign((2 * maxSamples + 3) * paddedToLanes(size), 0.0);
        size_ = size;
        stride_ = paddedToLanes(size);
    }
}

void SampleBlock::add(const double* values, double factor) noexcept {
    double* const own = sample(numSamples_);
    if (factor == 1.0) {
        std::copy_n(values, size_, own);
    } else {
        std::transform(values, values + size_, own, [factor](double value) { return value / factor; });
    }
    if (areFinite(own, size_)) {
        ++numSamples_;
    }
}

bool SampleBlock::makeDifferences(const vmath_PDFMultivariateNormal& pdf,
                                  const StatisticsRest& rest) noexcept {
    double* const differences = sample(maxSamples);
    double* const sums = sample(2 * maxSamples);
    double* const shifts = sums + stride_;
    double* const means = shifts + stride_;
    const double numAll = static_cast<double>(rest.numSamples) + static_cast<double>(numSamples_);
    std::fill(differences + numSamples_ * stride_, shifts, 0.0);
    for (std::size_t i = 0; i < size_; ++i) {
        means[i] = pdf.mean.rows[i][0];
    }
    for (std::size_t row = 0; row < numSamples_; ++row) {
        subtract(sample(row), means, rest.mean.data(), differences + row * stride_, sums, size_);
    }
    for (std::size_t i = 0; i < size_; ++i) {
        shifts[i] = sums[i] / numAll;
    }
    return areModerate(differences, numSamples_ * stride_);
}

void SampleBlock::moveInto(vmath_PDFMultivariateNormal& pdf, StatisticsRest& rest) noexcept {
    if (numSamples_ == 0) {
        return;
    }
    if (!makeDifferences(pdf, rest)) {
        moveOneByOne(pdf, rest);
        return;
    }
    const double* const sums = sample(2 * maxSamples);
    const BlockDifferences block = {sample(maxSamples),        maxSamples, stride_, sums, sums + stride_,
                                    sample(2 * maxSamples + 2)};
    const double number = static_cast<double>(numSamples_);
    const double allLessOne = static_cast<double>(rest.numSamples) + number - 1.0;
    enter(block, {number / allLessOne, 1.0 / allLessOne}, pdf.covariance, rest.covariance);
    for (std::size_t i = 0; i < size_; ++i) {
        addToAverage(pdf.mean.rows[i][0], rest.mean[i], block.shiftsOfMean[i]);
    }
    countSamples(pdf, rest, static_cast<std::int64_t>(numSamples_));
    numSamples_ = 0;
}

void SampleBlock::moveOneByOne(vmath_PDFMultivariateNormal& pdf, StatisticsRest& rest) noexcept {
    for (std::size_t i = 0; i < numSamples_; ++i) {
        enterPattern(pdf, rest, sample(i), 1.0, sample(maxSamples));
    }
    numSamples_ = 0;
}

} // namespace detail
