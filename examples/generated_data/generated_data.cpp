// Feeds synthetic data to every technique, and shows how well each tells the categories apart.

#include "examples/demo/evaluation.h"
#include "examples/demo/labelled_split.h"
#include "examples/demo/tree_grower.h"

#include <vxclassifier/vxclassifier.h>

#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace {

using Patterns = std::vector<demo::LabelledPattern>;

/// Three kinds of parts, described by the mean and the standard deviation of a width in mm and of a weight in
/// g. The spreads differ, since every class generator draws from the same sequence of standard normal
/// numbers.
const std::vector<std::vector<vxPair<double>>> kinds = {
    {{10.0, 0.5}, {4.0, 0.3}},
    {{11.5, 0.8}, {4.5, 0.2}},
    {{11.0, 0.3}, {6.0, 0.9}},
};

/// The patterns of all kinds, in two halves.
demo::LabelledSplit generate(long patternsOfEachKind) {
    demo::LabelledSplit split;
    for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
        vx_ClassDataGenerator generator(kinds[kind], patternsOfEachKind);
        const vxClassifierDataProviderMemory data = generator.generateData();
        for (long i = 0; i < data.numPatterns(); ++i) {
            Patterns& half = i % 2 == 0 ? split.training : split.testing;
            half.push_back({data.featurePattern(i), static_cast<long>(kind)});
        }
    }
    return split;
}

void report(const char* technique, const vxClassifierTool& tool, const Patterns& testing) {
    std::printf("%-20s %5.1f %%\n", technique, 100.0 * demo::Evaluation(tool, testing).accuracy());
}

void useNearestNeighbours(const demo::LabelledSplit& split) {
    vxClassifierTool tool;
    tool.train(demo::providerOf(split.training), vxClassifierTrainParamsKNN(7));
    report("nearest neighbours", tool, split.testing);
}

void useBayes(const demo::LabelledSplit& split) {
    const vxClassifierDistributionTypes types(vxClassifierDistributionTypes::eMultivariateNormal);
    vxClassifierTool tool;
    tool.train(demo::providerOf(split.training),
               vxClassifierTrainParamsBayesian(types, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0),
                                               vxFeaturePattern({}, {})));
    report("Bayes", tool, split.testing);
}

void useTree(const demo::LabelledSplit& split) {
    vxClassifierTool tool;
    tool.train(*demo::growTree(split.training, vxClassifierCosts(1.0), 5));
    report("decision tree", tool, split.testing);
}

/// A score that is 1 near `mean`, and falls to 0 over four standard deviations to both sides.
vxPtrHandle<vxClsFtSc> around(const vxPair<double>& kind) {
    const double reach = 4.0 * kind.second;
    vxClassifierFeatureScoreTwoSided score;
    score.init(kind.first - reach, kind.first, kind.first, kind.first + reach, kind.first, kind.first, 0.0,
               1.0, 0.0, 1.0);
    return vxPtrHandle<vxClsFtSc>(score.clone());
}

vxClassifierRuleTable rulesFromTheDescriptions() {
    std::vector<vxClassifierRule> rules;
    for (const std::vector<vxPair<double>>& kind : kinds) {
        std::vector<vxPtrHandle<vxClsFtSc>> methods;
        methods.reserve(kind.size());
        for (const vxPair<double>& measurement : kind) {
            methods.push_back(around(measurement));
        }
        vxClassifierRule rule;
        rule.init(methods, static_cast<long>(rules.size()));
        rules.push_back(rule);
    }
    vxClassifierRuleTable table;
    table.train(rules);
    return table;
}

void useRules(const demo::LabelledSplit& split) {
    const vxClassifierRuleTable table = rulesFromTheDescriptions();
    long right = 0;
    for (const demo::LabelledPattern& pattern : split.testing) {
        const vxClassifierFeatureVector features(pattern.pattern->featureMeasurements(true));
        right += table.classifyHardThreshold(features, 0.45) == pattern.label ? 1 : 0;
    }
    std::printf("%-20s %5.1f %%\n", "rule table",
                100.0 * static_cast<double>(right) / static_cast<double>(split.testing.size()));
}

} // namespace

int main() {
    try {
        const demo::LabelledSplit split = generate(400);
        std::printf("%zu patterns to train with, %zu to decide; right decisions:\n", split.training.size(),
                    split.testing.size());
        useNearestNeighbours(split);
        useBayes(split);
        useTree(split);
        useRules(split);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "generated_data: " << error.what() << '\n';
        return 1;
    }
}
