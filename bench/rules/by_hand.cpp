#include "bench/rules/rules.h"

#include <cmath>
#include <utility>

namespace bench::rules {

namespace {

double score(const Corners& corners, double x) noexcept {
    if (x <= corners[0] || x >= corners[3]) {
        return 0.0;
    }
    if (x < corners[1]) {
        return (x - corners[0]) / (corners[1] - corners[0]);
    }
    return x > corners[2] ? (corners[3] - x) / (corners[3] - corners[2]) : 1.0;
}

class ByHand : public Decider {
public:
    explicit ByHand(SharedWorkload workload) : workload_(std::move(workload)) {}

    void run(std::size_t turn) override { last_ = decide(turn); }

    long decide(std::size_t query) override { return firstFitting(*workload_, workload_->query(query)); }

private:
    SharedWorkload workload_;
    volatile long last_ = 0;
};

} // namespace

/// Leaves a rule at its first score of 0.
long firstFitting(const Workload& workload, const double* query) noexcept {
    for (std::size_t i = 0; i < numRules; ++i) {
        double product = 1.0;
        for (std::size_t j = 0; j < numFeatures && product > 0.0; ++j) {
            product *= score(workload.rules[i][j], query[j]);
        }
        if (product > 0.0 && std::pow(product, 1.0 / static_cast<double>(numFeatures)) > threshold) {
            return static_cast<long>(i);
        }
    }
    return -1;
}

Contender byHand() {
    return {Role::floor, "by hand",
            [](const SharedWorkload& workload) { return std::make_unique<ByHand>(workload); }};
}

} // namespace bench::rules
