#include "bench/neighbors/literal_list.h"
#include "bench/neighbors/neighbors.h"
#include "bench/our_data.h"

#include <vxclassifier/classifier_knn.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/classifier_tool.h>
#include <vxclassifier/classifier_train_params_knn.h>
#include <vxclassifier/pattern_distance_metric_norm.h>

#include <algorithm>
#include <cmath>

namespace bench::neighbors {

namespace {

constexpr std::size_t numCategories = 10;
constexpr long numVotes = static_cast<long>(numNeighbors);

/// Runs a classifier of this library: the tool, or the technique's own class.
template <class Classifier>
class Ours : public Searcher {
public:
    explicit Ours(const std::shared_ptr<const Workload>& workload)
        : patterns_(ourPatterns(workload->stored)), queries_(ourQueries(workload->queries)) {
        train(numCategories);
    }

    void run(std::size_t turn) override { classifier_.run(queries_[turn % queries_.size()], result_); }

    /// The neighbours show when every pattern is a category of its own.
    Found find(std::size_t query) override {
        train(patterns_.size());
        run(query);
        train(numCategories);
        const auto& categories = result_.categoryResults();
        Found found{};
        if (categories.size() != found.size()) {
            throw Disagreement("not five neighbours");
        }
        std::transform(categories.begin(), categories.end(), found.begin(), [](const auto& category) {
            return static_cast<std::size_t>(category.categoryLabel());
        });
        return found;
    }

private:
    void train(std::size_t categories) {
        classifier_.train(ourProvider(patterns_, categories), vxClassifierTrainParamsKNN(numVotes));
    }

    OurPatterns patterns_;
    std::vector<vxFeaturePattern> queries_;
    Classifier classifier_;
    vxClassifierResult result_;
};

/// What the search is by definition: the public metric, asked for one pattern after the other.
class LiteralFormula : public Searcher {
public:
    explicit LiteralFormula(const std::shared_ptr<const Workload>& workload)
        : patterns_(ourPatterns(workload->stored)), queries_(ourPatterns(workload->queries)),
          metric_(new vxPatternDistanceMetricNorm(2.0)) {}

    void run(std::size_t turn) override { found_ = find(turn % queries_.size()); }

    Found find(std::size_t query) override {
        LiteralList list;
        for (std::size_t i = 0; i < patterns_.size(); ++i) {
            list.offer(i, metric_->distance(*queries_[query], *patterns_[i]));
        }
        return list.rows();
    }

private:
    OurPatterns patterns_;
    OurPatterns queries_;
    vxPtrHandle_const<vxPatternDistanceMetric> metric_;
    Found found_{};
};

/// The published formula over plain arrays, with nothing around it.
class FormulaOnArrays : public Searcher {
public:
    explicit FormulaOnArrays(std::shared_ptr<const Workload> workload) : workload_(std::move(workload)) {}

    void run(std::size_t turn) override { found_ = find(turn % workload_->queries.count); }

    Found find(std::size_t query) override {
        const double* values = workload_->query(query);
        LiteralList list;
        for (std::size_t i = 0; i < workload_->stored.count; ++i) {
            list.offer(i, distance(values, workload_->stored.row(i)));
        }
        return list.rows();
    }

private:
    double distance(const double* a, const double* b) const {
        double sum = 0.0;
        for (std::size_t i = 0; i < workload_->stored.size; ++i) {
            sum += std::pow(std::fabs(a[i] - b[i]), order_);
        }
        return std::pow(sum, 1.0 / order_);
    }

    std::shared_ptr<const Workload> workload_;
    volatile double orderSource_ = 2.0; // not a constant that the compiler could see through
    double order_ = orderSource_;
    Found found_{};
};

} // namespace

void addOurs(std::vector<Contender>& contenders) {
    contenders.push_back(searcher<Ours<vxClassifierTool>>(Role::ours, "tool", Precision::published));
    contenders.push_back(searcher<Ours<vx_ClassifierKNN>>(Role::ours, "classifier", Precision::published));
}

void addLiteral(std::vector<Contender>& contenders) {
    contenders.push_back(
        searcher<LiteralFormula>(Role::literal, "public metric per pattern", Precision::published));
    contenders.push_back(searcher<FormulaOnArrays>(Role::floor, "formula on arrays", Precision::published));
}

} // namespace bench::neighbors
