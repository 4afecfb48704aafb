#include "bench/rules/rules.h"

namespace bench::rules {

namespace {

constexpr std::size_t numQueries = 1024;

void requireAgreement(const Workload& workload, Decider& decider) {
    for (std::size_t i = 0; i < workload.queries.count; ++i) {
        if (decider.decide(i) != workload.expected[i]) {
            throw Disagreement("another rule for query " + std::to_string(i));
        }
    }
}

} // namespace

/// Each query lies around the middle of some rule, so that about half of the rules are tried.
Workload::Workload() : rules{}, queries(numQueries, numFeatures) {
    Generator generator(13);
    for (auto& rule : rules) {
        for (Corners& corners : rule) {
            const double middle = 10.0 * generator.uniform();
            corners = {middle - 2.0, middle - 1.0, middle + 1.0, middle + 2.0};
        }
    }
    for (std::size_t i = 0; i < numQueries; ++i) {
        const auto& rule = rules[generator.below(numRules)];
        for (std::size_t j = 0; j < numFeatures; ++j) {
            queries.row(i)[j] = 0.5 * (rule[j][0] + rule[j][3]) + generator.bell();
        }
        expected.push_back(firstFitting(*this, queries.row(i)));
    }
}

} // namespace bench::rules

void bench::addAll() {
    using namespace rules;
    std::vector<Contender> contenders{ours()};
#ifdef BENCH_WITH_FUZZYLITE
    contenders.push_back(fuzzylite());
#endif
    contenders.push_back(byHand());
    const auto workload = std::make_shared<const Workload>();
    for (const Contender& contender : contenders) {
        add("rules/20 rules x 8 features", contender.role, contender.name, [=] {
            std::unique_ptr<Decider> decider = contender.make(workload);
            requireAgreement(*workload, *decider);
            return decider;
        });
    }
}
