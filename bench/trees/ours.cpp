#include "bench/our_data.h"
#include "bench/our_tree.h"
#include "bench/trees/trees.h"

#include <vxclassifier/classifier_result.h>
#include <vxclassifier/classifier_tool.h>

namespace bench::trees {

namespace {

class Ours : public Decider {
public:
    explicit Ours(const SharedWorkload& workload) : queries_(ourQueries(workload->queries)) {
        tool_.train(*ourTree(workload->tree));
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

} // namespace

Contender ours() {
    return {Role::ours, "tool",
            [](const SharedWorkload& workload) { return std::make_unique<Ours>(workload); }};
}

} // namespace bench::trees
