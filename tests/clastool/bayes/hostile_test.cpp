#include "tests/clastool/bayes/bayes_fixtures.h"
#include "tests/support/announcing_data.h"
#include "tests/support/expect_error.h"
#include "tests/support/failing_allocation.h"
#include "tests/support/fake_technique.h"
#include "tests/support/small_stack.h" // says whether a sanitizer is at work

#include <vxclassifier/category_model_bayesian.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_tool.h>
#include <vxclassifier/pdf_binomial.h>
#include <vxclassifier/pdf_multivariate_normal.h>
#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/status.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <new>

// Values that no caller can make and an archive can bring, and arguments that ask for too much.

namespace {

using Types = vxClassifierDistributionTypes;
using Indices = std::vector<long>;
using Sets = std::vector<Indices>;
using test::Bytes;
using test::classifierOf;
using test::dataOf;
using test::FakeDensity;
using test::modelOf;
using test::normalTypes;
using test::OpenBayesian;
using test::paramsOf;
using test::patternOf;
using test::Record;
using test::resultOf;
using test::twoCategories;
using vxClassifierDefs::InsufficientTrainData;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr long largest = 2147483647;

const wchar_t* const noData = L"No valid data has been used to train the distribution";

Types typesOf(const Indices& labels, const Indices& indices, const Indices& types,
              const Indices& dependencyLabels, const Sets& sets, long defaultType = 0) {
    Types loaded = normalTypes();
    test::load(test::recordOf([&](Record& record) {
                   record.versions({0}).number(defaultType).numbers(labels).numbers(indices).numbers(types);
                   record.numbers(dependencyLabels).sets(sets);
               }),
               loaded);
    return loaded;
}

Bytes bytesOf(const Indices& labels, const Indices& indices, const Indices& types,
              const Indices& dependencyLabels, const Sets& sets) {
    return test::stored(typesOf(labels, indices, types, dependencyLabels, sets));
}

TEST(HostileDistributionTypes, AnUnknownTypeIsRefusedWhereAModelIsBuilt) {
    const Types types = typesOf({0}, {0}, {-2147483647 - 1}, {}, {}, 77);
    EXPECT_EQ(types.distributionType(0, 0), -2147483647 - 1);
    OpenBayesian classifier;
    EXPECT_ERROR(classifier.train(dataOf(twoCategories()), paramsOf(types)), vxClassifierDefs::BadParams,
                 L"Unknown distribution type");
}

TEST(HostileDistributionTypes, OnlyOverridesThatAllThreeVectorsHaveCount) {
    const Types types = typesOf({0, 0, 0}, {0, 1}, {1, 1, 1, 1}, {}, {});
    EXPECT_EQ(types.distributionType(0, 1), Types::eBinomial);
    EXPECT_EQ(types.distributionType(0, 2), Types::eMultivariateNormal);
    EXPECT_EQ(typesOf({0}, {0}, {}, {}, {}).distributionType(0, 0), Types::eMultivariateNormal);
    EXPECT_EQ(typesOf({0}, {}, {1}, {}, {}).distributionType(0, 0), Types::eMultivariateNormal);
    EXPECT_EQ(typesOf({}, {0}, {1}, {}, {}).distributionType(0, 0), Types::eMultivariateNormal);
}

TEST(HostileDistributionTypes, WhatIsLeftOverIsCutWhenARowIsAdded) {
    Types types = typesOf({0, 0, 0}, {0, 1}, {1, 1, 1, 1}, {}, {});
    types.distributionTypeOverride(0, 1, Types::eUniform);
    EXPECT_EQ(test::stored(types), bytesOf({0, 0, 0}, {0, 1}, {1, 3, 1, 1}, {}, {}));
    types.distributionTypeOverride(5, 6, Types::eBinomial);
    EXPECT_EQ(test::stored(types), bytesOf({0, 0, 5}, {0, 1, 6}, {1, 3, 1}, {}, {}));
}

TEST(HostileDistributionTypes, OnlySetsWithALabelCountAndTheRestIsCut) {
    Types types = typesOf({}, {}, {}, {0, 0, 0}, {{1, 2}, {5}});
    EXPECT_TRUE(types.isDependent(0, {2, 1}));
    EXPECT_FALSE(typesOf({}, {}, {}, {0}, {}).isDependent(0, {1}));
    EXPECT_FALSE(typesOf({}, {}, {}, {}, {{1}}).isDependent(0, {1}));
    types.setDependent(1, {7});
    EXPECT_EQ(test::stored(types), bytesOf({}, {}, {}, {0, 0, 1}, {{1, 2}, {5}, {7}}));
    Types fewLabels = typesOf({}, {}, {}, {0}, {{1, 2}, {5}});
    EXPECT_FALSE(fewLabels.isDependent(0, {5}));
    EXPECT_NO_THROW(fewLabels.distributionTypeOverride(0, 5, Types::eBinomial));
    fewLabels.setDependent(0, {2, 3});
    EXPECT_EQ(test::stored(fewLabels), bytesOf({0}, {5}, {1}, {0}, {{1, 2, 2, 3}}));
}

TEST(HostileDistributionTypes, SetsThatOverlapAreTakenInTheirOrder) {
    const Types types = typesOf({}, {}, {}, {2, 2, 2}, {{1}, {1, 0}, {0}});
    OpenBayesian classifier;
    classifier.train(dataOf({{{1, 2}, 2}}), paramsOf(types));
    const vxPtrHandle<vx_CategoryModelBayesian> model(
        new vx_CategoryModelBayesian(2, {{1, 0}}, {Types::eMultivariateNormal}, patternOf({})));
    model->adapt(patternOf({1, 2}));
    const vxPtrHandle<vxClassifierTrainParams> params = paramsOf(types).clone();
    EXPECT_EQ(test::stored(classifier), test::classifierRecord({2}, {model}, params.get()));
}

TEST(HostileDistributionTypes, ANegativeIndexInASetIsRefusedByTraining) {
    OpenBayesian classifier;
    EXPECT_ERROR(classifier.train(dataOf(twoCategories()), paramsOf(typesOf({}, {}, {}, {5}, {{0, -1}}))),
                 vxClassifierDefs::BadIndex, L"Feature measurement indices must be >= 0");
}

Types dependentTypes() {
    Types types(Types::eBinomial);
    types.distributionTypeOverride(1, 2, Types::eUniform);
    types.setDependent(3, {4, 5});
    return types;
}

TEST(HostileDistributionTypes, AnAssignmentForWhichThereIsNoMemoryChangesNothing) {
    const Types original = dependentTypes();
    Types assigned = normalTypes();
    EXPECT_GT(
        test::failEachAllocation([&] { assigned = original; }, [&] { EXPECT_EQ(assigned, normalTypes()); }),
        0);
    EXPECT_EQ(assigned, original);
}

TEST(HostileParams, AnAssignmentForWhichThereIsNoMemoryChangesNothing) {
    vxClassifierFrequencies frequencies(2.0);
    frequencies.categoryFrequencyOverride(1, 3.0);
    vxClassifierCosts costs(4.0);
    costs.misclassificationCostOverride(1, 2, 5.0);
    const vxClassifierTrainParamsBayesian original =
        paramsOf(dependentTypes(), patternOf({1, 2}, {0}), frequencies, costs);
    const vxClassifierTrainParamsBayesian before = paramsOf(normalTypes());
    vxClassifierTrainParamsBayesian assigned = before;
    EXPECT_GT(test::failEachAllocation([&] { assigned = original; }, [&] { EXPECT_EQ(assigned, before); }),
              0);
    EXPECT_EQ(assigned, original);
}

vx_PDFBinomial binomialOf(long numTrials, double theta, double maximum) {
    vx_PDFBinomial binomial(patternOf({1}));
    test::load(test::recordOf([&](Record& record) {
                   record.versions({0, 0, 0}).number(numTrials).real(theta).real(maximum);
               }),
               binomial);
    return binomial;
}

/// Evaluates it to whatever comes out; reaching that must be well defined.
void evaluate(const vx_PDFBinomial& binomial, double x) {
    try {
        static_cast<void>(binomial.logValue(patternOf({x})));
    } catch (const vxClassifierDefs::BadParams&) {
    } catch (const vxInterrupted&) {
    }
}

TEST(HostileBinomial, AnyEstimatesCanBeEvaluated) {
    const std::vector<double> values{0.0, 1.0, -1.0, 1e300, -1e300, 5e-324, infinity, -infinity, notANumber};
    vxCancelFlag flag;
    flag.set();
    const vxAttentionScope scope(flag); // counts can be huge; how long they take is not the matter here
    for (const long numTrials : {7L, -largest - 1}) {
        for (const double a : values) {
            evaluate(binomialOf(numTrials, a, 1.0), 0.5);
            for (const double b : values) {
                evaluate(binomialOf(numTrials, 0.25, a), b);
            }
        }
    }
}

TEST(HostileBinomial, AMaximumOf0GivesNoCount) {
    // 0 * (7 / 0) is NaN: no successes.
    EXPECT_EQ(binomialOf(7, 0.25, 0.0).logValue(patternOf({0.0})),
              binomialOf(7, 0.25, 1.0).logValue(patternOf({0.0})));
}

TEST(HostileBinomial, TrainingWithAnyMaximumIsDefined) {
    for (const double maximum : {0.0, -1.0, 1e-300, -1e-300, infinity, notANumber}) {
        vx_PDFBinomial binomial = binomialOf(0, 0.0, maximum);
        for (const double x : {-1e300, -3.0, -2.0, 0.0, 1e-320}) {
            try {
                binomial.updateWithData({patternOf({x})});
            } catch (const vxClassifierDefs::BadParams&) {
            }
        }
        EXPECT_LE(std::labs(binomial.numTrials()), largest);
    }
}

long failAtOnce(void* polls) {
    ++*static_cast<long*>(polls);
    return vsys_attention_cancelled;
}

TEST(HostileBinomial, ASumBeyond32BitsCanBeInterrupted) {
    long polls = 0;
    const vxAttentionScope scope(&failAtOnce, &polls);
    // 7 trials with minus 2^31 - 1 successes: only the number of failures is too large for 32 bits, so only
    // its sum is long.
    EXPECT_ERROR_CLASS(binomialOf(7, 0.5, 1.0).logValue(patternOf({-1e300})), vxInterrupted);
    EXPECT_EQ(polls, 1);
}

vx_PDFMultivariateNormal normalOf(long meanRows, long meanColumns, long rows, long columns, double entry,
                                  long numSamples) {
    vx_PDFMultivariateNormal normal;
    const auto entries = [&](long r, long c) {
        return std::vector<double>(static_cast<std::size_t>(r * c), entry);
    };
    test::load(test::recordOf([&](Record& record) {
                   record.versions({0, 0, 0}).matrix(meanRows, meanColumns, entries(meanRows, meanColumns));
                   record.matrix(rows, columns, entries(rows, columns)).number(numSamples);
               }),
               normal);
    return normal;
}

TEST(HostileNormal, ShapesThatDoNotBelongTogetherAreAFailureOfTheUseAndNotOfTheLoad) {
    const long shapes[][4] = {{2, 1, 3, 3}, {3, 1, 2, 2}, {2, 2, 2, 2}, {2, 1, 2, 3},
                              {2, 1, 0, 0}, {0, 0, 2, 2}, {1, 2, 2, 2}, {2, 1, 1, 4}};
    const wchar_t* const inconsistent = L"An operation failed with the status 0x80000B64.";
    for (const auto& [meanRows, meanColumns, rows, columns] : shapes) {
        vx_PDFMultivariateNormal normal = normalOf(meanRows, meanColumns, rows, columns, 1.0, 5);
        EXPECT_ERROR(normal.logValue(patternOf({1, 2})), vxStatusFailure, inconsistent);
        EXPECT_ERROR(normal.updateWithData({patternOf({1, 2})}), vxStatusFailure, inconsistent);
        EXPECT_EQ(vx_PDFMultivariateNormal(normal), normal);
        EXPECT_EQ(test::stored(vx_PDFMultivariateNormal(normal)), test::stored(normal));
        normal.clear();
        normal.updateWithData({patternOf({1, 2})});
        EXPECT_TRUE(normal.isValid());
    }
}

TEST(HostileNormal, ACountWithoutMeasurementsFitsEmptyPatternsOnly) {
    const vx_PDFMultivariateNormal normal = normalOf(0, 0, 0, 0, 0.0, 5);
    EXPECT_EQ(normal.logValue(patternOf({})), 0.0);
    EXPECT_ERROR(normal.logValue(patternOf({1})), vxStatusFailure,
                 L"An operation failed with the status 0x80000B63.");
}

TEST(HostileNormal, ASizeForWhichThereAreNoBytesIsRefused) {
    for (const auto& [rows, columns] : {std::pair(largest, largest), std::pair(1L << 16, 1L << 16)}) {
        const Bytes sealed = test::recordOf([&, r = rows, c = columns](Record& record) {
            record.versions({0, 0, 0}).matrix(r, c, {1.0, 2.0});
        });
        vx_PDFMultivariateNormal into;
        EXPECT_ERROR_CLASS(test::load(sealed, into), vxArchive::TooLarge);
    }
}

TEST(HostileNormal, ACountBelow1IsNoData) {
    for (const long count : {0L, -1L, -largest - 1}) {
        vx_PDFMultivariateNormal normal = normalOf(2, 1, 2, 2, 1.0, count);
        EXPECT_FALSE(normal.isValid());
        EXPECT_ERROR(normal.logValue(patternOf({1, 2})), InsufficientTrainData, noData);
        normal.updateWithData({patternOf({1, 2, 3})});
        EXPECT_TRUE(normal.isValid());
    }
}

TEST(HostileNormal, TheCountStopsAtTheLargest32BitNumber) {
    vx_PDFMultivariateNormal normal = normalOf(1, 1, 1, 1, 1.0, largest);
    normal.updateWithData({patternOf({1}), patternOf({2}), patternOf({3})});
    EXPECT_TRUE(normal.isValid());
    EXPECT_NO_THROW(test::stored(normal));
    EXPECT_TRUE(std::isfinite(normal.logValue(patternOf({1}))));
}

TEST(HostileNormal, NumbersThatAreNotFiniteAreNoData) {
    for (const double entry : {notANumber, infinity, -infinity}) {
        const vx_PDFMultivariateNormal normal = normalOf(2, 1, 2, 2, entry, 5);
        EXPECT_ERROR(normal.logValue(patternOf({1, 2})), InsufficientTrainData, noData);
    }
}

TEST(HostileNormal, NoCovarianceIsTooOddToScore) {
    for (const double entry : {0.0, -1.0, 1.0, 1e300, -1e300, 5e-324}) {
        EXPECT_TRUE(std::isfinite(normalOf(3, 1, 3, 3, entry, 5).logValue(patternOf({1, 2, 3}))));
    }
}

TEST(HostileModel, AMissingDensityIsANullHandle) {
    const vxPtrHandle<FakeDensity> density(new FakeDensity(1.0));
    vx_CategoryModelBayesian model;
    test::fillModel(model, 1, 2, {{0}, {1}}, {density.get(), density.get()}); // leaves the second behind
    test::fillModel(model, 1, 2, {{0}, {1}}, {density.get()});
    EXPECT_ERROR_CLASS(model.matchScore(patternOf({1, 2})), vxBadPointer);
    EXPECT_ERROR_CLASS(model.adapt(patternOf({1, 2})), vxBadPointer);
    test::fillModel(model, 1, 2, {{0}, {1}}, {density.get(), nullptr});
    EXPECT_ERROR_CLASS(model.matchScore(patternOf({1, 2})), vxBadPointer);
    EXPECT_ERROR_CLASS(model.adapt(patternOf({1, 2})), vxBadPointer);
    EXPECT_ERROR_CLASS(static_cast<void>(model == vx_CategoryModelBayesian(model)), vxBadPointer);
}

TEST(HostileModel, ADensityThatIsNoneIsANullHandle) {
    const vxPtrHandle<vxFeaturePattern> pattern(new vxFeaturePattern({1}, {}));
    vx_CategoryModelBayesian model;
    test::fillModel(model, 1, 1, {{0}}, {pattern.get()});
    EXPECT_ERROR_CLASS(model.matchScore(patternOf({1, 2})), vxBadPointer);
}

TEST(HostileModel, SurplusDensitiesAreNotReached) {
    const vxPtrHandle<FakeDensity> density(new FakeDensity(1.0));
    vx_CategoryModelBayesian model;
    test::fillModel(model, 1, 1, {{0}}, {density.get(), nullptr, density.get()});
    EXPECT_EQ(model.matchScore(patternOf({1})), 1.0);
    EXPECT_NO_THROW(model.adapt(patternOf({1})));
}

TEST(HostileModel, AMissingTypeIsAnUnknownOne) {
    EXPECT_ERROR(vx_CategoryModelBayesian(1, {{0}, {1}}, {Types::eMultivariateNormal}, patternOf({})),
                 vxClassifierDefs::BadParams, L"Unknown distribution type");
    EXPECT_ERROR(vx_CategoryModelBayesian(1, {{0}}, {}, patternOf({})), vxClassifierDefs::BadParams,
                 L"Unknown distribution type");
    const vx_CategoryModelBayesian surplus(1, {}, {Types::ePoisson, Types::eUniform}, patternOf({}));
    EXPECT_EQ(surplus.matchScore(patternOf({})), 0.0);
}

TEST(HostileModel, ANegativeIndexIsRefused) {
    const vxPtrHandle<FakeDensity> density(new FakeDensity(1.0));
    vx_CategoryModelBayesian model;
    test::fillModel(model, 1, 1, {{0, -2}}, {density.get()});
    const wchar_t* const badIndex = L"Feature measurement indices must be >= 0";
    EXPECT_ERROR(model.matchScore(patternOf({1})), vxClassifierDefs::BadIndex, badIndex);
    EXPECT_ERROR(model.adapt(patternOf({1})), vxClassifierDefs::BadIndex, badIndex);
}

TEST(HostileModel, AnAssignmentForWhichThereIsNoMemoryChangesNothing) {
    const std::vector<Types::DistributionType> types(2, Types::eMultivariateNormal);
    const vx_CategoryModelBayesian original(1, {{0, 1}, {2}}, types, patternOf({}));
    const Bytes before = test::stored(vx_CategoryModelBayesian());
    vx_CategoryModelBayesian assigned;
    EXPECT_GT(test::failEachAllocation([&] { assigned = original; },
                                       [&] { EXPECT_EQ(test::stored(assigned), before); }),
              0);
    EXPECT_EQ(test::stored(assigned), test::stored(original));
}

#if !defined(TESTS_SUPPORT_SANITIZED)
// A sanitizer's allocator ends the program where the ordinary one reports that there is no memory.
TEST(HostileModel, ASetForWhoseCovarianceNoMachineHasTheMemoryIsReportedAsThat) {
    std::vector<long> set(1 << 21, 0);
    vx_CategoryModelBayesian model(1, {set}, {Types::eMultivariateNormal}, patternOf({}));
    EXPECT_THROW(model.adapt(patternOf({1})), std::bad_alloc);
    EXPECT_ERROR(model.matchScore(patternOf({1})), InsufficientTrainData,
                 std::wstring(noData) + L" for category 1");
}
#endif

using Models = std::vector<vxPtrHandle<vx_CategoryModel>>;

vxPtrHandle<vxClassifierTrainParams> someParams() {
    return paramsOf(normalTypes()).clone();
}

TEST(HostileClassifier, LabelsAndModelsMayDifferInNumber) {
    const Models two{modelOf(1, 0, {}, {}), modelOf(2, 0, {}, {})};
    for (const Indices& labels : {Indices{}, Indices{1}, Indices{1, 2, 3, 4}}) {
        OpenBayesian classifier = classifierOf(labels, two, someParams().get());
        EXPECT_EQ(resultOf(classifier, patternOf({})).categoryResults().size(), 2U);
        EXPECT_NO_THROW(classifier.checkRunnable_());
        classifier.untrain();
        EXPECT_EQ(test::stored(classifier), test::stored(OpenBayesian()));
    }
}

TEST(HostileClassifier, LabelsWithoutModelsDoNotDisturbATraining) {
    OpenBayesian classifier = classifierOf({2, 5, 9}, {});
    EXPECT_FALSE(classifier.isTrained());
    classifier.train(dataOf(twoCategories()), paramsOf(normalTypes()));
    OpenBayesian expected;
    expected.train(dataOf(twoCategories()), paramsOf(normalTypes()));
    EXPECT_EQ(test::stored(classifier), test::stored(expected));
}

/// A category model of a caller's own.
struct ForeignModel : vx_CategoryModel {
    static vxPersistent* make() { return new ForeignModel; }
    double matchScore(const vxFeaturePattern&, vxDiagObject*, unsigned long) const override { return 0.0; }
    void adapt(const vxFeaturePattern&, vxDiagObject*, unsigned long) override {}
};
const vx_Instantiator foreignModelExemplar(typeid(ForeignModel), &ForeignModel::make);

TEST(HostileClassifier, AModelThatIsMissingOrForeignIsABadPointer) {
    const vxPtrHandle<vx_CategoryModel> foreign(new ForeignModel);
    for (const vxPtrHandle<vx_CategoryModel>& odd : {foreign, vxPtrHandle<vx_CategoryModel>()}) {
        for (const Models& models : {Models{odd}, Models{modelOf(1, 0, {}, {}), odd}}) {
            const OpenBayesian classifier = classifierOf({1}, models, someParams().get());
            EXPECT_TRUE(classifier.isTrained());
            EXPECT_ERROR_CLASS(resultOf(classifier, patternOf({})), vxBadPointer);
            EXPECT_ERROR_CLASS(classifier.checkRunnable_(), vxBadPointer);
            EXPECT_ERROR_CLASS(static_cast<void>(classifier == OpenBayesian(classifier)), vxBadPointer);
            EXPECT_NO_THROW(test::stored(*classifier.clone()));
        }
    }
}

TEST(HostileClassifier, TheTrialRunMeetsAMissingModelInItsTurn) {
    const vxPtrHandle<vx_PDFMultivariateNormal> untrained(new vx_PDFMultivariateNormal);
    const OpenBayesian classifier =
        classifierOf({1}, {modelOf(1, 1, {{0}}, {untrained.get()}), {}}, someParams().get());
    EXPECT_ERROR(classifier.checkRunnable_(), InsufficientTrainData,
                 std::wstring(noData) + L" for category 1");
}

TEST(HostileClassifier, ParametersOfAnotherTechniqueAreABadPointer) {
    const vxPtrHandle<vxClassifierTrainParams> foreign(new test::FakeParams);
    OpenBayesian classifier = classifierOf({1}, {modelOf(1, 0, {}, {})}, foreign.get());
    EXPECT_ERROR_CLASS(resultOf(classifier, patternOf({})), vxBadPointer);
    EXPECT_ERROR_CLASS(classifier.retrain_(paramsOf(normalTypes())), vxBadPointer);
    EXPECT_ERROR(classifier.retrain(paramsOf(normalTypes())), vxClassifierDefs::BadMethod,
                 L"Cannot retrain with a different classification technique.");
    EXPECT_ERROR_CLASS(classifier.train_(dataOf(twoCategories()), *foreign), vxBadPointer);
    EXPECT_ERROR_CLASS(classifier.retrain_(*foreign), vxBadPointer);
}

TEST(HostileClassifier, NoParametersAreABadPointer) {
    OpenBayesian classifier = classifierOf({1}, {modelOf(1, 0, {}, {})}, nullptr);
    EXPECT_ERROR_CLASS(resultOf(classifier, patternOf({})), vxBadPointer);
    EXPECT_ERROR_CLASS(classifier.checkRunnable_(), vxBadPointer);
    EXPECT_ERROR_CLASS(classifier.retrain_(paramsOf(normalTypes())), vxBadPointer);
}

/// Only whoever calls the step of a training itself comes to models that are there before.
TEST(HostileClassifier, ATrainingGoesOnWithTheModelsThatAreThere) {
    std::vector<test::Sample> samples = twoCategories();
    OpenBayesian inTwoParts;
    inTwoParts.train_(dataOf(samples), paramsOf(normalTypes()));
    const Bytes afterTheFirst = test::stored(inTwoParts);
    inTwoParts.train_(dataOf(samples), paramsOf(normalTypes()));
    EXPECT_NE(test::stored(inTwoParts), afterTheFirst);
    for (const test::Sample& sample : twoCategories()) {
        samples.push_back(sample);
    }
    OpenBayesian atOnce;
    atOnce.train_(dataOf(samples), paramsOf(normalTypes()));
    EXPECT_EQ(test::stored(inTwoParts), test::stored(atOnce));
}

TEST(HostileClassifier, AMissingModelCannotLearn) {
    OpenBayesian classifier = classifierOf({5, 2}, {modelOf(5, 0, {}, {}), {}});
    EXPECT_ERROR_CLASS(classifier.train_(dataOf(twoCategories()), paramsOf(normalTypes())), vxBadPointer);
    EXPECT_NO_THROW(classifier.train_(dataOf({{{1.0, 2.0}, 5}}), paramsOf(normalTypes())));
}

TEST(HostileClassifier, AFailedTrainingLeavesModelsWithoutParametersAndItsToolUntrained) {
    Types types = normalTypes();
    types.distributionTypeOverride(2, 0, Types::ePoisson); // the category that comes second
    OpenBayesian classifier;
    EXPECT_ERROR_CLASS(classifier.train(dataOf(twoCategories()), paramsOf(types)),
                       vxClassifierDefs::NotImplemented);
    EXPECT_TRUE(classifier.isTrained());
    EXPECT_ERROR_CLASS(resultOf(classifier, patternOf({1, 2})), vxBadPointer);
    EXPECT_ERROR_CLASS(classifier.checkRunnable_(), vxBadPointer);
    vxClassifierTool tool;
    tool.train(dataOf(twoCategories()), paramsOf(normalTypes()));
    EXPECT_ERROR_CLASS(tool.train(dataOf(twoCategories()), paramsOf(types)),
                       vxClassifierDefs::NotImplemented);
    EXPECT_FALSE(tool.isTrained());
}

TEST(HostileClassifier, OnlyThePatternsThatAProviderHasAreLearnt) {
    for (const long announced : {0L, -1L, std::numeric_limits<long>::min()}) {
        OpenBayesian classifier;
        classifier.train(test::AnnouncingData(announced, dataOf(twoCategories())), paramsOf(normalTypes()));
        EXPECT_FALSE(classifier.isTrained());
    }
    const test::AnnouncingData tooMany(std::numeric_limits<long>::max(), dataOf(twoCategories()));
    OpenBayesian classifier;
    EXPECT_ERROR_CLASS(classifier.train(tooMany, paramsOf(normalTypes())), vxClassifierDefs::BadIndex);
}

TEST(HostileClassifier, LogLikelihoodsThatAreAllMinusInfinityAreDecidedInTheOrderOfTheModels) {
    const vxClassifierResult result =
        resultOf(test::classifierScoring({-infinity, -infinity, -infinity}), patternOf({1}));
    EXPECT_EQ(result.matchScoreFactorLog(), infinity);
    ASSERT_EQ(result.categoryResults().size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(result.categoryResults()[i].categoryLabel(), static_cast<long>(i));
        EXPECT_TRUE(std::isnan(result.categoryResults()[i].matchScore()));
    }
}

TEST(HostileClassifier, AnyLogLikelihoodsGiveAllCategoriesOrAnError) {
    const std::vector<double> values{-infinity, infinity, notANumber, 0.0, 1e308, -1e308};
    for (const double a : values) {
        for (const double b : values) {
            for (const double c : values) {
                try {
                    const OpenBayesian classifier = test::classifierScoring({a, b, c});
                    EXPECT_EQ(resultOf(classifier, patternOf({1})).categoryResults().size(), 3U);
                } catch (const vxClassifierDefs::BadParams&) {
                    // A NaN has hidden the largest one from those behind it.
                    EXPECT_TRUE(std::isnan(b) || std::isnan(c)) << a << ' ' << b << ' ' << c;
                }
            }
        }
    }
}

TEST(HostileClassifier, TheTrialRunBuildsNoPatternForMeasurementsThatAreNotUsed) {
    const vxPtrHandle<FakeDensity> density(new FakeDensity(1.0));
    for (const long number : {largest, 0L, -1L, -largest - 1}) {
        const OpenBayesian classifier = classifierOf(
            {1}, {modelOf(1, number, {{0}, {3}}, {density.get(), density.get()})}, someParams().get());
        EXPECT_NO_THROW(classifier.checkRunnable_());
    }
    const OpenBayesian far =
        classifierOf({1}, {modelOf(1, 3, {{largest}}, {density.get()})}, someParams().get());
    EXPECT_NO_THROW(far.checkRunnable_());
}

/// The number of allocations of a training, those included that may fail without failing it: behind the last
/// of them it is the next allocation of the test that fails.
long allocationsOfTraining(const vxClassifierDataProvider& data, const vxClassifierTrainParams& params) {
    for (long number = 1;; ++number) {
        OpenBayesian classifier;
        const test::FailingAllocation failing(number);
        try {
            classifier.train_(data, params);
        } catch (const std::bad_alloc&) {
            continue;
        }
        try {
            ::operator delete(::operator new(1));
        } catch (const std::bad_alloc&) {
            return number - 1;
        }
    }
}

TEST(HostileClassifier, TrainingLeavesTheFactorsToItsEnd) {
    std::vector<test::Sample> samples;
    for (int i = 0; i < 100; ++i) {
        samples.push_back({{std::cos(i), std::sin(i), std::cos(3.0 * i)}, 1});
    }
    const vxClassifierDataProviderMemory data = dataOf(samples);
    const vxClassifierDataProviderMemory few = dataOf({samples.begin(), samples.begin() + 20});
    Types types = normalTypes();
    types.setDependent(1, {0, 1, 2});
    const vxClassifierTrainParamsBayesian params = paramsOf(types);
    // A factor takes memory, and learning one more pattern does not.
    EXPECT_EQ(allocationsOfTraining(data, params), allocationsOfTraining(few, params));

    // Evaluation can make up for a factor for which there was no memory.
    OpenBayesian classifier;
    test::failEachAllocation([&] { classifier.train_(data, params); }, [&] { classifier.untrain_(); });
    OpenBayesian expected;
    expected.train_(data, params);
    EXPECT_EQ(classifier, expected);

    classifier.untrain_();
    classifier.train(data, params);
    OpenBayesian reloaded;
    test::load(test::stored(classifier), reloaded);
    const auto allocationsOfARun = [](const OpenBayesian& trained) {
        resultOf(trained, patternOf({1, 2, 3})); // what a thread keeps from run to run is there from now on
        return test::failEachAllocation([&] { resultOf(trained, patternOf({1, 2, 3})); }, [] {});
    };
    EXPECT_EQ(allocationsOfARun(classifier), allocationsOfARun(reloaded));
}

TEST(HostileClassifier, ManyDependentMeasurementsAreLaidOutInLinearTime) {
    Indices all(200000);
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = static_cast<long>(i);
    }
    Sets pairs;
    for (std::size_t i = 0; i + 1 < all.size(); i += 2) {
        pairs.push_back({all[i], all[i + 1]});
    }
    const Types types = typesOf({}, {}, {}, Indices(pairs.size(), 2), pairs);
    OpenBayesian classifier;
    classifier.train(dataOf({{std::vector<double>(all.size(), 1.0), 2}}), paramsOf(types));
    EXPECT_TRUE(classifier.isTrained());
}

} // namespace
