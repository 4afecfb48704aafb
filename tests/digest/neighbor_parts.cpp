#include "tests/digest/inputs.h"
#include "tests/digest/parts.h"

#include <vxclassifier/classifier_tool.h>
#include <vxclassifier/classifier_train_params_knn.h>
#include <vxclassifier/pattern_distance_metric_norm.h>

#include <limits>

namespace digest {

namespace {

constexpr double orders[] = {0.5, 1.0, 1.5, 2.0, 2.5, 3.0, 7.0, std::numeric_limits<double>::infinity()};

void addRuns(Digest& digest, const vxClassifierTool& tool, const std::vector<vxFeaturePattern>& asked) {
    vxClassifierResult result;
    for (const vxFeaturePattern& each : asked) {
        digest.addOutcome([&] {
            tool.run(each, result);
            digest.add(result);
        });
    }
}

/// The values on a grid, so that many distances are equal.
std::vector<double> onGrid(Inputs& inputs, long measurements) {
    std::vector<double> all;
    for (long i = 0; i < measurements; ++i) {
        all.push_back(static_cast<double>(inputs.whole(3)));
    }
    return all;
}

double hostileNumber(Inputs& inputs) {
    switch (inputs.whole(8)) {
    case 0:
        return std::numeric_limits<double>::quiet_NaN();
    case 1:
        return std::numeric_limits<double>::infinity();
    case 2:
        return Inputs::opaque(1e300);
    case 3:
        return Inputs::opaque(-1e-310);
    default:
        return inputs.number(-1.0, 1.0);
    }
}

} // namespace

void addDistances(Digest& digest) {
    Inputs inputs;
    for (const double order : orders) {
        const vxPatternDistanceMetricNorm metric(Inputs::opaque(order));
        for (const long measurements : {1L, 2L, 3L, 4L, 7L, 16L, 33L}) {
            for (int i = 0; i < 12; ++i) {
                const vxFeaturePattern a(inputs.numbers(measurements, -5.0, 5.0), {});
                const vxFeaturePattern b(inputs.numbers(measurements, -5.0, 5.0), {});
                digest.add(metric.distance(a, b));
            }
        }
    }
}

void addNeighbors(Digest& digest) {
    Inputs inputs;
    for (const double order : orders) {
        vxClassifierDataProviderMemory data = trainingData(inputs, 300, 9);
        std::vector<vxFeaturePattern> asked;
        for (int i = 0; i < 60; ++i) {
            const vxPtrHandle_const<vxFeaturePattern> stored = pattern(onGrid(inputs, 9));
            data.addData(stored, inputs.whole(3));
            asked.emplace_back(measurementsOf(inputs, inputs.whole(3), 9), std::vector<long>{});
            asked.emplace_back(onGrid(inputs, 9), std::vector<long>{});
        }
        vxClassifierCosts costs(1.0);
        costs.misclassificationCostOverride(1, 0, inputs.number(0.0, 4.0));
        vxClassifierTool tool;
        tool.train(data, vxClassifierTrainParamsKNN(1, vxPatternDistanceMetricNorm(order), costs));
        for (const long k : {1L, 4L, 17L}) {
            tool.retrain(vxClassifierTrainParamsKNN(k, vxPatternDistanceMetricNorm(order), costs));
            addRuns(digest, tool, asked);
        }
    }
}

void addHostileNeighbors(Digest& digest) {
    Inputs inputs;
    for (const double order : orders) {
        vxClassifierDataProviderMemory data;
        std::vector<vxFeaturePattern> asked;
        for (int i = 0; i < 80; ++i) {
            const auto numbers = [&inputs] {
                return std::vector<double>{hostileNumber(inputs), inputs.number(), hostileNumber(inputs)};
            };
            const vxPtrHandle_const<vxFeaturePattern> stored = pattern(numbers());
            data.addData(stored, inputs.whole(5));
            asked.emplace_back(numbers(), std::vector<long>{});
        }
        vxClassifierTool tool;
        tool.train(data,
                   vxClassifierTrainParamsKNN(7, vxPatternDistanceMetricNorm(order), vxClassifierCosts(1.0)));
        addRuns(digest, tool, asked);
    }
}

} // namespace digest
