#ifndef TESTS_FAILURES_CALLERS_H
#define TESTS_FAILURES_CALLERS_H

#include "tests/failures/faults.h"

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_train_params_bayesian.h>
#include <vxclassifier/classifier_train_params_knn.h>
#include <vxclassifier/comparison_predicate.h>
#include <vxclassifier/decision_tree_leaf.h>
#include <vxclassifier/decision_tree_node.h>
#include <vxclassifier/feature_score.h>
#include <vxclassifier/pattern_distance_metric_norm.h>

// Classes as a caller of the library may write them. They do what their base classes do, but each of their
// operations may fail; their destructors, as all destructors, do not.
namespace failures {

class CallerProvider : public vxClassifierDataProviderMemory {
public:
    explicit CallerProvider(const vxClassifierDataProviderMemory& data)
        : vxClassifierDataProviderMemory(data) {}

    std::wstring name() const override { return called()->vxClassifierDataProviderMemory::name(); }
    std::wstring description() const override {
        return called()->vxClassifierDataProviderMemory::description();
    }
    long numMeasurements() const override {
        return called()->vxClassifierDataProviderMemory::numMeasurements();
    }
    long numPatterns() const override { return called()->vxClassifierDataProviderMemory::numPatterns(); }
    vxPtrHandle_const<vxFeaturePattern> featurePattern(long index) const override {
        return called()->vxClassifierDataProviderMemory::featurePattern(index);
    }
    long categoryLabel(long index) const override {
        return called()->vxClassifierDataProviderMemory::categoryLabel(index);
    }

private:
    const CallerProvider* called() const {
        callerIsCalled();
        return this;
    }
};

class CallerMetric : public vxPatternDistanceMetricNorm {
public:
    CallerMetric() : vxPatternDistanceMetricNorm(1.0) {}
    static vxPersistent* make() { return new CallerMetric; }

    double distance(const vxFeaturePattern& p1, const vxFeaturePattern& p2) const override {
        callerIsCalled();
        return vxPatternDistanceMetricNorm::distance(p1, p2);
    }
    vxPtrHandle<vxPatternDistanceMetric> clone() const override {
        callerIsCalled();
        return vxPtrHandle<vxPatternDistanceMetric>(new CallerMetric(*this));
    }
    bool isEquivalent(const vxPatternDistanceMetric& other) const override {
        callerIsCalled();
        return vxPatternDistanceMetricNorm::isEquivalent(other);
    }

protected:
    void dispatchSerialize(vxArchive& archive) override {
        callerIsCalled();
        vxPatternDistanceMetricNorm::dispatchSerialize(archive);
    }
};

/// Parameters derived from those of a technique.
template <class Params>
class CallerParams : public Params {
public:
    explicit CallerParams(const Params& params) : Params(params) {}
    static vxPersistent* make() {
        const vxPtrHandle<Made> made(dynamic_cast<Made*>(Params::make()));
        return new CallerParams(dynamic_cast<const Params&>(*made));
    }

    vxPtrHandle<vxClassifierTrainParams> clone() const override {
        callerIsCalled();
        return vxPtrHandle<vxClassifierTrainParams>(new CallerParams(*this));
    }

protected:
    bool isEqual_(const vxClassifierTrainParams& other) const override {
        callerIsCalled();
        return Params::isEqual_(other);
    }
    bool isSameTechnique_(const vxClassifierTrainParams& other) const override {
        callerIsCalled();
        return Params::isSameTechnique_(other);
    }
    vx_Classifier* newClassifier_() const override {
        callerIsCalled();
        return Params::newClassifier_();
    }
    void dispatchSerialize(vxArchive& archive) override {
        callerIsCalled();
        Params::dispatchSerialize(archive);
    }

private:
    using Made = vxClassifierTrainParams;
};

using CallerParamsKNN = CallerParams<vxClassifierTrainParamsKNN>;
using CallerParamsBayesian = CallerParams<vxClassifierTrainParamsBayesian>;

class CallerPredicate : public vxComparisonPredicate {
public:
    CallerPredicate() : vxComparisonPredicate(0, 1) {}
    static vxPersistent* make() { return new CallerPredicate; }

    bool outcome(const vxFeaturePattern& pattern) const override {
        callerIsCalled();
        return vxComparisonPredicate::outcome(pattern);
    }
    vxPtrHandle<vxPredicateFunction> clone() const override {
        callerIsCalled();
        return vxPtrHandle<vxPredicateFunction>(new CallerPredicate(*this));
    }
    bool isEqual(const vxPredicateFunction& other) const override {
        callerIsCalled();
        return vxComparisonPredicate::isEqual(other);
    }

protected:
    void dispatchSerialize(vxArchive& archive) override {
        callerIsCalled();
        vxComparisonPredicate::dispatchSerialize(archive);
    }
};

/// A node or a leaf of the caller's.
template <class Tree>
class CallerTree : public Tree {
public:
    explicit CallerTree(const Tree& tree) : Tree(tree) {}
    static vxPersistent* make() { return new CallerTree(defaultTree()); }

    std::vector<long> categoryLabels() const override {
        callerIsCalled();
        return Tree::categoryLabels();
    }
    vxPtrHandle<vxDecisionTree> clone() const override {
        callerIsCalled();
        return vxPtrHandle<vxDecisionTree>(new CallerTree(*this));
    }
    bool isEqual(const vxDecisionTree& other) const override {
        callerIsCalled();
        return Tree::isEqual(other);
    }

protected:
    void dispatchSerialize(vxArchive& archive) override {
        callerIsCalled();
        Tree::dispatchSerialize(archive);
    }

private:
    static Tree defaultTree() {
        const vxPtrHandle<vxDecisionTree> made(dynamic_cast<vxDecisionTree*>(Tree::make()));
        return dynamic_cast<const Tree&>(*made);
    }
};

using CallerNode = CallerTree<vxDecisionTreeNode>;
using CallerLeaf = CallerTree<vxDecisionTreeLeaf>;

class CallerScore : public vxClassifierFeatureScoreOneSided {
public:
    double score(double x) const override {
        callerIsCalled();
        return vxClassifierFeatureScoreOneSided::score(x);
    }
    vxClsFtSc* clone() const override {
        callerIsCalled();
        return new CallerScore(*this);
    }
    bool operator==(const vxClsFtSc& other) const override {
        callerIsCalled();
        return vxClassifierFeatureScoreOneSided::operator==(other);
    }
};

} // namespace failures

#endif
