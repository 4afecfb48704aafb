#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/failing_allocation.h"
#include "tests/support/fake_technique.h"
#include "tests/support/hand_written.h"

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/feature_pattern.h>

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <utility>
#include <vector>

// What only a damaged archive, an unusual caller or a machine without memory does to a classifier.

namespace {

using test::Bytes;
using test::FakeClassifier;
using test::FakeParams;
using test::HandWritten;
using test::HookLog;
using test::OtherFakeParams;

const vxClassifierDataProviderMemory noData;

/// A classifier whose archive holds this object in place of the parameters.
FakeClassifier withStoredParams(const vxPersistent* params, bool trained) {
    return test::loaded(HandWritten()
                            .byte(0) // the technique
                            .byte(0) // vx_Classifier
                            .byte(0) // vxPersistent
                            .pointer(params)
                            .byte(trained ? 1 : 0)
                            .number(3)
                            .sealed(),
                        FakeClassifier());
}

TEST(HostileParams, TheFlagOfACopyIsNeverLeftToChance) {
    // The memory is not zero where the copy comes to lie.
    alignas(FakeParams) unsigned char memory[sizeof(FakeParams)];
    FakeParams original;
    original.throwIfNotReady(false);
    for (const int fill : {0x00, 0xff, 0x5a}) {
        std::memset(memory, fill, sizeof memory);
        auto* copy = new (memory) FakeParams(original);
        EXPECT_TRUE(copy->throwIfNotReady());
        copy->~FakeParams();
    }
}

TEST(HostileClassifier, TrainingWithParametersThatItAloneKeepsReadsNothingFreed) {
    HookLog log;
    FakeClassifier classifier(&log);
    classifier.train(noData, FakeParams(&log, 5));
    // The handle that is asked for the parameters is gone before each call.
    const auto own = [&]() -> const vxClassifierTrainParams& { return *classifier.trainParams(); };
    log.clear();
    classifier.train(noData, own());
    EXPECT_TRUE(log.only("train_").paramsAlive);
    EXPECT_EQ(classifier.learnt(), 5);
    log.clear();
    classifier.trainStart(own());
    EXPECT_TRUE(log.only("trainStart_").paramsAlive);
    classifier.retrain(own());
    EXPECT_TRUE(log.only("retrain_").paramsAlive);
    EXPECT_EQ(log.alive.size(), 2U) << "the classifier and its parameters";
}

TEST(HostileClassifier, NullParametersOfATrainedOneGiveTheNamedErrors) {
    FakeClassifier classifier = withStoredParams(nullptr, true);
    ASSERT_TRUE(classifier.isTrained());
    EXPECT_ERROR(classifier.trainParams(), vxClassifierDefs::BadMethod,
                 L"Classifier tool was not automatically trained.");
    EXPECT_ERROR(classifier.retrain(FakeParams()), vxClassifierDefs::BadMethod,
                 L"Cannot retrain with a different classification technique.");
    EXPECT_FALSE(classifier.isEquivalent(FakeClassifier()));
    EXPECT_TRUE(classifier.isEquivalent(*classifier.clone()));
    EXPECT_EQ(test::stored(withStoredParams(nullptr, true)), test::stored(classifier));
}

TEST(HostileClassifier, ParametersOfAnotherTechniqueGiveTheNamedErrors) {
    const OtherFakeParams other(nullptr, 1);
    FakeClassifier classifier = withStoredParams(&other, true);
    EXPECT_NE(dynamic_cast<const OtherFakeParams*>(classifier.trainParams().get()), nullptr);
    EXPECT_ERROR(classifier.retrain(FakeParams()), vxClassifierDefs::BadMethod,
                 L"Cannot retrain with a different classification technique.");
    classifier.retrain(OtherFakeParams(nullptr, 2));
    EXPECT_EQ(classifier.learnt(), 0) << "what to make of foreign parameters is up to the technique";
}

TEST(HostileClassifier, AnObjectThatIsNoParametersLeavesNone) {
    const vxFeaturePattern pattern({1.0}, {});
    FakeClassifier classifier = withStoredParams(&pattern, true);
    EXPECT_ERROR(classifier.trainParams(), vxClassifierDefs::BadMethod,
                 L"Classifier tool was not automatically trained.");
}

TEST(HostileClassifier, RunningOutOfMemoryInATrainingNeverLeavesTheOldParameters) {
    FakeClassifier classifier;
    const FakeParams params(nullptr, 7);
    classifier.train(noData, FakeParams(nullptr, 5));
    const auto isUntrainedOrHasNoneOrTheNew = [&] {
        try {
            EXPECT_EQ(dynamic_cast<const FakeParams&>(*classifier.trainParams()).value(), 7);
        } catch (const vxClassifierDefs::NotTrained&) {
            EXPECT_FALSE(classifier.isTrained());
        } catch (const vxClassifierDefs::BadMethod&) {
            EXPECT_TRUE(classifier.isTrained()) << "learning was done, keeping the parameters failed";
        }
    };
    EXPECT_GT(
        test::failEachAllocation([&] { classifier.train(noData, params); }, isUntrainedOrHasNoneOrTheNew), 0);
    EXPECT_EQ(dynamic_cast<const FakeParams&>(*classifier.trainParams()).value(), 7);
}

TEST(HostileClassifier, RunningOutOfMemoryWhileRetrainingKeepsTheOldParameters) {
    FakeClassifier classifier;
    const FakeParams params(nullptr, 7);
    classifier.train(noData, FakeParams(nullptr, 5));
    const long failures = test::failEachAllocation(
        [&] { classifier.retrain(params); },
        [&] { EXPECT_EQ(dynamic_cast<const FakeParams&>(*classifier.trainParams()).value(), 5); });
    EXPECT_GT(failures, 0);
    EXPECT_EQ(dynamic_cast<const FakeParams&>(*classifier.trainParams()).value(), 7);
}

TEST(HostileClassifier, ARunThatFailsAfterTheTechniqueHasAnsweredKeepsTheCallersResult) {
    HookLog log;
    FakeClassifier classifier(&log);
    classifier.train(noData, FakeParams(&log, 5));
    classifier.resultToGive = vxClassifierResult({{4, 1.0, 1.0, 0.5}}, -2.0);
    const vxClassifierResult before({{1, 0.5, 1.0, 3.0}, {2, 0.5, 1.0, 4.0}}, 9.0);
    vxClassifierResult result(before);
    using Moment = HookLog::Moment;
    const std::vector<std::pair<const char*, Moment>> failures{{"run_", Moment::after},
                                                               {"recordRunDetails_", Moment::before},
                                                               {"recordRunResults_", Moment::before}};
    for (const auto& [hook, moment] : failures) {
        log.fail(hook, moment);
        EXPECT_THROW(classifier.run(vxFeaturePattern({}, {}), result), test::HookFailure);
        EXPECT_EQ(result, before) << hook;
    }
}

} // namespace
