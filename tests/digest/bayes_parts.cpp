#include "tests/digest/inputs.h"
#include "tests/digest/parts.h"

#include <vxclassifier/category_model_bayesian.h>
#include <vxclassifier/classifier_tool.h>
#include <vxclassifier/classifier_train_params_bayesian.h>
#include <vxclassifier/pdf_binomial.h>
#include <vxclassifier/pdf_multivariate_normal.h>
#include <vxclassifier/platform/nm_matrix.h>

#include <limits>

namespace digest {

namespace {

using Types = vxClassifierDistributionTypes;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

std::vector<vxFeaturePattern> samples(Inputs& inputs, long label, long count, long measurements) {
    std::vector<vxFeaturePattern> all;
    for (long i = 0; i < count; ++i) {
        all.emplace_back(measurementsOf(inputs, label, measurements), std::vector<long>{});
    }
    return all;
}

/// Each of these marks some measurements as invalid in one pattern of five.
vxFeaturePattern query(Inputs& inputs, long measurements) {
    std::vector<long> invalid;
    if (inputs.whole(5) == 0) {
        for (long i = 0; i < measurements; ++i) {
            if (inputs.whole(3) == 0) {
                invalid.push_back(i);
            }
        }
    }
    return vxFeaturePattern(measurementsOf(inputs, inputs.whole(4), measurements), invalid);
}

void addStatistics(Digest& digest, const vx_PDFMultivariateNormal& density) {
    digest.add(density.mean().entries());
    digest.add(density.covariance().entries());
}

void addLogValues(Digest& digest, const vx_ProbabilityDensityFunction& density, Inputs& inputs,
                  long measurements) {
    for (int i = 0; i < 40; ++i) {
        const vxFeaturePattern asked = query(inputs, measurements);
        digest.addOutcome([&] { digest.add(density.logValue(asked)); });
    }
}

/// Trains, adds the outcome of some runs, trains again with other parameters and runs once more.
void addTool(Digest& digest, const Types& types, long measurements) {
    Inputs inputs;
    vxClassifierFrequencies frequencies(1.0);
    frequencies.categoryFrequencyOverride(1, inputs.number(0.1, 3.0));
    vxClassifierCosts costs(1.0);
    costs.misclassificationCostOverride(0, 2, inputs.number(1.0, 9.0));
    const vxFeaturePattern maxima(std::vector<double>(static_cast<std::size_t>(measurements), 20.0), {});
    vxClassifierTrainParamsBayesian params(types, frequencies, costs, maxima);
    vxClassifierTool tool;
    tool.train(trainingData(inputs, 150, measurements), params);
    const auto run = [&] {
        vxClassifierResult result;
        for (int i = 0; i < 150; ++i) {
            const vxFeaturePattern asked = query(inputs, measurements);
            digest.addOutcome([&] {
                tool.run(asked, result);
                digest.add(result);
            });
        }
    };
    run();
    frequencies.categoryFrequencyOverride(0, inputs.number(0.1, 3.0));
    params.categoryFrequencies(frequencies);
    tool.retrain(params);
    run();
}

} // namespace

void addNormalDensities(Digest& digest) {
    Inputs inputs;
    for (const long measurements : {1L, 2L, 3L, 4L, 5L, 8L, 13L, 24L}) {
        vx_PDFMultivariateNormal density;
        for (const long count : {3 * measurements, 7L, 1L}) {
            density.updateWithData(samples(inputs, inputs.whole(3), count, measurements));
            addStatistics(digest, density);
        }
        addLogValues(digest, density, inputs, measurements);
        const double factor = inputs.number(2.0, 3.0);
        density.updateWithDataNormalize(samples(inputs, 1, 5, measurements), factor);
        addStatistics(digest, density);
        addLogValues(digest, density, inputs, measurements);
    }
}

void addDegenerateDensities(Digest& digest) {
    Inputs inputs;
    const long measurements = 6;
    for (const long count : {1L, 2L, 3L, 5L, 20L}) {
        std::vector<vxFeaturePattern> data;
        for (const vxFeaturePattern& sample : samples(inputs, 1, count, measurements)) {
            std::vector<double> values = sample.featureMeasurements(false);
            values[1] = Inputs::opaque(0.1);
            values[4] = values[0] * Inputs::opaque(3.0);
            values[5] = values[3] * Inputs::opaque(1e-9) + values[0];
            data.emplace_back(values, std::vector<long>{});
        }
        vx_PDFMultivariateNormal density;
        density.updateWithData(data);
        addStatistics(digest, density);
        addLogValues(digest, density, inputs, measurements);
        digest.add(density.logValue(data.front()));
    }
    for (const double odd : {nan, infinity, 1e300, 1e-300, 0.0}) {
        vx_PDFMultivariateNormal density;
        digest.addOutcome([&] {
            density.updateWithData(
                {vxFeaturePattern({Inputs::opaque(odd), 1.0}, {}), vxFeaturePattern({2.0, 3.0}, {})});
            addStatistics(digest, density);
            digest.add(density.logValue(vxFeaturePattern({Inputs::opaque(odd), 2.0}, {})));
        });
        addLogValues(digest, density, inputs, 2);
    }
}

void addBinomialDensities(Digest& digest) {
    Inputs inputs;
    for (const double maximum : {1.0, 5.0, 20.0, 1000.0}) {
        vx_PDFBinomial density(vxFeaturePattern({Inputs::opaque(maximum)}, {}));
        for (const long count : {12L, 30L}) {
            std::vector<vxFeaturePattern> data;
            for (long i = 0; i < count; ++i) {
                data.emplace_back(std::vector<double>{inputs.number(0.2, 0.7) * maximum},
                                  std::vector<long>{});
            }
            density.updateWithData(data);
            digest.add(density.numTrials());
            digest.add(density.theta());
            for (int i = 0; i < 60; ++i) {
                const vxFeaturePattern asked({inputs.number(-0.1, 1.2) * Inputs::opaque(maximum)}, {});
                digest.addOutcome([&] { digest.add(density.logValue(asked)); });
            }
        }
    }
}

void addBayesJoint(Digest& digest) {
    Types types(Types::eMultivariateNormal);
    for (const long label : {0L, 1L, 2L}) {
        types.setDependent(label, {0, 1, 2, 3, 4, 5, 6, 7});
    }
    addTool(digest, types, 8);
}

void addBayesIndependent(Digest& digest) {
    addTool(digest, Types(Types::eMultivariateNormal), 8);
}

void addBayesMixed(Digest& digest) {
    Types types(Types::eMultivariateNormal);
    for (const long label : {0L, 1L, 2L}) {
        types.distributionTypeOverride(label, 2, Types::eBinomial);
        types.setDependent(label, {0, 3, 4});
    }
    types.distributionTypeOverride(1, 5, Types::eBinomial);
    types.setDependent(2, {5, 1});
    addTool(digest, types, 7);
}

void addBayesBinomial(Digest& digest) {
    Types types(Types::eBinomial);
    types.distributionTypeOverride(0, 0, Types::eMultivariateNormal);
    addTool(digest, types, 6);
}

} // namespace digest
