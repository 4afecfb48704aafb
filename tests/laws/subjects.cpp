#include "tests/laws/subject.h"
#include "tests/support/archives.h"

#include <vxclassifier/category_model_bayesian.h>
#include <vxclassifier/classifier_bayesian.h>
#include <vxclassifier/classifier_costs.h>
#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_decision_tree.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_distribution_types.h>
#include <vxclassifier/classifier_frequencies.h>
#include <vxclassifier/classifier_knn.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/classifier_train_params_bayesian.h>
#include <vxclassifier/classifier_train_params_knn.h>
#include <vxclassifier/comparison_predicate.h>
#include <vxclassifier/decision_tree_leaf.h>
#include <vxclassifier/decision_tree_node.h>
#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/pattern_distance_metric_norm.h>
#include <vxclassifier/pdf_binomial.h>
#include <vxclassifier/pdf_multivariate_normal.h>
#include <vxclassifier/platform/range.h>
#include <vxclassifier/range_predicate.h>
#include <vxclassifier/validity_predicate.h>

#include <gtest/gtest.h>

#include <cctype>

namespace laws {

namespace {

using Objects = std::vector<Object>;

vxPtrHandle_const<vxFeaturePattern> pattern(double x, double y) {
    return vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern({x, y}, {}));
}

/// Two categories that lie apart; no two patterns are equally far from any of queryPatterns().
vxClassifierDataProviderMemory data() {
    vxClassifierDataProviderMemory provider;
    provider.setName(L"two clouds");
    for (const double step : {0.0, 0.25, 0.6}) {
        provider.addData(pattern(step, 1.0 + step / 2), 4);
        provider.addData(pattern(5.0 + step, 7.0 - step / 3), 9);
    }
    provider.addData(pattern(3.0, 3.0), -1);
    return provider;
}

vxDecisionTreeLeaf leaf(long label) {
    return vxDecisionTreeLeaf(vxClassifierResult({{label, 1.0, 1.0, 0.0}}, 0.0));
}

vxDecisionTreeNode node() {
    return vxDecisionTreeNode(vxComparisonPredicate(0, 1), leaf(4), leaf(9));
}

template <class Error>
Objects errors() {
    return {own(new Error(L"first")), own(new Error(L"second \u2265 1"))};
}

Objects patterns() {
    return {own(new vxFeaturePattern({1.5, -0.0}, {})), own(new vxFeaturePattern({1.5, -0.0}, {1})),
            own(new vxFeaturePattern({2.5}, {}))};
}

Objects providers() {
    auto* named = new vxClassifierDataProviderMemory(data());
    named->setDescription(L"described");
    return {own(new vxClassifierDataProviderMemory(data())), own(named)};
}

Objects metrics() {
    return {own(new vxPatternDistanceMetricNorm(1.0)), own(new vxPatternDistanceMetricNorm(3.5))};
}

Objects knnParams() {
    vxClassifierCosts costs(2.0);
    costs.misclassificationCostOverride(4, 9, 8.0);
    return {own(new vxClassifierTrainParamsKNN(3)),
            own(new vxClassifierTrainParamsKNN(3, vxPatternDistanceMetricNorm(1.0), costs))};
}

Objects knnClassifiers() {
    const auto trained = [](long k) {
        auto* classifier = new vx_ClassifierKNN;
        const Object owner = own(classifier);
        classifier->train(data(), vxClassifierTrainParamsKNN(k));
        return owner;
    };
    return {trained(1), trained(3)};
}

Objects comparisonPredicates() {
    return {own(new vxComparisonPredicate(0, 1)), own(new vxComparisonPredicate(1, 0))};
}

Objects rangePredicates() {
    return {own(new vxRangePredicate(vxRange(0.0, 2.0), {0})),
            own(new vxRangePredicate(vxRange(0.0, 2.0), {0, 1}))};
}

Objects validityPredicates() {
    return {own(new vxValidityPredicate({1})), own(new vxValidityPredicate({1, 2}))};
}

Objects nodes() {
    return {own(new vxDecisionTreeNode(node())),
            own(new vxDecisionTreeNode(vxValidityPredicate({1}), node(), leaf(2)))};
}

Objects leaves() {
    return {own(new vxDecisionTreeLeaf(leaf(4))), own(new vxDecisionTreeLeaf(leaf(9)))};
}

Objects treeClassifiers() {
    const auto trained = [](const vxDecisionTree& tree) {
        auto* classifier = new vx_ClassifierDecisionTree;
        const Object owner = own(classifier);
        classifier->trainManual(tree);
        return owner;
    };
    return {trained(node()), trained(leaf(4))};
}

vxClassifierTrainParamsBayesian bayesianParams(double frequency) {
    vxClassifierFrequencies frequencies(1.0);
    frequencies.categoryFrequencyOverride(9, frequency);
    return vxClassifierTrainParamsBayesian(
        vxClassifierDistributionTypes(vxClassifierDistributionTypes::eMultivariateNormal), frequencies,
        vxClassifierCosts(2.0), vxFeaturePattern({9.0, 9.0}, {}));
}

Objects bayesianParamsSamples() {
    return {own(new vxClassifierTrainParamsBayesian(bayesianParams(1.0))),
            own(new vxClassifierTrainParamsBayesian(bayesianParams(3.0)))};
}

Objects bayesianClassifiers() {
    const auto trained = [](double frequency) {
        auto* classifier = new vx_ClassifierBayesian;
        const Object owner = own(classifier);
        classifier->train(data(), bayesianParams(frequency));
        return owner;
    };
    return {trained(1.0), trained(3.0)};
}

/// Values that one measurement takes in a training.
std::vector<vxFeaturePattern> values(const std::vector<double>& measurements) {
    std::vector<vxFeaturePattern> patterns;
    for (const double measurement : measurements) {
        patterns.emplace_back(std::vector<double>{measurement}, std::vector<long>{});
    }
    return patterns;
}

template <class Density>
Object trainedDensity(Density* density, const std::vector<double>& measurements) {
    const Object owner = own(density);
    density->updateWithData(values(measurements));
    return owner;
}

Objects binomials() {
    const vxFeaturePattern maximum({10.0}, {});
    return {trainedDensity(new vx_PDFBinomial(maximum), {2.0, 4.0, 5.0, 3.0}),
            trainedDensity(new vx_PDFBinomial(maximum), {7.0, 8.0, 9.0, 8.0})};
}

Objects normals() {
    return {trainedDensity(new vx_PDFMultivariateNormal, {2.0, 4.0, 5.0, 3.0}),
            trainedDensity(new vx_PDFMultivariateNormal, {7.0, 8.0, 9.0, 8.0})};
}

Objects categoryModels() {
    const auto trained = [](long label, double shift) {
        auto* model = new vx_CategoryModelBayesian(
            label, {{0}}, {vxClassifierDistributionTypes::eMultivariateNormal}, vxFeaturePattern({}, {}));
        const Object owner = own(model);
        for (const vxFeaturePattern& value : values({2.0 + shift, 4.0, 5.0, 3.0})) {
            model->adapt(value);
        }
        return owner;
    };
    return {trained(4, 0.0), trained(4, 1.0), trained(9, 0.0)};
}

} // namespace

const std::vector<Subject>& subjects() {
    namespace defs = vxClassifierDefs;
    static const std::vector<Subject> all{
        subject<defs::BadParams>("vxClassifierDefs::BadParams", 5, &errors<defs::BadParams>),
        subject<defs::BadIndex>("vxClassifierDefs::BadIndex", 5, &errors<defs::BadIndex>),
        subject<defs::BadLabel>("vxClassifierDefs::BadLabel", 5, &errors<defs::BadLabel>),
        subject<defs::BadMethod>("vxClassifierDefs::BadMethod", 5, &errors<defs::BadMethod>),
        subject<defs::NotTrained>("vxClassifierDefs::NotTrained", 5, &errors<defs::NotTrained>),
        subject<defs::NotImplemented>("vxClassifierDefs::NotImplemented", 5, &errors<defs::NotImplemented>),
        subject<defs::BadFeatures>("vxClassifierDefs::BadFeatures", 5, &errors<defs::BadFeatures>),
        subject<defs::InsufficientTrainData>("vxClassifierDefs::InsufficientTrainData", 5,
                                             &errors<defs::InsufficientTrainData>),
        subject<vxFeaturePattern>("vxFeaturePattern", 2, &patterns),
        subject<vxClassifierDataProviderMemory>("vxClassifierDataProviderMemory", 3, &providers),
        subject<vxPatternDistanceMetricNorm>("vxPatternDistanceMetricNorm", 3, &metrics),
        subject<vxClassifierTrainParamsKNN>("vxClassifierTrainParamsKNN", 3, &knnParams),
        subject<vx_ClassifierKNN>("vx_ClassifierKNN", 3, &knnClassifiers),
        subject<vxClassifierTrainParamsBayesian>("vxClassifierTrainParamsBayesian", 3,
                                                 &bayesianParamsSamples),
        subject<vx_ClassifierBayesian>("vx_ClassifierBayesian", 3, &bayesianClassifiers),
        subject<vx_CategoryModelBayesian>("vx_CategoryModelBayesian", 3, &categoryModels),
        subject<vx_PDFBinomial>("vx_PDFBinomial", 3, &binomials),
        subject<vx_PDFMultivariateNormal>("vx_PDFMultivariateNormal", 3, &normals),
        subject<vxComparisonPredicate>("vxComparisonPredicate", 3, &comparisonPredicates),
        subject<vxValidityPredicate>("vxValidityPredicate", 3, &validityPredicates),
        subject<vxRangePredicate>("vxRangePredicate", 3, &rangePredicates),
        subject<vxDecisionTreeNode>("vxDecisionTreeNode", 3, &nodes),
        subject<vxDecisionTreeLeaf>("vxDecisionTreeLeaf", 3, &leaves),
        exceptThatDefaultsThrow(
            subject<vx_ClassifierDecisionTree>("vx_ClassifierDecisionTree", 3, &treeClassifiers),
            "an untrained one has no tree to compare"),
    };
    return all;
}

void expectEqual(const Subject& subject, const Object& a, const Object& b) {
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(classOf(*a), classOf(*b));
    if (subject.defaultsThrow != nullptr && test::stored(*a) == test::stored(*own(subject.make()))) {
        EXPECT_THROW(subject.equal(*a, *b), vxBadPointer) << subject.defaultsThrow;
        EXPECT_THROW(subject.equal(*b, *a), vxBadPointer) << subject.defaultsThrow;
        EXPECT_EQ(test::stored(*a), test::stored(*b));
        return;
    }
    EXPECT_TRUE(subject.equal(*a, *b));
    EXPECT_TRUE(subject.equal(*b, *a));
}

std::vector<Object> allObjects(const Subject& subject) {
    Objects objects = subject.samples();
    objects.insert(objects.begin(), own(subject.make()));
    return objects;
}

std::string testName(const Subject& subject) {
    std::string name;
    for (const char character : subject.name) {
        if (std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_') {
            name += character;
        }
    }
    return name;
}

} // namespace laws
