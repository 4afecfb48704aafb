#include "platform/statistics/ready_density.h"

#include "tests/platform/statistics/normal_pdf.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(ReadyDensity, IsThatOfStatisticsForPatternsOfTheirSize) {
    const test::NormalPdf pdf({{1.0, 2.0}, {3.0, 5.0}, {4.0, 3.0}});
    const detail::NormalDensity* const density = detail::readyDensity(pdf.record(), 2);
    ASSERT_NE(density, nullptr);
    const test::Row values{2.0, 2.5};
    EXPECT_EQ(density->logValue(values.data()), pdf.logValue(values));
    EXPECT_EQ(detail::readyDensity(pdf.record(), 1), nullptr);
    EXPECT_EQ(detail::readyDensity(pdf.record(), 3), nullptr);
}

TEST(ReadyDensity, IsMissingWithoutStatistics) {
    const test::NormalPdf untrained;
    EXPECT_EQ(detail::readyDensity(untrained.record(), 1), nullptr);
    EXPECT_EQ(detail::readyDensity(vmath_PDFMultivariateNormal(), 1), nullptr); // not constructed
}

bool join(test::NormalPdf& pdf, const test::Row& values) {
    return detail::joinWaitingSamples(pdf.record(), values.data(), values.size());
}

TEST(WaitingSamples, TakeInTheNextOnesOnlyWhileTheyWait) {
    const test::Rows rows = test::Noise(3).rows(140, 3);
    test::NormalPdf pdf;
    EXPECT_FALSE(join(pdf, rows.front())) << "nothing has come";
    vmath_PDFMultivariateNormal_beginUpdates(&pdf.record());
    EXPECT_FALSE(join(pdf, rows.front())) << "updates are going on, but nothing has come";
    for (const test::Row& row : test::Rows(rows.begin(), rows.begin() + 128)) {
        pdf.update({row});
        EXPECT_FALSE(join(pdf, rows.front())) << "small statistics take in samples one by one";
    }
    pdf.update({rows.back()});
    EXPECT_TRUE(join(pdf, rows.front()));
    EXPECT_FALSE(join(pdf, {1.0, 2.0})) << "of another size";
    test::NormalPdf copy(pdf);
    EXPECT_FALSE(join(copy, rows.front())) << "copies are complete";
    vmath_PDFMultivariateNormal_statisticsChanged(&copy.record());
    EXPECT_FALSE(join(copy, rows.front()));
    vmath_PDFMultivariateNormal_endUpdates(&pdf.record());
    EXPECT_FALSE(join(pdf, rows.front())) << "nothing waits any more";
    EXPECT_EQ(pdf.record().numSamples, 130);
}

TEST(WaitingSamples, HaveTheBitsOfUpdates) {
    test::Rows rows = test::Noise(5).rows(300, 5);
    rows[200][4] = std::numeric_limits<double>::infinity(); // do not enter
    rows[233][0] = std::nan("");
    rows[250][1] = 1e200; // a block of these goes one by one
    test::NormalPdf joined;
    test::NormalPdf updated;
    vmath_PDFMultivariateNormal_beginUpdates(&joined.record());
    vmath_PDFMultivariateNormal_beginUpdates(&updated.record());
    long numJoined = 0;
    for (const test::Row& row : rows) {
        updated.update({row});
        if (join(joined, row)) {
            ++numJoined;
        } else {
            joined.update({row});
        }
        ASSERT_EQ(joined.record().numSamples, updated.record().numSamples);
        if (joined.record().numSamples > 0) {
            ASSERT_EQ(joined.logValue(rows.front()), updated.logValue(rows.front()));
        }
    }
    EXPECT_GT(numJoined, 150);
    vmath_PDFMultivariateNormal_endUpdates(&joined.record());
    vmath_PDFMultivariateNormal_endUpdates(&updated.record());
    EXPECT_EQ(joined.record().numSamples, 298);
    for (long i = 0; i < joined.size(); ++i) {
        EXPECT_EQ(joined.mean(i), updated.mean(i));
        for (long j = 0; j < joined.size(); ++j) {
            EXPECT_EQ(joined.covariance(i, j), updated.covariance(i, j));
        }
    }
}

} // namespace
