#include "tests/platform/statistics/normal_pdf.h"
#include "tests/support/expect_error.h"

#include <atomic>
#include <new>
#include <thread>

namespace {

using test::Noise;
using test::NormalPdf;
using test::Row;
using test::Rows;

TEST(PdfMultivariateNormal, HasTheseStatuses) {
    EXPECT_EQ(static_cast<unsigned long>(vmath_status::noData), 0x80000B61UL);
    EXPECT_EQ(static_cast<unsigned long>(vmath_status::otherSizeOnUpdate), 0x80000B62UL);
    EXPECT_EQ(static_cast<unsigned long>(vmath_status::otherSizeOnEvaluation), 0x80000B63UL);
    EXPECT_EQ(static_cast<unsigned long>(vmath_status::inconsistentStatistics), 0x80000B64UL);
    EXPECT_EQ(vxStatus::module(vmath_status::noData), 91);
}

TEST(PdfMultivariateNormal, ReportsLackOfMemoryAsBadAlloc) {
    EXPECT_THROW(vfThrowExceptionOnFailure(vmath_status::outOfMemory), std::bad_alloc);
    EXPECT_ERROR(vfThrowExceptionOnFailure(vmath_status::badArgument), vxStatusFailure,
                 L"An operation failed with the status 0x80000B42.");
}

TEST(PdfMultivariateNormal, StartsUntrained) {
    const NormalPdf pdf;
    EXPECT_EQ(pdf.record().numSamples, 0);
    EXPECT_EQ(pdf.record().mean.numRows, 0);
    EXPECT_EQ(pdf.record().mean.numColumns, 0);
    EXPECT_EQ(pdf.record().covariance.numRows, 0);
    EXPECT_EQ(pdf.record().covariance.numColumns, 0);
}

TEST(PdfMultivariateNormal, FailsUntrainedWhateverThePattern) {
    const NormalPdf pdf;
    double result = 17.0;
    EXPECT_EQ(pdf.evaluate({}, {}, result), vmath_status::noData);
    EXPECT_EQ(pdf.evaluate({1.0}, {}, result), vmath_status::noData);
    EXPECT_EQ(pdf.evaluate({1.0, 2.0}, {0, 1}, result), vmath_status::noData);
    EXPECT_EQ(result, 17.0);
}

TEST(PdfMultivariateNormal, StaysUntrainedByPatternsThatDoNotEnter) {
    NormalPdf pdf;
    EXPECT_EQ(pdf.update({}), vxStatus::success);
    EXPECT_EQ(pdf.update({{1.0, 2.0}}, {{1}}), vxStatus::success);
    EXPECT_EQ(pdf.record().numSamples, 0);
    EXPECT_EQ(pdf.record().mean.numRows, 0);
    EXPECT_EQ(pdf.evaluationStatus({1.0, 2.0}), vmath_status::noData);
    // So they do not settle the size either.
    EXPECT_EQ(pdf.update({{1.0}}), vxStatus::success);
}

TEST(PdfMultivariateNormal, AnswersZeroForAPatternWithoutValidMeasurements) {
    const NormalPdf pdf(Rows{{1.0, 2.0}, {2.0, 5.0}, {3.0, 1.0}, {4.0, 4.0}});
    EXPECT_EQ(pdf.logValue({1.0, 2.0}, {0, 1}), 0.0);
}

TEST(PdfMultivariateNormal, RefusesPatternsOfAnotherSizeOnUpdate) {
    NormalPdf pdf(Rows{{1.0, 2.0}});
    EXPECT_EQ(pdf.update({{1.0, 2.0}, {1.0, 2.0, 3.0}}), vmath_status::otherSizeOnUpdate);
    EXPECT_EQ(pdf.update({{1.0}}), vmath_status::otherSizeOnUpdate);
    EXPECT_EQ(pdf.update({{1.0}}, {{0}}), vmath_status::otherSizeOnUpdate);
    EXPECT_EQ(pdf.record().numSamples, 1);
    EXPECT_EQ(pdf.mean(1), 2.0);
}

TEST(PdfMultivariateNormal, RefusesPatternsOfDifferentSizesWithinOneUpdate) {
    NormalPdf pdf;
    EXPECT_EQ(pdf.update({{1.0, 2.0}, {1.0}}), vmath_status::otherSizeOnUpdate);
    EXPECT_EQ(pdf.record().numSamples, 0);
    EXPECT_EQ(pdf.record().mean.numRows, 0);
}

TEST(PdfMultivariateNormal, RefusesPatternsOfAnotherSizeOnEvaluation) {
    const NormalPdf pdf(Rows{{1.0, 2.0}});
    double result = 17.0;
    EXPECT_EQ(pdf.evaluate({1.0}, {}, result), vmath_status::otherSizeOnEvaluation);
    EXPECT_EQ(pdf.evaluate({1.0, 2.0, 3.0}, {0, 1, 2}, result), vmath_status::otherSizeOnEvaluation);
    EXPECT_EQ(result, 17.0);
}

TEST(PdfMultivariateNormal, MayHaveNoMeasurementsAtAll) {
    NormalPdf pdf(Rows{{}, {}});
    EXPECT_EQ(pdf.record().numSamples, 2);
    EXPECT_EQ(pdf.logValue({}), 0.0);
    EXPECT_EQ(pdf.update({{1.0}}), vmath_status::otherSizeOnUpdate);
}

TEST(PdfMultivariateNormal, CopiesAreIndependent) {
    NormalPdf pdf(Rows{{1.0}, {2.0}});
    const NormalPdf copy(pdf);
    const double before = copy.logValue({1.5});
    EXPECT_EQ(before, pdf.logValue({1.5}));
    pdf.update({{100.0}});
    EXPECT_EQ(copy.record().numSamples, 2);
    EXPECT_EQ(copy.mean(0), 1.5);
    EXPECT_EQ(copy.logValue({1.5}), before);
    EXPECT_NE(pdf.logValue({1.5}), before);
}

TEST(PdfMultivariateNormal, AssignsEverything) {
    NormalPdf pdf(Rows{{1.0, 2.0}});
    const NormalPdf source(Rows{{1.0}, {2.0}});
    EXPECT_EQ(vmath_PDFMultivariateNormal_assign(&pdf.record(), &source.record()), vxStatus::success);
    EXPECT_EQ(pdf.record().numSamples, 2);
    EXPECT_EQ(pdf.logValue({1.75}), source.logValue({1.75}));
    EXPECT_EQ(vmath_PDFMultivariateNormal_assign(&pdf.record(), &pdf.record()), vxStatus::success);
    EXPECT_EQ(pdf.logValue({1.75}), source.logValue({1.75}));
    const NormalPdf fresh;
    EXPECT_EQ(vmath_PDFMultivariateNormal_assign(&pdf.record(), &fresh.record()), vxStatus::success);
    EXPECT_EQ(pdf.evaluationStatus({1.75}), vmath_status::noData);
    EXPECT_EQ(pdf.update({{1.0, 2.0, 3.0}}), vxStatus::success);
}

TEST(PdfMultivariateNormal, IsLeftEmptyByDestruction) {
    vmath_PDFMultivariateNormal record;
    EXPECT_EQ(vmath_PDFMultivariateNormal_construct(&record), vxStatus::success);
    EXPECT_EQ(vmath_PDFMultivariateNormal_destruct(&record), vxStatus::success);
    EXPECT_EQ(record.state, nullptr);
    EXPECT_EQ(vmath_PDFMultivariateNormal_destruct(&record), vxStatus::success);
    EXPECT_EQ(vmath_PDFMultivariateNormal_beginUpdates(&record), vmath_status::badArgument);
}

TEST(PdfMultivariateNormal, EvaluatesCorrectlyBetweenUpdatesThatBelongTogether) {
    const Rows rows = Noise(21).rows(20, 3);
    NormalPdf together;
    NormalPdf single;
    EXPECT_EQ(vmath_PDFMultivariateNormal_beginUpdates(&together.record()), vxStatus::success);
    EXPECT_EQ(together.evaluationStatus(rows[0]), vmath_status::noData);
    for (const Row& row : rows) {
        together.update({row});
        single.update({row});
        EXPECT_EQ(together.logValue(rows[7]), single.logValue(rows[7]));
        EXPECT_EQ(together.logValue(rows[7], {1}), single.logValue(rows[7], {1}));
    }
    const NormalPdf copy(together);
    EXPECT_EQ(vmath_PDFMultivariateNormal_endUpdates(&together.record()), vxStatus::success);
    EXPECT_EQ(together.logValue(rows[7]), single.logValue(rows[7]));
    EXPECT_EQ(copy.logValue(rows[7]), single.logValue(rows[7]));
    EXPECT_EQ(together.evaluationStatus({1.0}), vmath_status::otherSizeOnEvaluation);
}

TEST(PdfMultivariateNormal, EvaluatesLoadedStatisticsLikeThoseTheyCameFrom) {
    const Rows rows = Noise(22).rows(30, 3);
    for (const std::size_t count : {1U, 2U, 3U, 30U}) {
        NormalPdf pdf(Rows(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(count)));
        const double before = pdf.logValue(rows[29]);
        EXPECT_EQ(vmath_PDFMultivariateNormal_statisticsChanged(&pdf.record()), vxStatus::success);
        EXPECT_EQ(pdf.logValue(rows[29]), before);
    }
}

TEST(PdfMultivariateNormal, MayBeEvaluatedByManyThreads) {
    const Rows rows = Noise(23).rows(50, 5);
    NormalPdf pdf(rows);
    const double complete = pdf.logValue(rows[0]);
    const double partly = pdf.logValue(rows[0], {2});
    std::atomic<int> numWrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 2000; ++i) {
                if (pdf.logValue(rows[0]) != complete || pdf.logValue(rows[0], {2}) != partly) {
                    ++numWrong;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(numWrong, 0);
}

} // namespace
