#include <vxclassifier/pdf_binomial.h>

#include "tests/clastool/bayes/fake_density.h"
#include "tests/clastool/bayes/record.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/attention.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <tuple>

namespace {

using Patterns = std::vector<vxFeaturePattern>;
using test::Bytes;
using test::Record;
using vxClassifierDefs::BadFeatures;
using vxClassifierDefs::BadParams;
using vxClassifierDefs::InsufficientTrainData;
using vxClassifierDefs::NotImplemented;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

const wchar_t* const insufficient = L"Insufficient data has been used to train the distribution";
const wchar_t* const multivariate = L"Multivariate Binomial Distributions are not implemented";
const wchar_t* const aboveMaximum = L"Feature measurement must be <= specified maximum value";
const wchar_t* const trainedAboveMaximum =
    L"Train data measurement cannot exceed its maximum value when using binomial distribution";

struct OpenBinomial : vx_PDFBinomial {
    using vx_PDFBinomial::serialize_;
    using vx_PDFBinomial::vx_PDFBinomial;
};

vxFeaturePattern one(double value) {
    return vxFeaturePattern({value}, {});
}

Patterns ones(const std::vector<double>& values) {
    Patterns patterns;
    for (const double value : values) {
        patterns.push_back(one(value));
    }
    return patterns;
}

const vxFeaturePattern missing({3.0}, {0});
const vxFeaturePattern two({1.0, 2.0}, {});

vx_PDFBinomial trainedWith(double maximum, const std::vector<double>& values) {
    vx_PDFBinomial binomial(one(maximum));
    binomial.updateWithData(ones(values));
    return binomial;
}

Bytes estimates(long numTrials, double theta, double maximum) {
    return test::recordOf([&](Record& record) {
        record.versions({0, 0, 0}).number(numTrials).real(theta).real(maximum);
    });
}

vx_PDFBinomial loadedWith(long numTrials, double theta, double maximum) {
    vx_PDFBinomial binomial(one(5.0));
    test::load(estimates(numTrials, theta, maximum), binomial);
    return binomial;
}

double logFactorial(std::int64_t number) {
    double sum = 0.0;
    for (std::int64_t i = 2; i <= number; ++i) {
        sum += std::log(static_cast<double>(i));
    }
    return sum;
}

/// The definition, sum by sum; for counts that fit.
double expectedLogValue(std::int64_t n, double theta, double maximum, double x) {
    const auto k = static_cast<std::int64_t>(x * (static_cast<double>(n) / maximum) + 0.5);
    const std::int64_t m = n - k;
    const double ofN = logFactorial(n);
    const double ofK = logFactorial(k);
    const double ofM = logFactorial(m);
    return std::log(1.0 - theta) * static_cast<double>(m) + std::log(theta) * static_cast<double>(k) +
           (ofN - (ofM + ofK));
}

TEST(PdfBinomial, StartsUntrained) {
    const vx_PDFBinomial binomial(one(10.0));
    EXPECT_EQ(binomial.numTrials(), 0);
    EXPECT_EQ(binomial.theta(), 0.0);
    EXPECT_EQ(test::stored(binomial), estimates(0, 0.0, 10.0));
}

TEST(PdfBinomial, TheMaximumIsTheFirstMeasurement) {
    EXPECT_EQ(test::stored(vx_PDFBinomial(vxFeaturePattern({4.0, 9.0}, {1}))), estimates(0, 0.0, 4.0));
}

TEST(PdfBinomial, AMaximumThatIsNotThereIsRefused) {
    const wchar_t* const notValid = L"The measurement for the specified measurement index is not valid.";
    EXPECT_ERROR(vx_PDFBinomial(vxFeaturePattern({}, {})), BadFeatures, notValid);
    EXPECT_ERROR(vx_PDFBinomial(vxFeaturePattern({4.0}, {0})), BadFeatures, notValid);
}

TEST(PdfBinomial, MakeGivesAnUntrainedOneWithTheMaximum1) {
    const std::unique_ptr<vxPersistent> made(vx_PDFBinomial::make());
    const auto* binomial = dynamic_cast<const vx_PDFBinomial*>(made.get());
    ASSERT_NE(binomial, nullptr);
    EXPECT_EQ(*binomial, vx_PDFBinomial(one(1.0)));
}

TEST(PdfBinomial, TrainingEstimatesByMeanAndVariance) {
    const vx_PDFBinomial binomial = trainedWith(10.0, {2.0, 4.0, 6.0});
    EXPECT_NEAR(binomial.theta(), 0.4, 1e-15);
    EXPECT_EQ(binomial.numTrials(), 6); // 0.24 / 0.04
}

TEST(PdfBinomial, TheEstimatesAreTheFormulasToTheLastBit) {
    const std::vector<std::vector<double>> samples{
        {2.0, 4.0, 6.0},      {0.0, 10.0},        {1.0, 1.0, 2.0, 3.5, 9.75}, {10.0, 9.0, 10.0, 8.0},
        {0.25, 0.5, 0.125},   {-3.0, 4.0},        {5.0, 5.0, 5.0, 5.01},      {1e-3, 2e-3, 7.0},
        {0.1, 0.2, 0.3, 0.4}, {-9.0, -8.0, -8.5}, {3.0, 7.0, 3.0, 7.0, 3.0},  {9.999, 10.0, 9.99}};
    for (const std::vector<double>& values : samples) {
        vx_PDFMultivariateNormal normal;
        normal.updateWithDataNormalize(ones(values), 10.0);
        const double theta = normal.mean()(0, 0);
        const double v = normal.covariance()(0, 0);
        const vx_PDFBinomial binomial = trainedWith(10.0, values);
        EXPECT_EQ(binomial.theta(), theta);
        EXPECT_EQ(binomial.numTrials(), static_cast<long>(((1.0 - theta) / v) * theta + 0.5));
    }
}

TEST(PdfBinomial, TheEstimateOfTheTrialsIsRoundedOperationByOperation) {
    // Without rounding these come to a half, so that the order of the operations decides.
    const std::tuple<double, std::vector<double>, long> cases[] = {
        {7.0, {3.0, 5.0, 7.0}, 2},   {9.0, {1.0, 1.0, 7.0}, 1},   {11.0, {3.0, 3.0, 9.0}, 3},
        {15.0, {3.0, 5.0, 7.0}, 13}, {17.0, {4.0, 6.0, 8.0}, 17}, {23.0, {16.0, 18.0, 20.0}, 22}};
    for (const auto& [maximum, values, numTrials] : cases) {
        vx_PDFMultivariateNormal normal;
        normal.updateWithDataNormalize(ones(values), maximum);
        const double theta = normal.mean()(0, 0);
        const double v = normal.covariance()(0, 0);
        ASSERT_NE(static_cast<long>(theta * (1.0 - theta) / v + 0.5), numTrials) << "or it shows nothing";
        EXPECT_EQ(trainedWith(maximum, values).numTrials(), numTrials);
    }
}

TEST(PdfBinomial, TrainingIsCumulative) {
    vx_PDFBinomial binomial(one(10.0));
    binomial.updateWithData(ones({2.0}));
    EXPECT_EQ(binomial.numTrials(), 0);
    EXPECT_EQ(binomial.theta(), 0.2);
    binomial.updateWithData(ones({4.0}));
    binomial.updateWithData(ones({6.0}));
    EXPECT_EQ(binomial, trainedWith(10.0, {2.0, 4.0, 6.0}));
}

TEST(PdfBinomial, NoPatternsChangeNothing) {
    vx_PDFBinomial binomial = trainedWith(10.0, {2.0, 4.0, 6.0});
    const vx_PDFBinomial before(binomial);
    binomial.updateWithData({});
    EXPECT_EQ(binomial, before);
}

TEST(PdfBinomial, EqualValuesKeepTheNumberOfTrials) {
    EXPECT_EQ(trainedWith(10.0, {4.0, 4.0, 4.0}).numTrials(), 0);
    EXPECT_EQ(trainedWith(10.0, {4.0, 4.0, 4.0}).theta(), 0.4);
    vx_PDFBinomial loaded = loadedWith(17, 0.3, 10.0);
    loaded.updateWithData(ones({5.0, 5.0}));
    EXPECT_EQ(loaded.numTrials(), 17);
    EXPECT_EQ(loaded.theta(), 0.5);
}

TEST(PdfBinomial, OnlyAVarianceAbove1em15Counts) {
    // Two values around a mean of 0.5: their variance is half the square of their difference.
    const double below = std::sqrt(1.9e-15);
    const double above = std::sqrt(2.1e-15);
    EXPECT_EQ(trainedWith(1.0, {0.5, 0.5 + below}).numTrials(), 0);
    EXPECT_NE(trainedWith(1.0, {0.5, 0.5 + above}).numTrials(), 0);
    const double atTheLimit = 0x1.80274f468e3cfp-25;
    ASSERT_EQ(atTheLimit * atTheLimit / 2.0, 1e-15);
    EXPECT_EQ(trainedWith(1.0, {0.0, atTheLimit}).numTrials(), 0);
    EXPECT_EQ(trainedWith(1.0, {0.0, std::nextafter(atTheLimit, 0.0)}).numTrials(), 0);
    EXPECT_NE(trainedWith(1.0, {0.0, std::nextafter(atTheLimit, 1.0)}).numTrials(), 0);
}

TEST(PdfBinomial, AnEstimateBeyond32BitsIsTheLargestOne) {
    EXPECT_EQ(trainedWith(1.0, {0.5, 0.5 + 6e-8}).numTrials(), 2147483647);
    EXPECT_EQ(trainedWith(1.0, {-0.5, -0.5 - 6e-8}).numTrials(), -2147483647);
}

TEST(PdfBinomial, AnInvalidMeasurementDoesNotEnter) {
    vx_PDFBinomial binomial(one(10.0));
    binomial.updateWithData({one(2.0), vxFeaturePattern({1e9}, {0}), one(4.0), one(6.0)});
    EXPECT_EQ(binomial, trainedWith(10.0, {2.0, 4.0, 6.0}));
}

TEST(PdfBinomial, WithoutAnyValidMeasurementTheEstimateStays) {
    vx_PDFBinomial binomial = loadedWith(17, 0.3, 10.0);
    binomial.updateWithData({missing, missing});
    EXPECT_EQ(binomial, loadedWith(17, 0.3, 10.0));
}

TEST(PdfBinomial, OnlySingleMeasurementsAreTrained) {
    vx_PDFBinomial binomial(one(10.0));
    EXPECT_ERROR(binomial.updateWithData({two}), NotImplemented, multivariate);
    EXPECT_ERROR(binomial.updateWithData({vxFeaturePattern({}, {})}), NotImplemented, multivariate);
    EXPECT_ERROR(binomial.updateWithData({two, one(99.0)}), NotImplemented, multivariate);
    EXPECT_EQ(binomial, vx_PDFBinomial(one(10.0)));
}

TEST(PdfBinomial, ALaterPatternOfAnotherSizeIsRefusedByTheStatistics) {
    vx_PDFBinomial binomial(one(10.0));
    EXPECT_ERROR(binomial.updateWithData({one(1.0), two}), BadParams,
                 L"Must call clear before updating with feature vectors of different sizes");
    EXPECT_ERROR(binomial.updateWithData({one(1.0), vxFeaturePattern({1.0, 11.0}, {})}), BadParams,
                 trainedAboveMaximum);
}

TEST(PdfBinomial, ATrainingValueAboveTheMaximumIsRefusedBeforeAnythingEnters) {
    vx_PDFBinomial binomial(one(10.0));
    EXPECT_ERROR(binomial.updateWithData(ones({1.0, 2.0, 10.5})), BadParams, trainedAboveMaximum);
    EXPECT_EQ(binomial, vx_PDFBinomial(one(10.0)));
    binomial.updateWithData(ones({2.0, 4.0, 6.0}));
    EXPECT_EQ(binomial, trainedWith(10.0, {2.0, 4.0, 6.0}));
    binomial.updateWithData(ones({10.0}));
    EXPECT_EQ(binomial, trainedWith(10.0, {2.0, 4.0, 6.0, 10.0}));
}

TEST(PdfBinomial, ClearingKeepsThetaAndTheMaximum) {
    vx_PDFBinomial binomial = trainedWith(10.0, {2.0, 4.0, 6.0});
    const double theta = binomial.theta();
    binomial.clear();
    EXPECT_EQ(test::stored(binomial), estimates(0, theta, 10.0));
    binomial.updateWithData(ones({1.0, 9.0}));
    EXPECT_EQ(binomial, trainedWith(10.0, {1.0, 9.0}));
}

TEST(PdfBinomial, AnUntrainedOneThrowsWhateverThePattern) {
    const vx_PDFBinomial binomial(one(10.0));
    for (const vxFeaturePattern& pattern : {one(1.0), one(99.0), missing, two, vxFeaturePattern({}, {})}) {
        EXPECT_ERROR(binomial.logValue(pattern), InsufficientTrainData, insufficient);
    }
}

TEST(PdfBinomial, OnlySingleMeasurementsAreEvaluated) {
    const vx_PDFBinomial binomial = trainedWith(10.0, {2.0, 4.0, 6.0});
    EXPECT_ERROR(binomial.logValue(two), NotImplemented, multivariate);
    EXPECT_ERROR(binomial.logValue(vxFeaturePattern({1.0, 2.0}, {0, 1})), NotImplemented, multivariate);
    EXPECT_ERROR(binomial.logValue(vxFeaturePattern({}, {})), NotImplemented, multivariate);
}

TEST(PdfBinomial, AnInvalidMeasurementContributesNothing) {
    const vx_PDFBinomial binomial = trainedWith(10.0, {2.0, 4.0, 6.0});
    EXPECT_EQ(binomial.logValue(missing), 0.0);
    EXPECT_EQ(binomial.logValue(vxFeaturePattern({99.0}, {0})), 0.0);
}

TEST(PdfBinomial, AValueAboveTheMaximumIsRefused) {
    const vx_PDFBinomial binomial = trainedWith(10.0, {2.0, 4.0, 6.0});
    EXPECT_ERROR(binomial.logValue(one(10.0000001)), BadParams, aboveMaximum);
    EXPECT_NO_THROW(binomial.logValue(one(10.0)));
}

TEST(PdfBinomial, TheEndsOfTheRangeGiveAllOrNoSuccesses) {
    const vx_PDFBinomial binomial = loadedWith(20, 0.3, 10.0);
    EXPECT_EQ(binomial.logValue(one(10.0)), 20.0 * std::log(0.3));
    EXPECT_EQ(binomial.logValue(one(0.0)), 20.0 * std::log(1.0 - 0.3));
}

TEST(PdfBinomial, TheLogValueIsTheDefinitionToTheLastBit) {
    for (const long n : {1L, 2L, 3L, 6L, 37L, 500L, 20001L}) {
        for (const double theta : {0.4, 1.0 / 3.0, 0.999, 1e-12}) {
            for (const double x : {0.0, 0.3, 1.0, 4.25, 5.0, 8.7499, 10.0}) {
                EXPECT_EQ(loadedWith(n, theta, 10.0).logValue(one(x)), expectedLogValue(n, theta, 10.0, x));
            }
        }
    }
}

TEST(PdfBinomial, TheCountIsRoundedOperationByOperation) {
    // Multiplying before dividing would give the next higher count.
    const std::tuple<long, double, double> cases[] = {{15, 22.0, 11.0}, {49, 22.0, 11.0}, {15, 26.0, 13.0}};
    for (const auto& [n, maximum, x] : cases) {
        const double trials = static_cast<double>(n);
        ASSERT_LT(std::trunc(x * (trials / maximum) + 0.5), std::trunc(x * trials / maximum + 0.5));
        EXPECT_EQ(loadedWith(n, 0.3, maximum).logValue(one(x)), expectedLogValue(n, 0.3, maximum, x));
    }
}

TEST(PdfBinomial, TheCountIsTheNearestOneAndHalvesGoUp) {
    const vx_PDFBinomial binomial = loadedWith(4, 0.5, 8.0);
    EXPECT_EQ(binomial.logValue(one(2.9999)), binomial.logValue(one(2.0)));
    EXPECT_EQ(binomial.logValue(one(3.0)), binomial.logValue(one(4.0)));
    EXPECT_NE(binomial.logValue(one(3.0)), binomial.logValue(one(2.9999)));
}

TEST(PdfBinomial, NegativeCountsHaveNoFactorial) {
    // k = -3 and m = 7, of n = 4.
    const vx_PDFBinomial binomial = loadedWith(4, 0.25, 4.0);
    EXPECT_EQ(binomial.logValue(one(-3.6)),
              std::log(0.75) * 7.0 + std::log(0.25) * -3.0 + (logFactorial(4) - (logFactorial(7) + 0.0)));
    // n = -4, k = -3, m = -1.
    EXPECT_EQ(loadedWith(-4, 0.25, 1.0).logValue(one(1.0)),
              std::log(0.75) * -1.0 + std::log(0.25) * -3.0 + (0.0 - (0.0 + 0.0)));
}

TEST(PdfBinomial, EqualityTakesTheEstimatesAndTheMaximum) {
    const vx_PDFBinomial binomial = loadedWith(4, 0.25, 8.0);
    EXPECT_EQ(binomial, loadedWith(4, 0.25, 8.0));
    EXPECT_NE(binomial, loadedWith(5, 0.25, 8.0));
    EXPECT_NE(binomial, loadedWith(4, 0.5, 8.0));
    EXPECT_NE(binomial, loadedWith(4, 0.25, 9.0));
    EXPECT_NE(binomial, loadedWith(4, 0.125, 8.0));
    EXPECT_NE(binomial, loadedWith(4, 0.25, 7.0));
    EXPECT_FALSE(binomial == loadedWith(5, 0.25, 8.0));
}

TEST(PdfBinomial, ANaNIsEqualToEverything) {
    EXPECT_EQ(loadedWith(4, notANumber, 8.0), loadedWith(4, 0.5, 8.0));
    EXPECT_EQ(loadedWith(4, 0.5, notANumber), loadedWith(4, 0.5, 8.0));
    EXPECT_EQ(loadedWith(4, notANumber, 8.0), loadedWith(4, notANumber, 8.0));
    EXPECT_NE(loadedWith(4, notANumber, 8.0), loadedWith(5, notANumber, 8.0));
}

TEST(PdfBinomial, TheStatisticsBehindTheEstimatesAreNotCompared) {
    EXPECT_EQ(loadedWith(6, trainedWith(10.0, {2.0, 4.0, 6.0}).theta(), 10.0),
              trainedWith(10.0, {2.0, 4.0, 6.0}));
}

TEST(PdfBinomial, EquivalenceAsksForTheClassFirst) {
    const vx_PDFBinomial binomial = loadedWith(4, 0.25, 8.0);
    EXPECT_TRUE(binomial.isEquivalent(loadedWith(4, 0.25, 8.0)));
    EXPECT_FALSE(binomial.isEquivalent(loadedWith(4, 0.5, 8.0)));
    EXPECT_FALSE(binomial.isEquivalent(vx_PDFMultivariateNormal()));
    EXPECT_FALSE(binomial.isEquivalent(test::FakeDensity()));
}

TEST(PdfBinomial, CopiesAreIndependent) {
    const vx_PDFBinomial original = trainedWith(10.0, {2.0, 4.0});
    vx_PDFBinomial copy(original);
    vx_PDFBinomial assigned(one(3.0));
    assigned = original;
    EXPECT_EQ(copy, original);
    EXPECT_EQ(assigned, original);
    copy.updateWithData(ones({6.0}));
    assigned.updateWithData(ones({6.0}));
    EXPECT_EQ(original, trainedWith(10.0, {2.0, 4.0}));
    EXPECT_EQ(copy, trainedWith(10.0, {2.0, 4.0, 6.0}));
    EXPECT_EQ(assigned, trainedWith(10.0, {2.0, 4.0, 6.0}));
}

TEST(PdfBinomial, ARecordHoldsTheEstimatesAndTheMaximum) {
    const vx_PDFBinomial binomial = trainedWith(10.0, {2.0, 4.0, 6.0});
    const Bytes sealed = estimates(6, binomial.theta(), 10.0);
    EXPECT_EQ(test::stored(binomial), sealed);
    vx_PDFBinomial loaded(one(1.0));
    test::load(sealed, loaded);
    EXPECT_EQ(loaded, binomial);
    EXPECT_EQ(loaded.logValue(one(7.0)), binomial.logValue(one(7.0)));
}

TEST(PdfBinomial, AnotherVersionIsRefusedAtEachLevel) {
    for (int level = 0; level < 3; ++level) {
        const Bytes sealed = test::recordOf([&](Record& record) {
            for (int i = 0; i < 3; ++i) {
                record.versions({static_cast<unsigned char>(i == level ? 1 : 0)});
            }
            record.number(4).real(0.5).real(2.0);
        });
        vx_PDFBinomial into(one(10.0));
        EXPECT_UNKNOWN_VERSION(test::load(sealed, into), nullptr, 0);
        EXPECT_EQ(into, vx_PDFBinomial(one(10.0)));
    }
    OpenBinomial binomial(one(1.0));
    test::archiveOf(
        [&](vxArchive& archive) { EXPECT_UNKNOWN_VERSION(binomial.serialize_(archive, 1), nullptr, 0); });
}

TEST(PdfBinomial, AStoredPointerBringsTheClassBack) {
    const vxPtrHandle<vx_ProbabilityDensityFunction> binomial(
        new vx_PDFBinomial(trainedWith(10.0, {2.0, 4.0, 6.0})));
    const Bytes sealed = test::storedPointer(binomial.get());
    vxLoadingArchive archive(sealed);
    vxPtrHandle<vx_ProbabilityDensityFunction> loaded;
    archive || loaded;
    EXPECT_TRUE(binomial->isEquivalent(*loaded));
}

struct Polls {
    long made = 0;
    long failAt = 0; // 0: never
};

long countPoll(void* context) {
    auto& polls = *static_cast<Polls*>(context);
    ++polls.made;
    return polls.made == polls.failAt ? vsys_attention_cancelled : 0;
}

TEST(PdfBinomial, ALongEvaluationCanBeInterrupted) {
    const vx_PDFBinomial binomial = loadedWith(3 << 20, 0.25, 8.0);
    Polls polls;
    const vxAttentionScope scope(&countPoll, &polls);
    binomial.logValue(one(2.0));
    EXPECT_EQ(polls.made, 3); // every 2^20 terms
    polls = Polls{0, 2};
    EXPECT_ERROR_CLASS(binomial.logValue(one(2.0)), vxInterrupted);
    EXPECT_EQ(polls.made, 2);
}

TEST(PdfBinomial, AShortEvaluationMakesNoChecks) {
    Polls polls;
    const vxAttentionScope scope(&countPoll, &polls);
    loadedWith((1 << 20) - 1, 0.25, 8.0).logValue(one(2.0));
    EXPECT_EQ(polls.made, 0);
}

} // namespace
