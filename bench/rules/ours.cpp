#include "bench/rules/rules.h"

#include <vxclassifier/feature_vector.h>
#include <vxclassifier/rule_table.h>

namespace bench::rules {

namespace {

vxPtrHandle<vxClsFtSc> trapezoid(const Corners& corners) {
    vxPtrHandle<vxClassifierFeatureScoreTwoSided> made(new vxClassifierFeatureScoreTwoSided);
    const double middle = 0.5 * (corners[1] + corners[2]);
    made->init(corners[0], corners[1], middle, corners[3], corners[2], middle, 0.0, 1.0, 0.0, 1.0);
    return made;
}

class Ours : public Decider {
public:
    explicit Ours(const SharedWorkload& workload) {
        std::vector<vxClassifierRule> rules(numRules);
        for (std::size_t i = 0; i < numRules; ++i) {
            std::vector<vxPtrHandle<vxClsFtSc>> functions;
            for (const Corners& corners : workload->rules[i]) {
                functions.push_back(trapezoid(corners));
            }
            rules[i].init(functions, static_cast<long>(i));
        }
        table_.train(rules);
        for (std::size_t i = 0; i < workload->queries.count; ++i) {
            queries_.emplace_back(workload->queries.vector(i));
        }
    }

    void run(std::size_t turn) override { last_ = decide(turn % queries_.size()); }

    long decide(std::size_t query) override {
        return table_.classifyHardThreshold(queries_[query], threshold);
    }

private:
    vxClassifierRuleTable table_;
    std::vector<vxClassifierFeatureVector> queries_;
    volatile long last_ = 0;
};

} // namespace

Contender ours() {
    return {Role::ours, "rule table",
            [](const SharedWorkload& workload) { return std::make_unique<Ours>(workload); }};
}

} // namespace bench::rules
