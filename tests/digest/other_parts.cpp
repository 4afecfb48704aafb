#include "tests/digest/inputs.h"
#include "tests/digest/parts.h"
#include "tests/support/archives.h"

#include <vxclassifier/class_data_generator.h>
#include <vxclassifier/classifier_costs.h>
#include <vxclassifier/classifier_frequencies.h>
#include <vxclassifier/classifier_tool.h>
#include <vxclassifier/classifier_train_params_bayesian.h>
#include <vxclassifier/classifier_train_params_knn.h>
#include <vxclassifier/comparison_predicate.h>
#include <vxclassifier/decision_tree_leaf.h>
#include <vxclassifier/decision_tree_node.h>
#include <vxclassifier/pattern_distance_metric_norm.h>
#include <vxclassifier/platform/random.h>
#include <vxclassifier/range_predicate.h>
#include <vxclassifier/rule_table.h>
#include <vxclassifier/total_data_generator.h>
#include <vxclassifier/validity_predicate.h>

#include <limits>

namespace digest {

namespace {

vxClassifierResult ruled(Inputs& inputs, long categories) {
    vxClassifierFrequencies frequencies(inputs.number(0.1, 2.0));
    vxClassifierCosts costs(inputs.number(0.1, 2.0));
    std::vector<vxClassifierCategoryResult> matches;
    for (long label = 0; label < categories; ++label) {
        // Some scores are equal, 0 or very small.
        const double scores[] = {inputs.number(), 0.5, 0.0, 1e-310, 1.0};
        const long chosen = inputs.whole(12);
        matches.emplace_back(label, Inputs::opaque(scores[chosen < 5 ? chosen : 0]), 0.0, 0.0);
        if (inputs.whole(3) == 0) {
            frequencies.categoryFrequencyOverride(label, inputs.number(0.01, 9.0));
        }
        if (label > 0 && inputs.whole(2) == 0) {
            const long assigned = inputs.whole(label);
            costs.misclassificationCostOverride(label, assigned, inputs.number(0.0, 5.0));
        }
    }
    return vxClassifierResult(matches, frequencies, costs, inputs.number(-50.0, 50.0));
}

vxPtrHandle<vxDecisionTree> tree(Inputs& inputs, int depth) {
    if (depth == 0) {
        return vxDecisionTreeLeaf(ruled(inputs, 3)).clone();
    }
    const vxPtrHandle<vxDecisionTree> ifTrue = tree(inputs, depth - 1);
    const vxPtrHandle<vxDecisionTree> ifFalse = tree(inputs, depth - 1);
    const double low = inputs.number(-1.0, 1.0);
    const double high = low + inputs.number(0.5, 2.0);
    const vxRangePredicate range(vxRange(low, high), {inputs.whole(4)});
    const long compared = inputs.whole(2);
    const vxComparisonPredicate comparison(compared, 2 + inputs.whole(2));
    const vxValidityPredicate validity({inputs.whole(4)});
    const vxPredicateFunction* const predicates[] = {&range, &range, &comparison, &validity};
    return vxDecisionTreeNode(*predicates[inputs.whole(4)], *ifTrue, *ifFalse).clone();
}

vxClassifierFeatureScoreOneSided oneSided(Inputs& inputs) {
    vxClassifierFeatureScoreOneSided function;
    const double x0 = inputs.number(-1.0, 1.0);
    const double x1 = x0 + inputs.number(0.1, 1.0);
    const double xc = x1 + inputs.number(0.0, 1.0);
    const std::vector<double> y = inputs.numbers(2, 0.0, 1.0);
    function.init(x0, x1, xc, y[0], y[1]);
    return function;
}

vxClassifierFeatureScoreTwoSided twoSided(Inputs& inputs) {
    vxClassifierFeatureScoreTwoSided function;
    const double x0 = inputs.number(-1.0, 1.0);
    const double x1 = x0 + inputs.number(0.1, 1.0);
    const double xc = x1 + inputs.number(0.0, 1.0);
    const double x1h = xc + inputs.number(0.0, 1.0);
    const double x0h = x1h + inputs.number(0.1, 1.0);
    const std::vector<double> y = inputs.numbers(4, 0.0, 1.0);
    function.init(x0, x1, xc, x0h, x1h, xc, y[0], y[1], y[2], y[3]);
    return function;
}

vxClassifierRuleTable ruleTable(Inputs& inputs, long rules, long features) {
    std::vector<vxClassifierRule> all;
    for (long label = 0; label < rules; ++label) {
        std::vector<vxPtrHandle<vxClsFtSc>> methods;
        for (long i = 0; i < features; ++i) {
            switch (inputs.whole(4)) {
            case 0:
                methods.emplace_back(vxClassifierFeatureScoreIgnore().clone());
                break;
            case 1:
                methods.emplace_back(oneSided(inputs).clone());
                break;
            default:
                methods.emplace_back(twoSided(inputs).clone());
            }
        }
        vxClassifierRule rule;
        rule.init(methods, label);
        all.push_back(rule);
    }
    vxClassifierRuleTable table;
    table.train(all);
    return table;
}

void addProvider(Digest& digest, const vxClassifierDataProviderMemory& data) {
    for (long i = 0; i < data.numPatterns(); ++i) {
        digest.add(data.categoryLabel(i));
        digest.add(data.featurePattern(i)->featureMeasurements(true));
    }
}

vx_ClassDataGenerator classGenerator(Inputs& inputs, long measurements, long count) {
    std::vector<vxPair<double>> parameters;
    for (long i = 0; i < measurements; ++i) {
        const double mean = inputs.number(-9.0, 9.0);
        parameters.emplace_back(mean, inputs.number(0.0, 3.0));
    }
    return vx_ClassDataGenerator(parameters, count);
}

} // namespace

void addDecisionRule(Digest& digest) {
    Inputs inputs;
    for (int i = 0; i < 500; ++i) {
        digest.addOutcome([&] { digest.add(ruled(inputs, 1 + inputs.whole(14))); });
    }
}

void addTrees(Digest& digest) {
    Inputs inputs;
    for (int depth = 0; depth < 7; ++depth) {
        vxClassifierTool tool;
        tool.train(*tree(inputs, depth));
        for (const long label : tool.decisionTree()->categoryLabels()) {
            digest.add(label);
        }
        vxClassifierResult result;
        for (int i = 0; i < 60; ++i) {
            std::vector<long> invalid;
            if (inputs.whole(5) == 0) {
                invalid.push_back(inputs.whole(4));
            }
            const vxFeaturePattern asked(inputs.numbers(4, -2.0, 2.0), invalid);
            digest.addOutcome([&] {
                tool.run(asked, result);
                digest.add(result);
            });
        }
    }
}

void addFeatureScores(Digest& digest) {
    Inputs inputs;
    for (int i = 0; i < 60; ++i) {
        const vxClassifierFeatureScoreOneSided one = oneSided(inputs);
        const vxClassifierFeatureScoreTwoSided two = twoSided(inputs);
        for (int j = 0; j < 20; ++j) {
            const double x = inputs.number(-1.5, 4.5);
            digest.addOutcome([&] { digest.add(one.score(x)); });
            digest.addOutcome([&] { digest.add(two.score(x)); });
        }
    }
}

void addRuleTables(Digest& digest) {
    Inputs inputs;
    for (int i = 0; i < 30; ++i) {
        const long features = 1 + inputs.whole(6);
        const vxClassifierRuleTable table = ruleTable(inputs, 1 + inputs.whole(5), features);
        for (int j = 0; j < 30; ++j) {
            const vxClassifierFeatureVector vector(inputs.numbers(features, -1.5, 4.5));
            const double threshold = inputs.number();
            digest.addOutcome([&] { digest.add(table.classifyHardThreshold(vector, threshold)); });
            for (const vxClassifierRule& rule : table.rules()) {
                digest.addOutcome([&] { digest.add(rule.score(vector)); });
            }
        }
    }
}

void addRandomNumbers(Digest& digest) {
    for (const long seed : {1L, 0L, -1L, 123456789L, 4294967295L}) {
        vxRandomUniform uniform(seed);
        vxRandomGaussian gaussian(seed);
        for (int i = 0; i < 500; ++i) {
            digest.add(uniform.next(Inputs::opaque(-2.0), Inputs::opaque(3.0)));
            digest.add(gaussian.next(Inputs::opaque(0.3), Inputs::opaque(1.7)));
        }
    }
}

void addGenerators(Digest& digest) {
    Inputs inputs;
    for (const long measurements : {1L, 3L, 12L}) {
        addProvider(digest, classGenerator(inputs, measurements, 40).generateData());
        addProvider(digest, vx_TotalDataGenerator({classGenerator(inputs, measurements, 20),
                                                   classGenerator(inputs, measurements, 30)})
                                .generateData());
    }
}

void addArchives(Digest& digest) {
    Inputs inputs;
    const vxClassifierDataProviderMemory data = trainingData(inputs, 60, 6);
    vxClassifierDistributionTypes types(vxClassifierDistributionTypes::eMultivariateNormal);
    types.setDependent(1, {0, 1, 3});
    types.distributionTypeOverride(2, 2, vxClassifierDistributionTypes::eBinomial);
    vxClassifierTool tool;
    const auto addStored = [&] {
        const test::Bytes bytes = test::stored(tool);
        digest.add(bytes);
        vxClassifierTool loaded;
        test::load(bytes, loaded);
        digest.add(loaded == tool);
        digest.add(test::stored(loaded));
    };
    addStored();
    tool.train(data,
               vxClassifierTrainParamsBayesian(types, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0),
                                               vxFeaturePattern(std::vector<double>(6, 20.0), {1})));
    addStored();
    tool.train(data, vxClassifierTrainParamsKNN(3, vxPatternDistanceMetricNorm(inputs.number(1.0, 2.0)),
                                                vxClassifierCosts(1.0)));
    addStored();
    tool.train(*tree(inputs, 5));
    addStored();
    digest.add(test::stored(ruleTable(inputs, 6, 5)));
    const vxPtrHandle<vxClassifierDataProviderMemory> provider(new vxClassifierDataProviderMemory(data));
    digest.add(test::storedPointer(provider.get()));
}

} // namespace digest
