#include "tests/platform/statistics/reference_table.h"

namespace {

using test::NormalPdf;
using test::Reference;
using test::ReferencePoint;
using test::references;
using test::Row;

constexpr double epsilon = std::numeric_limits<double>::epsilon();

/// The error of a log density, relative to its size or to 1 if it is smaller than that.
double relativeError(double value, double reference) {
    return std::fabs(value - reference) / std::max(1.0, std::fabs(reference));
}

double worstError(const Reference& reference) {
    // A count above the number of measurements: these statistics could come from data.
    const NormalPdf pdf(reference.mean, reference.lowerCovariance, 1000);
    double worst = 0.0;
    for (const ReferencePoint& point : reference.points) {
        worst = std::max(worst, relativeError(pdf.logValue(point.values, point.invalid), point.logDensity));
    }
    return worst;
}

TEST(NormalDensity, AgreesWithFiftyDigitsForWellConditionedCovariances) {
    int numChecked = 0;
    for (const Reference& reference : references("density")) {
        if (reference.number <= 100.0) {
            EXPECT_LE(worstError(reference), 1e-13) << reference.name;
            ++numChecked;
        }
    }
    EXPECT_EQ(numChecked, 22);
}

TEST(NormalDensity, LosesNoMoreThanTheConditionNumberExplains) {
    int numChecked = 0;
    for (const Reference& reference : references("density")) {
        if (reference.number > 100.0) {
            EXPECT_LE(worstError(reference), 4.0 * epsilon * reference.number) << reference.name;
            ++numChecked;
        }
    }
    EXPECT_EQ(numChecked, 11);
}

TEST(NormalDensity, IsTheTextbookDensityUpToAConditionNumberOfATrillion) {
    // Correlation 1 - 2^-39: eigenvalues 2 - 2^-39 and 2^-39, condition number 1.1e12; all numbers are exact.
    const double gap = std::ldexp(1.0, -39);
    const NormalPdf pdf({0.0, 0.0}, {1.0, 1.0 - gap, 1.0}, 1000);
    const double x = std::ldexp(1.0, -20);
    const double distance = 2.0 * x * x / gap; // at (x, -x)
    const double expected = -std::log(2.0 * M_PI) - 0.5 * std::log(gap * (2.0 - gap)) - 0.5 * distance;
    EXPECT_NEAR(pdf.logValue({x, -x}), expected, 1e-3);
}

TEST(NormalDensity, TakesTheTextbookDensityOfARegularCovarianceWhateverTheCount) {
    const Row mean = {1.0, -2.0, 0.5};
    const Row covariance = {2.0, 0.5, 1.0, -0.25, 0.125, 0.75};
    const Row x = {1.5, -1.0, 0.0};
    const double ofMany = NormalPdf(mean, covariance, 1000).logValue(x);
    EXPECT_EQ(NormalPdf(mean, covariance, 1).logValue(x), ofMany);
    EXPECT_EQ(NormalPdf(mean, covariance, 3).logValue(x), ofMany);
}

TEST(NormalDensity, OfOneMeasurementIsTheFormula) {
    const NormalPdf pdf({3.0}, {4.0}, 10);
    EXPECT_DOUBLE_EQ(pdf.logValue({5.0}), -std::log(2.0) - 0.5 * std::log(2.0 * M_PI) - 0.5);
}

TEST(NormalDensity, LeavesInvalidMeasurementsOut) {
    const NormalPdf joint({1.0, 5.0}, {4.0, 1.0, 9.0}, 10);
    EXPECT_EQ(joint.logValue({2.0, std::nan("")}, {1}), NormalPdf({1.0}, {4.0}, 10).logValue({2.0}));
    EXPECT_EQ(joint.logValue({std::nan(""), 7.0}, {0}), NormalPdf({5.0}, {9.0}, 10).logValue({7.0}));
    EXPECT_EQ(joint.logValue({1.0, 1.0}, {1, 0, 1}), 0.0);
}

TEST(NormalDensity, IgnoresIndicesOutsideOfThePattern) {
    const NormalPdf pdf({1.0, 5.0}, {4.0, 1.0, 9.0}, 10);
    EXPECT_EQ(pdf.logValue({2.0, 3.0}, {-1, 2, 1000000}), pdf.logValue({2.0, 3.0}));
    EXPECT_EQ(pdf.logValue({2.0, 3.0}, {-1, 2, 0, 1000000}), pdf.logValue({2.0, 3.0}, {0}));
}

TEST(NormalDensity, HandlesMoreMeasurementsThanFitOnTheStack) {
    const std::size_t size = 70;
    Row lower;
    for (std::size_t row = 0; row < size; ++row) {
        lower.insert(lower.end(), row, 0.0);
        lower.push_back(1.0);
    }
    const NormalPdf pdf(Row(size, 0.0), lower, 1000);
    const double perMeasurement = -0.5 * std::log(2.0 * M_PI) - 0.5;
    EXPECT_NEAR(pdf.logValue(Row(size, 1.0)), 70.0 * perMeasurement, 1e-12);
    EXPECT_NEAR(pdf.logValue(Row(size, 1.0), {69, 0}), 68.0 * perMeasurement, 1e-12);
}

TEST(NormalDensity, StaysFiniteHoweverFarAwayThePatternIs) {
    const double infinity = std::numeric_limits<double>::infinity();
    const NormalPdf pdf({0.0, 0.0}, {1e-300, 0.0, 1.0}, 10);
    EXPECT_EQ(pdf.logValue({1e300, 0.0}), -1e280);
    EXPECT_EQ(pdf.logValue({infinity, -infinity}), -1e280);
    EXPECT_EQ(pdf.logValue({std::numeric_limits<double>::max(), 0.0}), -1e280);
    // Below the limit the density is still the formula's.
    EXPECT_DOUBLE_EQ(pdf.logValue({0.0, 1e100}), -0.5e200);
    EXPECT_DOUBLE_EQ(pdf.logValue({0.0, 1e140}), -0.5e280);
    // Just above it, too, whichever way the density comes there.
    EXPECT_EQ(pdf.logValue({0.0, 1.45e140}), -1e280);
    const NormalPdf narrow({0.0, 0.0}, {1.0, 1.0 - 1e-9, 1.0}, 10);
    EXPECT_EQ(narrow.logValue({1e139, -1e139}), -1e280);
    EXPECT_EQ(narrow.logValue({-infinity, -infinity}), -1e280);
}

TEST(NormalDensity, AnswersNotANumberWithNotANumber) {
    const double infinity = std::numeric_limits<double>::infinity();
    const NormalPdf pdf({0.0, 0.0}, {1.0, 0.0, 1.0}, 10);
    EXPECT_TRUE(std::isnan(pdf.logValue({std::nan(""), 0.0})));
    EXPECT_TRUE(std::isnan(pdf.logValue({std::nan(""), infinity})));
    EXPECT_TRUE(std::isnan(pdf.logValue({infinity, std::nan("")})));
}

} // namespace
