#include "tests/clastool/knn/knn_fixtures.h"
#include "tests/support/expect_error.h"
#include "tests/support/fake_technique.h"

#include <typeinfo>

namespace {

using Params = vxClassifierTrainParamsKNN;
using test::labels;
using test::line;
using test::OpenKNN;
using test::pattern;
using test::run;
using test::trained;
using Labels = std::vector<long>;

TEST(ClassifierKNNValue, HasAStoreOfItsOwnInEachCopy) {
    OpenKNN classifier = trained(line({0.0}), Params(1));
    OpenKNN copy(classifier);
    OpenKNN assigned;
    assigned = classifier;
    const vxPtrHandle<vx_Classifier> clone = classifier.clone();
    classifier.trainIncremental(*pattern({9.0}), 4);
    EXPECT_EQ(labels(run(classifier, {8.0})), Labels{4});
    for (const vx_Classifier* other :
         {static_cast<vx_Classifier*>(&copy), static_cast<vx_Classifier*>(&assigned), clone.get()}) {
        EXPECT_EQ(labels(run(*other, {8.0})), Labels{0});
    }
    copy.trainIncremental(*pattern({9.0}), 5);
    EXPECT_EQ(labels(run(classifier, {8.0})), Labels{4});
    EXPECT_EQ(labels(run(assigned, {8.0})), Labels{0});
}

TEST(ClassifierKNNValue, CopiesTheWorkingParameters) {
    const OpenKNN classifier = trained(line({0.0, 9.0}), Params(2));
    const OpenKNN copy(classifier);
    OpenKNN assigned = trained(line({5.0}), Params(1));
    assigned = classifier;
    for (const OpenKNN* other : {&copy, static_cast<const OpenKNN*>(&assigned)}) {
        EXPECT_TRUE(*other == classifier);
        EXPECT_EQ(labels(run(*other, {1.0})), (Labels{0, 1}));
    }
}

TEST(ClassifierKNNValue, CopiesTheUntrainedStateToo) {
    const OpenKNN untrained;
    OpenKNN assigned = trained(line({5.0}), Params(1));
    assigned = untrained;
    EXPECT_FALSE(assigned.isTrained());
    EXPECT_FALSE(OpenKNN(untrained).isTrained());
    EXPECT_FALSE(untrained.clone()->isTrained());
}

TEST(ClassifierKNNValue, SurvivesAssignmentToItself) {
    OpenKNN classifier = trained(line({0.0, 9.0}), Params(2));
    const OpenKNN& alias = classifier;
    classifier = alias;
    EXPECT_EQ(labels(run(classifier, {1.0})), (Labels{0, 1}));
    EXPECT_TRUE(classifier == trained(line({0.0, 9.0}), Params(2)));
}

TEST(ClassifierKNNValue, ClonesItsOwnClass) {
    const vx_ClassifierKNN classifier = trained(line({0.0}), Params(1));
    const vxPtrHandle<vx_Classifier> clone = classifier.clone();
    const vx_Classifier& copy = *clone;
    EXPECT_TRUE(typeid(copy) == typeid(vx_ClassifierKNN));
    EXPECT_TRUE(classifier.isEquivalent(copy));
}

TEST(ClassifierKNNValue, IsEqualByStateParametersAndData) {
    const OpenKNN classifier = trained(line({0.0, 1.0}), Params(2));
    EXPECT_TRUE(classifier == trained(line({0.0, 1.0}), Params(2)));
    EXPECT_FALSE(classifier != trained(line({0.0, 1.0}), Params(2)));
    EXPECT_FALSE(classifier == trained(line({0.0, 1.0}), Params(3)));
    EXPECT_FALSE(classifier == trained(line({0.0, 2.0}), Params(2)));
    EXPECT_TRUE(classifier != trained(line({0.0, 2.0}), Params(2)));
    EXPECT_FALSE(classifier == OpenKNN());
    EXPECT_FALSE(OpenKNN() == classifier);
    EXPECT_TRUE(OpenKNN() == OpenKNN());
}

TEST(ClassifierKNNValue, DoesNotCompareTheWorkingParameters) {
    const OpenKNN classifier = trained(line({0.0, 9.0}), Params(2));
    OpenKNN other = classifier;
    other.retrain_(Params(1)); // past the frame, which keeps the old parameters
    EXPECT_EQ(labels(run(other, {1.0})), Labels{0});
    EXPECT_TRUE(classifier == other);
}

TEST(ClassifierKNNValue, IsEquivalentToItsOwnClassOnly) {
    const OpenKNN classifier = trained(line({0.0}), Params(1));
    const test::FakeClassifier fake;
    EXPECT_TRUE(classifier.isEquivalent(trained(line({0.0}), Params(1))));
    EXPECT_FALSE(classifier.isEquivalent(trained(line({0.0}), Params(2))));
    EXPECT_FALSE(OpenKNN().isEquivalent(fake));
}

TEST(ClassifierKNNValue, IsAskedAboutTheOtherByTheOther) {
    const auto own = std::make_shared<test::MetricScript>();
    const auto others = std::make_shared<test::MetricScript>();
    const vxClassifierCosts costs(1.0);
    const OpenKNN classifier = trained(line({0.0}), Params(1, test::ScriptedMetric(own), costs));
    const OpenKNN other = trained(line({0.0}), Params(1, test::ScriptedMetric(others), costs));
    // `==` asks the right side's parameters about the left side's.
    EXPECT_TRUE(classifier == other);
    EXPECT_EQ(own->asking, nullptr);
    EXPECT_NE(others->asking, nullptr);
    // isEquivalent turns that round once more.
    others->asking = nullptr;
    EXPECT_TRUE(classifier.isEquivalent(other));
    EXPECT_NE(own->asking, nullptr);
    EXPECT_EQ(others->asking, nullptr);
}

/// Says that it is trained although it has no store.
struct Pretender : OpenKNN {
    bool isTrained_() const override { return true; }
};

TEST(ClassifierKNNValue, ThrowsWhereAMissingStoreIsToBeCompared) {
    const Pretender empty;
    Pretender full;
    full.train_(line({0.0}), Params(1));
    EXPECT_ERROR_CLASS(static_cast<void>(empty == full), vxBadPointer);
    EXPECT_ERROR_CLASS(static_cast<void>(full == empty), vxBadPointer);
}

} // namespace
