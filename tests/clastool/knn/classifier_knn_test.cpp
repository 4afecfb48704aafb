#include "tests/clastool/knn/knn_fixtures.h"
#include "tests/support/expect_error.h"
#include "tests/support/fake_technique.h"
#include "tests/support/vtable_slots.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/diag_object.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Params = vxClassifierTrainParamsKNN;
using test::labels;
using test::line;
using test::OpenKNN;
using test::pattern;
using test::run;
using test::slotOf;
using test::trained;
using Labels = std::vector<long>;

constexpr const wchar_t* unsuitable =
    L"K-nearest neighbor classification does not support invalid measurements";
constexpr const wchar_t* noData = L"No valid data was provided for training.";

/// A provider whose answers a test sets one by one.
class ScriptedProvider : public vxClassifierDataProvider {
public:
    std::wstring name() const override {
        operations.emplace_back("name");
        return L"a name";
    }
    std::wstring description() const override {
        operations.emplace_back("description");
        if (failInDescription) {
            throw std::runtime_error("no description");
        }
        return L"a description";
    }
    long numMeasurements() const override { return 1; }
    long numPatterns() const override {
        operations.emplace_back("numPatterns");
        return announced;
    }
    test::PatternHandle featurePattern(long index) const override {
        operations.emplace_back("featurePattern");
        asked.push_back(index);
        return patterns.at(static_cast<std::size_t>(index));
    }
    long categoryLabel(long index) const override {
        askedLabels.push_back(index);
        return patternLabels.at(static_cast<std::size_t>(index));
    }

    void add(const test::PatternHandle& added, long label) {
        patterns.push_back(added);
        patternLabels.push_back(label);
        announced = static_cast<long>(patterns.size());
    }

    std::vector<test::PatternHandle> patterns;
    std::vector<long> patternLabels;
    long announced = 0;
    bool failInDescription = false;
    mutable std::vector<std::string> operations;
    mutable std::vector<long> asked;
    mutable std::vector<long> askedLabels;
};

/// Whether a classifier's store holds what `data` hold, name and description included. Only equality shows.
bool holds(const vx_ClassifierKNN& classifier, const vxClassifierDataProviderMemory& data) {
    vx_ClassifierKNN other;
    other.train(data, *classifier.trainParams());
    return classifier == other;
}

TEST(ClassifierKNN, KeepsTheVirtualFunctionsInThePublishedOrder) {
    EXPECT_EQ(slotOf(&vx_ClassifierKNN::clone), 5u);
    EXPECT_EQ(slotOf(&vx_ClassifierKNN::isEquivalent), 6u);
    EXPECT_EQ(slotOf(&OpenKNN::train_), 7u);
    EXPECT_EQ(slotOf(&OpenKNN::retrain_), 8u);
    EXPECT_EQ(slotOf(&OpenKNN::trainStart_), 9u);
    EXPECT_EQ(slotOf(&OpenKNN::trainIncremental_), 10u);
    EXPECT_EQ(slotOf(&OpenKNN::untrain_), 11u);
    EXPECT_EQ(slotOf(&OpenKNN::isTrained_), 12u);
    EXPECT_EQ(slotOf(&OpenKNN::checkRunnable_), 13u);
    EXPECT_EQ(slotOf(&OpenKNN::run_), 14u);
}

TEST(ClassifierKNN, IsUntrainedAtFirst) {
    const OpenKNN classifier;
    EXPECT_FALSE(classifier.isTrained_());
    EXPECT_ERROR_CLASS(classifier.checkRunnable_(), vxBadPointer);
    const vxPtrHandle<vx_ClassifierKNN> made(dynamic_cast<vx_ClassifierKNN*>(vx_ClassifierKNN::make()));
    EXPECT_FALSE(made->isTrained());
}

TEST(ClassifierKNN, CannotRunUntrainedEvenThroughTheHook) {
    const OpenKNN classifier;
    vxClassifierResult result;
    EXPECT_ERROR_CLASS(classifier.run_(*pattern({1.0}), result), vxBadPointer);
}

TEST(ClassifierKNN, TakesOverPatternsAndLabels) {
    const OpenKNN classifier = trained(line({0.0, 10.0, 20.0}), Params(1));
    EXPECT_TRUE(classifier.isTrained());
    EXPECT_EQ(labels(run(classifier, {1.0})), Labels{0});
    EXPECT_EQ(labels(run(classifier, {11.0})), Labels{1});
    EXPECT_EQ(labels(run(classifier, {19.0})), Labels{2});
}

TEST(ClassifierKNN, TakesOverNameAndDescription) {
    vxClassifierDataProviderMemory data = line({0.0});
    data.setName(L"a name");
    data.setDescription(L"a description");
    const OpenKNN classifier = trained(data, Params(1));
    EXPECT_TRUE(holds(classifier, data));
    data.setName(L"another");
    EXPECT_FALSE(holds(classifier, data));
    data.setName(L"a name");
    data.setDescription(L"another");
    EXPECT_FALSE(holds(classifier, data));
}

TEST(ClassifierKNN, SharesThePatternsWithTheirProvider) {
    // The handle here, the provider's, the classifier's; the object dies with the last of them.
    struct Watched : vxFeaturePattern {
        explicit Watched(bool& alive) : vxFeaturePattern({1.0}, {}), alive_(alive) { alive_ = true; }
        ~Watched() override { alive_ = false; }
        Watched(const Watched&) = delete;
        Watched& operator=(const Watched&) = delete;
        bool& alive_;
    };
    bool alive = false;
    OpenKNN classifier;
    {
        vxClassifierDataProviderMemory data;
        data.addData(test::PatternHandle(new Watched(alive)), 0);
        classifier.train(data, Params(1));
    }
    EXPECT_TRUE(alive) << "the classifier keeps the very pattern";
    classifier.untrain();
    EXPECT_FALSE(alive);
}

TEST(ClassifierKNN, LeavesPatternsOfUnknownCategoryOut) {
    vxClassifierDataProviderMemory data;
    data.addData(pattern({0.0}), -1);
    data.addData(pattern({5.0}), 7);
    data.addData(pattern({0.5}), -1);
    vxClassifierDataProviderMemory known;
    known.addData(pattern({5.0}), 7);
    const OpenKNN classifier = trained(data, Params(3));
    EXPECT_TRUE(holds(classifier, known));
    EXPECT_EQ(labels(run(classifier, {0.0})), Labels{7});
}

TEST(ClassifierKNN, AsksForPatternAndThenLabelInAscendingOrder) {
    ScriptedProvider data;
    data.add(pattern({0.0}), 0);
    data.add(pattern({1.0}), -1);
    data.add(pattern({2.0}, {0}), 2);
    OpenKNN classifier;
    EXPECT_ERROR(classifier.train_(data, Params(1)), vxClassifierDefs::BadFeatures, unsuitable);
    EXPECT_EQ(data.asked, (std::vector<long>{0, 1, 2}));
    EXPECT_EQ(data.askedLabels, (std::vector<long>{0, 1})) << "the label is not asked for before the test";
}

TEST(ClassifierKNN, AsksForNameThenDescriptionBeforeThePatterns) {
    ScriptedProvider data;
    data.add(pattern({0.0}), 0);
    trained(data, Params(1));
    EXPECT_EQ(data.operations,
              (std::vector<std::string>{"name", "description", "numPatterns", "featurePattern"}));
}

TEST(ClassifierKNN, AcceptsDataWithoutAnyKnownPatternButCannotRun) {
    vxClassifierDataProviderMemory unknown;
    unknown.addData(pattern({0.0}), -1);
    for (const vxClassifierDataProviderMemory& data : {vxClassifierDataProviderMemory(), unknown}) {
        const OpenKNN classifier = trained(data, Params(1));
        EXPECT_TRUE(classifier.isTrained());
        EXPECT_ERROR(classifier.checkRunnable_(), vxClassifierDefs::InsufficientTrainData, noData);
        EXPECT_ERROR(run(classifier, {0.0}), vxClassifierDefs::InsufficientTrainData, noData);
    }
}

TEST(ClassifierKNN, CanRunWithOnePatternWhateverK) {
    const OpenKNN classifier = trained(line({0.0}), Params(1000));
    EXPECT_NO_THROW(classifier.checkRunnable_());
    EXPECT_EQ(labels(run(classifier, {3.0})), Labels{0});
}

TEST(ClassifierKNN, RefusesParametersOfAnotherTechniqueBeforeAnythingChanges) {
    OpenKNN classifier = trained(line({0.0, 9.0}), Params(2));
    ScriptedProvider data;
    EXPECT_ERROR_CLASS(classifier.train_(data, test::FakeParams()), vxBadPointer);
    EXPECT_EQ(labels(run(classifier, {1.0})), (Labels{0, 1})) << "same store, same K";
}

/// The state that a training leaves when it fails on the way: a new, empty store and the new parameters.
void expectFailedHalfway(OpenKNN& classifier) {
    EXPECT_TRUE(classifier.isTrained());
    EXPECT_ERROR(classifier.checkRunnable_(), vxClassifierDefs::InsufficientTrainData, noData);
    classifier.trainIncremental_(*pattern({0.0}), 0);
    classifier.trainIncremental_(*pattern({1.0}), 1);
    EXPECT_EQ(labels(run(classifier, {0.0})), (Labels{0, 1})) << "two neighbours, as the new parameters say";
}

TEST(ClassifierKNN, RefusesATrainingPatternWithAnInvalidMeasurement) {
    vxClassifierDataProviderMemory data;
    data.addData(pattern({0.0}), 0);
    data.addData(pattern({1.0}, {0}), 1);
    OpenKNN classifier = trained(line({5.0}), Params(1));
    EXPECT_ERROR(classifier.train(data, Params(2)), vxClassifierDefs::BadFeatures, unsuitable);
    expectFailedHalfway(classifier);
}

TEST(ClassifierKNN, RefusesAnInvalidMeasurementEvenInAPatternOfUnknownCategory) {
    vxClassifierDataProviderMemory data;
    data.addData(pattern({1.0}, {0}), -1);
    OpenKNN classifier;
    EXPECT_ERROR(classifier.train(data, Params(2)), vxClassifierDefs::BadFeatures, unsuitable);
    expectFailedHalfway(classifier);
}

TEST(ClassifierKNN, RefusesANullTrainingPattern) {
    ScriptedProvider data;
    data.add(pattern({0.0}), 0);
    data.add(test::PatternHandle(), -1);
    OpenKNN classifier;
    EXPECT_ERROR_CLASS(classifier.train(data, Params(2)), vxBadPointer);
    EXPECT_EQ(data.askedLabels, std::vector<long>{0});
    expectFailedHalfway(classifier);
}

TEST(ClassifierKNN, RefusesWhatItsStoreRefuses) {
    ScriptedProvider lengths;
    lengths.add(pattern({0.0}), 0);
    lengths.add(pattern({0.0, 1.0}), 0);
    ScriptedProvider badLabel;
    badLabel.add(pattern({0.0}), -2);
    OpenKNN classifier;
    EXPECT_ERROR(classifier.train(lengths, Params(2)), vxClassifierDefs::BadFeatures,
                 L"Feature patterns must all have the same number of measurements");
    expectFailedHalfway(classifier);
    EXPECT_ERROR(classifier.train(badLabel, Params(2)), vxClassifierDefs::BadLabel,
                 L"Category labels must be >= 0 or unknown");
    expectFailedHalfway(classifier);
}

TEST(ClassifierKNN, HasNoParametersAfterAFailedTraining) {
    ScriptedProvider data;
    data.failInDescription = true;
    OpenKNN classifier = trained(line({5.0}), Params(1));
    EXPECT_THROW(classifier.train(data, Params(2)), std::runtime_error);
    EXPECT_ERROR_CLASS(classifier.trainParams(), vxClassifierDefs::BadMethod);
    expectFailedHalfway(classifier);
}

TEST(ClassifierKNN, TakesAProviderWithANegativeCountForEmpty) {
    ScriptedProvider data;
    data.add(pattern({0.0}), 0);
    for (const long announced : {-1L, std::numeric_limits<long>::min()}) {
        data.announced = announced;
        OpenKNN classifier = trained(data, Params(1));
        EXPECT_ERROR(classifier.checkRunnable_(), vxClassifierDefs::InsufficientTrainData, noData);
        EXPECT_TRUE(data.asked.empty());
    }
}

TEST(ClassifierKNN, TakesNoMemoryForPatternsThatAProviderOnlyAnnounces) {
    ScriptedProvider data;
    data.add(pattern({0.0}), 0);
    data.announced = std::numeric_limits<long>::max();
    OpenKNN classifier;
    EXPECT_THROW(classifier.train(data, Params(2)), std::out_of_range) << "the provider's own error";
    expectFailedHalfway(classifier);
}

TEST(ClassifierKNN, CopiesTheParametersThatItIsTrainedWith) {
    Params params(2);
    OpenKNN classifier;
    classifier.train(line({0.0, 9.0}), params);
    params.k(1);
    EXPECT_EQ(labels(run(classifier, {1.0})), (Labels{0, 1}));
}

TEST(ClassifierKNN, ForgetsItsDataWhenUntrained) {
    OpenKNN classifier = trained(line({0.0}), Params(1));
    classifier.untrain_();
    EXPECT_FALSE(classifier.isTrained_());
    EXPECT_ERROR_CLASS(classifier.checkRunnable_(), vxBadPointer);
}

TEST(ClassifierKNN, StaysUntrainedAfterABareStartOfTraining) {
    OpenKNN classifier = trained(line({0.0}), Params(1));
    classifier.trainStart(Params(3));
    EXPECT_FALSE(classifier.isTrained());
    EXPECT_ERROR(classifier.trainIncremental(*pattern({0.0}), 0), vxClassifierDefs::NotTrained,
                 L"Classifier tool must be trained before incremental training.");
}

TEST(ClassifierKNN, DoesNothingInTheHookThatStartsATraining) {
    OpenKNN classifier = trained(line({0.0, 9.0}), Params(2));
    classifier.trainStart_(Params(1));
    EXPECT_EQ(labels(run(classifier, {1.0})), (Labels{0, 1}));
}

TEST(ClassifierKNN, LearnsOneMorePattern) {
    OpenKNN classifier = trained(line({0.0}), Params(1));
    vxFeaturePattern more({9.0}, {});
    classifier.trainIncremental(more, 4);
    more = vxFeaturePattern({0.1}, {});
    EXPECT_EQ(labels(run(classifier, {8.0})), Labels{4}) << "it keeps a copy of the pattern";
    EXPECT_EQ(labels(run(classifier, {0.1})), Labels{0});
}

TEST(ClassifierKNN, LearnsTheFirstPatternOfAnEmptyStore) {
    OpenKNN classifier = trained(vxClassifierDataProviderMemory(), Params(1));
    classifier.trainIncremental(*pattern({1.0, 2.0}), 4);
    EXPECT_EQ(labels(run(classifier, {8.0, 9.0})), Labels{4});
}

TEST(ClassifierKNN, CannotLearnOneMorePatternWithoutAStore) {
    OpenKNN classifier;
    EXPECT_ERROR_CLASS(classifier.trainIncremental_(*pattern({0.0}), 0), vxBadPointer);
    EXPECT_FALSE(classifier.isTrained());
}

TEST(ClassifierKNN, RefusesAPatternOrLabelMoreThatTheStoreRefuses) {
    OpenKNN classifier = trained(line({0.0}), Params(9));
    EXPECT_ERROR(classifier.trainIncremental(*pattern({0.0, 1.0}), 3), vxClassifierDefs::BadFeatures,
                 L"Feature pattern must have the same number of measurements as the rest of the data.");
    EXPECT_ERROR(classifier.trainIncremental(*pattern({0.0}), -2), vxClassifierDefs::BadLabel,
                 L"Category labels must be >= 0 or unknown");
    EXPECT_EQ(labels(run(classifier, {0.0})), Labels{0});
}

TEST(ClassifierKNN, LearnsAnInvalidMeasurementAndFailsInTheNextRun) {
    OpenKNN classifier = trained(line({0.0}), Params(1));
    classifier.trainIncremental(*pattern({1.0}, {0}), 1);
    EXPECT_ERROR(run(classifier, {0.0}), vxClassifierDefs::BadFeatures,
                 L"Access to full feature vector requires that all features are valid.");
}

TEST(ClassifierKNN, LearnsAnUnknownLabelAndFailsOnceItIsANeighbour) {
    OpenKNN classifier = trained(line({0.0}), Params(1));
    classifier.trainIncremental(*pattern({9.0}), -1);
    EXPECT_EQ(labels(run(classifier, {1.0})), Labels{0});
    EXPECT_ERROR(run(classifier, {8.0}), vxClassifierDefs::BadLabel, L"Category labels must be >= 0");
}

TEST(ClassifierKNN, TakesOtherParametersAndKeepsItsData) {
    OpenKNN classifier = trained(line({0.0, 1.0, 2.0, 3.0, 4.0}), Params(1));
    EXPECT_EQ(labels(run(classifier, {0.0})), Labels{0});
    classifier.retrain(Params(5));
    EXPECT_EQ(labels(run(classifier, {0.0})), (Labels{0, 1, 2, 3, 4}));
}

TEST(ClassifierKNN, TakesMetricAndCostsOverWhenRetrained) {
    OpenKNN classifier = trained(line({0.0, 1.0}), Params(1));
    vxClassifierCosts costs(1.0);
    costs.misclassificationCostOverride(1, 0, 8.0);
    const auto script = test::lookUp({3.0, 3.0});
    classifier.retrain(Params(2, test::ScriptedMetric(script), costs));
    const vxClassifierResult result = run(classifier, {0.0});
    EXPECT_EQ(script->asked, 2);
    EXPECT_EQ(labels(result), (Labels{1, 0}));
    EXPECT_EQ(result.categoryResults()[1].expectedCost(), 4.0);
}

TEST(ClassifierKNN, CannotBeRetrainedWithoutStoredParameters) {
    OpenKNN classifier;
    EXPECT_ERROR_CLASS(classifier.retrain_(Params(5)), vxBadPointer);
    classifier.train_(line({0.0, 9.0}), Params(1)); // past the frame, which would keep the parameters
    EXPECT_ERROR_CLASS(classifier.retrain_(Params(2)), vxBadPointer);
    EXPECT_EQ(labels(run(classifier, {1.0})), Labels{0}) << "still one neighbour";
}

TEST(ClassifierKNN, RefusesToBeRetrainedWithParametersOfAnotherTechnique) {
    OpenKNN classifier = trained(line({0.0, 9.0}), Params(2));
    EXPECT_ERROR(classifier.retrain(test::FakeParams()), vxClassifierDefs::BadMethod,
                 L"Cannot retrain with a different classification technique.");
    EXPECT_ERROR_CLASS(classifier.retrain_(test::FakeParams()), vxBadPointer);
    EXPECT_EQ(labels(run(classifier, {1.0})), (Labels{0, 1}));
}

TEST(ClassifierKNN, DoesTheSameWithADiagnosticObject) {
    vxDiagObject diag;
    OpenKNN classifier;
    classifier.train(line({0.0}), Params(1), &diag, 7);
    vxClassifierResult result;
    classifier.run(*pattern({0.0}), result, &diag, 7);
    EXPECT_EQ(result, run(classifier, {0.0}));
}

} // namespace
