#include "tests/support/expect_error.h"
#include "tests/support/fake_technique.h"

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/feature_pattern.h>

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

// What a classifier is left as when one of its hooks fails.

namespace {

using test::FakeClassifier;
using test::FakeParams;
using test::HookFailure;
using test::HookLog;
using Moment = test::HookLog::Moment;

/// The state of a classifier as its caller sees it: "untrained", "trained by hand" or the value of its
/// parameters.
std::string stateOf(const FakeClassifier& classifier) {
    if (!classifier.isTrained()) {
        return "untrained";
    }
    try {
        return std::to_string(dynamic_cast<const FakeParams&>(*classifier.trainParams()).value());
    } catch (const vxClassifierDefs::BadMethod&) {
        return "trained by hand";
    }
}

enum class Operation { train, trainStart, trainIncremental, retrain, untrain };

struct Failure {
    Operation operation;
    const char* hook;
    Moment moment;
    const char* state; // afterwards; the classifier had parameters of value 5, and the operation brings 7
    long learnt;
    bool untrainedBefore = false;
};

std::ostream& operator<<(std::ostream& out, const Failure& failure) {
    return out << "operation " << static_cast<int>(failure.operation) << ", " << failure.hook;
}

class ClassifierFailure : public testing::TestWithParam<Failure> {
protected:
    void perform(FakeClassifier& classifier) {
        switch (GetParam().operation) {
        case Operation::train:
            return classifier.train(vxClassifierDataProviderMemory(), FakeParams(&log, 7));
        case Operation::trainStart:
            return classifier.trainStart(FakeParams(&log, 7));
        case Operation::trainIncremental:
            return classifier.trainIncremental(vxFeaturePattern({}, {}), 0);
        case Operation::retrain:
            return classifier.retrain(FakeParams(&log, 7));
        case Operation::untrain:
            return classifier.untrain();
        }
    }

    HookLog log;
};

TEST_P(ClassifierFailure, LeavesThePromisedStateAndNothingBehind) {
    FakeClassifier classifier(&log);
    if (!GetParam().untrainedBefore) {
        classifier.train(vxClassifierDataProviderMemory(), FakeParams(&log, 5));
    }
    log.clear();
    log.fail(GetParam().hook, GetParam().moment);
    EXPECT_THROW(perform(classifier), HookFailure);
    if (std::string(GetParam().hook) != "isTrained_") {
        EXPECT_EQ(log.hooks().back(), GetParam().hook) << "no hook is called after the one that failed";
    }
    log.clear();
    EXPECT_EQ(stateOf(classifier), GetParam().state);
    EXPECT_EQ(classifier.learnt(), GetParam().learnt);
    // The parameters are released only once the technique has forgotten what it had learnt.
    const bool keepsParams = stateOf(classifier) == "5" || stateOf(classifier) == "7" ||
                             std::string(GetParam().hook) == "untrain_";
    EXPECT_EQ(log.alive.size(), keepsParams ? 2U : 1U) << "the classifier and at most its parameters";
}

TEST_P(ClassifierFailure, PassesTheExceptionOnUnchanged) {
    FakeClassifier classifier(&log);
    if (!GetParam().untrainedBefore) {
        classifier.train(vxClassifierDataProviderMemory(), FakeParams(&log, 5));
    }
    log.fail(GetParam().hook, GetParam().moment);
    log.failure = [] { throw vxClassifierDefs::InsufficientTrainData(L"not enough"); };
    EXPECT_ERROR(perform(classifier), vxClassifierDefs::InsufficientTrainData, L"not enough");
    log.clear();
}

INSTANTIATE_TEST_SUITE_P(
    Train, ClassifierFailure,
    testing::Values(Failure{Operation::train, "isTrained_", Moment::before, "5", 5},
                    Failure{Operation::train, "untrain_", Moment::before, "5", 5},
                    Failure{Operation::train, "untrain_", Moment::after, "untrained", 0},
                    Failure{Operation::train, "recordTrainInputs_", Moment::before, "untrained", 0},
                    Failure{Operation::train, "train_", Moment::before, "untrained", 0},
                    Failure{Operation::train, "train_", Moment::before, "untrained", 0, true},
                    Failure{Operation::train, "train_", Moment::after, "trained by hand", 7},
                    Failure{Operation::train, "train_", Moment::after, "trained by hand", 7, true},
                    Failure{Operation::train, "clone", Moment::before, "trained by hand", 7},
                    Failure{Operation::train, "recordTrainDetails_", Moment::before, "7", 7},
                    Failure{Operation::train, "recordTrainResults_", Moment::before, "7", 7}));

INSTANTIATE_TEST_SUITE_P(
    TrainStart, ClassifierFailure,
    testing::Values(Failure{Operation::trainStart, "isTrained_", Moment::before, "5", 5},
                    Failure{Operation::trainStart, "untrain_", Moment::before, "5", 5},
                    Failure{Operation::trainStart, "untrain_", Moment::after, "untrained", 0},
                    Failure{Operation::trainStart, "trainStart_", Moment::before, "untrained", 0},
                    Failure{Operation::trainStart, "trainStart_", Moment::before, "untrained", 0, true},
                    Failure{Operation::trainStart, "trainStart_", Moment::after, "trained by hand", 7},
                    Failure{Operation::trainStart, "clone", Moment::before, "trained by hand", 7}));

INSTANTIATE_TEST_SUITE_P(
    TrainIncremental, ClassifierFailure,
    testing::Values(Failure{Operation::trainIncremental, "isTrained_", Moment::before, "5", 5},
                    Failure{Operation::trainIncremental, "trainIncremental_", Moment::before, "5", 5},
                    Failure{Operation::trainIncremental, "trainIncremental_", Moment::after, "5", 6}));

INSTANTIATE_TEST_SUITE_P(Retrain, ClassifierFailure,
                         testing::Values(Failure{Operation::retrain, "isTrained_", Moment::before, "5", 5},
                                         Failure{Operation::retrain, "isSameTechnique_", Moment::before, "5",
                                                 5},
                                         Failure{Operation::retrain, "retrain_", Moment::before, "5", 5},
                                         Failure{Operation::retrain, "retrain_", Moment::after, "5", 7},
                                         Failure{Operation::retrain, "clone", Moment::before, "5", 7}));

INSTANTIATE_TEST_SUITE_P(Untrain, ClassifierFailure,
                         testing::Values(Failure{Operation::untrain, "isTrained_", Moment::before, "5", 5},
                                         Failure{Operation::untrain, "untrain_", Moment::before, "5", 5},
                                         Failure{Operation::untrain, "untrain_", Moment::after, "untrained",
                                                 0}));

struct RunFailure {
    const char* hook;
    Moment moment;
};

std::ostream& operator<<(std::ostream& out, const RunFailure& failure) {
    return out << failure.hook;
}

class ClassifierRunFailure : public testing::TestWithParam<RunFailure> {};

TEST_P(ClassifierRunFailure, LeavesTheCallersResultAndTheClassifierAsTheyWere) {
    HookLog log;
    FakeClassifier classifier(&log);
    classifier.train(vxClassifierDataProviderMemory(), FakeParams(&log, 5));
    classifier.resultToGive = vxClassifierResult({{4, 1.0, 1.0, 0.5}}, -2.0);
    const vxClassifierResult before({{1, 0.5, 1.0, 3.0}, {2, 0.5, 1.0, 4.0}}, 9.0);
    vxClassifierResult result(before);
    log.clear();
    log.fail(GetParam().hook, GetParam().moment);
    EXPECT_THROW(classifier.run(vxFeaturePattern({}, {}), result), HookFailure);
    EXPECT_EQ(result, before);
    log.clear();
    EXPECT_EQ(stateOf(classifier), "5");
}

INSTANTIATE_TEST_SUITE_P(Run, ClassifierRunFailure,
                         testing::Values(RunFailure{"isTrained_", Moment::before},
                                         RunFailure{"recordRunInputs_", Moment::before},
                                         RunFailure{"run_", Moment::before},
                                         RunFailure{"run_", Moment::after},
                                         RunFailure{"recordRunDetails_", Moment::before},
                                         RunFailure{"recordRunResults_", Moment::before}));

TEST(ClassifierFailureWithOwnParameters, AFailedTrainingFreesThemWhenItEnds) {
    HookLog log;
    FakeClassifier classifier(&log);
    classifier.train(vxClassifierDataProviderMemory(), FakeParams(&log, 5));
    log.clear();
    log.fail("train_");
    EXPECT_THROW(classifier.train(vxClassifierDataProviderMemory(), *classifier.trainParams()), HookFailure);
    EXPECT_TRUE(log.only("train_").paramsAlive);
    EXPECT_EQ(log.alive.size(), 1U);
}

TEST(ClassifierFailureOfAnUntrainedOne, LeavesItAsItWas) {
    FakeClassifier classifier;
    vxClassifierResult result({{1, 0.5, 1.0, 3.0}}, 9.0);
    const vxClassifierResult before(result);
    EXPECT_THROW(classifier.run(vxFeaturePattern({}, {}), result), vxClassifierDefs::NotTrained);
    EXPECT_THROW(classifier.retrain(FakeParams()), vxClassifierDefs::NotTrained);
    EXPECT_THROW(classifier.trainIncremental(vxFeaturePattern({}, {}), 1), vxClassifierDefs::NotTrained);
    EXPECT_EQ(result, before);
    EXPECT_EQ(stateOf(classifier), "untrained");
    EXPECT_EQ(classifier.learnt(), 0);
}

} // namespace
