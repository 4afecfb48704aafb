#ifndef BENCH_OUR_DATA_H
#define BENCH_OUR_DATA_H

#include "bench/data.h"

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_train_params_bayesian.h>
#include <vxclassifier/feature_pattern.h>

#include <numeric>
#include <vector>

/// The generated data in this library's classes.
namespace bench {

using OurPatterns = std::vector<vxPtrHandle_const<vxFeaturePattern>>;

inline OurPatterns ourPatterns(const Rows& rows) {
    OurPatterns patterns;
    patterns.reserve(rows.count);
    for (std::size_t i = 0; i < rows.count; ++i) {
        patterns.emplace_back(new vxFeaturePattern(rows.vector(i), {}));
    }
    return patterns;
}

/// Pattern i belongs to category i modulo their number.
inline vxClassifierDataProviderMemory ourProvider(const OurPatterns& patterns, std::size_t categories) {
    std::vector<long> labels;
    labels.reserve(patterns.size());
    for (std::size_t i = 0; i < patterns.size(); ++i) {
        labels.push_back(static_cast<long>(i % categories));
    }
    vxClassifierDataProviderMemory provider;
    provider.data(patterns, labels);
    return provider;
}

inline std::vector<vxFeaturePattern> ourQueries(const Rows& rows) {
    std::vector<vxFeaturePattern> queries;
    queries.reserve(rows.count);
    for (std::size_t i = 0; i < rows.count; ++i) {
        queries.emplace_back(rows.vector(i), std::vector<long>());
    }
    return queries;
}

/// Normal distributions; joint ones put all measurements of a category into one set.
inline vxClassifierTrainParamsBayesian ourBayesianParams(std::size_t categories, std::size_t size,
                                                         bool joint) {
    vxClassifierDistributionTypes types(vxClassifierDistributionTypes::eMultivariateNormal);
    if (joint) {
        std::vector<long> all(size);
        std::iota(all.begin(), all.end(), 0L);
        for (std::size_t i = 0; i < categories; ++i) {
            types.setDependent(static_cast<long>(i), all);
        }
    }
    return {types, vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), vxFeaturePattern({}, {})};
}

} // namespace bench

#endif
