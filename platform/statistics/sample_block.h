#ifndef PLATFORM_STATISTICS_SAMPLE_BLOCK_H
#define PLATFORM_STATISTICS_SAMPLE_BLOCK_H

#include "platform/statistics/normal_statistics.h"

#include <vxclassifier/platform/pdf_multivariate_normal.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace detail {

/// Samples that enter large statistics together, which costs a fraction of entering them one by one and is as
/// exact: each entry of the covariance is brought up to date once for all of them.
class SampleBlock {
public:
    static constexpr std::size_t maxSamples = 32;

    /// Statistics of fewer samples take in samples one by one. Among so many, the rounding errors of adding
    /// up a block are lost.
    static constexpr std::int64_t leastStatistics = 128;

    bool isFull() const noexcept { return numSamples_ == maxSamples; }

    bool hasRoomFor(std::size_t size) const noexcept { return !samples_.empty() && size == size_; }

    /// Makes room for samples of `size` measurements. The block is empty.
    void reserve(std::size_t size);

    /// Takes the values, each divided by `factor`, if all of them are finite then. The block is not full.
    void add(const double* values, double factor) noexcept;

    /// Enters the samples into statistics that have room for them and leaves the block empty. Brings the mean
    /// and the upper triangle of the covariance up to date.
    void moveInto(vmath_PDFMultivariateNormal& pdf, StatisticsRest& rest) noexcept;

private:
    double* sample(std::size_t i) noexcept { return samples_.data() + i * stride_; }
    bool makeDifferences(const vmath_PDFMultivariateNormal& pdf, const StatisticsRest& rest) noexcept;
    void moveOneByOne(vmath_PDFMultivariateNormal& pdf, StatisticsRest& rest) noexcept;

    std::size_t size_ = 0;
    std::size_t stride_ = 0;
    std::size_t numSamples_ = 0;
    // One row for each sample; a second one for each difference from the mean, the missing ones 0; and a row
    // each for their sum, its share in the mean, and products. Rows are filled up with zeros.
    std::vector<double> samples_;
};

} // namespace detail

#endif
