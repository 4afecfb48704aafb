#include <vxclassifier/classifier_bayesian.h>

#include "tests/clastool/bayes/bayes_fixtures.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/fake_technique.h"

#include <vxclassifier/category_model_bayesian.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_tool.h>
#include <vxclassifier/pdf_binomial.h>
#include <vxclassifier/pdf_multivariate_normal.h>

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

// Training, retraining, equality and storing. Running stands in classifier_bayesian_run_test.cpp.

namespace {

using Types = vxClassifierDistributionTypes;
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
using test::Sample;
using test::twoCategories;
using vxClassifierDefs::BadParams;
using vxClassifierDefs::InsufficientTrainData;
using vxClassifierDefs::NotImplemented;
using vxClassifierDefs::NotTrained;

const wchar_t* const noValidData = L"No valid data was provided for training.";
const wchar_t* const otherTypes = L"Cannot retrain a Bayesian classifier with different distribution types.";
const wchar_t* const otherMaxima =
    L"Cannot retrain a Bayesian classifier with different maximum measurements values.";

OpenBayesian trainedWith(const std::vector<Sample>& samples, const vxClassifierTrainParams& params) {
    OpenBayesian classifier;
    classifier.train(dataOf(samples), params);
    return classifier;
}

OpenBayesian trained() {
    return trainedWith(twoCategories(), paramsOf(normalTypes()));
}

Types someTypes() {
    Types types = normalTypes();
    types.distributionTypeOverride(5, 3, Types::eBinomial);
    types.setDependent(5, {2, 0});
    types.setDependent(7, {4, 1});
    types.setDependent(7, {1, 9});
    return types;
}

vxPtrHandle<vx_CategoryModel> model(long label, const std::vector<std::vector<long>>& sets,
                                    const std::vector<Types::DistributionType>& types,
                                    const std::vector<std::vector<double>>& patterns) {
    const vxPtrHandle<vx_CategoryModelBayesian> built(
        new vx_CategoryModelBayesian(label, sets, types, patternOf({0, 0, 0, 10})));
    for (const std::vector<double>& pattern : patterns) {
        built->adapt(patternOf(pattern));
    }
    return built;
}

TEST(ClassifierBayesian, StartsUntrained) {
    const OpenBayesian classifier;
    EXPECT_FALSE(classifier.isTrained());
    EXPECT_ERROR(resultOf(classifier, patternOf({1.0})), NotTrained,
                 L"Classifier tool must be trained before running.");
    EXPECT_ERROR(classifier.checkRunnable_(), InsufficientTrainData, noValidData);
}

TEST(ClassifierBayesian, TrainingBuildsOneModelPerLabelInTheOrderOfFirstOccurrence) {
    const std::vector<Sample> samples{
        {{1, 2, 3, 4, 5}, 7}, {{2, 9, 1, 3, 5}, 5},  {{7, 7, 7, 7, 7}, -1}, {{1, 5, 2, 1, 4}, 5},
        {{4, 4, 1, 2, 0}, 7}, {{8, 8, 8, 8, 8}, -1}, {{6, 1, 3, 9, 2}, 5},
    };
    const vxClassifierTrainParamsBayesian params = paramsOf(someTypes(), patternOf({0, 0, 0, 10}));
    const std::vector<vxPtrHandle<vx_CategoryModel>> models{
        model(7, {{0}, {4, 1, 1, 9}, {2}, {3}},
              {Types::eMultivariateNormal, Types::eMultivariateNormal, Types::eMultivariateNormal,
               Types::eMultivariateNormal},
              {{1, 2, 3, 4, 5}, {4, 4, 1, 2, 0}}),
        model(5, {{2, 0}, {1}, {3}, {4}},
              {Types::eMultivariateNormal, Types::eMultivariateNormal, Types::eBinomial,
               Types::eMultivariateNormal},
              {{2, 9, 1, 3, 5}, {1, 5, 2, 1, 4}, {6, 1, 3, 9, 2}})};
    const vxPtrHandle<vxClassifierTrainParams> clone = params.clone();
    EXPECT_EQ(test::stored(trainedWith(samples, params)),
              test::classifierRecord({7, 5}, models, clone.get()));
}

TEST(ClassifierBayesian, WithoutPatternsNothingIsTrained) {
    OpenBayesian classifier;
    classifier.train(vxClassifierDataProviderMemory(), paramsOf(normalTypes()));
    EXPECT_FALSE(classifier.isTrained());
    EXPECT_ERROR(classifier.checkRunnable_(), InsufficientTrainData, noValidData);
}

TEST(ClassifierBayesian, PatternsOfUnknownCategoryAreIgnored) {
    EXPECT_FALSE(trainedWith({{{1, 2}, -1}, {{3, 4}, -1}}, paramsOf(normalTypes())).isTrained());
    std::vector<Sample> samples = twoCategories();
    samples.insert(samples.begin(), {{99, 99}, -1});
    samples.push_back({{-99, 0}, -1});
    EXPECT_EQ(test::stored(trainedWith(samples, paramsOf(normalTypes()))), test::stored(trained()));
}

TEST(ClassifierBayesian, WithoutMeasurementsTheModelsAreEmpty) {
    const OpenBayesian classifier = trainedWith({{{}, 4}, {{}, 3}}, paramsOf(normalTypes()));
    EXPECT_TRUE(classifier.isTrained());
    EXPECT_NO_THROW(classifier.checkRunnable_());
    const vxClassifierResult result = resultOf(classifier, patternOf({}));
    EXPECT_EQ(result.categoryResults()[0], vxClassifierCategoryResult(4, 1.0, 0.5, 0.5));
    EXPECT_EQ(result.categoryResults()[1], vxClassifierCategoryResult(3, 1.0, 0.5, 0.5));
}

TEST(ClassifierBayesian, TrainingAgainStartsAnew) {
    OpenBayesian classifier = trainedWith({{{1, 1, 1}, 9}, {{2, 2, 2}, 2}}, paramsOf(normalTypes()));
    classifier.train(dataOf(twoCategories()), paramsOf(normalTypes()));
    EXPECT_EQ(test::stored(classifier), test::stored(trained()));
}

TEST(ClassifierBayesian, CanBeTrainedWithItsOwnParameters) {
    OpenBayesian classifier = trained();
    classifier.train(dataOf(twoCategories()), *classifier.trainParams());
    EXPECT_EQ(classifier, trained());
}

/// Data as a caller's own class may give them.
struct OddData : vxClassifierDataProviderMemory {
    long measurements = 0;
    std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns;
    std::vector<long> labels;

    long numMeasurements() const override { return measurements; }
    long numPatterns() const override { return static_cast<long>(patterns.size()); }
    vxPtrHandle_const<vxFeaturePattern> featurePattern(long index) const override {
        return patterns[static_cast<std::size_t>(index)];
    }
    long categoryLabel(long index) const override { return labels[static_cast<std::size_t>(index)]; }

    void add(const std::vector<double>& values, long label) {
        patterns.emplace_back(new vxFeaturePattern(values, {}));
        labels.push_back(label);
    }
};

/// Writes down which questions it is asked: Number, Measurements, Pattern 3, Label 3.
struct AskedData : OddData {
    mutable std::string asked;

    long numPatterns() const override {
        asked += "N ";
        return OddData::numPatterns();
    }
    long numMeasurements() const override {
        asked += "M ";
        return OddData::numMeasurements();
    }
    vxPtrHandle_const<vxFeaturePattern> featurePattern(long index) const override {
        asked += "P" + std::to_string(index) + " ";
        return OddData::featurePattern(index);
    }
    long categoryLabel(long index) const override {
        asked += "L" + std::to_string(index) + " ";
        return OddData::categoryLabel(index);
    }
};

TEST(ClassifierBayesian, ReadsTheDataOnceAndInOrder) {
    AskedData data;
    OpenBayesian classifier;
    classifier.train_(data, paramsOf(normalTypes()));
    EXPECT_EQ(data.asked, "N M ");
    data.asked.clear();
    data.measurements = 1;
    data.add({1.0}, 4);
    data.add({2.0}, -1);
    data.add({3.0}, 4);
    classifier.train_(data, paramsOf(normalTypes()));
    EXPECT_EQ(data.asked, "N M P0 L0 P1 L1 P2 L2 ");
}

TEST(ClassifierBayesian, LearnsTheSameFromAProviderInMemoryAsFromOneThatIsAsked) {
    vxClassifierDataProviderMemory memory;
    OddData asked;
    asked.measurements = 1;
    for (long i = 0; i < 300; ++i) {
        const std::vector<double> values{static_cast<double>(i * i % 37)};
        const long label = i % 5 == 4 ? -1 : i * 7 % 3;
        memory.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(values, {})), label);
        asked.add(values, label);
    }
    OpenBayesian fromMemory;
    OpenBayesian fromAsked;
    fromMemory.train(memory, paramsOf(normalTypes()));
    fromAsked.train(asked, paramsOf(normalTypes()));
    EXPECT_TRUE(fromMemory == fromAsked);
    EXPECT_EQ(test::stored(fromMemory), test::stored(fromAsked));
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*memory.featurePattern(0)), 2) << "no share is kept";
}

TEST(ClassifierBayesian, ANullPatternOfAProviderInMemoryMattersOnlyWhereItHasALabel) {
    for (const long label : {-1L, 0L, 1L}) {
        vxClassifierDataProviderMemory memory;
        memory.data({vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({1.0}, {}))}, {0});
        vxClassifierDataProviderMemory twoRows;
        twoRows.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({1.0}, {})), 0);
        const auto loaded = test::archiveOf([&](vxArchive& archive) {
            unsigned char version = 0; // of each level
            std::wstring text;
            std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns{memory.featurePattern(0), nullptr};
            std::vector<long> labels{0, label};
            archive || version;
            archive || version;
            archive || version;
            archive || text;
            archive || text;
            archive || patterns;
            archive || labels;
        });
        test::load(loaded, twoRows);
        ASSERT_EQ(twoRows.numPatterns(), 2);
        OpenBayesian classifier;
        if (label < 0) {
            EXPECT_NO_THROW(classifier.train(twoRows, paramsOf(normalTypes())));
        } else {
            EXPECT_THROW(classifier.train(twoRows, paramsOf(normalTypes())), vxBadPointer);
        }
    }
}

TEST(ClassifierBayesian, ANullPatternMattersOnlyWhereItHasALabel) {
    OddData data;
    data.measurements = 1;
    data.add({1.0}, 0);
    data.patterns.emplace_back();
    data.labels.push_back(-1);
    OpenBayesian classifier;
    EXPECT_NO_THROW(classifier.train(data, paramsOf(normalTypes())));
    data.labels.back() = 0;
    EXPECT_ERROR_CLASS(classifier.train(data, paramsOf(normalTypes())), vxBadPointer);
}

TEST(ClassifierBayesian, ALabelBelowMinus1IsRefusedByTheDistributionTypes) {
    OddData data;
    data.measurements = 1;
    data.add({1.0}, -2);
    OpenBayesian classifier;
    EXPECT_ERROR(classifier.train(data, paramsOf(normalTypes())), vxClassifierDefs::BadLabel,
                 L"Cateogory labels must be >= 0");
    EXPECT_FALSE(classifier.isTrained());
}

TEST(ClassifierBayesian, ANegativeNumberOfMeasurementsMeansNone) {
    OddData data;
    data.measurements = -3;
    data.add({1.0}, 4);
    OpenBayesian classifier;
    classifier.train(data, paramsOf(normalTypes()));
    EXPECT_EQ(resultOf(classifier, patternOf({9})).matchScoreFactorLog(), 0.0);
}

TEST(ClassifierBayesian, TypesThatAreNotThereAreRefusedByTraining) {
    const auto train = [](Types::DistributionType type) {
        trainedWith(twoCategories(), paramsOf(Types(type)));
    };
    EXPECT_ERROR(train(Types::ePoisson), NotImplemented, L"Poisson distribution is not implemented");
    EXPECT_ERROR(train(Types::eUniform), NotImplemented, L"Uniform distribution is not implemented");
    EXPECT_ERROR(train(static_cast<Types::DistributionType>(77)), BadParams, L"Unknown distribution type");
}

TEST(ClassifierBayesian, BinomialDataAreCheckedByTraining) {
    EXPECT_ERROR(trainedWith(twoCategories(), paramsOf(Types(Types::eBinomial), patternOf({20, 8.5}))),
                 BadParams,
                 L"Train data measurement cannot exceed its maximum value when using binomial distribution");
    Types joint(Types::eBinomial);
    joint.setDependent(5, {0, 1});
    EXPECT_ERROR(trainedWith(twoCategories(), paramsOf(joint, patternOf({20, 20}))), NotImplemented,
                 L"Multivariate Binomial Distributions are not implemented");
}

TEST(ClassifierBayesian, AFailedTrainingKeepsWhatWasBuiltButNoParameters) {
    Types types = normalTypes();
    types.distributionTypeOverride(2, 0, Types::ePoisson);
    OpenBayesian classifier = trainedWith({{{1, 1}, 9}}, paramsOf(normalTypes()));
    EXPECT_ERROR(classifier.train(dataOf(twoCategories()), paramsOf(types)), NotImplemented,
                 L"Poisson distribution is not implemented");
    EXPECT_TRUE(classifier.isTrained());
    const vxPtrHandle<vx_CategoryModel> first =
        model(5, {{0}, {1}}, {Types::eMultivariateNormal, Types::eMultivariateNormal}, {{1, 8}});
    EXPECT_EQ(test::stored(classifier), test::classifierRecord({5}, {first}, nullptr));
    EXPECT_ERROR_CLASS(resultOf(classifier, patternOf({1, 2})), vxBadPointer);
    EXPECT_ERROR_CLASS(classifier.checkRunnable_(), vxBadPointer);
    EXPECT_ERROR(classifier.trainParams(), vxClassifierDefs::BadMethod,
                 L"Classifier tool was not automatically trained.");
    classifier.train(dataOf(twoCategories()), paramsOf(normalTypes()));
    EXPECT_EQ(test::stored(classifier), test::stored(trained()));
}

TEST(ClassifierBayesian, AModelThatCannotBeBuiltLeavesItsLabelUnknown) {
    OpenBayesian classifier;
    EXPECT_ERROR_CLASS(classifier.train(dataOf(twoCategories()), paramsOf(Types(Types::eUniform))),
                       NotImplemented);
    EXPECT_FALSE(classifier.isTrained());
    EXPECT_EQ(test::stored(classifier), test::stored(OpenBayesian()));
}

TEST(ClassifierBayesian, AToolWhoseTrainingFailedIsUntrained) {
    Types types = normalTypes();
    types.distributionTypeOverride(2, 0, Types::ePoisson);
    vxClassifierTool tool;
    EXPECT_ERROR_CLASS(tool.train(dataOf(twoCategories()), paramsOf(types)), NotImplemented);
    EXPECT_FALSE(tool.isTrained());
}

TEST(ClassifierBayesian, AToolIsUntrainedWhenItCannotRun) {
    const std::vector<Sample> samples{{{1}, 3}, {{2}, 3}, {{4}, 6}, {{4}, 6}};
    vxClassifierTrainParamsBayesian params = paramsOf(Types(Types::eBinomial), patternOf({9}));
    vxClassifierTool tool;
    EXPECT_ERROR(tool.train(dataOf(samples), params), InsufficientTrainData,
                 L"Insufficient data has been used to train the distribution for category 6");
    EXPECT_FALSE(tool.isTrained());
    EXPECT_ERROR(tool.train(vxClassifierDataProviderMemory(), params), InsufficientTrainData, noValidData);
    params.throwIfNotReady(false);
    tool.train(dataOf(samples), params);
    EXPECT_TRUE(tool.isTrained());
}

TEST(ClassifierBayesian, UntrainingForgetsModelsAndLabels) {
    OpenBayesian classifier = trained();
    classifier.untrain();
    EXPECT_FALSE(classifier.isTrained());
    EXPECT_EQ(test::stored(classifier), test::stored(OpenBayesian()));
}

TEST(ClassifierBayesian, ParametersOfAnotherTechniqueAreABadPointer) {
    OpenBayesian classifier;
    const test::FakeParams fake;
    EXPECT_ERROR_CLASS(classifier.train_(dataOf(twoCategories()), fake), vxBadPointer);
    EXPECT_ERROR_CLASS(classifier.train_(vxClassifierDataProviderMemory(), fake), vxBadPointer);
    classifier.train(dataOf(twoCategories()), paramsOf(normalTypes()));
    EXPECT_ERROR_CLASS(classifier.retrain_(fake), vxBadPointer);
    EXPECT_ERROR(classifier.retrain(fake), vxClassifierDefs::BadMethod,
                 L"Cannot retrain with a different classification technique.");
    EXPECT_EQ(classifier, trained());
}

TEST(ClassifierBayesian, RetrainingNeedsParametersOfATrainingBefore) {
    OpenBayesian classifier = classifierOf({0}, {modelOf(0, 0, {}, {})});
    EXPECT_ERROR_CLASS(classifier.retrain_(paramsOf(normalTypes())), vxBadPointer);
    EXPECT_ERROR(OpenBayesian().retrain(paramsOf(normalTypes())), NotTrained,
                 L"Classifier tool must be trained before retraining.");
}

TEST(ClassifierBayesian, RetrainingRefusesOtherTypesThenOtherMaxima) {
    OpenBayesian classifier = trained();
    Types types = normalTypes();
    types.setDependent(99, {0});
    EXPECT_ERROR(classifier.retrain(paramsOf(types, patternOf({1}))), BadParams, otherTypes);
    EXPECT_ERROR(classifier.retrain(paramsOf(normalTypes(), patternOf({1}))), BadParams, otherMaxima);
    Types overridden = normalTypes();
    overridden.distributionTypeOverride(99, 0, Types::eBinomial);
    EXPECT_ERROR(classifier.retrain(paramsOf(overridden)), BadParams, otherTypes);
    EXPECT_EQ(test::stored(classifier), test::stored(trained()));
}

TEST(ClassifierBayesian, RetrainingChangesTheClassScoresAndNotTheMatchScores) {
    OpenBayesian classifier = trained();
    const vxFeaturePattern pattern = patternOf({4.5, 7.0});
    const vxClassifierResult before = resultOf(classifier, pattern);
    ASSERT_EQ(before.categoryResults()[0].categoryLabel(), 5);
    vxClassifierFrequencies frequencies(1.0);
    frequencies.categoryFrequencyOverride(2, 1e9);
    vxClassifierCosts costs(2.0);
    classifier.retrain(paramsOf(normalTypes(), patternOf({}), frequencies, costs));
    const vxClassifierResult after = resultOf(classifier, pattern);
    EXPECT_EQ(after.matchScoreFactorLog(), before.matchScoreFactorLog());
    for (const vxClassifierCategoryResult& old : before.categoryResults()) {
        for (const vxClassifierCategoryResult& fresh : after.categoryResults()) {
            if (old.categoryLabel() == fresh.categoryLabel()) {
                EXPECT_EQ(old.matchScore(), fresh.matchScore());
                EXPECT_NE(old.classScore(), fresh.classScore());
            }
        }
    }
    classifier.retrain(paramsOf(normalTypes()));
    EXPECT_EQ(resultOf(classifier, pattern), before);
}

TEST(ClassifierBayesian, StartingIncrementalTrainingLeavesItUntrained) {
    OpenBayesian classifier = trained();
    classifier.trainStart(paramsOf(normalTypes()));
    EXPECT_FALSE(classifier.isTrained());
    EXPECT_ERROR(classifier.trainIncremental(patternOf({1, 2}), 5), NotTrained,
                 L"Classifier tool must be trained before incremental training.");
    EXPECT_ERROR(classifier.checkRunnable_(), InsufficientTrainData, noValidData);
    EXPECT_NO_THROW(classifier.trainStart(test::FakeParams()));
}

TEST(ClassifierBayesian, IncrementalTrainingChangesNothing) {
    OpenBayesian classifier = trained();
    classifier.trainIncremental(patternOf({100, 200}), 5);
    classifier.trainIncremental(patternOf({}), 77);
    classifier.trainIncremental(patternOf({}), -9);
    EXPECT_EQ(test::stored(classifier), test::stored(trained()));
    OpenBayesian untrained;
    untrained.trainIncremental_(patternOf({1, 2}), 5);
    EXPECT_FALSE(untrained.isTrained());
}

TEST(ClassifierBayesian, EqualityTakesParametersAndModels) {
    const OpenBayesian classifier = trained();
    EXPECT_EQ(classifier, trained());
    EXPECT_EQ(OpenBayesian(), OpenBayesian());
    EXPECT_NE(classifier, OpenBayesian());
    EXPECT_NE(OpenBayesian(), classifier);
    EXPECT_NE(classifier, trainedWith(twoCategories(), paramsOf(normalTypes(), patternOf({1}))));
    std::vector<Sample> samples = twoCategories();
    samples.push_back({{0, 0}, 2});
    EXPECT_NE(classifier, trainedWith(samples, paramsOf(normalTypes())));
    samples.back().second = 9;
    EXPECT_NE(classifier, trainedWith(samples, paramsOf(normalTypes())));
    EXPECT_NE(trainedWith(samples, paramsOf(normalTypes())), classifier);
    EXPECT_FALSE(classifier == OpenBayesian());
}

TEST(ClassifierBayesian, EqualityTakesTheModelsInTheirOrder) {
    const vxPtrHandle<vx_CategoryModel> a = modelOf(1, 0, {}, {});
    const vxPtrHandle<vx_CategoryModel> b = modelOf(2, 0, {}, {});
    EXPECT_EQ(classifierOf({1, 2}, {a, b}), classifierOf({1, 2}, {a, b}));
    EXPECT_NE(classifierOf({1, 2}, {a, b}), classifierOf({1, 2}, {b, a}));
}

TEST(ClassifierBayesian, EqualityLeavesTheLabelListOut) {
    const vxPtrHandle<vx_CategoryModel> only = modelOf(1, 0, {}, {});
    EXPECT_EQ(classifierOf({1}, {only}), classifierOf({3, 4}, {only}));
}

TEST(ClassifierBayesian, EquivalenceAsksForTheClassFirst) {
    const OpenBayesian classifier = trained();
    EXPECT_TRUE(classifier.isEquivalent(vx_ClassifierBayesian(trained())));
    EXPECT_FALSE(classifier.isEquivalent(OpenBayesian()));
    EXPECT_FALSE(OpenBayesian().isEquivalent(test::FakeClassifier()));
}

TEST(ClassifierBayesian, ACloneIsEqualAndLivesOnItsOwn) {
    OpenBayesian classifier = trained();
    const vxPtrHandle<vx_Classifier> clone = classifier.clone();
    const vx_Classifier& object = *clone;
    EXPECT_TRUE(typeid(object) == typeid(vx_ClassifierBayesian));
    EXPECT_TRUE(clone->isEquivalent(classifier));
    classifier.train(dataOf({{{0, 0}, 1}}), paramsOf(normalTypes()));
    EXPECT_TRUE(clone->isEquivalent(trained()));
    clone->untrain();
    EXPECT_TRUE(classifier.isTrained());
}

TEST(ClassifierBayesian, CopiesShareTheModels) {
    const OpenBayesian original = trained();
    const OpenBayesian copy(original);
    OpenBayesian assigned;
    assigned = original;
    const Bytes sealed = test::archiveOf([&](vxArchive& archive) {
        for (const OpenBayesian* classifier :
             std::initializer_list<const OpenBayesian*>{&original, &copy, &assigned}) {
            archive || const_cast<OpenBayesian&>(*classifier);
        }
    });
    vxLoadingArchive archive(sealed);
    // Shared models are stored once: the three lists of models are the same references.
    std::vector<std::vector<vxPtrHandle<vx_CategoryModel>>> models(3);
    for (auto& list : models) {
        for (int level = 0; level < 3; ++level) {
            unsigned char version = 1;
            archive || version;
        }
        vxPtrHandle<vxClassifierTrainParams> params;
        std::vector<long> labels;
        archive || params;
        archive || labels;
        archive || list;
        ASSERT_EQ(list.size(), 2U);
    }
    EXPECT_EQ(models[0], models[1]);
    EXPECT_EQ(models[0], models[2]);
}

TEST(ClassifierBayesian, AnAssignedOneForgetsWhatItWas) {
    OpenBayesian classifier = trained();
    classifier = OpenBayesian();
    EXPECT_EQ(test::stored(classifier), test::stored(OpenBayesian()));
    classifier = trained();
    OpenBayesian& self = classifier;
    classifier = self;
    EXPECT_EQ(test::stored(classifier), test::stored(trained()));
}

TEST(ClassifierBayesian, AnArchiveThatKnowsItIsToldOfAnAssignment) {
    vx_ClassifierBayesian classifier;
    const Bytes sealed = test::recordOf([&](Record& record) {
        record.pointer(&classifier);
        classifier = trained();
        record.pointer(&classifier);
    });
    vxLoadingArchive archive(sealed);
    vxPtrHandle<vx_ClassifierBayesian> before;
    vxPtrHandle<vx_ClassifierBayesian> after;
    archive || before;
    archive || after;
    EXPECT_FALSE(before->isTrained());
    EXPECT_EQ(*after, trained());
}

TEST(ClassifierBayesian, ARoundTripGivesAnEqualClassifierThatDecidesAlike) {
    const std::vector<Sample> samples{{{1, 2, 3, 4, 5}, 7}, {{2, 9, 1, 3, 5}, 5}, {{1, 5, 2, 1, 4}, 5},
                                      {{4, 4, 1, 2, 0}, 7}, {{6, 1, 3, 9, 2}, 5}, {{5, 3, 3, 1, 3}, 7}};
    Types types = normalTypes();
    types.distributionTypeOverride(5, 3, Types::eBinomial);
    types.setDependent(7, {4, 1});
    const OpenBayesian classifier = trainedWith(samples, paramsOf(types, patternOf({0, 0, 0, 10})));
    OpenBayesian loaded;
    test::load(test::stored(classifier), loaded);
    EXPECT_EQ(loaded, classifier);
    EXPECT_EQ(test::stored(loaded), test::stored(classifier));
    const vxFeaturePattern pattern = patternOf({3, 3, 2, 4, 2}, {1});
    EXPECT_EQ(resultOf(loaded, pattern), resultOf(classifier, pattern));
}

TEST(ClassifierBayesian, ASetThatReachesPastThePatternsIsNeverTrained) {
    Types types = normalTypes();
    types.setDependent(2, {0, 2});
    const OpenBayesian classifier = trainedWith(twoCategories(), paramsOf(types));
    EXPECT_ERROR(classifier.checkRunnable_(), InsufficientTrainData,
                 L"No valid data has been used to train the distribution for category 2");
}

TEST(ClassifierBayesian, AToolBringsItBack) {
    vxClassifierTool tool;
    tool.train(dataOf(twoCategories()), paramsOf(normalTypes()));
    vxClassifierTool loaded;
    test::load(test::stored(tool), loaded);
    EXPECT_TRUE(loaded == tool);
    vxClassifierResult expected;
    vxClassifierResult actual;
    tool.run(patternOf({4, 5}), expected);
    loaded.run(patternOf({4, 5}), actual);
    EXPECT_EQ(actual, expected);
}

TEST(ClassifierBayesian, AnotherVersionIsRefusedAtEachLevel) {
    for (int level = 0; level < 3; ++level) {
        const Bytes sealed = test::recordOf([&](Record& record) {
            for (int i = 0; i < 3; ++i) {
                record.versions({static_cast<unsigned char>(i == level ? 1 : 0)});
            }
            record.pointer(nullptr).numbers({}).pointers({});
        });
        OpenBayesian into;
        EXPECT_UNKNOWN_VERSION(test::load(sealed, into), nullptr, 0);
    }
    OpenBayesian classifier;
    test::archiveOf(
        [&](vxArchive& archive) { EXPECT_UNKNOWN_VERSION(classifier.serialize_(archive, 1), nullptr, 0); });
}

} // namespace
