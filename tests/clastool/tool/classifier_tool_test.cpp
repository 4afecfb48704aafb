// What the tool does whatever the technique: shown with a technique that records how it is called.

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/classifier_tool.h>
#include <vxclassifier/decision_tree_leaf.h>
#include <vxclassifier/platform/diag_object.h>

#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/fake_technique.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using test::FakeClassifier;
using test::FakeParams;
using test::HookLog;
using Hooks = std::vector<std::string>;

constexpr wchar_t notTrainedToRun[] = L"Classifier tool must be trained before running.";
constexpr wchar_t notTrainedToRetrain[] = L"Classifier tool must be trained before retraining.";
constexpr wchar_t notTrainedForParams[] =
    L"Classifier tool must be trained before requesting the training parameters.";
constexpr wchar_t notTrainedForTree[] =
    L"Classifier tool must be trained before requesting the decision tree.";
constexpr wchar_t noSuchMethod[] =
    L"The classification method specified by the training parameters is not implemented.";

class ClassifierTool : public testing::Test {
protected:
    void train(long value = 1, bool throwIfNotReady = true) {
        FakeParams params(&log, value);
        params.throwIfNotReady(throwIfNotReady);
        tool.train(provider, params);
        log.clear();
    }

    /// The technique's parameters as the tool keeps them; the caller has no share of them.
    const vxClassifierTrainParams& heldParams() const { return *tool.trainParams(); }

    HookLog log; // outlives everything that writes to it
    vxClassifierDataProviderMemory provider;
    vxFeaturePattern pattern{{1.0}, {}};
    vxClassifierTool tool;
    vxClassifierResult result;
};

/// A result that no fake gives.
vxClassifierResult someResult() {
    return vxClassifierResult({vxClassifierCategoryResult(7, 0.5, 1.0, 0.25)}, 3.0);
}

/// What is thrown and is no error of the classifier family.
struct ForeignError {};

} // namespace

TEST_F(ClassifierTool, IsEmptyAtFirst) {
    EXPECT_FALSE(tool.isTrained());
    EXPECT_NO_THROW(tool.untrain());
    EXPECT_ERROR(tool.run(pattern, result), vxClassifierDefs::NotTrained, notTrainedToRun);
    EXPECT_ERROR(tool.retrain(FakeParams()), vxClassifierDefs::NotTrained, notTrainedToRetrain);
    EXPECT_ERROR(tool.trainParams(), vxClassifierDefs::NotTrained, notTrainedForParams);
    EXPECT_ERROR(tool.decisionTree(), vxClassifierDefs::NotTrained, notTrainedForTree);
}

TEST_F(ClassifierTool, GivesTheSameErrorsWhileItHoldsAnUntrainedClassifier) {
    train();
    tool.untrain();
    EXPECT_FALSE(tool.isTrained());
    EXPECT_ERROR(tool.run(pattern, result), vxClassifierDefs::NotTrained, notTrainedToRun);
    EXPECT_ERROR(tool.retrain(FakeParams()), vxClassifierDefs::NotTrained, notTrainedToRetrain);
    EXPECT_ERROR(tool.trainParams(), vxClassifierDefs::NotTrained, notTrainedForParams);
    EXPECT_ERROR(tool.decisionTree(), vxClassifierDefs::NotTrained, notTrainedForTree);
}

TEST_F(ClassifierTool, TrainsANewClassifierOfTheParametersAndTriesIt) {
    const FakeParams params(&log, 5);
    tool.train(provider, params);
    EXPECT_TRUE(tool.isTrained());
    EXPECT_EQ(log.hooks(), (Hooks{"newClassifier_", "recordTrainInputs_", "train_", "clone",
                                  "recordTrainDetails_", "recordTrainResults_", "checkRunnable_"}));
    EXPECT_EQ(log.only("train_").provider, &provider);
    EXPECT_EQ(log.only("train_").params, &params);
}

TEST_F(ClassifierTool, DoesNotTryTheClassifierUnlessTheParametersAskForIt) {
    FakeParams params(&log);
    params.throwIfNotReady(false);
    log.fail("checkRunnable_");
    tool.train(provider, params);
    EXPECT_TRUE(tool.isTrained());
    tool.retrain(params);
    EXPECT_TRUE(tool.isTrained());
}

TEST_F(ClassifierTool, UntrainsTheOldClassifierBeforeItAsksForANewOne) {
    train();
    tool.train(provider, FakeParams(&log, 2));
    const Hooks hooks = log.hooks();
    ASSERT_GE(hooks.size(), 3U);
    EXPECT_EQ((Hooks{hooks[0], hooks[1], hooks[2]}),
              (Hooks{"untrain_", "newClassifier_", "recordTrainInputs_"}));
}

TEST_F(ClassifierTool, ReplacesTheClassifierAtEveryTraining) {
    train(1);
    const std::size_t alive = log.alive.size();
    train(2);
    EXPECT_EQ(log.alive.size(), alive);
}

TEST_F(ClassifierTool, AnythingThrownByTheChoiceOfTechniqueMeansNotImplementedAndAnEmptyTool) {
    const std::vector<std::function<void()>> failures = {
        [] { throw ForeignError(); }, [] { throw vxClassifierDefs::BadParams(L"dropped"); },
        [] { throw 42; }};
    for (const auto& failure : failures) {
        train();
        log.failure = failure;
        log.fail("newClassifier_");
        EXPECT_ERROR(tool.train(provider, FakeParams(&log)), vxClassifierDefs::NotImplemented, noSuchMethod);
        log.clear();
        EXPECT_TRUE(log.alive.empty()) << "the old classifier is still there";
        EXPECT_FALSE(tool.isTrained());
    }
}

TEST_F(ClassifierTool, AParameterClassThatMakesNoClassifierIsABadPointerAndEmptiesTheTool) {
    train();
    FakeParams params(&log);
    params.makesClassifier = false;
    EXPECT_ERROR_CLASS(tool.train(provider, params), vxBadPointer);
    EXPECT_FALSE(tool.isTrained());
    EXPECT_ERROR(tool.run(pattern, result), vxClassifierDefs::NotTrained, notTrainedToRun);
}

TEST_F(ClassifierTool, IsUntrainedAfterAnyFailureOfATraining) {
    for (const char* hook :
         {"recordTrainInputs_", "train_", "clone", "recordTrainDetails_", "recordTrainResults_"}) {
        for (const HookLog::Moment moment : {HookLog::Moment::before, HookLog::Moment::after}) {
            if (moment == HookLog::Moment::after && hook != std::string("train_")) {
                continue; // only this hook changes anything
            }
            train();
            log.failure = [] { throw ForeignError(); };
            log.fail(hook, moment);
            EXPECT_THROW(tool.train(provider, FakeParams(&log)), ForeignError) << hook;
            log.clear();
            EXPECT_FALSE(tool.isTrained()) << hook;
            EXPECT_ERROR(tool.trainParams(), vxClassifierDefs::NotTrained, notTrainedForParams);
        }
    }
}

TEST_F(ClassifierTool, UntrainsAndPassesTheErrorOfAFailedTrialOn) {
    train();
    log.failure = [] { throw vxClassifierDefs::InsufficientTrainData(L"too little"); };
    log.fail("checkRunnable_");
    EXPECT_ERROR(tool.train(provider, FakeParams(&log)), vxClassifierDefs::InsufficientTrainData,
                 L"too little");
    EXPECT_FALSE(tool.isTrained());

    log.clear();
    train();
    log.fail("checkRunnable_");
    EXPECT_ERROR(tool.retrain(FakeParams(&log)), vxClassifierDefs::InsufficientTrainData, L"too little");
    EXPECT_FALSE(tool.isTrained());
}

TEST_F(ClassifierTool, StaysTrainedWhenATrialFailsWithAnythingElse) {
    log.failure = [] { throw ForeignError(); };
    log.fail("checkRunnable_");
    EXPECT_THROW(tool.train(provider, FakeParams(&log)), ForeignError);
    EXPECT_TRUE(tool.isTrained());
    EXPECT_THROW(tool.retrain(FakeParams(&log)), ForeignError);
    EXPECT_TRUE(tool.isTrained());
}

TEST_F(ClassifierTool, RetrainsTheClassifierThatItHolds) {
    train(1);
    const FakeParams params(&log, 2);
    tool.retrain(params);
    EXPECT_EQ(log.hooks(), (Hooks{"isSameTechnique_", "retrain_", "clone", "checkRunnable_"}));
    EXPECT_EQ(log.only("retrain_").params, &params);
    EXPECT_TRUE(tool.isTrained());
}

TEST_F(ClassifierTool, ARefusedRetrainingChangesNothing) {
    train(1);
    const vxPtrHandle_const<vxClassifierTrainParams> before = tool.trainParams();
    EXPECT_ERROR(tool.retrain(test::OtherFakeParams(&log)), vxClassifierDefs::BadMethod,
                 L"Cannot retrain with a different classification technique.");
    EXPECT_TRUE(tool.isTrained());
    EXPECT_EQ(tool.trainParams(), before);

    log.failure = [] { throw ForeignError(); };
    log.fail("retrain_");
    EXPECT_THROW(tool.retrain(FakeParams(&log, 2)), ForeignError);
    EXPECT_TRUE(tool.isTrained());
    EXPECT_EQ(tool.trainParams(), before);
}

TEST_F(ClassifierTool, CanBeTrainedWithItsOwnParameters) {
    train(3);
    tool.train(provider, heldParams());
    EXPECT_TRUE(log.only("train_").paramsAlive);
    EXPECT_TRUE(tool.isTrained());
}

TEST_F(ClassifierTool, CanBeRetrainedWithItsOwnParameters) {
    train(3);
    const vxClassifierTrainParams& own = heldParams();
    bool aliveInTheTrial = false;
    log.observer = [&](const test::HookCall& call) {
        if (call.hook == "checkRunnable_") {
            aliveInTheTrial = log.alive.count(&own) != 0;
        }
    };
    tool.retrain(own);
    EXPECT_TRUE(log.only("retrain_").paramsAlive);
    EXPECT_TRUE(aliveInTheTrial) << "they say whether there is a trial";
    EXPECT_TRUE(tool.isTrained());
}

TEST_F(ClassifierTool, PassesTheDiagnosticArgumentsOn) {
    vxDiagObject diag;
    tool.train(provider, FakeParams(&log), &diag, 6);
    EXPECT_EQ(log.only("recordTrainInputs_").diag, &diag);
    EXPECT_EQ(log.only("recordTrainInputs_").flags, 6U);
    log.clear();
    tool.run(pattern, result, &diag, 9);
    EXPECT_EQ(log.only("recordRunInputs_").diag, &diag);
    EXPECT_EQ(log.only("recordRunInputs_").flags, 9U);
}

TEST_F(ClassifierTool, RunsTheClassifierWithoutTryingIt) {
    train();
    tool.run(pattern, result);
    EXPECT_EQ(log.hooks(), (Hooks{"recordRunInputs_", "run_", "recordRunDetails_", "recordRunResults_"}));
    EXPECT_EQ(log.only("run_").pattern, &pattern);
}

TEST_F(ClassifierTool, AFailedRunLeavesTheCallersResultAsItWas) {
    train();
    for (const char* hook : {"recordRunInputs_", "run_", "recordRunDetails_", "recordRunResults_"}) {
        result = someResult();
        log.fail(hook);
        EXPECT_THROW(tool.run(pattern, result), test::HookFailure) << hook;
        EXPECT_EQ(result, someResult()) << hook;
    }
    log.clear();
    EXPECT_ERROR(vxClassifierTool().run(pattern, result), vxClassifierDefs::NotTrained, notTrainedToRun);
    EXPECT_EQ(result, someResult());
}

TEST_F(ClassifierTool, UntrainingKeepsTheClassifierForTheNextUntraining) {
    train();
    tool.untrain();
    EXPECT_EQ(log.hooks(), Hooks{"untrain_"});
    log.clear();
    tool.untrain();
    EXPECT_TRUE(log.hooks().empty());
}

TEST_F(ClassifierTool, ACopyHasAClassifierOfItsOwn) {
    train();
    vxClassifierTool copy(tool);
    EXPECT_TRUE(copy.isTrained());
    EXPECT_TRUE(copy == tool);
    tool.untrain();
    EXPECT_TRUE(copy.isTrained());
    EXPECT_FALSE(copy == tool);
}

TEST_F(ClassifierTool, AssignmentReplacesTheClassifierWithoutUntrainingItFirst) {
    train(1);
    HookLog otherLog;
    vxClassifierTool other;
    other.train(provider, FakeParams(&otherLog, 2));
    otherLog.clear();
    other = tool;
    EXPECT_TRUE(otherLog.hooks().empty());
    EXPECT_TRUE(otherLog.alive.empty());
    EXPECT_TRUE(other == tool);
    EXPECT_EQ(&(other = tool), &other);
}

TEST_F(ClassifierTool, AssignmentToItselfEmptiesIt) {
    train();
    vxClassifierTool& alias = tool;
    tool = alias;
    EXPECT_FALSE(tool.isTrained());
    EXPECT_TRUE(log.alive.empty());
    EXPECT_ERROR(tool.run(pattern, result), vxClassifierDefs::NotTrained, notTrainedToRun);
}

TEST_F(ClassifierTool, ACopyOfAnUntrainedToolIsEmpty) {
    train();
    tool.untrain();
    const std::size_t alive = log.alive.size();
    vxClassifierTool copy(tool);
    EXPECT_EQ(log.alive.size(), alive) << "the untrained classifier was copied";
    EXPECT_FALSE(copy.isTrained());

    vxClassifierTool assigned;
    assigned.train(provider, FakeParams(&log));
    assigned = tool;
    EXPECT_EQ(log.alive.size(), alive);
    EXPECT_FALSE(assigned.isTrained());
}

TEST_F(ClassifierTool, UntrainsItsClassifierWhenItEnds) {
    {
        vxClassifierTool ending;
        ending.train(provider, FakeParams(&log));
        log.clear();
    }
    EXPECT_EQ(log.hooks(), Hooks{"untrain_"});
    EXPECT_TRUE(log.alive.empty());
}

TEST_F(ClassifierTool, EndsQuietlyWhenItsTechniqueFailsToForget) {
    {
        vxClassifierTool ending;
        ending.train(provider, FakeParams(&log));
        log.fail("untrain_");
    }
    EXPECT_TRUE(log.alive.empty());
}

TEST_F(ClassifierTool, ComparesWhatWasLearnt) {
    vxClassifierTool other;
    EXPECT_TRUE(tool == other);
    EXPECT_FALSE(tool != other);

    train(1);
    EXPECT_FALSE(tool == other);
    EXPECT_FALSE(other == tool);
    EXPECT_TRUE(tool != other);

    other.train(provider, FakeParams(&log, 1));
    EXPECT_TRUE(tool == other);
    other.train(provider, FakeParams(&log, 2));
    EXPECT_FALSE(tool == other);

    tool.untrain();
    other.untrain();
    EXPECT_TRUE(tool == other);
    EXPECT_TRUE(tool == vxClassifierTool()) << "an untrained and an empty one";
}

TEST_F(ClassifierTool, AsksItsOwnClassifierAboutTheOther) {
    train(1);
    vxClassifierTool other;
    other.train(provider, FakeParams(&log, 1));
    log.clear();
    EXPECT_TRUE(tool == other);
    EXPECT_EQ(log.only("isEqual_").params, other.trainParams().get());
}

TEST_F(ClassifierTool, UntrainsAndReleasesTheOldClassifierBeforeItTakesATreeOver) {
    /// Sees how many fakes are left when it is cloned.
    struct Watching : vxDecisionTreeLeaf {
        explicit Watching(const HookLog& seenLog) : vxDecisionTreeLeaf(vxClassifierResult()), log(seenLog) {}
        vxPtrHandle<vxDecisionTree> clone() const override {
            aliveAtClone = log.alive.size();
            return vxDecisionTreeLeaf::clone();
        }
        const HookLog& log;
        mutable std::size_t aliveAtClone = 99;
    };
    train();
    const Watching tree(log);
    tool.train(tree);
    EXPECT_EQ(log.hooks(), Hooks{"untrain_"});
    EXPECT_EQ(tree.aliveAtClone, 0U);
}

TEST_F(ClassifierTool, GivesItsParametersButHasNoTree) {
    train(4);
    const vxPtrHandle_const<vxClassifierTrainParams> params = tool.trainParams();
    EXPECT_EQ(dynamic_cast<const FakeParams&>(*params).value(), 4);
    EXPECT_EQ(params, tool.trainParams());
    EXPECT_ERROR(tool.decisionTree(), vxClassifierDefs::BadMethod,
                 L"Classifier tool was not trained using a decision tree.");
}

TEST_F(ClassifierTool, IsStoredAsAVersionAndAPointerToItsClassifier) {
    train(3);
    const test::Bytes stored = test::stored(tool);
    vxClassifierTool loaded;
    test::load(stored, loaded);
    EXPECT_TRUE(loaded.isTrained());
    EXPECT_EQ(test::stored(loaded), stored);

    // The same, put together by hand.
    vxPtrHandle<vx_Classifier> classifier;
    vxLoadingArchive loading(stored);
    unsigned char version = 1;
    loading || version || classifier;
    loading.finish();
    EXPECT_EQ(version, 0);
    EXPECT_EQ(test::archiveOf([&](vxArchive& archive) { archive || version || classifier; }), stored);
    EXPECT_EQ(dynamic_cast<const FakeClassifier&>(*classifier).learnt(), 3);
}

TEST_F(ClassifierTool, AnEmptyToolIsStoredAsANullPointer) {
    const test::Bytes stored = test::stored(tool);
    EXPECT_EQ(test::payload(stored), (test::Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0}));
    train();
    test::load(stored, tool);
    EXPECT_FALSE(tool.isTrained());
    EXPECT_TRUE(log.alive.empty());
}

TEST_F(ClassifierTool, LoadingReleasesTheOldClassifierFirst) {
    train();
    const test::Bytes stored = test::archiveOf([](vxArchive& archive) {
        unsigned char version = 0; // and nothing else
        archive || version;
    });
    vxLoadingArchive loading(stored);
    EXPECT_ERROR_CLASS(loading || tool, vxArchive::ShortData);
    EXPECT_TRUE(log.alive.empty());
    EXPECT_FALSE(tool.isTrained());
}

TEST_F(ClassifierTool, LoadingAnUnknownVersionNamesItsPlaceAndKeepsTheClassifier) {
    train();
    for (const unsigned char unknown : test::Bytes{1, 2, 255}) {
        const test::Bytes stored = test::archiveOf([&](vxArchive& archive) {
            unsigned char version = unknown;
            archive || version;
        });
        vxLoadingArchive loading(stored);
        EXPECT_UNKNOWN_VERSION(loading || tool, "clss/clastool/clastool", 896);
        EXPECT_TRUE(tool.isTrained());
    }
}

TEST_F(ClassifierTool, LoadingAnObjectThatIsNoClassifierLeavesItEmpty) {
    const vxPtrHandle<vxFeaturePattern> noClassifier(new vxFeaturePattern({1.0}, {}));
    const test::Bytes stored = test::archiveOf([&](vxArchive& archive) {
        unsigned char version = 0;
        vxPtrHandle<vxFeaturePattern> handle = noClassifier;
        archive || version || handle;
    });
    train();
    test::load(stored, tool);
    EXPECT_FALSE(tool.isTrained());
    EXPECT_TRUE(log.alive.empty());
}
