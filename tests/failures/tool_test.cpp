#include "tests/failures/tool_scenarios.h"

// A tool of each technique, each operation failing at its first, its second, ... step.

namespace {

using namespace failures;

template <class Technique>
class FailingTool : public ::testing::Test {};
using Techniques = ::testing::Types<JointNormal, Binomial, Neighbors, OwnTrees, CallersNormal,
                                    CallersNeighbors, CallersTrees>;
TYPED_TEST_SUITE(FailingTool, Techniques, NameOfTechnique);

template <class Technique>
class FailingRetraining : public ::testing::Test {};
using Retrainable = ::testing::Types<JointNormal, Binomial, Neighbors, CallersNormal, CallersNeighbors>;
TYPED_TEST_SUITE(FailingRetraining, Retrainable, NameOfTechnique);

template <class Technique>
class FailingCaller : public ::testing::Test {};
using OfCallers = ::testing::Types<CallersNormal, CallersNeighbors, CallersTrees>;
TYPED_TEST_SUITE(FailingCaller, OfCallers, NameOfTechnique);

TYPED_TEST(FailingTool, TrainingWithoutMemoryLeavesItUntrainedOrTrainedAnew) {
    failEachStepOf<Train<TypeParam>>(allocationFaults());
}

TYPED_TEST(FailingTool, TrainingWithoutMemoryAndWithoutTrialLeavesItUntrained) {
    failEachStepOf<TrainWithoutTrial<TypeParam>>(allocationFaults());
}

TYPED_TEST(FailingRetraining, WithoutMemoryKeepsTheOldParametersUnlessTheTrialFailed) {
    failEachStepOf<Retrain<TypeParam>>(allocationFaults());
}

TYPED_TEST(FailingRetraining, WithoutMemoryAndWithoutTrialChangesNothing) {
    failEachStepOf<RetrainWithoutTrial<TypeParam>>(allocationFaults());
}

TYPED_TEST(FailingTool, RunningWithoutMemoryKeepsTheCallersResult) {
    failEachStepOf<Run<TypeParam>>(allocationFaults());
}

TYPED_TEST(FailingTool, StoringWithoutMemoryGivesNothing) {
    failEachStepOf<Store<TypeParam>>(allocationFaults());
}

TYPED_TEST(FailingTool, LoadingWithoutMemoryGivesAllOrNothing) {
    failEachStepOf<Load<TypeParam>>(allocationFaults());
}

TYPED_TEST(FailingTool, CopyingWithoutMemoryKeepsTheOriginal) {
    failEachStepOf<Copy<TypeParam>>(allocationFaults());
}

TYPED_TEST(FailingTool, AssigningWithoutMemoryLeavesItEmpty) {
    failEachStepOf<Assign<TypeParam>>(allocationFaults());
}

TYPED_TEST(FailingTool, ComparingWithoutMemoryGivesNoAnswer) {
    for (const Fault& fault : allocationFaults()) {
        failEachStep<Compare<TypeParam>>(fault); // most comparisons need no memory
    }
}

TYPED_TEST(FailingTool, AnInterruptedRunKeepsTheCallersResult) {
    failEachStepOf<Run<TypeParam>>(interruptionFaults());
}

// The trial run of the nearest neighbours asks only whether there are any.
template <class Technique>
class FailingTrial : public ::testing::Test {};
using WithTrialRun = ::testing::Types<JointNormal, Binomial, CallersNormal>;
TYPED_TEST_SUITE(FailingTrial, WithTrialRun, NameOfTechnique);

TYPED_TEST(FailingTrial, KeepsTheNewParametersWhenInterrupted) {
    failEachStepOf<Retrain<TypeParam>>(interruptionFaults());
}

TYPED_TEST(FailingTrial, KeepsTheTrainingWhenInterrupted) {
    failEachStepOf<Train<TypeParam>>(interruptionFaults());
}

TYPED_TEST(FailingCaller, LeavesATrainedToolUntrainedOrTrainedAnew) {
    failEachStepOf<Train<TypeParam>>(callFaults());
    failEachStepOf<TrainWithoutTrial<TypeParam>>(callFaults());
}

TYPED_TEST(FailingCaller, KeepsTheResultOfARun) {
    for (const Fault& fault : callFaults()) {
        const bool calls = !std::is_same_v<TypeParam, CallersNormal>; // nothing of the caller's is in a run
        EXPECT_EQ(failEachStep<Run<TypeParam>>(fault) > 0, calls);
    }
}

TYPED_TEST(FailingCaller, StoresNothing) {
    failEachStepOf<Store<TypeParam>>(callFaults());
}

TYPED_TEST(FailingCaller, LoadsAllOrNothing) {
    failEachStepOf<Load<TypeParam>>(callFaults());
}

TYPED_TEST(FailingCaller, IsNoMatterForCopies) {
    for (const Fault& fault : callFaults()) {
        EXPECT_EQ(failEachStep<Copy<TypeParam>>(fault), 0) << "copies share what the caller gave";
        EXPECT_EQ(failEachStep<Assign<TypeParam>>(fault), 0);
    }
}

TYPED_TEST(FailingCaller, GivesNoAnswerToAComparison) {
    failEachStepOf<Compare<TypeParam>>(callFaults());
}

template <class Technique>
class FailingCallersParams : public ::testing::Test {};
using OfCallersParams = ::testing::Types<CallersNormal, CallersNeighbors>;
TYPED_TEST_SUITE(FailingCallersParams, OfCallersParams, NameOfTechnique);

TYPED_TEST(FailingCallersParams, KeepTheOldOnesInARetraining) {
    failEachStepOf<Retrain<TypeParam>>(callFaults());
    failEachStepOf<RetrainWithoutTrial<TypeParam>>(callFaults());
}

} // namespace
