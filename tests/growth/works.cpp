#include "tests/growth/works.h"

#include "tests/support/archives.h"

#include <vxclassifier/vxclassifier.h>

#include <memory>
#include <stdexcept>
#include <utility>

namespace growth {

namespace {

using test::Bytes;
using PatternHandle = vxPtrHandle_const<vxFeaturePattern>;

/// Different numbers that never repeat, in [0, 1): multiples of the golden ratio.
double number(long i) {
    const double product = static_cast<double>(i) * 0.61803398874989485;
    return product - static_cast<double>(static_cast<long>(product));
}

PatternHandle pattern(long measurements, long first) {
    std::vector<double> values;
    for (long i = 0; i < measurements; ++i) {
        values.push_back(number(first + i));
    }
    return PatternHandle(new vxFeaturePattern(values, {}));
}

vxClassifierDataProviderMemory provider(long patterns, long measurements) {
    vxClassifierDataProviderMemory data;
    for (long i = 0; i < patterns; ++i) {
        data.addData(pattern(measurements, i * measurements), i % 3);
    }
    return data;
}

vxClassifierTrainParamsBayesian bayesianParams(long measurements) {
    const std::vector<double> maxima(static_cast<std::size_t>(measurements), 1.0);
    return vxClassifierTrainParamsBayesian(
        vxClassifierDistributionTypes(vxClassifierDistributionTypes::eMultivariateNormal),
        vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), vxFeaturePattern(maxima, {}));
}

vxPtrHandle<vxDecisionTree> chain(long nodes) {
    vxPtrHandle<vxDecisionTree> tree =
        vxDecisionTreeLeaf(vxClassifierResult({{1, 1.0, 1.0, 0.0}}, 0.0)).clone();
    const vxPtrHandle<vxDecisionTree> leaf = tree;
    for (long i = 0; i < nodes; ++i) {
        // False for every pattern with one measurement in [0, 1), so that a walk passes all nodes.
        tree = vxDecisionTreeNode(vxRangePredicate(vxRange(2.0, 3.0), {0}), *leaf, *tree).clone();
    }
    return tree;
}

vxClassifierRule rule(long functions) {
    std::vector<vxPtrHandle<vxClsFtSc>> methods;
    for (long i = 0; i < functions; ++i) {
        methods.emplace_back(new vxClassifierFeatureScoreOneSided);
    }
    vxClassifierRule made;
    made.init(methods, 1);
    return made;
}

vxClassifierRuleTable table(long rules, long functions) {
    vxClassifierRuleTable made;
    made.train(std::vector<vxClassifierRule>(static_cast<std::size_t>(rules), rule(functions)));
    return made;
}

vxClassifierTool trained(const vxClassifierDataProvider& data, const vxClassifierTrainParams& params) {
    vxClassifierTool tool;
    tool.train(data, params);
    return tool;
}

vxClassifierTool withTree(const vxDecisionTree& tree) {
    vxClassifierTool tool;
    tool.train(tree);
    return tool;
}

/// A work on something that is made once for each size.
template <class Make, class Do>
Work work(const std::string& name, Make make, Do perform) {
    return {name, [make, perform](long size) {
                using Made = decltype(make(size));
                const auto made = std::make_shared<Made>(make(size));
                return [made, perform] { perform(*made); };
            }};
}

/// Storing, loading and comparing what `make` makes; `empty` makes something to load into.
template <class Make, class Empty>
void addArchiveWorks(std::vector<Work>& all, const std::string& name, Make make, Empty empty) {
    all.push_back(work(name + ": store", make, [](const auto& made) { test::stored(made); }));
    all.push_back(work(
        name + ": load", [make](long size) { return test::stored(make(size)); },
        [empty](const Bytes& bytes) {
            auto loaded = empty();
            test::load(bytes, loaded);
        }));
    all.push_back(work(
        name + ": compare", [make](long size) { return std::make_pair(make(size), make(size)); },
        [](const auto& two) {
            if (!(two.first == two.second)) {
                throw std::logic_error("equal things are not equal");
            }
        }));
    all.push_back(work(name + ": copy", make, [](const auto& made) {
        const auto copy = made; // NOLINT(performance-unnecessary-copy-initialization): the copy is the work
        static_cast<void>(copy);
    }));
}

void addRun(std::vector<Work>& all, const std::string& name, vxClassifierTool (*make)(long size),
            PatternHandle (*asked)(long size)) {
    all.push_back(work(
        name + ": run", [make, asked](long size) { return std::make_pair(make(size), asked(size)); },
        [](const auto& made) {
            vxClassifierResult result;
            made.first.run(*made.second, result);
        }));
}

void addPatterns(std::vector<Work>& all) {
    const auto onePattern = [](long size) { return vxFeaturePattern(*pattern(size, 0)); };
    addArchiveWorks(all, "measurements of a pattern", onePattern, [] { return vxFeaturePattern({}, {}); });
    const auto patterns = [](long size) { return provider(size, 3); };
    addArchiveWorks(all, "patterns of a provider", patterns, [] { return vxClassifierDataProviderMemory(); });
    const auto matrix = [](long size) { return vxNMMatrix(size / 8, 8); };
    addArchiveWorks(all, "entries of a matrix", matrix, [] { return vxNMMatrix(); });
}

void addNeighbors(std::vector<Work>& all) {
    const auto make = [](long size) { return trained(provider(size, 3), vxClassifierTrainParamsKNN(5)); };
    const auto asked = [](long) { return pattern(3, 1000003); };
    addArchiveWorks(all, "stored neighbours", make, [] { return vxClassifierTool(); });
    all.push_back(work(
        "stored neighbours: train", [](long size) { return provider(size, 3); },
        [](const vxClassifierDataProviderMemory& data) { trained(data, vxClassifierTrainParamsKNN(5)); }));
    addRun(all, "stored neighbours", make, asked);
    addRun(
        all, "measurements of neighbours",
        [](long size) { return trained(provider(9, size), vxClassifierTrainParamsKNN(5)); },
        [](long size) { return pattern(size, 1000003); });
}

void addBayes(std::vector<Work>& all) {
    const auto make = [](long size) { return trained(provider(9, size), bayesianParams(size)); };
    addArchiveWorks(all, "independent measurements", make, [] { return vxClassifierTool(); });
    addRun(all, "independent measurements", make, [](long size) { return pattern(size, 1000003); });
    all.push_back(work(
        "independent measurements: train", [](long size) { return provider(9, size); },
        [](const vxClassifierDataProviderMemory& data) {
            trained(data, bayesianParams(data.numMeasurements()));
        }));
    all.push_back(work(
        "Bayesian training patterns: train", [](long size) { return provider(size, 3); },
        [](const vxClassifierDataProviderMemory& data) { trained(data, bayesianParams(3)); }));
}

void addTrees(std::vector<Work>& all) {
    const auto make = [](long size) { return withTree(*chain(size)); };
    addArchiveWorks(all, "nodes of a tree", make, [] { return vxClassifierTool(); });
    addRun(all, "nodes of a tree", make, [](long) { return pattern(1, 7); });
    all.push_back(work("nodes of a tree: labels", &chain, [](const vxPtrHandle<vxDecisionTree>& tree) {
        if (tree->categoryLabels().size() != 1) {
            throw std::logic_error("one label is expected");
        }
    }));
}

void addRules(std::vector<Work>& all) {
    const auto manyRules = [](long size) { return table(size, 2); };
    const auto wideRule = [](long size) { return table(1, size); };
    const auto classify = [](const auto& made) {
        // No rule passes, so that all are looked at.
        if (made.first.classifyHardThreshold(made.second, 1.0) != -1) {
            throw std::logic_error("no rule should pass");
        }
    };
    addArchiveWorks(all, "rules of a table", manyRules, [] { return vxClassifierRuleTable(); });
    addArchiveWorks(all, "functions of a rule", wideRule, [] { return vxClassifierRuleTable(); });
    all.push_back(work(
        "rules of a table: classify",
        [=](long size) {
            return std::make_pair(manyRules(size), vxClassifierFeatureVector({0.5, 0.25}));
        },
        classify));
    all.push_back(work(
        "functions of a rule: classify",
        [=](long size) {
            const std::vector<double> values(static_cast<std::size_t>(size), 0.5);
            return std::make_pair(wideRule(size), vxClassifierFeatureVector(values));
        },
        classify));
}

void addGenerators(std::vector<Work>& all) {
    all.push_back(work(
        "drawn patterns: generate",
        [](long size) {
            return vx_ClassDataGenerator({{0.0, 1.0}, {2.0, 3.0}}, size);
        },
        [](const vx_ClassDataGenerator& generator) { vx_ClassDataGenerator(generator).generateData(); }));
}

} // namespace

const std::vector<Work>& works() {
    static const std::vector<Work> all = [] {
        std::vector<Work> made;
        addPatterns(made);
        addNeighbors(made);
        addBayes(made);
        addTrees(made);
        addRules(made);
        addGenerators(made);
        return made;
    }();
    return all;
}

} // namespace growth
