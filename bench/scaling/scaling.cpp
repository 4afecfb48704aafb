#include "bench/data.h"
#include "bench/harness.h"
#include "bench/our_data.h"
#include "bench/tool_runner.h"

#include <vxclassifier/classifier_train_params_knn.h>
#include <vxclassifier/platform/archive.h>

#include <memory>
#include <string>
#include <vector>

// How the time grows with the sizes: the same operations at many sizes, each with the amount of work that the
// definition asks for. The time for each unit of it must not grow.

namespace bench {

namespace {

constexpr std::size_t numQueries = 64;

class TrainRunner : public Runner {
public:
    TrainRunner(vxClassifierDataProviderMemory provider, const vxClassifierTrainParams& params)
        : provider_(std::move(provider)), params_(params.clone()) {}

    void run(std::size_t) override { tool_.train(provider_, *params_); }

private:
    vxClassifierDataProviderMemory provider_;
    vxPtrHandle<vxClassifierTrainParams> params_;
    vxClassifierTool tool_;
};

class StoreRunner : public Runner {
public:
    explicit StoreRunner(const vxClassifierDataProviderMemory& provider) {
        tool_.train(provider, vxClassifierTrainParamsKNN(5));
    }

    void run(std::size_t) override { bytes_ = store(); }

    std::vector<unsigned char> store() {
        vxStoringArchive archive;
        archive || tool_;
        archive.finish();
        return archive.bytes();
    }

private:
    vxClassifierTool tool_;
    std::vector<unsigned char> bytes_;
};

class LoadRunner : public Runner {
public:
    explicit LoadRunner(const vxClassifierDataProviderMemory& provider)
        : bytes_(StoreRunner(provider).store()) {}

    void run(std::size_t) override {
        tool_ = vxClassifierTool();
        vxLoadingArchive archive(bytes_);
        archive || tool_;
        archive.finish();
    }

private:
    std::vector<unsigned char> bytes_;
    vxClassifierTool tool_;
};

/// One point of a series: the work is a number of units.
void addPoint(const std::string& series, std::size_t size, std::size_t work, const MakeRunner& make) {
    add("scaling/" + series + "/size=" + std::to_string(size) + "/work=" + std::to_string(work), Role::ours,
        "tool", make);
}

vxClassifierDataProviderMemory providerOf(std::size_t n, std::size_t d) {
    return ourProvider(ourPatterns(bellRows(n, d, 16)), 10);
}

void addNeighbors(const std::string& series, std::size_t size, std::size_t n, std::size_t d) {
    addPoint(series, size, n * d, [=] {
        return std::make_unique<ToolRunner>(providerOf(n, d), vxClassifierTrainParamsKNN(5),
                                            bellRows(numQueries, d, 17));
    });
}

void addBayes(const std::string& series, std::size_t size, std::size_t work, std::size_t categories,
              std::size_t d, bool joint) {
    addPoint(series, size, work, [=] {
        const Categories source(categories, d, 18);
        const auto provider = ourProvider(ourPatterns(source.rows(200 * categories, 19)), categories);
        return std::make_unique<ToolRunner>(provider, ourBayesianParams(categories, d, joint),
                                            source.rows(numQueries, 20));
    });
}

void addSeriesOverPatterns(std::size_t largest) {
    for (std::size_t count = 1'000; count <= largest; count *= 10) {
        addNeighbors("nearest neighbours, d=16, by n; per stored measurement", count, count, 16);
    }
    const std::size_t n = largest / 10;
    for (std::size_t d = 4; d <= 128; d *= 2) {
        addNeighbors("nearest neighbours, n=" + std::to_string(n) + ", by d; per stored measurement", d, n,
                     d);
    }
    for (std::size_t count = 1'000; count <= n; count *= 10) {
        addPoint("Bayes training, joint, d=16, by n; per pattern", count, count, [=] {
            return std::make_unique<TrainRunner>(providerOf(count, 16), ourBayesianParams(10, 16, true));
        });
        addPoint("storing patterns, d=16, by n; per pattern", count, count,
                 [=] { return std::make_unique<StoreRunner>(providerOf(count, 16)); });
        addPoint("loading patterns, d=16, by n; per pattern", count, count,
                 [=] { return std::make_unique<LoadRunner>(providerOf(count, 16)); });
    }
}

void addSeriesOverMeasurements() {
    for (std::size_t d = 4; d <= 64; d *= 2) {
        addBayes("Bayes, 10 categories, joint, by d; per entry of a triangular factor", d,
                 10 * d * (d + 1) / 2, 10, d, true);
        addBayes("Bayes, 10 categories, independent, by d; per measurement of a category", d, 10 * d, 10, d,
                 false);
    }
}

void addSeriesOverCategories() {
    for (std::size_t categories = 2; categories <= 64; categories *= 2) {
        addBayes("Bayes, joint, d=16, by categories; per category", categories, categories, categories, 16,
                 true);
        addPoint("decision rule, by categories; per pair of categories", categories, categories * categories,
                 [=] { return std::make_unique<DecisionRuleRunner>(categories); });
    }
}

} // namespace

} // namespace bench

void bench::addAll() {
    addSeriesOverPatterns(isQuick() ? 10'000 : 1'000'000);
    addSeriesOverMeasurements();
    addSeriesOverCategories();
}
