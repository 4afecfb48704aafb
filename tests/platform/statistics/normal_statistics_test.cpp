#include "tests/platform/statistics/reference_table.h"

#include <algorithm>

namespace {

using test::Noise;
using test::NormalPdf;
using test::Reference;
using test::ReferencePoint;
using test::references;
using test::Row;
using test::Rows;

constexpr double epsilon = std::numeric_limits<double>::epsilon();

/// The largest difference between two covariances, in units of the deviations of their measurements.
double covarianceDifference(const NormalPdf& a, const NormalPdf& b) {
    double worst = 0.0;
    for (long i = 0; i < a.size(); ++i) {
        for (long j = 0; j < a.size(); ++j) {
            const double difference =
                (a.covariance(i, j) - b.covariance(i, j)) / std::sqrt(a.covariance(i, i));
            worst = std::max(worst, std::fabs(difference) / std::sqrt(a.covariance(j, j)));
        }
    }
    return worst;
}

/// The tolerance is relative to the mean or the deviation, whichever is larger.
void expectSameMeans(const NormalPdf& a, const NormalPdf& b, double tolerance) {
    ASSERT_EQ(a.size(), b.size());
    for (long i = 0; i < a.size(); ++i) {
        const double size = std::max(std::fabs(b.mean(i)), std::sqrt(b.covariance(i, i)));
        EXPECT_LE(std::fabs(a.mean(i) - b.mean(i)), tolerance * size);
    }
}

TEST(NormalStatistics, AgreeWithFiftyDigits) {
    int numChecked = 0;
    for (const Reference& reference : references("data")) {
        const NormalPdf pdf(reference.rows);
        const NormalPdf exact(reference.mean, reference.lowerCovariance, 1000);
        expectSameMeans(pdf, exact, epsilon);
        EXPECT_LE(covarianceDifference(pdf, exact), 8.0 * epsilon) << reference.name;
        EXPECT_EQ(pdf.record().numSamples, static_cast<std::int32_t>(reference.number));
        ++numChecked;
    }
    EXPECT_EQ(numChecked, 9);
}

/// What the rounding of a mean to a double moves it by, in deviations.
double roundingOfMean(const NormalPdf& pdf) {
    double worst = 0.0;
    for (long i = 0; i < pdf.size(); ++i) {
        const double rounding = 0.5 * epsilon * std::fabs(pdf.mean(i));
        worst = std::max(worst, rounding / std::sqrt(pdf.covariance(i, i)));
    }
    return worst;
}

TEST(NormalStatistics, LeadToTheLogDensityOfTheSamples) {
    for (const Reference& reference : references("data")) {
        const NormalPdf pdf(reference.rows);
        // A mean of 1e9 with a deviation of 1e-3 is rounded by 6e-5 deviations; the others by next to
        // nothing.
        const double tolerance = 1e-13 + 30.0 * roundingOfMean(pdf);
        for (const ReferencePoint& point : reference.points) {
            const double error = std::fabs(pdf.logValue(point.values, point.invalid) - point.logDensity);
            EXPECT_LE(error / std::max(1.0, std::fabs(point.logDensity)), tolerance) << reference.name;
        }
    }
}

TEST(NormalStatistics, OfOneSampleAreItsValuesAndNoSpread) {
    const NormalPdf pdf(Rows{{3.0, -4.0}});
    EXPECT_EQ(pdf.mean(0), 3.0);
    EXPECT_EQ(pdf.mean(1), -4.0);
    EXPECT_EQ(pdf.covariance(0, 0), 0.0);
    EXPECT_EQ(pdf.covariance(1, 0), 0.0);
    EXPECT_EQ(pdf.record().mean.numColumns, 1);
}

TEST(NormalStatistics, DivideByTheNumberOfSamplesLessOne) {
    const NormalPdf pdf(Rows{{2.0, 1.0}, {4.0, 1.0}, {6.0, 4.0}});
    EXPECT_DOUBLE_EQ(pdf.mean(0), 4.0);
    EXPECT_DOUBLE_EQ(pdf.covariance(0, 0), 4.0);
    EXPECT_DOUBLE_EQ(pdf.covariance(1, 1), 3.0);
    EXPECT_DOUBLE_EQ(pdf.covariance(0, 1), 3.0);
    EXPECT_EQ(pdf.covariance(1, 0), pdf.covariance(0, 1));
}

TEST(NormalStatistics, DivideTheValuesByTheFactor) {
    NormalPdf normalised;
    EXPECT_EQ(normalised.update({{2.0}, {4.0}, {6.0}}, 10.0), vxStatus::success);
    const NormalPdf divided(Rows{{0.2}, {0.4}, {0.6}});
    EXPECT_EQ(normalised.mean(0), divided.mean(0));
    EXPECT_EQ(normalised.covariance(0, 0), divided.covariance(0, 0));
    EXPECT_NEAR(normalised.covariance(0, 0), 0.04, 1e-16);
}

TEST(NormalStatistics, DoNotDependOnTheOrderOfThePatterns) {
    Rows rows = Noise(1).rows(200, 5);
    const NormalPdf forward(rows);
    std::reverse(rows.begin(), rows.end());
    const NormalPdf backward(rows);
    std::sort(rows.begin(), rows.end());
    const NormalPdf sorted(rows);
    expectSameMeans(forward, backward, epsilon);
    expectSameMeans(forward, sorted, epsilon);
    EXPECT_LE(covarianceDifference(forward, backward), 4.0 * epsilon);
    EXPECT_LE(covarianceDifference(forward, sorted), 4.0 * epsilon);
}

TEST(NormalStatistics, AreTheSameBitsHoweverThePatternsAreSplitIntoUpdates) {
    const Rows rows = Noise(2).rows(60, 4);
    const NormalPdf atOnce(rows);
    NormalPdf oneByOne;
    NormalPdf inParts(Rows(rows.begin(), rows.begin() + 17));
    for (const Row& row : rows) {
        oneByOne.update({row});
    }
    inParts.update(Rows(rows.begin() + 17, rows.end()));
    for (const NormalPdf* other : {&oneByOne, &inParts}) {
        expectSameMeans(atOnce, *other, 0.0);
        EXPECT_EQ(covarianceDifference(atOnce, *other), 0.0);
        EXPECT_EQ(atOnce.logValue(rows[3]), other->logValue(rows[3]));
    }
}

TEST(NormalStatistics, ContinueFromLoadedOnes) {
    const Rows rows = Noise(3).rows(80, 3);
    NormalPdf half(Rows(rows.begin(), rows.begin() + 40));
    EXPECT_EQ(vmath_PDFMultivariateNormal_statisticsChanged(&half.record()), vxStatus::success);
    half.update(Rows(rows.begin() + 40, rows.end()));
    const NormalPdf whole(rows);
    EXPECT_EQ(half.record().numSamples, 80);
    expectSameMeans(half, whole, 4.0 * epsilon);
    EXPECT_LE(covarianceDifference(half, whole), 4.0 * epsilon);
}

TEST(NormalStatistics, MergeLikeTheirPatterns) {
    const Rows rows = Noise(4).rows(90, 4);
    NormalPdf first(Rows(rows.begin(), rows.begin() + 1));
    const NormalPdf second(Rows(rows.begin() + 1, rows.begin() + 30));
    const NormalPdf third(Rows(rows.begin() + 30, rows.end()));
    EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&first.record(), &second.record()), vxStatus::success);
    EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&first.record(), &third.record()), vxStatus::success);
    const NormalPdf whole(rows);
    EXPECT_EQ(first.record().numSamples, 90);
    expectSameMeans(first, whole, 8.0 * epsilon);
    EXPECT_LE(covarianceDifference(first, whole), 8.0 * epsilon);
    EXPECT_NEAR(first.logValue(rows[5]), whole.logValue(rows[5]), 1e-12);
}

TEST(NormalStatistics, MergedKeepNoRoundingErrorOfBefore) {
    // A few samples with a spread among very many without: the covariance becomes much smaller than its
    // rounding error was.
    const Rows few{{0.1}, {0.2}, {-0.3}};
    const Rows many(1 << 12, Row{0.0});
    NormalPdf merged(few);
    EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&merged.record(), &NormalPdf(many).record()),
              vxStatus::success);
    merged.update({{0.0}});
    NormalPdf whole(few);
    whole.update(many);
    whole.update({{0.0}});
    EXPECT_LE(covarianceDifference(merged, whole), 8.0 * epsilon);
}

TEST(NormalStatistics, MergeWithThemselvesAndWithNothing) {
    const Rows rows = Noise(5).rows(30, 2);
    NormalPdf pdf(rows);
    NormalPdf twice(rows);
    twice.update(rows);
    EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&pdf.record(), &pdf.record()), vxStatus::success);
    EXPECT_EQ(pdf.record().numSamples, 60);
    EXPECT_LE(covarianceDifference(pdf, twice), 8.0 * epsilon);

    NormalPdf empty;
    EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&pdf.record(), &empty.record()), vxStatus::success);
    EXPECT_EQ(pdf.record().numSamples, 60);
    EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&empty.record(), &pdf.record()), vxStatus::success);
    EXPECT_EQ(empty.logValue(rows[0]), pdf.logValue(rows[0]));
}

TEST(NormalStatistics, DoNotMergeWithOtherSizes) {
    NormalPdf pdf(Rows{{1.0}, {2.0}});
    const NormalPdf other(Rows{{1.0, 2.0}});
    EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&pdf.record(), &other.record()),
              vmath_status::otherSizeOnUpdate);
    EXPECT_EQ(pdf.record().numSamples, 2);
}

TEST(NormalStatistics, TakeNoPatternWithAnInvalidMeasurement) {
    NormalPdf pdf;
    EXPECT_EQ(pdf.update({{1.0, 2.0}, {100.0, 3.0}, {3.0, 4.0}}, {{}, {1}, {}}), vxStatus::success);
    EXPECT_EQ(pdf.record().numSamples, 2);
    EXPECT_DOUBLE_EQ(pdf.mean(0), 2.0);
    EXPECT_EQ(pdf.update({{100.0, 3.0}}, {{0}}), vxStatus::success);
    EXPECT_EQ(pdf.record().numSamples, 2);
    // There are no such measurements.
    EXPECT_EQ(pdf.update({{2.0, 3.0}}, {{-1, 2}}), vxStatus::success);
    EXPECT_EQ(pdf.record().numSamples, 3);
}

TEST(NormalStatistics, TakeNoPatternWithAValueThatIsNotFinite) {
    const double infinity = std::numeric_limits<double>::infinity();
    NormalPdf pdf;
    EXPECT_EQ(pdf.update({{1.0}, {std::nan("")}, {infinity}, {-infinity}, {3.0}}), vxStatus::success);
    EXPECT_EQ(pdf.record().numSamples, 2);
    EXPECT_DOUBLE_EQ(pdf.mean(0), 2.0);
    EXPECT_EQ(pdf.update({{1.0}}, 0.0), vxStatus::success);
    EXPECT_EQ(pdf.update({{1e300}}, 1e-300), vxStatus::success);
    EXPECT_EQ(pdf.record().numSamples, 2);
}

TEST(NormalStatistics, OfTheLargestDoublesStayFinite) {
    const double largest = std::numeric_limits<double>::max();
    const NormalPdf pdf(Rows{{largest, largest}, {-largest, largest}, {largest, -largest}});
    for (long i = 0; i < 2; ++i) {
        EXPECT_TRUE(std::isfinite(pdf.mean(i)));
        EXPECT_TRUE(std::isfinite(pdf.covariance(i, 0)));
        EXPECT_TRUE(std::isfinite(pdf.covariance(i, 1)));
    }
    EXPECT_TRUE(std::isfinite(pdf.logValue({largest, -largest})));
    EXPECT_TRUE(std::isfinite(pdf.logValue({0.0, 0.0})));
}

TEST(NormalStatistics, CountPastTheLargestPublishedNumber) {
    const std::int32_t largest = std::numeric_limits<std::int32_t>::max();
    NormalPdf pdf({0.0}, {1.0}, largest);
    EXPECT_EQ(pdf.update({{0.5}, {0.25}}), vxStatus::success);
    EXPECT_EQ(pdf.record().numSamples, largest);
    // Behind the published number the counting goes on: merged with itself 40 times it would have wrapped.
    for (int i = 0; i < 40; ++i) {
        EXPECT_EQ(vmath_PDFMultivariateNormal_merge(&pdf.record(), &pdf.record()), vxStatus::success);
    }
    EXPECT_EQ(pdf.record().numSamples, largest);
    EXPECT_NEAR(pdf.covariance(0, 0), 1.0, 1e-8);
}

} // namespace
