#include <vxclassifier/pdf_multivariate_normal.h>

#include "tests/clastool/bayes/fake_density.h"
#include "tests/clastool/bayes/record.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/vtable_slots.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/pdf_binomial.h>
#include <vxclassifier/platform/status.h>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace {

using Patterns = std::vector<vxFeaturePattern>;
using test::Bytes;
using test::Record;
using vxClassifierDefs::BadParams;
using vxClassifierDefs::InsufficientTrainData;

const wchar_t* const noData = L"No valid data has been used to train the distribution";
const wchar_t* const otherSize = L"Must call clear before updating with feature vectors of different sizes";

struct OpenNormal : vx_PDFMultivariateNormal {
    using vx_PDFMultivariateNormal::serialize_;
    static std::size_t serializeSlot() { return test::slotOf(&OpenNormal::dispatchSerialize); }
};

vxFeaturePattern pattern(const std::vector<double>& values, const std::vector<long>& invalid = {}) {
    return vxFeaturePattern(values, invalid);
}

vxNMMatrix matrix(long rows, long columns, const std::vector<double>& entries) {
    vxNMMatrix result(rows, columns);
    for (long i = 0; i < rows * columns; ++i) {
        result(i / columns, i % columns) = entries[static_cast<std::size_t>(i)];
    }
    return result;
}

vx_PDFMultivariateNormal trainedWith(const Patterns& patterns) {
    vx_PDFMultivariateNormal normal;
    normal.updateWithData(patterns);
    return normal;
}

/// Mean (3, 8), covariance ((4, 2), (2, 4)), exactly.
vx_PDFMultivariateNormal twoDimensional() {
    return trainedWith({pattern({1, 8}), pattern({3, 6}), pattern({5, 10})});
}

Bytes statistics(long rows, const std::vector<double>& mean, const std::vector<double>& covariance,
                 long numSamples) {
    return test::recordOf([&](Record& record) {
        record.versions({0, 0, 0}).matrix(rows, 1, mean).matrix(rows, rows, covariance).number(numSamples);
    });
}

TEST(PdfMultivariateNormal, TheVirtualFunctionsStandInTheirPublishedOrder) {
    using Pdf = vx_ProbabilityDensityFunction;
    EXPECT_EQ(OpenNormal::serializeSlot(), 2U);
    EXPECT_EQ(test::slotOf(&Pdf::reInit), 3U);
    EXPECT_EQ(test::slotOf(&Pdf::loadSimple), 4U);
    EXPECT_EQ(test::slotOf(&Pdf::logValue), 5U);
    EXPECT_EQ(test::slotOf(&Pdf::isEquivalent), 6U);
    EXPECT_EQ(test::slotOf(&Pdf::updateWithData), 7U);
    EXPECT_EQ(test::slotOf(&Pdf::clear), 8U);
    EXPECT_TRUE(std::is_abstract_v<Pdf>);
}

TEST(PdfMultivariateNormal, AnUntrainedOneThrowsWhateverThePattern) {
    const vx_PDFMultivariateNormal normal;
    EXPECT_FALSE(normal.isValid());
    EXPECT_ERROR(normal.logValue(pattern({1.0})), InsufficientTrainData, noData);
    EXPECT_ERROR(normal.logValue(pattern({1.0}, {0})), InsufficientTrainData, noData);
    EXPECT_ERROR(normal.logValue(pattern({})), InsufficientTrainData, noData);
    EXPECT_EQ(normal.mean(), vxNMMatrix());
    EXPECT_EQ(normal.covariance(), vxNMMatrix());
}

TEST(PdfMultivariateNormal, MeanAndCovarianceAreThoseOfThePatterns) {
    const vx_PDFMultivariateNormal normal = twoDimensional();
    EXPECT_TRUE(normal.isValid());
    EXPECT_EQ(normal.mean(), matrix(2, 1, {3, 8}));
    EXPECT_EQ(normal.covariance(), matrix(2, 2, {4, 2, 2, 4}));
}

TEST(PdfMultivariateNormal, MeanAndCovarianceAreCopies) {
    const vx_PDFMultivariateNormal normal = twoDimensional();
    normal.mean()(0, 0) = 77;
    normal.covariance()(0, 0) = 77;
    EXPECT_EQ(normal, twoDimensional());
}

TEST(PdfMultivariateNormal, TheLogValueIsThatOfTheDensity) {
    const double log2Pi = std::log(2.0 * 3.14159265358979323846);
    // The covariance has the determinant 12 and the inverse ((4, -2), (-2, 4)) / 12.
    const double expected = -log2Pi - 0.5 * std::log(12.0) - 0.5 * (4.0 * 1 - 2.0 * 2 * 1 * 2 + 4.0 * 4) / 12;
    EXPECT_NEAR(twoDimensional().logValue(pattern({4, 10})), expected, 1e-14);
}

TEST(PdfMultivariateNormal, InvalidMeasurementsOfAPatternAreLeftOut) {
    const double log2Pi = std::log(2.0 * 3.14159265358979323846);
    const vx_PDFMultivariateNormal normal = twoDimensional();
    EXPECT_NEAR(normal.logValue(pattern({5, -1e9}, {1})), -0.5 * (log2Pi + std::log(4.0) + 1.0), 1e-14);
    EXPECT_NEAR(normal.logValue(pattern({-1e9, 8}, {0})), -0.5 * (log2Pi + std::log(4.0)), 1e-14);
    EXPECT_EQ(normal.logValue(pattern({5, 8}, {1, 0})), 0.0);
}

TEST(PdfMultivariateNormal, APatternOfAnotherSizeIsAFailureOfItsOwnOnEvaluation) {
    EXPECT_ERROR(twoDimensional().logValue(pattern({1.0})), vxStatusFailure,
                 L"An operation failed with the status 0x80000B63.");
}

TEST(PdfMultivariateNormal, TrainingIsCumulative) {
    vx_PDFMultivariateNormal normal;
    normal.updateWithData({pattern({1, 8})});
    normal.updateWithData({});
    normal.updateWithData({pattern({3, 6}), pattern({5, 10})});
    EXPECT_EQ(normal, twoDimensional());
}

TEST(PdfMultivariateNormal, APatternWithAnInvalidMeasurementDoesNotEnter) {
    EXPECT_EQ(trainedWith({pattern({1, 8}), pattern({100, 100}, {0}), pattern({3, 6}), pattern({5, 10}),
                           pattern({0, 0}, {0, 1})}),
              twoDimensional());
    EXPECT_FALSE(trainedWith({pattern({1, 8}, {1})}).isValid());
}

TEST(PdfMultivariateNormal, TheFactorDividesTheValues) {
    vx_PDFMultivariateNormal normal;
    normal.updateWithDataNormalize({pattern({4, 32}), pattern({12, 24}), pattern({20, 40})}, 4.0);
    EXPECT_EQ(normal, twoDimensional());
}

TEST(PdfMultivariateNormal, AnUpdateWithPatternsOfAnotherSizeLeavesEverythingAsItWas) {
    vx_PDFMultivariateNormal normal = twoDimensional();
    EXPECT_ERROR(normal.updateWithData({pattern({1, 2, 3})}), BadParams, otherSize);
    EXPECT_ERROR(normal.updateWithData({pattern({1, 2}), pattern({1})}), BadParams, otherSize);
    EXPECT_EQ(normal, twoDimensional());
    vx_PDFMultivariateNormal fresh;
    EXPECT_ERROR(fresh.updateWithData({pattern({1, 2}), pattern({1})}), BadParams, otherSize);
    EXPECT_EQ(fresh, vx_PDFMultivariateNormal());
}

TEST(PdfMultivariateNormal, ClearingForgetsSizesStatisticsAndCount) {
    vx_PDFMultivariateNormal normal = twoDimensional();
    normal.clear();
    EXPECT_EQ(normal, vx_PDFMultivariateNormal());
    EXPECT_ERROR(normal.logValue(pattern({1, 2})), InsufficientTrainData, noData);
    normal.updateWithData({pattern({1, 2, 3})});
    EXPECT_EQ(normal.mean(), matrix(3, 1, {1, 2, 3}));
}

TEST(PdfMultivariateNormal, CopiesAreIndependent) {
    const vx_PDFMultivariateNormal original = twoDimensional();
    vx_PDFMultivariateNormal copy(original);
    EXPECT_EQ(copy, original);
    EXPECT_EQ(copy.logValue(pattern({1, 2})), original.logValue(pattern({1, 2})));
    vx_PDFMultivariateNormal assigned = trainedWith({pattern({7})});
    assigned = original;
    EXPECT_EQ(assigned, original);
    assigned = *&assigned;
    EXPECT_EQ(assigned, original);
    copy.updateWithData({pattern({50, 60})});
    assigned.clear();
    EXPECT_EQ(original, twoDimensional());
    EXPECT_EQ(copy.mean(), matrix(2, 1, {14.75, 21}));
}

TEST(PdfMultivariateNormal, EqualityTakesCountMeanAndCovariance) {
    const auto loaded = [](const std::vector<double>& mean, const std::vector<double>& covariance,
                           long count) {
        vx_PDFMultivariateNormal normal;
        test::load(statistics(static_cast<long>(mean.size()), mean, covariance, count), normal);
        return normal;
    };
    const vx_PDFMultivariateNormal normal = loaded({1.0}, {2.0}, 3);
    EXPECT_EQ(normal, loaded({1.0}, {2.0}, 3));
    EXPECT_NE(normal, loaded({1.0}, {2.0}, 4));
    EXPECT_NE(normal, loaded({1.5}, {2.0}, 3));
    EXPECT_NE(normal, loaded({1.0}, {2.5}, 3));
    EXPECT_NE(normal, loaded({1.0, 1.0}, {2.0, 0.0, 0.0, 2.0}, 3));
    EXPECT_FALSE(normal == loaded({1.0}, {2.5}, 3));
}

TEST(PdfMultivariateNormal, EquivalenceAsksForTheClassFirst) {
    const vx_PDFMultivariateNormal normal = twoDimensional();
    EXPECT_TRUE(normal.isEquivalent(twoDimensional()));
    EXPECT_FALSE(normal.isEquivalent(vx_PDFMultivariateNormal()));
    EXPECT_FALSE(normal.isEquivalent(test::FakeDensity()));
    EXPECT_FALSE(vx_PDFMultivariateNormal().isEquivalent(vx_PDFBinomial(pattern({1.0}))));
}

TEST(PdfMultivariateNormal, ARecordHoldsMeanCovarianceAndCount) {
    const Bytes byHand = statistics(2, {3, 8}, {4, 2, 2, 4}, 3);
    EXPECT_EQ(test::stored(twoDimensional()), byHand);
    vx_PDFMultivariateNormal loaded = trainedWith({pattern({1, 2, 3})});
    test::load(byHand, loaded);
    EXPECT_EQ(loaded, twoDimensional());
    EXPECT_EQ(loaded.logValue(pattern({4, 10})), twoDimensional().logValue(pattern({4, 10})));
    EXPECT_EQ(test::stored(vx_PDFMultivariateNormal()), test::recordOf([](Record& record) {
                  record.versions({0, 0, 0}).matrix(0, 0, {}).matrix(0, 0, {}).number(0);
              }));
}

TEST(PdfMultivariateNormal, ALoadedOneCanBeTrainedOn) {
    vx_PDFMultivariateNormal loaded;
    test::load(test::stored(trainedWith({pattern({1, 8}), pattern({3, 6})})), loaded);
    loaded.updateWithData({pattern({5, 10})});
    EXPECT_EQ(loaded, twoDimensional());
}

TEST(PdfMultivariateNormal, AnotherVersionIsRefusedAtEachLevel) {
    for (int level = 0; level < 3; ++level) {
        const Bytes sealed = test::recordOf([&](Record& record) {
            for (int i = 0; i < 3; ++i) {
                record.versions({static_cast<unsigned char>(i == level ? 1 : 0)});
            }
            record.matrix(1, 1, {5}).matrix(1, 1, {1}).number(2);
        });
        vx_PDFMultivariateNormal into = twoDimensional();
        EXPECT_UNKNOWN_VERSION(test::load(sealed, into), nullptr, 0);
        EXPECT_EQ(into, twoDimensional());
    }
    OpenNormal normal;
    test::archiveOf(
        [&](vxArchive& archive) { EXPECT_UNKNOWN_VERSION(normal.serialize_(archive, 1), nullptr, 0); });
}

TEST(PdfMultivariateNormal, AFailedLoadLeavesTheStatisticsAsTheyWere) {
    const Bytes cutShort = test::recordOf([](Record& record) {
        record.versions({0, 0, 0}).matrix(1, 1, {5}).matrix(1, 1, {1});
    });
    vx_PDFMultivariateNormal into = twoDimensional();
    EXPECT_ERROR_CLASS(test::load(cutShort, into), vxArchive::ShortData);
    EXPECT_EQ(into, twoDimensional());
}

TEST(PdfMultivariateNormal, AStoredPointerBringsTheClassBack) {
    const vxPtrHandle<vx_ProbabilityDensityFunction> normal(new vx_PDFMultivariateNormal(twoDimensional()));
    const Bytes sealed = test::storedPointer(normal.get());
    vxLoadingArchive archive(sealed);
    vxPtrHandle<vx_ProbabilityDensityFunction> loaded;
    archive || loaded;
    EXPECT_TRUE(normal->isEquivalent(*loaded));
}

TEST(PdfMultivariateNormal, TheStatusesOfTheModuleBecomeTheLibrarysErrors) {
    EXPECT_ERROR(vfThrowExceptionOnFailure(static_cast<long>(0x80000B61UL)), InsufficientTrainData, noData);
    EXPECT_ERROR(vfThrowExceptionOnFailure(static_cast<long>(0x80000B62UL)), BadParams, otherSize);
    EXPECT_ERROR(vfThrowExceptionOnFailure(static_cast<long>(0x80000B60UL)), vxStatusFailure,
                 L"An operation failed with the status 0x80000B60.");
    EXPECT_ERROR(vfThrowExceptionOnFailure(static_cast<long>(0x80000B7FUL)), vxStatusFailure,
                 L"An operation failed with the status 0x80000B7F.");
}

TEST(PdfMultivariateNormal, OnlyTheLow32BitsOfAStatusCount) {
    if (sizeof(long) > 4) {
        EXPECT_ERROR(vfThrowExceptionOnFailure(static_cast<long>(0x80000B61UL - (1UL << 32))),
                     InsufficientTrainData, noData);
        EXPECT_NO_THROW(vfThrowExceptionOnFailure(static_cast<long>(0xffffffff00000B61UL)));
    }
}

} // namespace
