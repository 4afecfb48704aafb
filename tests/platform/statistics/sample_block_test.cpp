#include "tests/platform/statistics/normal_pdf.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

// Between _beginUpdates and _endUpdates, large statistics take in samples by blocks.

namespace {

using test::NormalPdf;
using test::Row;
using test::Rows;

constexpr double epsilon = std::numeric_limits<double>::epsilon();

Rows correlatedRows(unsigned seed, std::size_t number, std::size_t size, double centre) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    Rows rows(number, Row(size));
    for (Row& row : rows) {
        const double common = uniform(random);
        for (std::size_t i = 0; i < size; ++i) {
            row[i] = centre + common + uniform(random) * static_cast<double>(i + 1);
        }
    }
    return rows;
}

/// Trained by one call for each row, all between _beginUpdates and _endUpdates.
class Streamed : public NormalPdf {
public:
    explicit Streamed(const Rows& rows) {
        begin();
        for (const Row& row : rows) {
            EXPECT_EQ(update({row}), vxStatus::success);
        }
        end();
    }

    void begin() { EXPECT_EQ(vmath_PDFMultivariateNormal_beginUpdates(&record()), vxStatus::success); }
    void end() { EXPECT_EQ(vmath_PDFMultivariateNormal_endUpdates(&record()), vxStatus::success); }
};

/// Sums in twice the digits.
struct Exact {
    explicit Exact(const Rows& rows) : size(rows[0].size()), mean(size), covariance(size * size) {
        for (const Row& row : rows) {
            for (std::size_t i = 0; i < size; ++i) {
                mean[i] += row[i];
            }
        }
        const long double number = static_cast<long double>(rows.size());
        for (long double& entry : mean) {
            entry /= number;
        }
        for (const Row& row : rows) {
            for (std::size_t i = 0; i < size * size; ++i) {
                covariance[i] += (row[i / size] - mean[i / size]) * (row[i % size] - mean[i % size]);
            }
        }
        for (long double& entry : covariance) {
            entry /= number - 1.0L;
        }
    }

    std::size_t size;
    std::vector<long double> mean;
    std::vector<long double> covariance;
};

void expectNextToExact(const NormalPdf& pdf, const Rows& rows) {
    const Exact exact(rows);
    ASSERT_EQ(pdf.record().numSamples, static_cast<std::int32_t>(rows.size()));
    for (std::size_t i = 0; i < exact.size; ++i) {
        const double variance = static_cast<double>(exact.covariance[i * exact.size + i]);
        const double sizeOfMean =
            std::max(std::fabs(static_cast<double>(exact.mean[i])), std::sqrt(variance));
        EXPECT_LE(std::fabs(static_cast<double>(pdf.mean(static_cast<long>(i)) - exact.mean[i])),
                  epsilon * sizeOfMean);
        for (std::size_t j = 0; j < exact.size; ++j) {
            const double other = static_cast<double>(exact.covariance[j * exact.size + j]);
            const double entry = pdf.covariance(static_cast<long>(i), static_cast<long>(j));
            EXPECT_LE(std::fabs(static_cast<double>(entry - exact.covariance[i * exact.size + j])),
                      epsilon * std::sqrt(variance * other));
            EXPECT_EQ(entry, pdf.covariance(static_cast<long>(j), static_cast<long>(i)));
        }
    }
}

void expectSameBits(const NormalPdf& a, const NormalPdf& b) {
    ASSERT_EQ(a.size(), b.size());
    EXPECT_EQ(a.record().numSamples, b.record().numSamples);
    for (long i = 0; i < a.size(); ++i) {
        EXPECT_EQ(a.mean(i), b.mean(i));
        for (long j = 0; j < a.size(); ++j) {
            EXPECT_EQ(a.covariance(i, j), b.covariance(i, j));
        }
    }
}

TEST(SampleBlock, LeavesTheDoublesNextToTheAverages) {
    for (const double centre : {0.0, 1.0, -3e5}) {
        for (const std::size_t size : {1U, 2U, 7U, 8U, 19U}) {
            for (const std::size_t number : {128U, 129U, 160U, 161U, 256U, 273U, 800U, 3000U}) {
                const Rows rows = correlatedRows(7, number, size, centre);
                expectNextToExact(Streamed(rows), rows);
            }
        }
    }
}

TEST(SampleBlock, IsAsExactForSortedSamples) {
    Rows rows = correlatedRows(8, 2000, 3, 5.0);
    std::sort(rows.begin(), rows.end());
    expectNextToExact(Streamed(rows), rows);
    std::reverse(rows.begin(), rows.end());
    expectNextToExact(Streamed(rows), rows);
}

TEST(SampleBlock, SmallStatisticsHaveTheBitsOfUpdatesOneByOne) {
    const Rows rows = correlatedRows(9, 128, 5, 2.0);
    expectSameBits(Streamed(rows), NormalPdf(rows));
}

TEST(SampleBlock, HasTheSameBitsHoweverLaterPatternsAreSplitIntoUpdates) {
    const Rows rows = correlatedRows(10, 700, 4, 2.0);
    NormalPdf atOnce;
    EXPECT_EQ(vmath_PDFMultivariateNormal_beginUpdates(&atOnce.record()), vxStatus::success);
    EXPECT_EQ(atOnce.update(Rows(rows.begin(), rows.begin() + 128)), vxStatus::success);
    EXPECT_EQ(atOnce.update(Rows(rows.begin() + 128, rows.end())), vxStatus::success);
    EXPECT_EQ(vmath_PDFMultivariateNormal_endUpdates(&atOnce.record()), vxStatus::success);
    expectSameBits(Streamed(rows), atOnce);
}

TEST(SampleBlock, LeavesOutWhatDoesNotEnter) {
    const Rows rows = correlatedRows(11, 400, 3, 2.0);
    const double infinity = std::numeric_limits<double>::infinity();
    NormalPdf pdf;
    EXPECT_EQ(vmath_PDFMultivariateNormal_beginUpdates(&pdf.record()), vxStatus::success);
    for (const Row& row : rows) {
        for (const double odd : {std::nan(""), infinity, -infinity}) {
            EXPECT_EQ(pdf.update({{1.0, odd, 1.0}}), vxStatus::success);
            EXPECT_EQ(pdf.update({{1.0, 1.0, odd}}, 2.0), vxStatus::success);
        }
        EXPECT_EQ(pdf.update({{7.0, 7.0, 7.0}}, {{2}}), vxStatus::success);
        EXPECT_EQ(pdf.update({row}), vxStatus::success);
    }
    EXPECT_EQ(pdf.update({{1.0, 2.0}}), vmath_status::otherSizeOnUpdate);
    EXPECT_EQ(vmath_PDFMultivariateNormal_endUpdates(&pdf.record()), vxStatus::success);
    expectSameBits(pdf, Streamed(rows));
}

TEST(SampleBlock, DividesByTheFactor) {
    const Rows rows = correlatedRows(12, 400, 2, 2.0);
    Rows eighths = rows;
    for (Row& row : eighths) {
        row = {row[0] / 8.0, row[1] / 8.0};
    }
    NormalPdf pdf;
    EXPECT_EQ(vmath_PDFMultivariateNormal_beginUpdates(&pdf.record()), vxStatus::success);
    EXPECT_EQ(pdf.update(Rows(rows.begin(), rows.begin() + 300), 8.0), vxStatus::success);
    EXPECT_EQ(pdf.update(Rows(rows.begin() + 300, rows.end()), 8.0), vxStatus::success);
    EXPECT_EQ(vmath_PDFMultivariateNormal_endUpdates(&pdf.record()), vxStatus::success);
    expectNextToExact(pdf, eighths);
}

TEST(SampleBlock, OfHugeDifferencesEntersOneByOne) {
    const double largest = std::numeric_limits<double>::max();
    for (const double huge : {1e151, 1e200, largest}) {
        Rows rows = correlatedRows(13, 300, 2, 0.0);
        rows[290] = {huge, -huge};
        rows[292] = {-huge, huge};
        const NormalPdf oneByOne(rows);
        const Streamed streamed(rows);
        expectSameBits(streamed, oneByOne);
        EXPECT_TRUE(std::isfinite(streamed.covariance(0, 1)));
    }
}

TEST(SampleBlock, OfConstantMeasurementsLeavesNoSpread) {
    const Streamed streamed(Rows(1000, Row{0.1, -3.0}));
    EXPECT_EQ(streamed.mean(0), 0.1);
    EXPECT_EQ(streamed.mean(1), -3.0);
    EXPECT_EQ(streamed.covariance(0, 0), 0.0);
    EXPECT_EQ(streamed.covariance(1, 0), 0.0);
}

TEST(SampleBlock, IsSeenByEvaluationsCopiesAndMergesInBetween) {
    const Rows rows = correlatedRows(14, 300, 3, 1.0);
    const Streamed finished(rows);
    NormalPdf pdf;
    EXPECT_EQ(vmath_PDFMultivariateNormal_beginUpdates(&pdf.record()), vxStatus::success);
    for (const Row& row : rows) {
        EXPECT_EQ(pdf.update({row}), vxStatus::success);
    }
    EXPECT_EQ(pdf.logValue(rows[0]), finished.logValue(rows[0]));
    EXPECT_EQ(pdf.logValue(rows[0], {1}), finished.logValue(rows[0], {1}));
    expectSameBits(NormalPdf(pdf), finished);
    NormalPdf assigned;
    EXPECT_EQ(vmath_PDFMultivariateNormal_assign(&assigned.record(), &pdf.record()), vxStatus::success);
    expectSameBits(assigned, finished);
    NormalPdf merged(Rows{{1.0, 2.0, 3.0}});
    NormalPdf mergedAfterwards(Rows{{1.0, 2.0, 3.0}});
    EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&merged.record(), &pdf.record()), vxStatus::success);
    EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&mergedAfterwards.record(), &finished.record()),
              vxStatus::success);
    expectSameBits(merged, mergedAfterwards);
    EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&pdf.record(), &NormalPdf(Rows{{0.0, 0.0, 0.0}}).record()),
              vxStatus::success);
    EXPECT_EQ(vmath_PDFMultivariateNormal_endUpdates(&pdf.record()), vxStatus::success);
    EXPECT_EQ(pdf.record().numSamples, 301);
}

TEST(SampleBlock, HealsLoadedStatisticsAsUpdatesOneByOneDo) {
    const double infinity = std::numeric_limits<double>::infinity();
    const Rows rows = correlatedRows(15, 40, 2, 1.0);
    for (const double odd : {infinity, -infinity, std::nan(""), 3.0}) {
        NormalPdf oneByOne({0.0, 0.0}, {1.0, odd, 1.0}, 1000);
        NormalPdf streamed({0.0, 0.0}, {1.0, odd, 1.0}, 1000);
        streamed.record().covariance.rows[0][1] = 77.0; // the lower triangle counts
        EXPECT_EQ(vmath_PDFMultivariateNormal_beginUpdates(&streamed.record()), vxStatus::success);
        for (const Row& row : rows) {
            EXPECT_EQ(oneByOne.update({row}), vxStatus::success);
            EXPECT_EQ(streamed.update({row}), vxStatus::success);
        }
        EXPECT_EQ(vmath_PDFMultivariateNormal_endUpdates(&streamed.record()), vxStatus::success);
        EXPECT_EQ(streamed.record().numSamples, 1040);
        for (long j = 0; j < 2; ++j) {
            const double expected = oneByOne.covariance(1, j);
            const double actual = streamed.covariance(1, j);
            EXPECT_TRUE(std::isnan(expected)
                            ? std::isnan(actual)
                            : std::fabs(actual - expected) <= 4.0 * epsilon * std::fabs(expected))
                << odd;
        }
    }
}

} // namespace
