#include "platform/statistics/sample_block.h"

#include <algorithm>

namespace detail {

namespace {

// Products of differences up to here, and sums of as many as a block has, do not overflow.
constexpr double largestDifference = 1e150;

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

VXCLASSIFIER_AVX2 bool takeSampleInWideLanes(const double* values, std::size_t size, double* row) noexcept {
    return takeSampleIn<WideLanes>(values, size, row);
}

VXCLASSIFIER_AVX2 bool makeDifferencesInWideLanes(const double* samples, std::size_t numSamples,
                                                  std::size_t stride, const double* means,
                                                  const double* rests, double* differences,
                                                  double* sums) noexcept {
    return makeDifferencesIn<WideLanes>(samples, numSamples, stride, means, rests, largestDifference,
                                        differences, sums);
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

bool takeSample(const double* values, std::size_t size, double* row) noexcept {
#if VXCLASSIFIER_HAS_AVX2
    if (hasAvx2()) {
        return takeSampleInWideLanes(values, size, row);
    }
#endif
    return takeSampleIn<NarrowLanes>(values, size, row);
}

bool makeDifferencesOf(const double* samples, std::size_t numSamples, std::size_t stride, const double* means,
                       const double* rests, double* differences, double* sums) noexcept {
#if VXCLASSIFIER_HAS_AVX2
    if (hasAvx2()) {
        return makeDifferencesInWideLanes(samples, numSamples, stride, means, rests, differences, sums);
    }
#endif
    return makeDifferencesIn<NarrowLanes>(samples, numSamples, stride, means, rests, largestDifference,
                                          differences, sums);
}

} // namespace

void SampleBlock::reserve(std::size_t size) {
    if (rows_.empty() || size != size_) {
        rows_.assign(RowOf::end * paddedToLanes(size), 0.0);
        size_ = size;
        stride_ = paddedToLanes(size);
    }
}

void SampleBlock::add(const double* values, double factor) noexcept {
    double* const own = sample(numSamples_);
    if (factor != 1.0) {
        std::transform(values, values + size_, own, [factor](double value) { return value / factor; });
        values = own;
    }
    if (takeSample(values, size_, own)) {
        ++numSamples_;
    }
}

bool SampleBlock::makeDifferences(const vmath_PDFMultivariateNormal& pdf,
                                  const StatisticsRest& rest) noexcept {
    double* const means = row(RowOf::means);
    double* const sums = row(RowOf::sums);
    double* const shifts = row(RowOf::shifts);
    const double numAll = static_cast<double>(rest.numSamples) + static_cast<double>(numSamples_);
    for (std::size_t i = 0; i < size_; ++i) {
        means[i] = pdf.mean.rows[i][0];
    }
    std::copy_n(rest.mean.data(), size_, row(RowOf::restsOfMeans));
    double* const differences = row(RowOf::differences);
    const bool areModerate = makeDifferencesOf(sample(0), numSamples_, stride_, means,
                                               row(RowOf::restsOfMeans), differences, sums);
    std::fill(differences + numSamples_ * stride_, differences + maxSamples * stride_, 0.0);
    for (std::size_t i = 0; i < size_; ++i) {
        shifts[i] = sums[i] / numAll;
    }
    return areModerate;
}

void SampleBlock::moveInto(vmath_PDFMultivariateNormal& pdf, StatisticsRest& rest) noexcept {
    if (numSamples_ == 0) {
        return;
    }
    if (!makeDifferences(pdf, rest)) {
        moveOneByOne(pdf, rest);
        return;
    }
    const BlockDifferences block = {row(RowOf::differences), maxSamples,         stride_,
                                    row(RowOf::sums),        row(RowOf::shifts), row(RowOf::products)};
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
        enterPattern(pdf, rest, sample(i), 1.0, row(RowOf::differences));
    }
    numSamples_ = 0;
}

} // namespace detail
