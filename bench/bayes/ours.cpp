#include "bench/bayes/bayes.h"
#include "bench/our_data.h"

#include <vxclassifier/classifier_result.h>
#include <vxclassifier/classifier_tool.h>

namespace bench::bayes {

namespace {

vxClassifierTrainParamsBayesian paramsFor(const Workload& workload) {
    return ourBayesianParams(workload.categories, workload.rows.size, workload.joint);
}

vxClassifierDataProviderMemory providerFor(const Workload& workload) {
    return ourProvider(ourPatterns(workload.rows), workload.categories);
}

class OurDecider : public Decider {
public:
    explicit OurDecider(const SharedWorkload& workload) : queries_(ourQueries(workload->queries)) {
        tool_.train(providerFor(*workload), paramsFor(*workload));
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
