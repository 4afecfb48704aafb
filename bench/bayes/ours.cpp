#include "bench/bayes/bayes.h"

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_distribution_types.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/classifier_tool.h>
#include <vxclassifier/classifier_train_params_bayesian.h>
#include <vxclassifier/feature_pattern.h>

#include <numeric>

namespace bench::bayes {

namespace {

vxClassifierTrainParamsBayesian paramsFor(const Workload& workload) {
    vxClassifierDistributionTypes types(vxClassifierDistributionTypes::eMultivariateNormal);
    if (workload.joint) {
        std::vector<long> all(workload.rows.size);
        std::iota(all.begin(), all.end(), 0L);
        for (std::size_t i = 0; i < workload.categories; ++i) {
            types.setDependent(static_cast<long>(i), all);
        }
    }
    return {types, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), vxFeaturePattern({}, {})};
}

vxClassifierDataProviderMemory providerFor(const Workload& workload) {
    std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns;
    std::vector<long> labels;
    for (std::size_t i = 0; i < workload.rows.count; ++i) {
        patterns.emplace_back(new vxFeaturePattern(workload.rows.vector(i), {}));
        labels.push_back(workload.label(i));
    }
    vxClassifierDataProviderMemory provider;
    provider.data(patterns, labels);
    return provider;
}

class OurDecider : public Decider {
public:
    explicit OurDecider(const SharedWorkload& workload) {
        tool_.train(providerFor(*workload), paramsFor(*workload));
        for (std::size_t i = 0; i < workload->queries.count; ++i) {
            queries_.emplace_back(workload->queries.vector(i), std::vector<long>());
        }
    }

    void run(std::size_t turn) override { tool_.run(queries_[turn % queries_.size()], result_); }

    long decide(std::size_t query) override {
        run(query);
        return result_.categoryResults().front().categoryLabel();
    }

private:
    std::vector<vxFeaturePattern> queries_;
    vxClassifierTool tool_;
    vxClassifierResult result_;
};

class OurTrainer : public Runner {
public:
    explicit OurTrainer(const SharedWorkload& workload)
        : provider_(providerFor(*workload)), params_(paramsFor(*workload)) {}

    void run(std::size_t) override { tool_.train(provider_, params_); }

private:
    vxClassifierDataProviderMemory provider_;
    vxClassifierTrainParamsBayesian params_;
    vxClassifierTool tool_;
};

std::unique_ptr<Decider> makeDecider(const SharedWorkload& workload) {
    return std::make_unique<OurDecider>(workload);
}

std::unique_ptr<Runner> makeTrainer(const SharedWorkload& workload) {
    return std::make_unique<OurTrainer>(workload);
}

} // namespace

Contender ours() {
    return {Role::ours, "tool", &makeDecider, &makeDecider, &makeTrainer};
}

} // namespace bench::bayes
