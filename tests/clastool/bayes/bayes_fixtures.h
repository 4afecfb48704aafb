#ifndef TESTS_CLASTOOL_BAYES_BAYES_FIXTURES_H
#define TESTS_CLASTOOL_BAYES_BAYES_FIXTURES_H

#include "tests/clastool/bayes/fake_density.h"
#include "tests/clastool/bayes/record.h"

#include <vxclassifier/classifier_bayesian.h>
#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/classifier_train_params_bayesian.h>

#include <string>
#include <utility>
#include <vector>

namespace test {

/// The technique with its hooks open.
struct OpenBayesian : vx_ClassifierBayesian {
    using vx_ClassifierBayesian::checkRunnable_;
    using vx_ClassifierBayesian::isTrained_;
    using vx_ClassifierBayesian::retrain_;
    using vx_ClassifierBayesian::run_;
    using vx_ClassifierBayesian::serialize_;
    using vx_ClassifierBayesian::train_;
    using vx_ClassifierBayesian::trainIncremental_;
    using vx_ClassifierBayesian::trainStart_;
    using vx_ClassifierBayesian::untrain_;
};

using Sample = std::pair<std::vector<double>, long>; // measurements and label

inline vxFeaturePattern patternOf(const std::vector<double>& values, const std::vector<long>& invalid = {}) {
    return vxFeaturePattern(values, invalid);
}

inline vxClassifierDataProviderMemory dataOf(const std::vector<Sample>& samples) {
    vxClassifierDataProviderMemory data;
    for (const auto& [values, label] : samples) {
        data.addData(vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(values, {})), label);
    }
    return data;
}

inline vxClassifierTrainParamsBayesian
paramsOf(const vxClassifierDistributionTypes& types, const vxFeaturePattern& maxima = patternOf({}),
         const vxClassifierFrequencies& frequencies = vxClassifierFrequencies(1.0),
         const vxClassifierCosts& costs = vxClassifierCosts(1.0)) {
    return vxClassifierTrainParamsBayesian(types, frequencies, costs, maxima);
}

inline vxClassifierDistributionTypes normalTypes() {
    return vxClassifierDistributionTypes(vxClassifierDistributionTypes::eMultivariateNormal);
}

/// Two categories, 5 and 2, of two measurements; label 5 comes first.
inline std::vector<Sample> twoCategories() {
    return {{{1.0, 8.0}, 5}, {{10.0, 1.0}, 2}, {{3.0, 6.0}, 5}, {{12.0, 3.0}, 2},
            {{2.0, 9.0}, 5}, {{9.0, 2.5}, 2},  {{4.0, 9.0}, 5}, {{11.5, 0.0}, 2}};
}

/// A classifier with any content, which only an archive can bring.
inline Bytes classifierRecord(const std::vector<long>& labels,
                              const std::vector<vxPtrHandle<vx_CategoryModel>>& models,
                              vxClassifierTrainParams* params) {
    return recordOf([&](Record& record) {
        std::vector<vxPersistent*> pointers;
        for (const vxPtrHandle<vx_CategoryModel>& model : models) {
            pointers.push_back(model.get());
        }
        record.versions({0, 0, 0}).pointer(params).numbers(labels).pointers(pointers);
    });
}

inline OpenBayesian classifierOf(const std::vector<long>& labels,
                                 const std::vector<vxPtrHandle<vx_CategoryModel>>& models,
                                 const vxClassifierTrainParams* params = nullptr) {
    OpenBayesian classifier;
    load(classifierRecord(labels, models, const_cast<vxClassifierTrainParams*>(params)), classifier);
    return classifier;
}

/// A classifier whose category i has the label i and the log-likelihood scores[i] for every pattern.
inline OpenBayesian
classifierScoring(const std::vector<double>& scores,
                  const vxPtrHandle<vxClassifierTrainParams>& params = paramsOf(normalTypes()).clone()) {
    std::vector<long> labels;
    std::vector<vxPtrHandle<vx_CategoryModel>> models;
    for (const double score : scores) {
        const long label = static_cast<long>(labels.size());
        const vxPtrHandle<FakeDensity> density(new FakeDensity(score));
        labels.push_back(label);
        models.push_back(modelOf(label, 1, {{0}}, {density.get()}));
    }
    return classifierOf(labels, models, params.get());
}

inline vxClassifierResult resultOf(const vx_Classifier& classifier, const vxFeaturePattern& pattern) {
    vxClassifierResult result;
    classifier.run(pattern, result);
    return result;
}

/// The message of what `action` throws, or nothing.
template <class Action>
std::wstring outcomeOf(Action action) {
    try {
        action();
    } catch (const vxException& error) {
        return error.message();
    }
    return L"";
}

} // namespace test

#endif
