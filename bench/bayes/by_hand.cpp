#include "bench/bayes/hand_model.h"
#include "bench/hand_rule.h"

#include <array>
#include <cmath>

namespace bench::bayes {

namespace {

template <class Model>
std::vector<Model> modelsOf(const Workload& workload) {
    std::vector<Model> models;
    for (std::size_t i = 0; i < workload.categories; ++i) {
        models.emplace_back(workload, i);
    }
    return models;
}

/// Log densities, likelihoods relative to the largest, decision rule.
template <class Model>
class HandDecider : public Decider {
public:
    explicit HandDecider(SharedWorkload workload)
        : workload_(std::move(workload)), models_(modelsOf<Model>(*workload_)) {}

    void run(std::size_t turn) override { last_ = decide(turn); }

    long decide(std::size_t query) override {
        const double* row = workload_->query(query);
        std::array<double, 64> scratch; // filled by the solve
        double largest = -INFINITY;
        for (std::size_t i = 0; i < models_.size(); ++i) {
            logs_[i] = models_[i].logDensity(row, scratch.data());
            largest = logs_[i] > largest ? logs_[i] : largest;
        }
        for (std::size_t i = 0; i < models_.size(); ++i) {
            entries_[i] = {static_cast<long>(i), std::exp(logs_[i] - largest), 0.0, 0.0};
        }
        HandRule::decide(entries_.data(), models_.size(), 1.0, 1.0);
        return entries_[0].label;
    }

private:
    SharedWorkload workload_;
    std::vector<Model> models_;
    std::array<double, HandRule::capacity> logs_{};
    std::array<HandEntry, HandRule::capacity> entries_{};
    volatile long last_ = 0;
};

class HandTrainer : public Runner {
public:
    explicit HandTrainer(SharedWorkload workload) : workload_(std::move(workload)) {}

    void run(std::size_t) override { models_ = modelsOf<HandJoint>(*workload_); }

private:
    SharedWorkload workload_;
    std::vector<HandJoint> models_;
};

} // namespace

Contender byHand() {
    return {Role::floor, "by hand",
            [](const SharedWorkload& workload) { return std::make_unique<HandDecider<HandJoint>>(workload); },
            [](const SharedWorkload& workload) {
                return std::make_unique<HandDecider<HandIndependent>>(workload);
            },
            [](const SharedWorkload& workload) { return std::make_unique<HandTrainer>(workload); }};
}

} // namespace bench::bayes
