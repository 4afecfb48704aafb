#include "bench/our_tree.h"
#include "bench/tool_runner.h"

#include <vxclassifier/classifier_train_params_knn.h>
#include <vxclassifier/pattern_distance_metric_norm.h>
#include <vxclassifier/rule_table.h>

#include <valgrind/callgrind.h>

#include <cstdio>
#include <memory>
#include <string>

// Single operations for callgrind to count, which gives the same figures every time:
//     valgrind --tool=callgrind --collect-atstart=no --dump-line=no bench_instructions
// Each operation's count is in a file of its own, under its name.

namespace {

using namespace bench;

/// Counts one run after some that let everything reach its usual state.
void count(const std::string& name, Runner& runner) {
    for (std::size_t turn = 0; turn < 8; ++turn) {
        runner.run(turn);
    }
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    runner.run(8);
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(name.c_str());
}

void countNeighbors(std::size_t n, std::size_t d) {
    ToolRunner runner(ourProvider(ourPatterns(bellRows(n, d, 1)), 10), vxClassifierTrainParamsKNN(5),
                      bellRows(16, d, 2));
    count("run, nearest of " + std::to_string(n) + " neighbours, d=" + std::to_string(d), runner);
}

void countBayes(std::size_t categories, std::size_t d, bool joint) {
    const Categories source(categories, d, 6);
    ToolRunner runner(ourProvider(ourPatterns(source.rows(400 * categories, 7)), categories),
                      ourBayesianParams(categories, d, joint), source.rows(16, 8));
    count("run, Bayes, " + std::to_string(categories) + " categories, " + (joint ? "joint" : "independent") +
              ", d=" + std::to_string(d),
          runner);
}

void countTree(std::size_t depth) {
    vxClassifierTool tool;
    tool.train(*ourTree(GrownTree(5'000, depth)));
    ToolRunner runner(tool, GrownTree::queries(16));
    count("run, tree, depth " + std::to_string(depth), runner);
}

void countDecisionRule(std::size_t categories) {
    DecisionRuleRunner runner(categories);
    count("decision rule, " + std::to_string(categories) + " categories", runner);
}

class MetricRunner : public Runner {
public:
    explicit MetricRunner(std::size_t d) : patterns_(ourQueries(bellRows(16, d, 1))) {}

    void run(std::size_t turn) override {
        distance_ = metric_.distance(patterns_[turn % 16], patterns_[(turn + 1) % 16]);
    }

private:
    std::vector<vxFeaturePattern> patterns_;
    vxPatternDistanceMetricNorm metric_{2.0};
    volatile double distance_ = 0.0;
};

/// A table whose only rule fits every vector in part.
class RuleRunner : public Runner {
public:
    RuleRunner() : values_(std::vector<double>(8, 0.5)) {
        std::vector<vxPtrHandle<vxClsFtSc>> functions;
        for (std::size_t i = 0; i < 8; ++i) {
            vxPtrHandle<vxClassifierFeatureScoreTwoSided> function(new vxClassifierFeatureScoreTwoSided);
            function->init(0.0, 1.0, 2.0, 4.0, 3.0, 2.0, 0.0, 1.0, 0.0, 1.0);
            functions.emplace_back(function);
        }
        std::vector<vxClassifierRule> rules(1);
        rules.front().init(functions, 0);
        table_.train(rules);
    }

    void run(std::size_t) override { label_ = table_.classifyHardThreshold(values_, 0.4); }

private:
    vxClassifierFeatureVector values_;
    vxClassifierRuleTable table_;
    volatile long label_ = 0;
};

void countRule() {
    RuleRunner runner;
    count("rule table, one rule x 8 features", runner);
}

void countMetric(std::size_t d) {
    MetricRunner runner(d);
    count("metric of order 2, d=" + std::to_string(d), runner);
}

} // namespace

int main() {
    constexpr std::size_t categoryCounts[] = {2, 10, 50};
    for (const std::size_t categories : categoryCounts) {
        countDecisionRule(categories);
    }
    constexpr std::size_t sizes[] = {4, 16};
    for (const std::size_t d : sizes) {
        countMetric(d);
        countNeighbors(1'000, d);
    }
    for (const std::size_t d : sizes) {
        countBayes(2, d, true);
        countBayes(2, d, false);
    }
    countBayes(10, 32, true);
    countBayes(10, 32, false);
    countTree(6);
    countTree(12);
    countRule();
    if (RUNNING_ON_VALGRIND == 0) {
        std::fputs("bench_instructions: counts only when callgrind runs it\n", stderr);
        return 1;
    }
    return 0;
}
