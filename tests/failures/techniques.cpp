#include "tests/failures/techniques.h"

#include <vxclassifier/range_predicate.h>
#include <vxclassifier/validity_predicate.h>

namespace failures {

namespace {

const vx_Instantiator callerMetric(typeid(CallerMetric), &CallerMetric::make);
const vx_Instantiator callerParamsKNN(typeid(CallerParamsKNN), &CallerParamsKNN::make);
const vx_Instantiator callerParamsBayesian(typeid(CallerParamsBayesian), &CallerParamsBayesian::make);
const vx_Instantiator callerPredicate(typeid(CallerPredicate), &CallerPredicate::make);
const vx_Instantiator callerNode(typeid(CallerNode), &CallerNode::make);
const vx_Instantiator callerLeaf(typeid(CallerLeaf), &CallerLeaf::make);

vxClassifierCosts costs() {
    vxClassifierCosts costs(1.0);
    costs.misclassificationCostOverride(2, 5, 3.0);
    return costs;
}

vxClassifierTrainParamsBayesian bayesian(const vxClassifierDistributionTypes& types, double frequency) {
    vxClassifierFrequencies frequencies(1.0);
    frequencies.categoryFrequencyOverride(2, frequency);
    return vxClassifierTrainParamsBayesian(types, frequencies, costs(),
                                           vxFeaturePattern({9.0, 9.0, 9.0}, {}));
}

vxClassifierDistributionTypes jointTypes() {
    vxClassifierDistributionTypes types(vxClassifierDistributionTypes::eMultivariateNormal);
    types.setDependent(2, {0, 2});
    types.setDependent(5, {0, 1, 2});
    return types;
}

vxClassifierDistributionTypes binomialTypes() {
    vxClassifierDistributionTypes types(vxClassifierDistributionTypes::eMultivariateNormal);
    for (const long label : {2, 5, 7}) {
        types.distributionTypeOverride(label, 1, vxClassifierDistributionTypes::eBinomial);
    }
    return types;
}

vxDecisionTreeLeaf leaf(long label) {
    return vxDecisionTreeLeaf(
        vxClassifierResult({{label, 1.0, 0.75, 0.5}, {label + 1, 0.5, 0.25, 2.0}}, 0.5));
}

/// The label 4 for the query of the trees.
vxDecisionTreeNode ownTree(long otherLabel) {
    const vxDecisionTreeNode low(vxValidityPredicate({0, 2}), leaf(4), leaf(6));
    const vxDecisionTreeNode high(vxRangePredicate(vxRange(0.0, 5.0), {1}), low, leaf(8));
    return vxDecisionTreeNode(vxComparisonPredicate(0, 1), high, leaf(otherLabel));
}

CallerNode callersTree(long otherLabel) {
    const CallerNode low(vxDecisionTreeNode(CallerPredicate(), CallerLeaf(leaf(4)), leaf(6)));
    const vxDecisionTreeNode high(vxComparisonPredicate(0, 1), low, CallerLeaf(leaf(8)));
    return CallerNode(vxDecisionTreeNode(CallerPredicate(), high, CallerLeaf(leaf(otherLabel))));
}

} // namespace

vxClassifierDataProviderMemory trainingData() {
    vxClassifierDataProviderMemory data;
    data.setName(L"the training data of the tests of failures");
    data.setDescription(L"three clouds that lie apart from each other");
    for (const double step : {0.0, 1.0, 0.25, 1.5}) {
        const auto add = [&](double x, double y, double z, long label) {
            data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({x, y, z}, {})), label);
        };
        add(1.0 + step, 2.0 + step * step, 3.0 - step, 2);
        add(5.0 - step, 1.0 + step, 7.0 + step * step, 5);
        add(8.0 + step * step, 6.0 - step, 1.0 + step, 7);
        add(4.0, 4.0, 4.0, -1);
    }
    return data;
}

JointNormal::JointNormal()
    : Automatic(trainingData(), bayesian(jointTypes(), 2.0), bayesian(jointTypes(), 3.0)) {}

Binomial::Binomial()
    : Automatic(trainingData(), bayesian(binomialTypes(), 2.0), bayesian(binomialTypes(), 3.0)) {}

Neighbors::Neighbors()
    : Automatic(trainingData(), vxClassifierTrainParamsKNN(5, vxPatternDistanceMetricNorm(2.0), costs()),
                vxClassifierTrainParamsKNN(3, vxPatternDistanceMetricNorm(1.0), costs())) {}

CallersNormal::CallersNormal()
    : Automatic(trainingData(), CallerParamsBayesian(bayesian(jointTypes(), 2.0)),
                CallerParamsBayesian(bayesian(jointTypes(), 3.0))) {}

CallersNeighbors::CallersNeighbors()
    : Automatic(trainingData(), CallerParamsKNN(vxClassifierTrainParamsKNN(5, CallerMetric(), costs())),
                CallerParamsKNN(vxClassifierTrainParamsKNN(3, CallerMetric(), costs()))) {}

OwnTrees::OwnTrees() : Trees(ownTree(9), ownTree(3)) {}

CallersTrees::CallersTrees() : Trees(callersTree(9), callersTree(3)) {}

::testing::AssertionResult equalAndTrained(const vxClassifierTool& a, const vxClassifierTool& b) {
    if (!a.isTrained() || !b.isTrained()) {
        return ::testing::AssertionFailure() << "not trained";
    }
    return a == b ? ::testing::AssertionSuccess() : ::testing::AssertionFailure() << "not equal";
}

} // namespace failures
