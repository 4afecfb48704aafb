#ifndef TESTS_PLATFORM_STATISTICS_NORMAL_PDF_H
#define TESTS_PLATFORM_STATISTICS_NORMAL_PDF_H

#include <vxclassifier/platform/pdf_multivariate_normal.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace test {

using Row = std::vector<double>;
using Rows = std::vector<Row>;
using Indices = std::vector<std::int32_t>;

inline vmath_FeaturePattern patternOf(const Row& values, const Indices& invalid) {
    return {values.data(), static_cast<long>(values.size()), invalid.data(),
            static_cast<long>(invalid.size())};
}

/// A record of the multivariate normal that is released at the end of its scope.
class NormalPdf {
public:
    NormalPdf() { EXPECT_EQ(vmath_PDFMultivariateNormal_construct(&record_), vxStatus::success); }

    explicit NormalPdf(const Rows& rows) : NormalPdf() { EXPECT_EQ(update(rows), vxStatus::success); }

    /// Loads statistics; the covariance is given by its lower triangle, row by row.
    NormalPdf(const Row& mean, const Row& lowerCovariance, std::int32_t numSamples) : NormalPdf() {
        const long size = static_cast<long>(mean.size());
        vmath_nmmatrix_resize(&record_.mean, size, 1);
        vmath_nmmatrix_resize(&record_.covariance, size, size);
        std::size_t next = 0;
        for (long row = 0; row < size; ++row) {
            record_.mean.rows[row][0] = mean[static_cast<std::size_t>(row)];
            for (long column = 0; column <= row; ++column) {
                record_.covariance.rows[row][column] = lowerCovariance.at(next++);
                record_.covariance.rows[column][row] = record_.covariance.rows[row][column];
            }
        }
        record_.numSamples = numSamples;
        EXPECT_EQ(vmath_PDFMultivariateNormal_statisticsChanged(&record_), vxStatus::success);
    }

    NormalPdf(const NormalPdf& other) {
        EXPECT_EQ(vmath_PDFMultivariateNormal_constructCopy(&record_, &other.record_), vxStatus::success);
    }
    NormalPdf& operator=(const NormalPdf&) = delete;
    ~NormalPdf() { vmath_PDFMultivariateNormal_destruct(&record_); }

    vmath_PDFMultivariateNormal& record() { return record_; }
    const vmath_PDFMultivariateNormal& record() const { return record_; }

    long update(const Rows& rows, double factor = 1.0) {
        return update(rows, std::vector<Indices>(rows.size()), factor);
    }

    long update(const Rows& rows, const std::vector<Indices>& invalid, double factor = 1.0) {
        std::vector<vmath_FeaturePattern> patterns;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            patterns.push_back(patternOf(rows[i], invalid[i]));
        }
        const vmath_FeaturePatternVector data = {patterns.data(), static_cast<long>(patterns.size())};
        return vmath_PDFMultivariateNormal_updateWithDataNormalize(&record_, &data, factor);
    }

    long evaluate(const Row& values, const Indices& invalid, double& result) const {
        const vmath_FeaturePattern pattern = patternOf(values, invalid);
        return vmath_PDFMultivariateNormal_logValue(&record_, &pattern, &result);
    }

    long evaluationStatus(const Row& values) const {
        double unused = 0.0;
        return evaluate(values, {}, unused);
    }

    double logValue(const Row& values, const Indices& invalid = {}) const {
        double result = std::nan("");
        EXPECT_EQ(evaluate(values, invalid, result), vxStatus::success);
        return result;
    }

    double mean(long i) const { return record_.mean.rows[i][0]; }
    double covariance(long i, long j) const { return record_.covariance.rows[i][j]; }
    long size() const { return record_.mean.numRows; }

private:
    vmath_PDFMultivariateNormal record_;
};

/// A few repeatable numbers between -1 and 1 that look like noise.
class Noise {
public:
    explicit Noise(std::uint32_t seed) : state_(seed) {}

    double next() {
        state_ = state_ * 1664525U + 1013904223U;
        return static_cast<double>(state_ >> 8) / 8388608.0 - 1.0;
    }

    /// Rows of correlated measurements: each one leans on the one before it.
    Rows rows(std::size_t count, std::size_t size) {
        Rows result;
        for (std::size_t i = 0; i < count; ++i) {
            Row row;
            for (std::size_t j = 0; j < size; ++j) {
                const double bell = next() + next() + next();
                row.push_back(bell + (j == 0 ? 0.0 : 0.5 * row.back()));
            }
            result.push_back(row);
        }
        return result;
    }

private:
    std::uint32_t state_;
};

} // namespace test

#endif
