#ifndef BENCH_TOOL_RUNNER_H
#define BENCH_TOOL_RUNNER_H

#include "bench/harness.h"
#include "bench/our_data.h"

#include <vxclassifier/classifier_result.h>
#include <vxclassifier/classifier_tool.h>

#include <utility>
#include <vector>

namespace bench {

/// A trained tool that decides on one query after the other.
class ToolRunner : public Runner {
public:
    ToolRunner(const vxClassifierTool& tool, const Rows& queries)
        : queries_(ourQueries(queries)), tool_(tool) {}

    ToolRunner(const vxClassifierDataProviderMemory& provider, const vxClassifierTrainParams& params,
               const Rows& queries)
        : queries_(ourQueries(queries)) {
        tool_.train(provider, params);
    }

    void run(std::size_t turn) override { tool_.run(queries_[turn % queries_.size()], result_); }

private:
    std::vector<vxFeaturePattern> queries_;
    vxClassifierTool tool_;
    vxClassifierResult result_;
};

/// The decision rule by itself, on the match scores of so many categories.
class DecisionRuleRunner : public Runner {
public:
    explicit DecisionRuleRunner(std::size_t categories) {
        Generator generator(15);
        for (std::size_t i = 0; i < categories; ++i) {
            matches_.emplace_back(static_cast<long>(i), 1.0 - generator.uniform(), 0.0, 0.0);
        }
    }

    void run(std::size_t) override {
        const vxClassifierResult result(matches_, frequencies_, costs_, 0.0);
        first_ = result.categoryResults().front().categoryLabel();
    }

private:
    std::vector<vxClassifierCategoryResult> matches_;
    vxClassifierFrequencies frequencies_{1.0};
    vxClassifierCosts costs_{1.0};
    volatile long first_ = 0;
};

} // namespace bench

#endif
