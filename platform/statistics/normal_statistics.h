#ifndef PLATFORM_STATISTICS_NORMAL_STATISTICS_H
#define PLATFORM_STATISTICS_NORMAL_STATISTICS_H

#include "platform/statistics/linear_algebra.h"

#include <vxclassifier/platform/pdf_multivariate_normal.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace detail {

/// What a published mean and covariance leave out: the rounding errors of their entries, so that the
/// published ones stay the doubles next to the true averages however many patterns come in whatever order,
/// and the count where 32 bits cannot hold it.
struct StatisticsRest {
    std::int64_t numSamples = 0;
    std::vector<double> mean; // one per measurement
    PackedLower covariance;   // empty while there are less than two samples

    /// Makes room for statistics of `size` measurements and `total` samples; what is there stays.
    void reserve(std::size_t size, std::int64_t total);
};

/// The count as it is published.
std::int32_t published(std::int64_t numSamples) noexcept;

/// Counts samples that have entered.
void countSamples(vmath_PDFMultivariateNormal& pdf, StatisticsRest& rest, std::int64_t number) noexcept;

/// Enters one complete pattern of finite values, each divided by `factor`. All matrices have their sizes; the
/// rest has room for one more sample; `differences` has room for one entry per measurement. Of the covariance
/// it reads and writes the diagonal and the entries right of it.
void enterPattern(vmath_PDFMultivariateNormal& pdf, StatisticsRest& rest, const double* values, double factor,
                  double* differences) noexcept;

/// Copies the entries of one half of a covariance to the other.
void copyUpperToLower(vmath_nmmatrix& covariance) noexcept;
void copyLowerToUpper(vmath_nmmatrix& covariance) noexcept;

/// Enters the data of other statistics of the same size, both with at least one sample; the rest of `pdf`
/// has room for two. `other` may be `pdf` itself; `otherRest` is not its rest then, but a copy of it.
void enterStatistics(vmath_PDFMultivariateNormal& pdf, StatisticsRest& rest,
                     const vmath_PDFMultivariateNormal& other, const StatisticsRest& otherRest,
                     double* differences) noexcept;

} // namespace detail

#endif
