#include "fuzz/uses.h"

#include <cmath>
#include <limits>

namespace fuzz {

namespace {

using Types = vxClassifierDistributionTypes;

constexpr double infinity = std::numeric_limits<double>::infinity();
const std::vector<double> someNumbers{-infinity, -1.0, 0.0, 0.25, 1.0, 3.0, 1e300, std::nan("")};
const std::vector<long> someLabels{-1, 0, 1, 2, 4, 9, 2147483647};

/// The decision among two categories under what was loaded.
void decide(Steps& steps, const vxClassifierFrequencies& frequencies, const vxClassifierCosts& costs) {
    steps.step([&] {
        const vxClassifierResult decided({{2, 0.5, 0.0, 0.0}, {7, 1.0, 0.0, 0.0}}, frequencies, costs, 0.0);
        use(steps, decided);
    });
}

} // namespace

void use(Steps& steps, const vxClassifierFrequencies& frequencies) {
    vxClassifierFrequencies changed(frequencies);
    for (const long label : someLabels) {
        steps.step([&] { frequencies.categoryFrequency(label); });
        steps.step([&] { frequencies.freqOverrideIndex_(label); });
        steps.step([&] {
            changed.categoryFrequencyOverride(label, 0.75);
            require(changed.categoryFrequency(label) == 0.75, "a frequency that was set is another one");
        });
    }
    decide(steps, frequencies, vxClassifierCosts(1.0));
    changed.clearFrequencyOverrides();
}

void use(Steps& steps, const vxClassifierCosts& costs) {
    vxClassifierCosts changed(costs);
    for (const long label : someLabels) {
        steps.step([&] { costs.misclassificationCost(label, 2); });
        steps.step([&] { costs.misclOverrideIndex_(label, 2); });
        steps.step([&] {
            changed.misclassificationCostOverride(label, 2, 0.75);
            require(changed.misclassificationCost(label, 2) == 0.75, "a cost that was set is another one");
        });
    }
    decide(steps, vxClassifierFrequencies(1.0), costs);
    changed.clearMisclassificationOverrides();
}

void use(Steps& steps, const vxClassifierCategoryResult& result) {
    steps.step([&] {
        const vxClassifierCategoryResult checked(result.categoryLabel(), result.matchScore(),
                                                 result.classScore(), result.expectedCost());
    });
    steps.step([&] { const vxClassifierResult listed({result, result}, 0.0); });
    steps.step([&] {
        const vxClassifierResult decided({result, {2, 0.5, 0.0, 0.0}}, vxClassifierFrequencies(1.0),
                                         vxClassifierCosts(1.0), 0.0);
    });
}

void use(Steps& steps, const vxClassifierResult& result) {
    steps.step([&] {
        const vxClassifierResult listed(result.categoryResults(), result.matchScoreFactorLog());
        require(listed.categoryResults().size() == result.categoryResults().size(), "a category got lost");
    });
    steps.step([&] {
        const vxClassifierResult decided(result.categoryResults(), vxClassifierFrequencies(1.0),
                                         vxClassifierCosts(1.0), result.matchScoreFactorLog());
        require(decided.categoryResults().size() == result.categoryResults().size(), "a category got lost");
    });
    steps.step([&] { vxDecisionTreeLeaf(result).categoryLabels(); });
}

void use(Steps& steps, const vxClassifierDistributionTypes& types) {
    vxClassifierDistributionTypes changed(types);
    for (const long label : someLabels) {
        const long index = steps.pickOf(std::vector<long>{-1, 0, 3});
        steps.step([&] { types.distributionType(label, index); });
        steps.step([&] { types.isDependent(label, {index, 1}); });
        steps.step([&] { types.isDependent(label, {}); });
        steps.step([&] {
            changed.distributionTypeOverride(label, index, Types::eBinomial);
            // The default type overrides nothing.
            require(changed.distributionType(label, index) == Types::eBinomial ||
                        types.defaultDistributionType() == Types::eBinomial,
                    "a distribution type that was set is another one");
        });
        steps.step([&] { changed.setDependent(label, {index, 1, 2}); });
    }
    use(steps, static_cast<const vxPersistent&>(vxClassifierTrainParamsBayesian(
                   types, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0),
                   vxFeaturePattern({10.0, 10.0}, {}))));
    changed.clearDistributionOverrides();
}

void use(Steps& steps, const vxClassifierDistributionTypes::DistributionType& type) {
    use(steps, vxClassifierDistributionTypes(type));
}

void use(Steps& steps, const vxClassifierFeatureScoreIgnore& function) {
    for (const double x : someNumbers) {
        steps.step([&] { function.score(x); });
    }
}

void use(Steps& steps, const vxClassifierFeatureScoreOneSided& function) {
    vxClassifierFeatureScoreOneSided changed(function);
    for (const double x : someNumbers) {
        steps.step([&] { function.score(x); });
        changed.x1(x);
        steps.step([&] { changed.y1(x); });
        steps.step([&] { changed.score(x); });
    }
    for (const double x : {function.x0(), function.x1(), function.xc()}) {
        steps.step([&] { function.score(x); });
    }
    steps.step(
        [&] { changed.init(function.x0(), function.x1(), function.xc(), function.y0(), function.y1()); });
}

void use(Steps& steps, const vxClassifierFeatureScoreTwoSided& function) {
    use(steps, function.Low());
    use(steps, function.High());
    vxClassifierFeatureScoreTwoSided changed;
    for (const double x : someNumbers) {
        steps.step([&] { function.score(x); });
    }
    for (const double x : {function.x0(), function.xc(), function.x0h(), function.xch()}) {
        steps.step([&] { function.score(x); });
    }
    steps.step([&] {
        changed.init(function.x0(), function.x1(), function.xc(), function.x0h(), function.x1h(),
                     function.xch(), function.y0(), function.y1(), function.y0h(), function.y1h());
    });
}

void use(Steps& steps, const vxPtrHandle<vxClsFtSc>& function) {
    for (const double x : someNumbers) {
        steps.step([&] { function->score(x); });
    }
    steps.step([&] {
        const vxPtrHandle<vxClsFtSc> clone(function->clone());
        static_cast<void>(*clone == *function);
    });
    vxClassifierRule rule;
    steps.step([&] {
        std::vector<vxPtrHandle<vxClsFtSc>> twice{function, function};
        rule.init(twice, 3);
    });
    use(steps, rule);
}

void use(Steps& steps, const vxClassifierFeatureVector& vector) {
    std::vector<vxPtrHandle<vxClsFtSc>> methods(vector.featureValues().size(),
                                                vxPtrHandle<vxClsFtSc>(new vxClassifierFeatureScoreOneSided));
    steps.step([&] {
        vxClassifierRule rule;
        rule.init(methods, 1);
        rule.score(vector);
        vxClassifierRuleTable table;
        table.train({rule});
        table.classifyHardThreshold(vector, 0.5);
    });
}

void use(Steps& steps, const vxClassifierRule& rule) {
    for (const double x : someNumbers) {
        const std::vector<double> values(rule.scoringMethods().size(), x);
        steps.step([&] { rule.score(values); });
    }
    steps.step([&] { rule.score(std::vector<double>{0.5}); });
    vxClassifierRule again;
    steps.step([&] {
        std::vector<vxPtrHandle<vxClsFtSc>> methods = rule.scoringMethods();
        again.init(methods, rule.label());
    });
    vxClassifierRuleTable table;
    steps.step([&] { table.train({rule, again}); });
}

void use(Steps& steps, const vxClassifierRuleTable& table) {
    const std::size_t width = table.rules().empty() ? 0 : table.rules().front().scoringMethods().size();
    for (const double x : someNumbers) {
        const std::vector<double> values(width, x);
        steps.step([&] { table.classifyHardThreshold(values, 0.5); });
        steps.step([&] { table.classifyHardThreshold(values, x); });
    }
    steps.step([&] { table.classifyHardThreshold(std::vector<double>{0.5}, 0.0); });
    vxClassifierRuleTable again;
    steps.step([&] { again.train(table.rules()); });
}

void use(Steps&, const vxRange& range) {
    for (const double x : someNumbers) {
        require(range.isWithin(x) == (x >= range.lower() && x <= range.upper()),
                "a range holds another value");
    }
}

void use(Steps&, const vxNMMatrix& matrix) {
    require(static_cast<double>(matrix.rows()) * static_cast<double>(matrix.columns()) ==
                static_cast<double>(matrix.entries().size()),
            "a matrix whose entries are not as many as its sizes say");
    if (!matrix.entries().empty()) {
        const vxNMMatrix& entries = matrix;
        const double last = entries(matrix.rows() - 1, matrix.columns() - 1);
        require(std::isnan(last) || last == matrix.entries().back(), "the last entry is another one");
    }
}

} // namespace fuzz
