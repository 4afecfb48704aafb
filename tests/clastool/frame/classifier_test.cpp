#include <vxclassifier/classifier.h>

#include "tests/support/expect_error.h"
#include "tests/support/fake_technique.h"
#include "tests/support/vtable_slots.h"

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/platform/diag_object.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <type_traits>

namespace {

using test::FakeClassifier;
using test::FakeParams;
using test::HookCall;
using test::HookLog;
using test::OtherFakeParams;
using testing::ElementsAre;
using testing::IsEmpty;

using Params = vxPtrHandle_const<vxClassifierTrainParams>;

long valueOf(const Params& params) {
    return dynamic_cast<const FakeParams&>(*params).value();
}

/// A classifier trained with the value 5, and what is needed to use it; the log holds no calls yet.
class Classifier : public testing::Test {
protected:
    Classifier() {
        classifier.train(provider, FakeParams(&log, 5));
        log.clear();
    }

    /// Drops every share of the stored parameters but the classifier's own.
    const vxClassifierTrainParams& ownParams() { return *classifier.trainParams(); }

    HookLog log;
    vxClassifierDataProviderMemory provider;
    vxFeaturePattern pattern{{1.0, 2.0}, {}};
    FakeParams params{&log, 7};
    FakeClassifier untrained{&log};
    FakeClassifier classifier{&log};
};

struct Slots : vx_Classifier {
    static std::size_t dispatch() { return test::slotOf(&Slots::dispatchSerialize); }
    static std::vector<std::size_t> hooks() {
        return {test::slotOf(&Slots::train_),         test::slotOf(&Slots::retrain_),
                test::slotOf(&Slots::trainStart_),    test::slotOf(&Slots::trainIncremental_),
                test::slotOf(&Slots::untrain_),       test::slotOf(&Slots::isTrained_),
                test::slotOf(&Slots::checkRunnable_), test::slotOf(&Slots::run_)};
    }

    // Private in the base, so that only an override shows their place.
    void recordTrainInputs_(vxDiagObject*, unsigned long) const override {}
    void recordTrainDetails_(vxDiagObject*, unsigned long) const override {}
    void recordTrainResults_(vxDiagObject*, unsigned long) const override {}
    void recordRunInputs_(vxDiagObject*, unsigned long, const vxFeaturePattern&) const override {}
    void recordRunDetails_(vxDiagObject*, unsigned long) const override {}
    void recordRunResults_(vxDiagObject*, unsigned long, const vxFeaturePattern&,
                           const vxClassifierResult&) const override {}
    static std::vector<std::size_t> recordingHooks() {
        return {test::slotOf(&Slots::recordTrainInputs_),  test::slotOf(&Slots::recordTrainDetails_),
                test::slotOf(&Slots::recordTrainResults_), test::slotOf(&Slots::recordRunInputs_),
                test::slotOf(&Slots::recordRunDetails_),   test::slotOf(&Slots::recordRunResults_)};
    }
};

TEST(ClassifierClass, TheVirtualFunctionsStandInTheirPublishedOrder) {
    EXPECT_EQ(Slots::dispatch(), 2U);
    EXPECT_EQ(test::slotOf(&vx_Classifier::reInit), 3U);
    EXPECT_EQ(test::slotOf(&vx_Classifier::loadSimple), 4U);
    EXPECT_EQ(test::slotOf(&vx_Classifier::clone), 5U);
    EXPECT_EQ(test::slotOf(&vx_Classifier::isEquivalent), 6U);
    EXPECT_THAT(Slots::hooks(), ElementsAre(7, 8, 9, 10, 11, 12, 13, 14));
    EXPECT_THAT(Slots::recordingHooks(), ElementsAre(15, 16, 17, 18, 19, 20));
}

TEST(ClassifierClass, IsAbstractAndDestroyedThroughItsBases) {
    EXPECT_TRUE(std::is_abstract_v<vx_Classifier>);
    EXPECT_TRUE(std::has_virtual_destructor_v<vx_Classifier>);
    EXPECT_TRUE((std::is_convertible_v<vx_Classifier*, vxPersistent*>));
    EXPECT_TRUE((std::is_convertible_v<vx_Classifier*, vxRepBase*>));
}

TEST_F(Classifier, IsUntrainedAtFirst) {
    EXPECT_FALSE(untrained.isTrained());
    EXPECT_ERROR(untrained.trainParams(), vxClassifierDefs::NotTrained,
                 L"Classifier tool must be trained before requesting the training parameters.");
}

TEST_F(Classifier, TrainingCallsTheHooksInOrder) {
    untrained.train(provider, params);
    EXPECT_THAT(log.hooks(), ElementsAre("recordTrainInputs_", "train_", "clone", "recordTrainDetails_",
                                         "recordTrainResults_"));
    EXPECT_TRUE(untrained.isTrained());
}

TEST_F(Classifier, TrainingHandsItsArgumentsToTheTechnique) {
    untrained.train(provider, params);
    EXPECT_EQ(log.only("train_").provider, &provider);
    EXPECT_EQ(log.only("train_").params, &params);
    EXPECT_EQ(untrained.learnt(), 7);
}

TEST_F(Classifier, TrainingKeepsACloneOfTheParameters) {
    untrained.train(provider, params);
    const Params kept = untrained.trainParams();
    EXPECT_NE(kept.get(), &params);
    EXPECT_EQ(valueOf(kept), 7);
    params.value(99);
    EXPECT_EQ(valueOf(untrained.trainParams()), 7);
}

TEST_F(Classifier, TrainingAgainUntrainsOnceBeforeAnythingElse) {
    classifier.train(provider, params);
    EXPECT_THAT(log.hooks(), ElementsAre("untrain_", "recordTrainInputs_", "train_", "clone",
                                         "recordTrainDetails_", "recordTrainResults_"));
    EXPECT_TRUE(log.only("untrain_").trained);
    EXPECT_FALSE(log.only("train_").trained);
    EXPECT_EQ(valueOf(classifier.trainParams()), 7);
}

TEST_F(Classifier, TheParametersAreKeptFromTheEndOfTheLearningOn) {
    std::vector<bool> kept;
    log.observer = [&](const HookCall& call) {
        if (call.hook == "recordTrainDetails_") {
            kept.push_back(valueOf(classifier.trainParams()) == 7);
        } else if (call.trained && call.hook.rfind("record", 0) == 0) {
            kept.push_back(!classifier.trainParams().isNull());
        }
    };
    classifier.train(provider, params);
    EXPECT_THAT(kept, ElementsAre(true, true));
}

TEST_F(Classifier, ParametersOfAnyClassReachTheTechnique) {
    const OtherFakeParams other(&log, 3);
    untrained.train(provider, other);
    EXPECT_EQ(log.only("train_").params, &other);
    EXPECT_NE(dynamic_cast<const OtherFakeParams*>(untrained.trainParams().get()), nullptr);
}

TEST_F(Classifier, WithoutDiagnosticsTheHooksGetNullAndTheCallersFlags) {
    untrained.train(provider, params, nullptr, 6);
    for (const char* hook : {"recordTrainInputs_", "recordTrainDetails_", "recordTrainResults_"}) {
        EXPECT_EQ(log.only(hook).diag, nullptr) << hook;
        EXPECT_EQ(log.only(hook).flags, 6U) << hook;
    }
}

TEST_F(Classifier, DiagnosticsAreNoneByDefault) {
    untrained.train(provider, params);
    untrained.run(pattern, untrained.resultToGive);
    for (const char* hook : {"recordTrainInputs_", "recordTrainDetails_", "recordTrainResults_",
                             "recordRunInputs_", "recordRunDetails_", "recordRunResults_"}) {
        EXPECT_EQ(log.only(hook).diag, nullptr) << hook;
        EXPECT_EQ(log.only(hook).flags, 0U) << hook;
    }
}

TEST_F(Classifier, TrainingDetailsAreForTheCallersObjectAndTheRestForItsDestination) {
    vxDiagObject destination;
    vxDiagObject diag;
    diag.destination(&destination);
    untrained.train(provider, params, &diag, 1);
    EXPECT_EQ(log.only("recordTrainInputs_").diag, &destination);
    EXPECT_EQ(log.only("recordTrainDetails_").diag, &diag);
    EXPECT_EQ(log.only("recordTrainResults_").diag, &destination);
}

TEST_F(Classifier, EveryTrainingHookGetsTheFlagsThatTheDestinationLeaves) {
    vxDiagObject destination;
    destination.passedFlags(6);
    vxDiagObject diag;
    diag.passedFlags(12);
    diag.destination(&destination);
    untrained.train(provider, params, &diag, 7);
    EXPECT_EQ(log.only("recordTrainInputs_").flags, 4U);
    EXPECT_EQ(log.only("recordTrainDetails_").flags, 4U);
    EXPECT_EQ(log.only("recordTrainResults_").flags, 4U);
}

TEST_F(Classifier, DiagnosticsThatAreSwitchedOffGiveNullToAllButTheDetails) {
    vxDiagObject diag;
    diag.disable();
    untrained.train(provider, params, &diag, 7);
    EXPECT_EQ(log.only("recordTrainInputs_").diag, nullptr);
    EXPECT_EQ(log.only("recordTrainDetails_").diag, &diag);
    EXPECT_EQ(log.only("recordTrainResults_").diag, nullptr);
    EXPECT_EQ(log.only("recordTrainDetails_").flags, 0U);
}

TEST_F(Classifier, TheDestinationIsAskedForOnceTheOldTrainingIsGone) {
    vxDiagObject destination;
    vxDiagObject diag;
    log.observer = [&](const HookCall& call) {
        if (call.hook == "untrain_") {
            diag.destination(&destination);
        } else if (call.hook == "recordTrainInputs_") {
            diag.destination(nullptr);
        }
    };
    classifier.train(provider, params, &diag, 1);
    EXPECT_EQ(log.only("recordTrainInputs_").diag, &destination);
    EXPECT_EQ(log.only("recordTrainResults_").diag, &destination) << "it is asked for once";
}

TEST_F(Classifier, StartingIncrementalTrainingCallsTheHooksInOrderAndRecordsNothing) {
    untrained.trainStart(params);
    EXPECT_THAT(log.hooks(), ElementsAre("trainStart_", "clone"));
    EXPECT_EQ(log.only("trainStart_").params, &params);
    EXPECT_EQ(valueOf(untrained.trainParams()), 7);
    EXPECT_NE(untrained.trainParams().get(), &params);
}

TEST_F(Classifier, StartingIncrementalTrainingUntrainsFirst) {
    classifier.trainStart(params);
    EXPECT_THAT(log.hooks(), ElementsAre("untrain_", "trainStart_", "clone"));
    EXPECT_FALSE(log.only("trainStart_").trained);
    EXPECT_EQ(valueOf(classifier.trainParams()), 7);
}

TEST_F(Classifier, IncrementalTrainingHandsThePatternOnAndRecordsNothing) {
    vxDiagObject diag;
    const Params before = classifier.trainParams();
    classifier.trainIncremental(pattern, -1, &diag, 3);
    EXPECT_THAT(log.hooks(), ElementsAre("trainIncremental_"));
    EXPECT_EQ(log.only("trainIncremental_").pattern, &pattern);
    EXPECT_EQ(log.only("trainIncremental_").label, -1);
    EXPECT_EQ(classifier.trainParams(), before);
    EXPECT_EQ(classifier.learnt(), 6);
}

TEST_F(Classifier, IncrementalTrainingNeedsAnEarlierTraining) {
    EXPECT_ERROR(untrained.trainIncremental(pattern, 0), vxClassifierDefs::NotTrained,
                 L"Classifier tool must be trained before incremental training.");
    EXPECT_THAT(log.hooks(), IsEmpty());
}

TEST_F(Classifier, RetrainingAsksTheNewParametersAboutTheStoredOnesAndRecordsNothing) {
    vxDiagObject diag;
    const Params before = classifier.trainParams();
    classifier.retrain(params, &diag, 3);
    EXPECT_THAT(log.hooks(), ElementsAre("isSameTechnique_", "retrain_", "clone"));
    EXPECT_EQ(log.only("isSameTechnique_").params, before.get());
    EXPECT_EQ(log.only("retrain_").params, &params);
    EXPECT_TRUE(log.only("retrain_").trained);
    EXPECT_EQ(valueOf(classifier.trainParams()), 7);
    EXPECT_NE(classifier.trainParams().get(), &params);
    EXPECT_EQ(valueOf(before), 5) << "what was handed out earlier does not change";
}

TEST_F(Classifier, RetrainingNeedsAnEarlierTraining) {
    EXPECT_ERROR(untrained.retrain(params), vxClassifierDefs::NotTrained,
                 L"Classifier tool must be trained before retraining.");
    EXPECT_ERROR(untrained.retrain(OtherFakeParams(&log)), vxClassifierDefs::NotTrained,
                 L"Classifier tool must be trained before retraining.");
    EXPECT_THAT(log.hooks(), IsEmpty());
}

TEST_F(Classifier, RetrainingWithAnotherTechniqueIsRefusedAndChangesNothing) {
    const Params before = classifier.trainParams();
    EXPECT_ERROR(classifier.retrain(OtherFakeParams(&log, 9)), vxClassifierDefs::BadMethod,
                 L"Cannot retrain with a different classification technique.");
    EXPECT_THAT(log.hooks(), ElementsAre("isSameTechnique_"));
    EXPECT_TRUE(classifier.isTrained());
    EXPECT_EQ(classifier.trainParams(), before);
    EXPECT_EQ(classifier.learnt(), 5);
}

TEST_F(Classifier, WhatWasTrainedByHandCannotBeRetrained) {
    untrained.trainManual(2);
    EXPECT_ERROR(untrained.retrain(params), vxClassifierDefs::BadMethod,
                 L"Cannot retrain with a different classification technique.");
    EXPECT_THAT(log.hooks(), IsEmpty()) << "without stored parameters there is nothing to ask about";
    EXPECT_TRUE(untrained.isTrained());
    EXPECT_EQ(untrained.learnt(), 2);
}

TEST_F(Classifier, WhatWasTrainedByHandHasNoParameters) {
    untrained.trainManual(2);
    EXPECT_ERROR(untrained.trainParams(), vxClassifierDefs::BadMethod,
                 L"Classifier tool was not automatically trained.");
}

TEST_F(Classifier, RunningCallsTheHooksInOrder) {
    vxClassifierResult result;
    classifier.run(pattern, result);
    EXPECT_THAT(log.hooks(),
                ElementsAre("recordRunInputs_", "run_", "recordRunDetails_", "recordRunResults_"));
    EXPECT_EQ(log.only("recordRunInputs_").pattern, &pattern);
    EXPECT_EQ(log.only("run_").pattern, &pattern);
    EXPECT_EQ(log.only("recordRunResults_").pattern, &pattern);
}

TEST_F(Classifier, RunningReplacesTheCallersResult) {
    classifier.resultToGive = vxClassifierResult({{4, 1.0, 1.0, 0.5}}, -2.0);
    vxClassifierResult result({{1, 0.5, 1.0, 3.0}, {2, 0.5, 1.0, 4.0}}, 9.0);
    classifier.run(pattern, result);
    EXPECT_EQ(result, classifier.resultToGive);
}

TEST_F(Classifier, TheTechniqueFillsAnEmptyResult) {
    vxClassifierResult result({{1, 0.5, 1.0, 3.0}}, 9.0);
    bool empty = false;
    log.observer = [&](const HookCall& call) {
        if (call.hook == "run_") {
            empty = *call.result == vxClassifierResult();
        }
    };
    classifier.run(pattern, result);
    EXPECT_TRUE(empty);
}

TEST_F(Classifier, TheResultsHookSeesWhatTheCallerWillGet) {
    classifier.resultToGive = vxClassifierResult({{4, 1.0, 1.0, 0.5}}, -2.0);
    bool seen = false;
    log.observer = [&](const HookCall& call) {
        if (call.hook == "recordRunResults_") {
            seen = *call.result == classifier.resultToGive;
        }
    };
    vxClassifierResult result;
    classifier.run(pattern, result);
    EXPECT_TRUE(seen);
}

TEST_F(Classifier, AllHooksOfARunGetTheDestinationAndItsFlags) {
    vxDiagObject destination;
    destination.passedFlags(6);
    vxDiagObject diag;
    diag.destination(&destination);
    vxClassifierResult result;
    classifier.run(pattern, result, &diag, 3);
    for (const char* hook : {"recordRunInputs_", "recordRunDetails_", "recordRunResults_"}) {
        EXPECT_EQ(log.only(hook).diag, &destination) << hook;
        EXPECT_EQ(log.only(hook).flags, 2U) << hook;
    }
}

TEST_F(Classifier, RunningNeedsAnEarlierTraining) {
    vxClassifierResult result;
    EXPECT_ERROR(untrained.run(pattern, result), vxClassifierDefs::NotTrained,
                 L"Classifier tool must be trained before running.");
    EXPECT_THAT(log.hooks(), IsEmpty());
}

TEST_F(Classifier, UntrainingForgetsAndReleasesTheParameters) {
    const std::size_t before = log.alive.size();
    classifier.untrain();
    EXPECT_THAT(log.hooks(), ElementsAre("untrain_"));
    EXPECT_FALSE(classifier.isTrained());
    EXPECT_EQ(log.alive.size(), before - 1);
}

TEST_F(Classifier, TheTechniqueForgetsBeforeTheParametersAreReleased) {
    bool stillThere = false;
    log.observer = [&](const HookCall&) { stillThere = !classifier.trainParams().isNull(); };
    classifier.untrain();
    EXPECT_TRUE(stillThere);
}

TEST_F(Classifier, UntrainingAnUntrainedOneCallsNoHook) {
    untrained.untrain();
    EXPECT_THAT(log.hooks(), IsEmpty());
}

TEST_F(Classifier, HandedOutParametersAreShared) {
    const Params first = classifier.trainParams();
    const Params second = classifier.trainParams();
    EXPECT_EQ(first, second);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*first), 3);
    classifier.untrain();
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*first), 2);
    EXPECT_EQ(valueOf(first), 5);
}

TEST_F(Classifier, CanBeTrainedWithParametersThatOnlyItselfKeeps) {
    classifier.train(provider, ownParams());
    EXPECT_TRUE(log.only("train_").paramsAlive);
    EXPECT_EQ(classifier.learnt(), 5);
    EXPECT_EQ(valueOf(classifier.trainParams()), 5);
}

TEST_F(Classifier, CanStartTrainingWithParametersThatOnlyItselfKeeps) {
    classifier.trainStart(ownParams());
    EXPECT_TRUE(log.only("trainStart_").paramsAlive);
    EXPECT_EQ(classifier.learnt(), 5);
    EXPECT_EQ(valueOf(classifier.trainParams()), 5);
}

TEST_F(Classifier, CanBeRetrainedWithParametersThatOnlyItselfKeeps) {
    const vxClassifierTrainParams& own = ownParams();
    classifier.retrain(own);
    EXPECT_EQ(classifier.learnt(), 5);
    EXPECT_EQ(valueOf(classifier.trainParams()), 5);
}

TEST_F(Classifier, NoCallLeavesParametersBehindThatNobodyKeeps) {
    const std::size_t before = log.alive.size();
    classifier.train(provider, ownParams());
    classifier.trainStart(ownParams());
    classifier.retrain(ownParams());
    EXPECT_EQ(log.alive.size(), before);
}

TEST_F(Classifier, ACopySharesTheParameters) {
    const Params params5 = classifier.trainParams();
    const FakeClassifier copy(classifier);
    EXPECT_EQ(copy.trainParams(), params5);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*params5), 3);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(copy), 0) << "the count is not copied";
}

TEST_F(Classifier, UntrainingTheOriginalLeavesItsCopyTrained) {
    const FakeClassifier copy(classifier);
    classifier.untrain();
    EXPECT_TRUE(copy.isTrained());
    EXPECT_EQ(valueOf(copy.trainParams()), 5);
}

TEST_F(Classifier, AssigningReleasesTheOwnParametersAndSharesTheOthers) {
    FakeClassifier other(&log);
    other.train(provider, params);
    const std::size_t before = log.alive.size();
    other = classifier;
    EXPECT_EQ(other.trainParams(), classifier.trainParams());
    EXPECT_EQ(log.alive.size(), before - 1);
}

TEST_F(Classifier, AssigningAnUntrainedOneLeavesNoParameters) {
    classifier = untrained;
    EXPECT_FALSE(classifier.isTrained());
    classifier.trainManual(1);
    EXPECT_ERROR(classifier.trainParams(), vxClassifierDefs::BadMethod,
                 L"Classifier tool was not automatically trained.");
}

TEST_F(Classifier, AssigningTheSameParametersChangesNoCount) {
    FakeClassifier copy(classifier);
    const Params shared = classifier.trainParams();
    copy = classifier;
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*shared), 3);
    FakeClassifier& self = classifier;
    classifier = self;
    EXPECT_EQ(classifier.trainParams(), shared);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*shared), 3);
}

/// What makes two classifiers equivalent in the eyes of the base.
class ClassifierEquivalence : public Classifier {
protected:
    static bool equivalent(const vx_Classifier& a, const vx_Classifier& b) {
        return a.vx_Classifier::isEquivalent(b);
    }

    FakeClassifier trainedWith(long value) {
        FakeClassifier made(&log);
        made.train(provider, FakeParams(&log, value));
        return made;
    }
    FakeClassifier trainedByHand(long learnt) {
        FakeClassifier made(&log);
        made.trainManual(learnt);
        return made;
    }
};

TEST_F(ClassifierEquivalence, HoldsForTwoUntrainedOnes) {
    EXPECT_TRUE(equivalent(untrained, FakeClassifier()));
}

TEST_F(ClassifierEquivalence, NeverHoldsForATrainedAndAnUntrainedOne) {
    EXPECT_FALSE(equivalent(classifier, untrained));
    EXPECT_FALSE(equivalent(untrained, classifier));
    EXPECT_FALSE(equivalent(trainedByHand(1), untrained));
    EXPECT_FALSE(equivalent(untrained, trainedByHand(1)));
    EXPECT_THAT(log.hooks(), testing::Not(testing::Contains("isEqual_")));
}

TEST_F(ClassifierEquivalence, AsksTheOwnParametersAboutTheOthers) {
    const FakeClassifier same = trainedWith(5);
    log.clear();
    EXPECT_TRUE(equivalent(classifier, same));
    EXPECT_EQ(log.only("isEqual_").params, same.trainParams().get());
    EXPECT_FALSE(equivalent(classifier, trainedWith(6)));
}

TEST_F(ClassifierEquivalence, NeedsParametersOnBothSidesOrOnNone) {
    EXPECT_FALSE(equivalent(classifier, trainedByHand(5)));
    EXPECT_FALSE(equivalent(trainedByHand(5), classifier));
    EXPECT_TRUE(equivalent(trainedByHand(5), trainedByHand(6)));
}

TEST_F(ClassifierEquivalence, HoldsBetweenAClassifierAndItsCopy) {
    EXPECT_TRUE(equivalent(classifier, FakeClassifier(classifier)));
    EXPECT_TRUE(equivalent(classifier, *classifier.clone()));
    EXPECT_TRUE(equivalent(classifier, classifier));
}

TEST_F(ClassifierEquivalence, OfParametersOfDifferentClassesIsWhatTheParametersSay) {
    FakeClassifier other(&log);
    other.train(provider, OtherFakeParams(&log, 5));
    EXPECT_FALSE(equivalent(classifier, other));
}

} // namespace
