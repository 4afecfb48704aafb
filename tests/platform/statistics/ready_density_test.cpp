#include "platform/statistics/ready_density.h"

#include "tests/platform/statistics/normal_pdf.h"

#include <gtest/gtest.h>

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

} // namespace
