#include <vxclassifier/classifier_decision_tree.h>

#include "tests/clastool/tree/trees.h"
#include "tests/support/expect_error.h"
#include "tests/support/fake_technique.h"

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/diag_object.h>
#include <vxclassifier/platform/status.h>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace {

using test::always;
using test::has;
using test::leaf;
using test::patternOf;
using test::resultOf;
using test::Tree;

const wchar_t* const automatic = L"Automatic decision tree training is not implemented.";
const wchar_t* const incremental = L"Incremental decision tree training is not implemented.";

vx_ClassifierDecisionTree trainedWith(const Tree& tree) {
    vx_ClassifierDecisionTree classifier;
    classifier.trainManual(*tree);
    return classifier;
}

vxClassifierResult run(const vx_ClassifierDecisionTree& classifier, const vxFeaturePattern& pattern) {
    vxClassifierResult result = resultOf({77, 78}, 0.5);
    classifier.run(pattern, result);
    return result;
}

long sharesOf(const vxRepBase& object) {
    return vx_PtrHandleBase_RepAccessor::count(object);
}

TEST(ClassifierDecisionTree, IsUntrainedAtFirstAndHasNoTree) {
    const vx_ClassifierDecisionTree classifier;
    EXPECT_FALSE(classifier.isTrained());
    EXPECT_TRUE(classifier.decisionTree().isNull());
    const std::unique_ptr<vxPersistent> made(vx_ClassifierDecisionTree::make());
    EXPECT_FALSE(dynamic_cast<const vx_ClassifierDecisionTree&>(*made).isTrained());
}

TEST(ClassifierDecisionTree, KeepsACloneOfTheTree) {
    vxDecisionTreeLeaf tree(resultOf({1}));
    vx_ClassifierDecisionTree classifier;
    classifier.trainManual(tree);
    EXPECT_TRUE(classifier.isTrained());
    EXPECT_NE(classifier.decisionTree().get(), &tree);
    tree.classifierResult(resultOf({2}));
    EXPECT_EQ(run(classifier, patternOf({})), resultOf({1}));
}

TEST(ClassifierDecisionTree, AnyTreeWillDo) {
    vx_ClassifierDecisionTree classifier;
    classifier.trainManual(vxDecisionTreeNode());
    EXPECT_EQ(run(classifier, patternOf({1.0})), vxClassifierResult());
}

TEST(ClassifierDecisionTree, TrainingAgainReplacesTheTree) {
    vx_ClassifierDecisionTree classifier = trainedWith(leaf({1}));
    const auto old = classifier.decisionTree();
    classifier.trainManual(*leaf({2}));
    EXPECT_EQ(run(classifier, patternOf({})), resultOf({2}));
    EXPECT_EQ(sharesOf(*old), 1);
}

TEST(ClassifierDecisionTree, UntrainingReleasesTheTree) {
    vx_ClassifierDecisionTree classifier = trainedWith(leaf({1}));
    const auto tree = classifier.decisionTree();
    classifier.untrain();
    EXPECT_FALSE(classifier.isTrained());
    EXPECT_TRUE(classifier.decisionTree().isNull());
    EXPECT_EQ(sharesOf(*tree), 1);
}

TEST(ClassifierDecisionTree, AFailedCloneLeavesItUntrained) {
    struct Uncloneable : test::GivenTree {
        Uncloneable() : GivenTree(nullptr) {}
        vxPtrHandle<vxDecisionTree> clone() const override { throw std::runtime_error("no clone"); }
    };
    vx_ClassifierDecisionTree classifier = trainedWith(leaf({1}));
    EXPECT_THROW(classifier.trainManual(Uncloneable()), std::runtime_error);
    EXPECT_FALSE(classifier.isTrained());
}

TEST(ClassifierDecisionTree, ASingleLeafAnswersForEveryPattern) {
    const auto classifier = trainedWith(leaf({4, 2}));
    EXPECT_EQ(run(classifier, patternOf({})), resultOf({4, 2}));
    EXPECT_EQ(run(classifier, patternOf({1.0, test::nan}, {0})), resultOf({4, 2}));
}

TEST(ClassifierDecisionTree, ARunFollowsThePredicatesAndReplacesTheResult) {
    const auto classifier = trainedWith(test::node(has(0), test::node(has(1), leaf({11}), leaf({10})),
                                                   test::node(has(1), leaf({1}), leaf({0}))));
    EXPECT_EQ(run(classifier, patternOf({1.0, 1.0})), resultOf({11}));
    EXPECT_EQ(run(classifier, patternOf({1.0})), resultOf({10}));
    EXPECT_EQ(run(classifier, patternOf({1.0, 1.0}, {0})), resultOf({1}));
    EXPECT_EQ(run(classifier, patternOf({})), resultOf({0}));
}

TEST(ClassifierDecisionTree, TheStoredResultIsNotComputedAnew) {
    const vxClassifierResult stored = test::archivedResultOf({3, 3, -1});
    vx_ClassifierDecisionTree classifier;
    classifier.trainManual(vxDecisionTreeLeaf(stored));
    EXPECT_EQ(run(classifier, patternOf({})), stored);
}

TEST(ClassifierDecisionTree, AnInvalidMeasurementLeadsToTheFalseBranch) {
    const vxDecisionTreeNode range(vxRangePredicate(vxRange::FullRange(), {0}), *leaf({1}), *leaf({0}));
    const vxDecisionTreeNode comparison(vxComparisonPredicate(0, 1), *leaf({1}), *leaf({0}));
    for (const vxDecisionTree* tree : {&range, &comparison}) {
        vx_ClassifierDecisionTree classifier;
        classifier.trainManual(*tree);
        EXPECT_EQ(run(classifier, patternOf({2.0, 1.0})), resultOf({1}));
        EXPECT_EQ(run(classifier, patternOf({2.0, 1.0}, {0})), resultOf({0}));
    }
}

TEST(ClassifierDecisionTree, ADerivedNodeOrLeafIsWalkedLikeAnyOther) {
    struct OwnLeaf : vxDecisionTreeLeaf {
        using vxDecisionTreeLeaf::vxDecisionTreeLeaf;
        vxPtrHandle<vxDecisionTree> clone() const override { return Tree(new OwnLeaf(*this)); }
    };
    struct OwnNode : vxDecisionTreeNode {
        using vxDecisionTreeNode::vxDecisionTreeNode;
        vxPtrHandle<vxDecisionTree> clone() const override { return Tree(new OwnNode(*this)); }
    };
    vx_ClassifierDecisionTree classifier;
    classifier.trainManual(OwnNode(*always(), OwnLeaf(resultOf({1})), *leaf({2})));
    EXPECT_EQ(run(classifier, patternOf({})), resultOf({1}));
}

TEST(ClassifierDecisionTree, EachStepAsksForAnInterruption) {
    struct Check {
        static long count(void* context) {
            Check& check = *static_cast<Check*>(context);
            return ++check.calls == check.failAt ? check.status : vxStatus::success;
        }
        int calls = 0;
        int failAt = 0; // never
        long status = vsys_attention_cancelled;
    };
    const auto classifier =
        trainedWith(test::node(always(), test::node(always(), leaf({1}), leaf({2})), leaf({3})));
    Check check;
    const vxAttentionScope scope(&Check::count, &check);
    EXPECT_EQ(run(classifier, patternOf({})), resultOf({1}));
    EXPECT_EQ(check.calls, 3); // two nodes and a leaf
    for (int failAt = 1; failAt <= 3; ++failAt) {
        check = Check();
        check.failAt = failAt;
        vxClassifierResult result = resultOf({77});
        EXPECT_THROW(classifier.run(patternOf({}), result), vxInterrupted);
        EXPECT_EQ(result, resultOf({77}));
        EXPECT_EQ(check.calls, failAt);
    }
    check = Check();
    check.failAt = 2;
    check.status = vxStatus::failure(1000, 3);
    EXPECT_THROW(run(classifier, patternOf({})), vxStatusFailure);
}

TEST(ClassifierDecisionTree, AnInterruptionComesBeforeAPredicateThatIsMissing) {
    const auto classifier = trainedWith(test::node(nullptr, nullptr, nullptr));
    vxCancelFlag cancel;
    const vxAttentionScope scope(cancel);
    EXPECT_THROW(run(classifier, patternOf({})), vxBadPointer);
    cancel.set();
    EXPECT_THROW(run(classifier, patternOf({})), vxInterrupted);
}

TEST(ClassifierDecisionTree, RunningTakesNoSharesOfTheTree) {
    /// Notes how many shares the tree below it has while a run passes by.
    struct Counting : vxPredicateFunction {
        explicit Counting(const vxDecisionTree* below) : below_(below) {}
        bool outcome(const vxFeaturePattern&) const override {
            EXPECT_EQ(sharesOf(*below_), 2);
            return true;
        }
        vxPtrHandle<vxPredicateFunction> clone() const override {
            return vxPtrHandle<vxPredicateFunction>(new Counting(*this));
        }
        const vxDecisionTree* below_;
    };
    const Tree below = leaf({1}); // one share here, one in the node
    const test::Predicate predicate(new Counting(below.get()));
    const auto classifier = trainedWith(test::node(predicate, below, leaf({2})));
    EXPECT_EQ(run(classifier, patternOf({})), resultOf({1}));
}

TEST(ClassifierDecisionTree, UntrainedItCannotRun) {
    EXPECT_ERROR(run(vx_ClassifierDecisionTree(), patternOf({})), vxClassifierDefs::NotTrained,
                 L"Classifier tool must be trained before running.");
}

// What other techniques can do and this one cannot.

TEST(ClassifierDecisionTree, AutomaticTrainingThrowsAndLeavesItUntrained) {
    vx_ClassifierDecisionTree classifier = trainedWith(leaf({1}));
    EXPECT_ERROR(classifier.train(vxClassifierDataProviderMemory(), test::FakeParams()),
                 vxClassifierDefs::NotImplemented, automatic);
    EXPECT_FALSE(classifier.isTrained());
}

TEST(ClassifierDecisionTree, StartingIncrementalTrainingThrowsAndLeavesItUntrained) {
    vx_ClassifierDecisionTree classifier = trainedWith(leaf({1}));
    EXPECT_ERROR(classifier.trainStart(test::FakeParams()), vxClassifierDefs::NotImplemented, incremental);
    EXPECT_FALSE(classifier.isTrained());
}

TEST(ClassifierDecisionTree, IncrementalTrainingThrowsAndKeepsTheTree) {
    vx_ClassifierDecisionTree classifier = trainedWith(leaf({1}));
    EXPECT_ERROR(classifier.trainIncremental(patternOf({}), 1), vxClassifierDefs::NotImplemented,
                 incremental);
    EXPECT_TRUE(classifier.isTrained());
    EXPECT_ERROR(vx_ClassifierDecisionTree().trainIncremental(patternOf({}), 1), vxClassifierDefs::NotTrained,
                 L"Classifier tool must be trained before incremental training.");
}

TEST(ClassifierDecisionTree, RetrainingIsRefusedForWantOfParameters) {
    vx_ClassifierDecisionTree classifier = trainedWith(leaf({1}));
    EXPECT_ERROR(classifier.retrain(test::FakeParams()), vxClassifierDefs::BadMethod,
                 L"Cannot retrain with a different classification technique.");
    EXPECT_TRUE(classifier.isTrained());
    EXPECT_ERROR(vx_ClassifierDecisionTree().retrain(test::FakeParams()), vxClassifierDefs::NotTrained,
                 L"Classifier tool must be trained before retraining.");
}

TEST(ClassifierDecisionTree, ThereAreNoTrainingParameters) {
    EXPECT_ERROR(trainedWith(leaf({1})).trainParams(), vxClassifierDefs::BadMethod,
                 L"Classifier tool was not automatically trained.");
    EXPECT_ERROR(vx_ClassifierDecisionTree().trainParams(), vxClassifierDefs::NotTrained,
                 L"Classifier tool must be trained before requesting the training parameters.");
}

/// Calls the hooks as a derived class may.
struct Hooks : vx_ClassifierDecisionTree {
    using vx_ClassifierDecisionTree::checkRunnable_;
    using vx_ClassifierDecisionTree::isTrained_;
    using vx_ClassifierDecisionTree::retrain_;
    using vx_ClassifierDecisionTree::run_;
    using vx_ClassifierDecisionTree::train_;
    using vx_ClassifierDecisionTree::trainIncremental_;
    using vx_ClassifierDecisionTree::trainStart_;
    using vx_ClassifierDecisionTree::untrain_;
};

TEST(ClassifierDecisionTree, TheHooksOfTrainingThrowWhateverTheState) {
    Hooks hooks;
    EXPECT_ERROR(hooks.train_(vxClassifierDataProviderMemory(), test::FakeParams()),
                 vxClassifierDefs::NotImplemented, automatic);
    EXPECT_ERROR(hooks.retrain_(test::FakeParams()), vxClassifierDefs::NotImplemented, automatic);
    EXPECT_ERROR(hooks.trainStart_(test::FakeParams()), vxClassifierDefs::NotImplemented, incremental);
    EXPECT_ERROR(hooks.trainIncremental_(patternOf({}), 1), vxClassifierDefs::NotImplemented, incremental);
}

TEST(ClassifierDecisionTree, TheHooksOfTheStateFollowTheTree) {
    Hooks hooks;
    vxClassifierResult result;
    EXPECT_FALSE(hooks.isTrained_());
    EXPECT_NO_THROW(hooks.checkRunnable_());
    EXPECT_THROW(hooks.run_(patternOf({}), result), vxBadPointer);
    hooks.trainManual(*leaf({1}));
    EXPECT_TRUE(hooks.isTrained_());
    EXPECT_NO_THROW(hooks.checkRunnable_());
    hooks.run_(patternOf({}), result);
    EXPECT_EQ(result, resultOf({1}));
    hooks.untrain_();
    EXPECT_FALSE(hooks.isTrained_());
}

// Recording.

struct Recorded {
    std::string hook;
    vxDiagObject* diag;
    unsigned long flags;
    bool trained;
};

class Recording : public vx_ClassifierDecisionTree {
public:
    mutable std::vector<Recorded> calls;

private:
    void record(const char* hook, vxDiagObject* diag, unsigned long flags) const {
        calls.push_back(Recorded{hook, diag, flags, isTrained()});
    }
    void recordTrainInputs_(vxDiagObject* diag, unsigned long flags) const override {
        record("inputs", diag, flags);
    }
    void recordTrainDetails_(vxDiagObject* diag, unsigned long flags) const override {
        record("details", diag, flags);
    }
    void recordTrainResults_(vxDiagObject* diag, unsigned long flags) const override {
        record("results", diag, flags);
    }
};

TEST(ClassifierDecisionTree, TrainingRecordsToTheDestinationButTheDetailsToTheCallersObject) {
    vxDiagObject destination;
    vxDiagObject diag;
    diag.destination(&destination);
    diag.passedFlags(6);
    Recording classifier;
    classifier.trainManual(*leaf({1}), &diag, 7);
    ASSERT_EQ(classifier.calls.size(), 3U);
    EXPECT_EQ(classifier.calls[0].hook, "inputs");
    EXPECT_EQ(classifier.calls[0].diag, &destination);
    EXPECT_EQ(classifier.calls[1].hook, "details");
    EXPECT_EQ(classifier.calls[1].diag, &diag);
    EXPECT_EQ(classifier.calls[2].hook, "results");
    EXPECT_EQ(classifier.calls[2].diag, &destination);
    for (const Recorded& call : classifier.calls) {
        EXPECT_EQ(call.flags, 6U);
        EXPECT_TRUE(call.trained); // the tree is there before anything is recorded
    }
}

TEST(ClassifierDecisionTree, RecordsNothingByItself) {
    vxDiagObject diag;
    vx_ClassifierDecisionTree classifier;
    EXPECT_NO_THROW(classifier.trainManual(*leaf({1}), &diag, ~0UL));
    vxClassifierResult result;
    EXPECT_NO_THROW(classifier.run(patternOf({}), result, &diag, ~0UL));
    EXPECT_EQ(result, resultOf({1}));
}

// Copies and comparisons.

TEST(ClassifierDecisionTree, CopiesShareTheTree) {
    const auto classifier = trainedWith(leaf({1}));
    const vx_ClassifierDecisionTree copy(classifier);
    EXPECT_EQ(copy.decisionTree(), classifier.decisionTree());
    const vxPtrHandle<vx_Classifier> clone = classifier.clone();
    EXPECT_EQ(dynamic_cast<const vx_ClassifierDecisionTree&>(*clone).decisionTree(),
              classifier.decisionTree());
    vx_ClassifierDecisionTree assigned = trainedWith(leaf({2}));
    EXPECT_EQ(&(assigned = classifier), &assigned);
    EXPECT_EQ(assigned.decisionTree(), classifier.decisionTree());
    EXPECT_EQ(sharesOf(*classifier.decisionTree()), 4);
}

TEST(ClassifierDecisionTree, TrainingACopyDoesNotShowInTheOther) {
    const auto classifier = trainedWith(leaf({1}));
    vx_ClassifierDecisionTree copy(classifier);
    copy.trainManual(*leaf({2}));
    EXPECT_EQ(run(classifier, patternOf({})), resultOf({1}));
}

TEST(ClassifierDecisionTree, IsEquivalentToOneWithAnEqualTree) {
    const auto classifier = trainedWith(leaf({1}));
    EXPECT_TRUE(classifier.isEquivalent(trainedWith(leaf({1}))));
    EXPECT_FALSE(classifier.isEquivalent(trainedWith(leaf({2}))));
    EXPECT_TRUE(classifier == trainedWith(leaf({1})));
    EXPECT_FALSE(classifier == trainedWith(leaf({2})));
    EXPECT_FALSE(classifier != trainedWith(leaf({1})));
    EXPECT_TRUE(classifier != trainedWith(leaf({2})));
}

TEST(ClassifierDecisionTree, ATrainedAndAnUntrainedOneAreNotEquivalent) {
    const auto trained = trainedWith(leaf({1}));
    const vx_ClassifierDecisionTree untrained;
    EXPECT_FALSE(trained.isEquivalent(untrained));
    EXPECT_FALSE(untrained.isEquivalent(trained));
    EXPECT_FALSE(trained == untrained);
    EXPECT_FALSE(untrained == trained);
}

TEST(ClassifierDecisionTree, ComparingTwoUntrainedOnesThrows) {
    const vx_ClassifierDecisionTree a;
    const vx_ClassifierDecisionTree b;
    EXPECT_THROW(a.isEquivalent(b), vxBadPointer);
    EXPECT_THROW(static_cast<void>(a == b), vxBadPointer);
    EXPECT_THROW(a.isEquivalent(a), vxBadPointer);
}

TEST(ClassifierDecisionTree, IsNotEquivalentToAClassifierOfAnotherTechnique) {
    EXPECT_FALSE(vx_ClassifierDecisionTree().isEquivalent(test::FakeClassifier()));
    test::FakeClassifier other;
    other.trainManual(1);
    EXPECT_FALSE(trainedWith(leaf({1})).isEquivalent(other));
}

/// Says which of two trees was asked.
struct Asked : vxDecisionTreeLeaf {
    explicit Asked(bool answer) : vxDecisionTreeLeaf(vxClassifierResult()), answer_(answer) {}
    vxPtrHandle<vxDecisionTree> clone() const override { return Tree(new Asked(*this)); }
    bool isEqual(const vxDecisionTree&) const override { return answer_; }
    bool answer_;
};

TEST(ClassifierDecisionTree, IsEquivalentAsksTheOtherTreeAndTheOperatorTheOwn) {
    const auto yes = trainedWith(Tree(new Asked(true)));
    const auto no = trainedWith(Tree(new Asked(false)));
    EXPECT_TRUE(no.isEquivalent(yes));
    EXPECT_FALSE(yes.isEquivalent(no));
    EXPECT_TRUE(yes == no);
    EXPECT_FALSE(no == yes);
}

} // namespace
