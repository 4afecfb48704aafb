#include "tests/platform/statistics/normal_pdf.h"

#include <algorithm>
#include <cstdint>

namespace {

using test::Noise;
using test::NormalPdf;
using test::Row;
using test::Rows;

/// The rows with each measurement multiplied by its own factor.
Rows scaled(const Rows& rows, const Row& factors) {
    Rows result = rows;
    for (Row& row : result) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i] *= factors[i];
        }
    }
    return result;
}

/// The rows with their measurements rearranged.
Rows reordered(const Rows& rows, const std::vector<std::size_t>& order) {
    Rows result;
    for (const Row& row : rows) {
        Row changed;
        for (const std::size_t i : order) {
            changed.push_back(row[i]);
        }
        result.push_back(changed);
    }
    return result;
}

Rows transformed(const Rows& rows, Row (*change)(const Row&)) {
    Rows result;
    for (const Row& row : rows) {
        result.push_back(change(row));
    }
    return result;
}

/// Patterns among the data and off them.
Rows probes(const Rows& rows) {
    Rows result = Noise(12).rows(5, 4);
    result.push_back(rows.front());
    result.push_back(rows.back());
    return result;
}

/// Every kind of data that has no regular covariance, in four measurements.
std::vector<Rows> degenerateData() {
    const Rows noise = Noise(11).rows(40, 4);
    return {
        Rows(noise.begin(), noise.begin() + 1),
        Rows(noise.begin(), noise.begin() + 2),
        Rows(noise.begin(), noise.begin() + 4),
        Rows(20, noise[0]),
        transformed(noise,
                    [](const Row& r) -> Row {
                        return {r[0], 7.0, r[2], r[3]};
                    }),
        transformed(noise,
                    [](const Row& r) -> Row {
                        return {r[0], -7e-9, 1e9, r[3]};
                    }),
        transformed(noise,
                    [](const Row& r) -> Row {
                        return {r[0], r[1], r[0], r[3]};
                    }),
        transformed(noise,
                    [](const Row& r) -> Row {
                        return {r[0], -3.3 * r[0], 0.1 * r[0], r[0]};
                    }),
        transformed(noise,
                    [](const Row& r) -> Row {
                        return {r[0], r[1], r[0] + r[1], 1e-12 * r[3]};
                    }),
        transformed(noise,
                    [](const Row& r) -> Row {
                        return {1e150 * r[0], 1e-150 * r[1], r[2], r[3]};
                    }),
    };
}

TEST(DegenerateData, AlwaysHasAFiniteLogDensity) {
    const double largest = std::numeric_limits<double>::max();
    for (const Rows& rows : degenerateData()) {
        const NormalPdf pdf(rows);
        for (const Row& row : rows) {
            EXPECT_TRUE(std::isfinite(pdf.logValue(row)));
        }
        EXPECT_TRUE(std::isfinite(pdf.logValue({0.0, 0.0, 0.0, 0.0})));
        EXPECT_TRUE(std::isfinite(pdf.logValue({largest, -largest, largest, -largest})));
        EXPECT_TRUE(std::isfinite(pdf.logValue({1.0, 2.0, 3.0, 4.0}, {0, 2})));
        EXPECT_TRUE(std::isfinite(pdf.logValue({1.0, 2.0, 3.0, 4.0}, {0, 1, 2})));
    }
}

/// Scores are compared within rounding: off the directions in which singular data spread, a score is as large
/// as 1e8 times a squared distance, and rounding has its share of that.
double tolerance(double value) {
    return 1e-6 + 1e-6 * std::fabs(value);
}

TEST(DegenerateData, IsScoredWithoutRegardToUnits) {
    const Row factors = {1000.0, 0.001, 3.0, 1e6};
    const double shift = std::log(1000.0) + std::log(0.001) + std::log(3.0) + std::log(1e6);
    for (const Rows& rows : degenerateData()) {
        const NormalPdf pdf(rows);
        const NormalPdf inOtherUnits(scaled(rows, factors));
        for (const Row& x : probes(rows)) {
            const double value = pdf.logValue(x);
            EXPECT_NEAR(inOtherUnits.logValue(scaled({x}, factors)[0]), value - shift, tolerance(value));
        }
    }
}

TEST(DegenerateData, IsScoredMoreExactlyStillInUnitsThatArePowersOfTwo) {
    const Row factors = {1024.0, 1.0 / 64.0, 4.0, std::ldexp(1.0, 20)};
    const double shift = std::log(2.0) * (10 - 6 + 2 + 20);
    for (const Rows& rows : degenerateData()) {
        const NormalPdf pdf(rows);
        const NormalPdf inOtherUnits(scaled(rows, factors));
        for (const Row& x : probes(rows)) {
            const double value = pdf.logValue(x);
            EXPECT_NEAR(inOtherUnits.logValue(scaled({x}, factors)[0]), value - shift,
                        1e-12 + 4e-16 * std::fabs(value));
        }
    }
}

TEST(DegenerateData, IsScoredWithoutRegardToTheOrderOfMeasurements) {
    const std::vector<std::size_t> order = {2, 0, 3, 1};
    for (const Rows& rows : degenerateData()) {
        const NormalPdf pdf(rows);
        const NormalPdf rearranged(reordered(rows, order));
        for (const Row& x : probes(rows)) {
            const double value = pdf.logValue(x);
            EXPECT_NEAR(rearranged.logValue(reordered({x}, order)[0]), value, tolerance(value));
        }
    }
}

TEST(DegenerateData, OfConstantMeasurementsPunishesAnyOtherValue) {
    const NormalPdf pdf(Rows(20, Row{5.0}));
    const double hit = pdf.logValue({5.0});
    EXPECT_LT(pdf.logValue({5.0001}), hit - 4.0);
    EXPECT_LT(pdf.logValue({5.5}), hit - 10.0);
    EXPECT_LT(pdf.logValue({6.0}), pdf.logValue({5.5}));
    EXPECT_LT(pdf.logValue({-5.0}), pdf.logValue({4.0}));
    EXPECT_LT(pdf.logValue({1e300}), pdf.logValue({1e200}));
}

TEST(DegenerateData, PunishesAValueOffAConstantMoreTheOftenerItWasSeen) {
    double before = 1.0;
    for (const std::size_t count : {1U, 2U, 5U, 20U, 52U, 53U}) {
        const NormalPdf pdf(Rows(count, Row{5.0}));
        const double difference = pdf.logValue({5.1}) - pdf.logValue({5.0});
        EXPECT_LT(difference, before) << count;
        before = difference;
    }
    const NormalPdf often(Rows(54, Row{5.0}));
    EXPECT_EQ(often.logValue({5.1}) - often.logValue({5.0}), before);
}

TEST(DegenerateData, ScoresAConstantMeasurementContinuously) {
    const NormalPdf pdf(Rows(3, Row{5.0}));
    double x = 4.0;
    double before = pdf.logValue({x});
    while (x < 6.0) {
        x += 1e-4;
        const double value = pdf.logValue({x});
        EXPECT_LT(std::fabs(value - before), 2e-3) << x;
        before = value;
    }
}

TEST(DegenerateData, ScoresOneSampleByRelativeDistance) {
    // The unit is a sixteenth of the value: 1 here.
    const NormalPdf pdf(Rows{{16.0, -32.0}});
    EXPECT_DOUBLE_EQ(pdf.logValue({16.0, -32.0}), -std::log(2.0));
    EXPECT_DOUBLE_EQ(pdf.logValue({19.0, -32.0}), -std::log(2.0) - std::log(4.0));
    EXPECT_DOUBLE_EQ(pdf.logValue({16.0, -36.0}), -std::log(2.0) - std::log(3.0));
    EXPECT_DOUBLE_EQ(pdf.logValue({16.0, 0.0}, {1}), 0.0);
}

TEST(DegenerateData, OfZerosTakesTheNumberOneForTheMissingUnit) {
    const NormalPdf once(Rows(1, Row{0.0}));
    EXPECT_EQ(once.logValue({0.0}), 0.0);
    EXPECT_DOUBLE_EQ(once.logValue({3.0}), -std::log(4.0));
    // Off zero the unit cancels once enough zeros have been seen.
    const NormalPdf often(Rows(60, Row{0.0}));
    EXPECT_EQ(often.logValue({0.0}), 0.0);
    EXPECT_NEAR(often.logValue({3000.0}), often.logValue({3.0}) - std::log(1000.0), 1e-12);
}

TEST(DegenerateData, KeepsTheDensityOfTheMeasurementsThatVary) {
    Rows rows = Noise(15).rows(30, 2);
    const NormalPdf plain(rows);
    for (Row& row : rows) {
        row.insert(row.begin() + 1, 16.0); // scores log 1 where it is hit
    }
    const NormalPdf withConstant(rows);
    EXPECT_EQ(withConstant.logValue({0.3, 16.0, -0.2}), plain.logValue({0.3, -0.2}));
    EXPECT_EQ(withConstant.logValue({0.3, 16.0, -0.2}, {1}), plain.logValue({0.3, -0.2}));
}

TEST(DegenerateData, TakesSpreadsOfAFewRoundingsForConstants) {
    const double epsilon = std::numeric_limits<double>::epsilon();
    EXPECT_EQ(NormalPdf({16.0}, {9.0 * epsilon * epsilon * 256.0}, 60).logValue({16.0}), 0.0);
    EXPECT_NEAR(NormalPdf({16.0}, {25.0 * epsilon * epsilon * 256.0}, 60).logValue({16.0}),
                -std::log(80.0 * epsilon) - 0.5 * std::log(2.0 * M_PI), 1e-12);
}

TEST(DegenerateData, WithARepeatedMeasurementDecidesAsWithout) {
    const Rows a = Noise(16).rows(50, 2);
    Rows b = Noise(17).rows(50, 2);
    for (Row& row : b) {
        row[0] += 1.0;
        row[1] *= 2.0;
    }
    const auto repeat = [](const Row& r) -> Row { return {r[0], r[1], r[0]}; };
    const NormalPdf plainA(a);
    const NormalPdf plainB(b);
    const NormalPdf repeatedA(transformed(a, repeat));
    const NormalPdf repeatedB(transformed(b, repeat));
    for (const Row& x : Noise(18).rows(20, 2)) {
        // The repetition adds to both categories what its own measurement's deviation says about units.
        const double plain = plainA.logValue(x) - plainB.logValue(x);
        const double repeated = repeatedA.logValue(repeat(x)) - repeatedB.logValue(repeat(x));
        const double ofUnits = 0.5 * std::log(plainB.covariance(0, 0) / plainA.covariance(0, 0));
        EXPECT_NEAR(repeated - ofUnits, plain, 1e-6);
    }
}

TEST(DegenerateData, OfARepeatedMeasurementHasTheDocumentedSmallestEigenvalue) {
    const NormalPdf pdf({3.0, 3.0}, {4.0, 4.0, 4.0}, 50);
    const double g = std::ldexp(1.0, -26);
    EXPECT_NEAR(pdf.logValue({3.0, 3.0}), -std::log(2.0 * M_PI * 4.0) - 0.5 * std::log(g * (2.0 - g)), 1e-7);
}

TEST(DegenerateData, WithARepeatedMeasurementPunishesWhatDoesNotRepeat) {
    const Rows rows = transformed(Noise(19).rows(50, 2), [](const Row& r) -> Row { return {r[0], r[0]}; });
    const NormalPdf pdf(rows);
    EXPECT_LT(pdf.logValue({0.5, 0.51}), pdf.logValue({0.5, 0.5}) - 1e3);
    // Along the repetition it is the density of the one measurement.
    Rows single;
    for (const Row& row : rows) {
        single.push_back({row[0]});
    }
    const NormalPdf one(single);
    EXPECT_NEAR(pdf.logValue({1.5, 1.5}) - pdf.logValue({0.5, 0.5}),
                one.logValue({1.5}) - one.logValue({0.5}), 1e-6);
}

/// The log density with all correlations multiplied by `share`, put together by hand.
double logValueOfShrunkPair(const NormalPdf& pdf, double share, const Row& x) {
    const double a = std::sqrt(pdf.covariance(0, 0));
    const double b = std::sqrt(pdf.covariance(1, 1));
    const double r = share * pdf.covariance(1, 0) / (a * b);
    const double u = (x[0] - pdf.mean(0)) / a;
    const double v = (x[1] - pdf.mean(1)) / b;
    const double distance = (u * u - 2.0 * r * u * v + v * v) / (1.0 - r * r);
    return -std::log(2.0 * M_PI * a * b) - 0.5 * std::log(1.0 - r * r) - 0.5 * distance;
}

TEST(DegenerateData, OfFewSamplesCountsCorrelationsByTheShareOfDirectionsSeen) {
    const NormalPdf pdf(Rows{{1.0, 10.0}, {2.0, 40.0}});
    for (const Row& x : Rows{{1.5, 25.0}, {0.0, 0.0}, {3.0, 10.0}}) {
        EXPECT_NEAR(pdf.logValue(x), logValueOfShrunkPair(pdf, 0.5, x), 1e-12);
    }
}

TEST(DegenerateData, ApproachesARepeatedMeasurementContinuously) {
    const auto valueAt = [](double gap) {
        return NormalPdf({0.0, 0.0}, {1.0, 1.0 - gap, 1.0}, 1000).logValue({1.0, 1.0});
    };
    const double tolerance = std::ldexp(1.0, -43);
    double before = valueAt(1.1 * tolerance);
    for (int step = 1; step <= 700; ++step) {
        const double value = valueAt((1.1 - 0.001 * step) * tolerance);
        EXPECT_LT(std::fabs(value - before), 0.05) << step;
        before = value;
    }
    EXPECT_NEAR(before, valueAt(0.0), 1e-6);
}

TEST(DegenerateData, HasMarginalsOfTheOneRegularisedDensity) {
    // From two samples in three measurements: the pair's correlation counts a third, not a half.
    const NormalPdf pdf(Rows{{1.0, 10.0, 5.0}, {2.0, 40.0, 3.0}});
    const NormalPdf pair(Rows{{1.0, 10.0}, {2.0, 40.0}});
    const Row x = {1.3, 11.0};
    EXPECT_NEAR(pdf.logValue({x[0], x[1], 0.0}, {2}), logValueOfShrunkPair(pair, 1.0 / 3.0, x), 1e-12);
}

} // namespace
