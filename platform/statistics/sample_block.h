#ifndef PLATFORM_STATISTICS_SAMPLE_BLOCK_H
#define PLATFORM_STATISTICS_SAMPLE_BLOCK_H

#include "platform/statistics/normal_statistics.h"
#include "platform/statistics/sample_block_kernel.h"

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

    bool hasRoomFor(std::size_t size) const noexcept { return !rows_.empty() && size == size_; }

    /// Makes room for samples of `size` measurements. The block is empty.
    void reserve(std::size_t size);

    /// Takes the values, each divided by `factor`, if all of them are finite then. The block is not full.
    void add(const double* values, double factor) noexcept;

    /// Enters the samples into statistics that have room for them and leaves the block empty. Brings the mean
    /// and the upper triangle of the covariance up to date.
    void moveInto(vmath_PDFMultivariateNormal& pdf, StatisticsRest& rest) noexcept;

private:
    /// Where the rows of each kind begin. Rows have a number for each measurement and are filled up with
    /// zeros.
    struct RowOf {
        static constexpr std::size_t samples = 0;
        static constexpr std::size_t differences = samples + maxSamples; // from the mean; missing ones are 0
        static constexpr std::size_t sums = differences + maxSamples;    // of the differences
        static constexpr std::size_t shifts = sums + 1;                  // of the mean
        static constexpr std::size_t means = shifts + 1;
        static constexpr std::size_t restsOfMeans = means + 1;
        static constexpr std::size_t products = restsOfMeans + 1;
        static constexpr std::size_t end = products + BlockDifferences::productRows;
    };

    double* row(std::size_t i) noexcept { return rows_.data() + i * stride_; }
    double* sample(std::size_t i) noexcept { return row(RowOf::samples + i); }
    bool makeDifferences(const vmath_PDFMultivariateNormal& pdf, const StatisticsRest& rest) noexcept;
    void moveOneByOne(vmath_PDFMultivariateNormal& pdf, StatisticsRest& rest) noexcept;

    std::size_t size_ = 0;
    std::size_t stride_ = 0;
    std::size_t numSamples_ = 0;
    std::vector<double> rows_; // of `stride_` numbers each
};

} // namespace detail

#endif
