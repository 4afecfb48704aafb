// Statistics that no data can have, as a forged archive may put them into a record; and misuse of the
// functions.
#include "tests/platform/statistics/normal_pdf.h"
#include "tests/support/failing_allocation.h"

namespace {

using test::NormalPdf;
using test::patternOf;
using test::Row;

constexpr double infinity = std::numeric_limits<double>::infinity();

/// A record that claims samples, with matrices of any shapes, filled with ones.
class Forged {
public:
    Forged(long meanRows, long meanColumns, long rows, long columns, std::int32_t numSamples = 5) {
        vmath_PDFMultivariateNormal& record = pdf.record();
        vmath_nmmatrix_resize(&record.mean, meanRows, meanColumns);
        vmath_nmmatrix_resize(&record.covariance, rows, columns);
        fill(record.mean);
        fill(record.covariance);
        record.numSamples = numSamples;
        vmath_PDFMultivariateNormal_statisticsChanged(&record);
    }

    NormalPdf pdf;

private:
    static void fill(vmath_nmmatrix& matrix) {
        for (long row = 0; row < matrix.numRows; ++row) {
            std::fill_n(matrix.rows[row], matrix.numColumns, 1.0);
        }
    }
};

TEST(HostileStatistics, OfShapesThatDoNotBelongTogetherAreRefused) {
    const long shapes[][4] = {{2, 1, 3, 3}, {3, 1, 2, 2}, {2, 1, 2, 3}, {2, 1, 3, 2}, {1, 2, 2, 2},
                              {2, 2, 2, 2}, {2, 1, 0, 0}, {0, 0, 2, 2}, {1, 1, 1, 7}};
    for (const auto& shape : shapes) {
        Forged forged(shape[0], shape[1], shape[2], shape[3]);
        EXPECT_EQ(forged.pdf.evaluationStatus({1.0, 2.0}), vmath_status::inconsistentStatistics);
        EXPECT_EQ(forged.pdf.update({{1.0, 2.0}}), vmath_status::inconsistentStatistics);
        NormalPdf other(test::Rows{{1.0, 2.0}});
        EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&other.record(), &forged.pdf.record()),
                  vmath_status::inconsistentStatistics);
        EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&forged.pdf.record(), &other.record()),
                  vmath_status::inconsistentStatistics);
        const NormalPdf copy(forged.pdf);
        EXPECT_EQ(copy.evaluationStatus({1.0, 2.0}), vmath_status::inconsistentStatistics);
    }
}

TEST(HostileStatistics, OfSamplesWithoutMatricesHaveNoMeasurements) {
    Forged forged(0, 0, 0, 0);
    EXPECT_EQ(forged.pdf.logValue({}), 0.0);
    EXPECT_EQ(forged.pdf.evaluationStatus({1.0}), vmath_status::otherSizeOnEvaluation);
    EXPECT_EQ(forged.pdf.update({{1.0}}), vmath_status::otherSizeOnUpdate);
}

TEST(HostileStatistics, OfNoSamplesAreNoData) {
    for (const std::int32_t count : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
        Forged forged(2, 3, 4, 5, count);
        EXPECT_EQ(forged.pdf.evaluationStatus({1.0, 2.0}), vmath_status::noData);
        EXPECT_EQ(forged.pdf.update({{4.0}}), vxStatus::success);
        EXPECT_EQ(forged.pdf.record().numSamples, 1);
        EXPECT_EQ(forged.pdf.mean(0), 4.0);
        EXPECT_EQ(forged.pdf.covariance(0, 0), 0.0);
    }
}

TEST(HostileStatistics, ThatAreNotFiniteAreNoData) {
    for (const double bad : {std::nan(""), infinity, -infinity}) {
        EXPECT_EQ(NormalPdf({bad, 1.0}, {1.0, 0.0, 1.0}, 5).evaluationStatus({1.0, 1.0}),
                  vmath_status::noData);
        EXPECT_EQ(NormalPdf({1.0, 1.0}, {1.0, 0.0, bad}, 5).evaluationStatus({1.0, 1.0}),
                  vmath_status::noData);
        NormalPdf pdf({1.0, 1.0}, {1.0, bad, 1.0}, 5);
        EXPECT_EQ(pdf.evaluationStatus({1.0, 1.0}), vmath_status::noData);
        EXPECT_EQ(pdf.evaluationStatus({1.0}), vmath_status::noData);
        EXPECT_EQ(pdf.update({{1.0, 2.0}}), vxStatus::success);
        EXPECT_EQ(pdf.record().numSamples, 6);
    }
}

TEST(HostileStatistics, OfAnIndefiniteCovarianceHaveAFiniteDensity) {
    const Row lower[] = {
        {1.0, 5.0, 1.0, -5.0, 5.0, 1.0},           // "correlations" beyond 1
        {1.0, 0.9, 1.0, 0.9, -0.9, 1.0},           // a negative eigenvalue
        {-1.0, 0.5, 1.0, 0.5, 0.5, -2.0},          // negative variances
        {1e-300, 1e300, 1e-300, 1e300, 0.0, 1e300} // overflow on the way to a correlation
    };
    for (const Row& covariance : lower) {
        for (const std::int32_t count : {1, 2, 3, 1000}) {
            const NormalPdf pdf({1.0, 2.0, 3.0}, covariance, count);
            EXPECT_TRUE(std::isfinite(pdf.logValue({1.0, 2.0, 3.0})));
            EXPECT_TRUE(std::isfinite(pdf.logValue({0.0, 0.0, 0.0})));
            EXPECT_TRUE(std::isfinite(pdf.logValue({0.0, 0.0, 0.0}, {1})));
        }
    }
}

TEST(HostileStatistics, OfCorrelationsBeyondOneAreCutOff) {
    const Row x{1.25, 0.5};
    EXPECT_EQ(NormalPdf({1.0, 2.0}, {1.0, 5.0, 1.0}, 10).logValue(x),
              NormalPdf({1.0, 2.0}, {1.0, 1.0, 1.0}, 10).logValue(x));
    EXPECT_EQ(NormalPdf({1.0, 2.0}, {1.0, -5.0, 1.0}, 10).logValue(x),
              NormalPdf({1.0, 2.0}, {1.0, -1.0, 1.0}, 10).logValue(x));
}

TEST(HostileStatistics, OfExtremeNumbersHaveAFiniteDensity) {
    const double largest = std::numeric_limits<double>::max();
    const double smallest = std::numeric_limits<double>::denorm_min();
    for (const double mean : {0.0, smallest, -smallest, 1e-310, largest, -largest}) {
        for (const double variance : {0.0, smallest, 1e-310, largest}) {
            for (const std::int32_t count : {1, 60}) {
                const NormalPdf pdf({mean}, {variance}, count);
                for (const double x : {0.0, smallest, 1.0, largest, -largest, infinity, -infinity}) {
                    EXPECT_TRUE(std::isfinite(pdf.logValue({x}))) << mean << ' ' << variance << ' ' << x;
                }
            }
        }
    }
}

TEST(HostileStatistics, SurviveUpdatesFromTheLargestCount) {
    NormalPdf pdf({1e308}, {1e308}, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(pdf.update({{-1e308}, {1e308}}), vxStatus::success);
    EXPECT_TRUE(std::isfinite(pdf.mean(0)));
    EXPECT_TRUE(std::isfinite(pdf.covariance(0, 0)));
}

TEST(HostileStatistics, OfASizeThatNoMemoryHoldsAreRefusedWithoutTouchingIt) {
    vmath_nmmatrix matrix;
    EXPECT_EQ(vmath_nmmatrix_resize(&matrix, 2, 3), vxStatus::success);
    EXPECT_EQ(vmath_nmmatrix_resize(&matrix, 1L << 31, 1L << 31), vmath_status::outOfMemory);
    EXPECT_EQ(vmath_nmmatrix_resize(&matrix, 1L << 40, 1L << 40), vmath_status::outOfMemory);
    // The number of entries would be 0 again.
    const long columns = std::numeric_limits<long>::max() / 16 + 1;
    EXPECT_EQ(vmath_nmmatrix_resize(&matrix, 32, columns), vmath_status::outOfMemory);
    EXPECT_EQ(vmath_nmmatrix_resize(&matrix, -1, 1), vmath_status::badArgument);
    EXPECT_EQ(vmath_nmmatrix_resize(&matrix, 1, -1), vmath_status::badArgument);
    EXPECT_EQ(matrix.numRows, 2);
    EXPECT_EQ(matrix.numColumns, 3);
    EXPECT_EQ(vmath_nmmatrix_resize(&matrix, 1L << 31, 0), vxStatus::success);
    EXPECT_EQ(matrix.numRows, 0);
    EXPECT_EQ(matrix.rows, nullptr);
}

/// Whether evaluation needs memory, which it does when it has to factorise.
bool evaluatesWithoutMemory(const NormalPdf& pdf, const Row& values) {
    const vmath_FeaturePattern pattern = patternOf(values, {});
    double unused = 0.0;
    const test::FailingAllocation failing(1);
    return vmath_PDFMultivariateNormal_logValue(&pdf.record(), &pattern, &unused) == vxStatus::success;
}

TEST(HostileStatistics, OnlyBetweenUpdatesThatBelongTogetherDoesEvaluationNeedMemory) {
    const test::Rows rows = test::Noise(22).rows(20, 3);
    NormalPdf pdf(rows);
    EXPECT_TRUE(evaluatesWithoutMemory(pdf, rows[0]));
    vmath_PDFMultivariateNormal_beginUpdates(&pdf.record());
    pdf.update(rows);
    EXPECT_FALSE(evaluatesWithoutMemory(pdf, rows[0]));
    EXPECT_TRUE(evaluatesWithoutMemory(NormalPdf(pdf), rows[0])) << "a copy is not between updates";
    vmath_PDFMultivariateNormal_endUpdates(&pdf.record());
    EXPECT_TRUE(evaluatesWithoutMemory(pdf, rows[0]));
}

TEST(HostileStatistics, AssigningTakesNoUpdatesOverAndEndsNone) {
    const test::Rows rows = test::Noise(23).rows(20, 3);
    NormalPdf updating(rows);
    NormalPdf other(rows);
    vmath_PDFMultivariateNormal_beginUpdates(&updating.record());
    updating.update(rows);
    EXPECT_EQ(vmath_PDFMultivariateNormal_assign(&other.record(), &updating.record()), vxStatus::success);
    other.update(rows);
    EXPECT_TRUE(evaluatesWithoutMemory(other, rows[0]));
    EXPECT_EQ(vmath_PDFMultivariateNormal_assign(&updating.record(), &other.record()), vxStatus::success);
    updating.update(rows);
    EXPECT_FALSE(evaluatesWithoutMemory(updating, rows[0]));
}

TEST(HostileStatistics, NullAndNegativeArgumentsAreRefused) {
    NormalPdf pdf(test::Rows{{1.0}});
    vmath_PDFMultivariateNormal* const record = &pdf.record();
    double result = 0.0;
    const Row values = {1.0};
    const vmath_FeaturePattern good = patternOf(values, {});
    vmath_FeaturePatternVector data = {&good, 1};
    EXPECT_EQ(vmath_PDFMultivariateNormal_construct(nullptr), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_constructCopy(nullptr, record), vmath_status::badArgument);
    vmath_PDFMultivariateNormal copy;
    EXPECT_EQ(vmath_PDFMultivariateNormal_constructCopy(&copy, nullptr), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_assign(record, nullptr), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_assign(nullptr, record), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_destruct(nullptr), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_endUpdates(nullptr), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_merge(record, nullptr), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_statisticsChanged(nullptr), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_logValue(record, nullptr, &result), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_logValue(record, &good, nullptr), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_updateWithDataNormalize(record, nullptr, 1.0),
              vmath_status::badArgument);
    EXPECT_EQ(vmath_nmmatrix_resize(nullptr, 1, 1), vmath_status::badArgument);

    vmath_FeaturePattern broken = good;
    broken.values = nullptr;
    EXPECT_EQ(vmath_PDFMultivariateNormal_logValue(record, &broken, &result), vmath_status::badArgument);
    broken = good;
    broken.numValues = -1;
    EXPECT_EQ(vmath_PDFMultivariateNormal_logValue(record, &broken, &result), vmath_status::badArgument);
    broken = good;
    broken.numInvalid = 1;
    broken.invalidIndices = nullptr;
    data.patterns = &broken;
    EXPECT_EQ(vmath_PDFMultivariateNormal_updateWithDataNormalize(record, &data, 1.0),
              vmath_status::badArgument);
    data.patterns = nullptr;
    EXPECT_EQ(vmath_PDFMultivariateNormal_updateWithDataNormalize(record, &data, 1.0),
              vmath_status::badArgument);
    data.numPatterns = 0;
    EXPECT_EQ(vmath_PDFMultivariateNormal_updateWithDataNormalize(record, &data, 1.0), vxStatus::success);
    data.patterns = &broken;
    broken.numInvalid = -1;
    EXPECT_EQ(vmath_PDFMultivariateNormal_logValue(record, &broken, &result), vmath_status::badArgument);
    data.numPatterns = -1;
    EXPECT_EQ(vmath_PDFMultivariateNormal_updateWithDataNormalize(record, &data, 1.0),
              vmath_status::badArgument);
    EXPECT_EQ(record->numSamples, 1);
}

TEST(HostileStatistics, OfARecordThatIsNotConstructedAreRefused) {
    NormalPdf pdf(test::Rows{{1.0}});
    const vmath_PDFMultivariateNormal* const record = &pdf.record();
    const Row values = {1.0};
    const vmath_FeaturePattern good = patternOf(values, {});
    const vmath_FeaturePatternVector data = {&good, 1};
    double result = 0.0;
    vmath_PDFMultivariateNormal raw;
    EXPECT_EQ(vmath_PDFMultivariateNormal_updateWithDataNormalize(&raw, &data, 1.0),
              vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_beginUpdates(&raw), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_endUpdates(&raw), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&raw, record), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&pdf.record(), &raw), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_assign(&raw, record), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_statisticsChanged(&raw), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_logValue(&raw, &good, &result), vmath_status::badArgument);
    EXPECT_EQ(vmath_PDFMultivariateNormal_destruct(&raw), vxStatus::success);
    EXPECT_EQ(record->numSamples, 1);
}

TEST(HostileStatistics, AreNotMergedWithoutTheMemoryToFinishTheOthers) {
    const test::Rows rows = test::Noise(24).rows(20, 3);
    NormalPdf updating(rows);
    vmath_PDFMultivariateNormal_beginUpdates(&updating.record());
    updating.update(rows);
    NormalPdf merged(rows);
    const double before = merged.logValue(rows[0]);
    {
        const test::FailingAllocation failing(1);
        EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&merged.record(), &updating.record()),
                  vmath_status::outOfMemory);
    }
    EXPECT_EQ(merged.record().numSamples, 20);
    EXPECT_EQ(merged.logValue(rows[0]), before);
    EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&merged.record(), &updating.record()), vxStatus::success);
    EXPECT_EQ(merged.record().numSamples, 60);
}

} // namespace
