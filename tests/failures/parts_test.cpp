#include "tests/failures/techniques.h"
#include "tests/support/archives.h"

#include <vxclassifier/classifier_knn.h>

#include <vector>

// Operations of the techniques' parts that a tool does not offer.

namespace {

using namespace failures;

vxClassifierTrainParamsKNN params() {
    return vxClassifierTrainParamsKNN(3, CallerMetric(), vxClassifierCosts(1.0));
}

vx_ClassifierKNN trainedNeighbors() {
    vx_ClassifierKNN classifier;
    classifier.train(trainingData(), params());
    return classifier;
}

struct LearnOneMore {
    vx_ClassifierKNN classifier = trainedNeighbors();
    vxFeaturePattern pattern{{1.0, 1.0, 1.0}, {}};
    test::Bytes before = test::stored(classifier);

    void attempt() { classifier.trainIncremental(pattern, 5); }
    void expectDone() const {
        vx_ClassifierKNN expected = trainedNeighbors();
        expected.trainIncremental(pattern, 5);
        EXPECT_TRUE(classifier == expected);
    }
    void expectFailed() const { EXPECT_EQ(test::stored(classifier), before); }
};

TEST(FailingIncrementalTraining, LearnsThePatternOrNothing) {
    failEachStepOf<LearnOneMore>(allocationFaults());
}

struct BeginIncrementalTraining {
    vx_ClassifierKNN classifier = trainedNeighbors();
    CallerParamsKNN fresh{params()};
    test::Bytes started = startedBytes();

    void attempt() { classifier.trainStart(fresh); }
    void expectDone() const { EXPECT_EQ(test::stored(classifier), started); }
    void expectFailed() const {
        EXPECT_FALSE(classifier.isTrained());
        EXPECT_EQ(test::stored(classifier), test::stored(vx_ClassifierKNN())) << "and has no parameters";
    }

private:
    test::Bytes startedBytes() const {
        vx_ClassifierKNN other;
        other.trainStart(fresh);
        return test::stored(other);
    }
};

TEST(FailingIncrementalTraining, HasNotBegunWithoutParameters) {
    failEachStepOf<BeginIncrementalTraining>(allocationFaults());
    failEachStepOf<BeginIncrementalTraining>(callFaults());
}

vxDecisionTreeLeaf leaf(long label) {
    return vxDecisionTreeLeaf(vxClassifierResult({{label, 1.0, 1.0, 0.5}}, 0.0));
}

/// One subtree on both sides, so that lists and comparisons remember what they have met.
vxDecisionTreeNode sharingTree() {
    const CallerNode low(vxDecisionTreeNode(CallerPredicate(), CallerLeaf(leaf(4)), leaf(6)));
    const vxDecisionTreeNode middle(vxComparisonPredicate(0, 1), low, CallerLeaf(leaf(8)));
    return vxDecisionTreeNode(CallerPredicate(), middle, middle);
}

struct ListLabels {
    vxDecisionTreeNode tree = sharingTree();
    std::vector<long> labels;
    void attempt() { labels = tree.categoryLabels(); }
    void expectDone() const { EXPECT_EQ(labels, (std::vector<long>{8, 6, 4})); }
    void expectFailed() const { EXPECT_TRUE(labels.empty()); }
};

struct CompareTrees {
    vxDecisionTreeNode tree = sharingTree();
    vxDecisionTreeNode other = sharingTree();
    bool equal = false;
    void attempt() { equal = tree == other; }
    void expectDone() const { EXPECT_TRUE(equal); }
    void expectFailed() const { EXPECT_FALSE(equal); }
};

struct ReplaceBranch {
    vxDecisionTreeNode before = sharingTree();
    vxDecisionTreeNode tree = before;
    CallerNode branch{sharingTree()};
    void attempt() { tree.trueTree(branch); }
    void expectDone() const { EXPECT_TRUE(branch == *tree.trueTree()); }
    void expectFailed() const { EXPECT_TRUE(tree == before); }
};

TEST(FailingTree, AnswersWhollyOrNotAtAll) {
    failEachStepOf<ListLabels>(allocationFaults());
    failEachStepOf<ListLabels>(callFaults());
    failEachStepOf<CompareTrees>(allocationFaults());
    failEachStepOf<CompareTrees>(callFaults());
}

TEST(FailingTree, KeepsABranchThatCouldNotBeReplaced) {
    failEachStepOf<ReplaceBranch>(allocationFaults());
    failEachStepOf<ReplaceBranch>(callFaults());
}

} // namespace
