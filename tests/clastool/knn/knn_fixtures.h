#ifndef TESTS_CLASTOOL_KNN_KNN_FIXTURES_H
#define TESTS_CLASTOOL_KNN_KNN_FIXTURES_H

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/classifier_knn.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/pattern_distance_metric.h>
#include <vxclassifier/platform/archive.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace test {

using PatternHandle = vxPtrHandle_const<vxFeaturePattern>;

inline PatternHandle pattern(const std::vector<double>& measurements,
                             const std::vector<long>& invalidIndices = {}) {
    return PatternHandle(new vxFeaturePattern(measurements, invalidIndices));
}

/// One pattern of one measurement for each value; the labels count up from 0.
inline vxClassifierDataProviderMemory line(const std::vector<double>& values) {
    vxClassifierDataProviderMemory data;
    for (std::size_t i = 0; i < values.size(); ++i) {
        data.addData(pattern({values[i]}), static_cast<long>(i));
    }
    return data;
}

/// What metrics that share a script do, and what was asked of them.
struct MetricScript {
    std::function<double(const vxFeaturePattern&, const vxFeaturePattern&)> distance;
    bool equivalent = true;
    long asked = 0;                                  // calls of distance
    long clones = 0;                                 // calls of clone
    const vxPatternDistanceMetric* asking = nullptr; // the last to be asked whether it is equivalent,
    const vxPatternDistanceMetric* about = nullptr;  // and to what
};

/// A metric that follows a script, which its clones share. Without one every distance is 0.
class ScriptedMetric : public vxPatternDistanceMetric {
public:
    explicit ScriptedMetric(std::shared_ptr<MetricScript> script = std::make_shared<MetricScript>())
        : script_(std::move(script)) {}

    double distance(const vxFeaturePattern& p1, const vxFeaturePattern& p2) const override {
        ++script_->asked;
        return script_->distance ? script_->distance(p1, p2) : 0.0;
    }

    vxPtrHandle<vxPatternDistanceMetric> clone() const override {
        ++script_->clones;
        return vxPtrHandle<vxPatternDistanceMetric>(new ScriptedMetric(script_));
    }

    bool isEquivalent(const vxPatternDistanceMetric& other) const override {
        script_->asking = this;
        script_->about = &other;
        return script_->equivalent;
    }

private:
    std::shared_ptr<MetricScript> script_;
};

/// A script that looks the distance of a stored pattern up by that pattern's only measurement.
inline std::shared_ptr<MetricScript> lookUp(const std::vector<double>& distances) {
    auto script = std::make_shared<MetricScript>();
    script->distance = [distances](const vxFeaturePattern&, const vxFeaturePattern& storedPattern) {
        return distances[static_cast<std::size_t>(storedPattern.featureMeasurement(0, true))];
    };
    return script;
}

/// Patterns that hold their own index, for a look-up.
inline vxClassifierDataProviderMemory indexed(std::size_t count) {
    std::vector<double> values;
    for (std::size_t i = 0; i < count; ++i) {
        values.push_back(static_cast<double>(i));
    }
    return line(values);
}

/// Parameters of the nearest neighbours whose protected operations a test can call.
class OpenParams : public vxClassifierTrainParamsKNN {
public:
    using vxClassifierTrainParamsKNN::isEqual_;
    using vxClassifierTrainParamsKNN::isSameTechnique_;
    using vxClassifierTrainParamsKNN::newClassifier_;
    using vxClassifierTrainParamsKNN::vxClassifierTrainParamsKNN;
};

/// A classifier whose hooks a test can call.
class OpenKNN : public vx_ClassifierKNN {
public:
    using vx_ClassifierKNN::checkRunnable_;
    using vx_ClassifierKNN::isTrained_;
    using vx_ClassifierKNN::retrain_;
    using vx_ClassifierKNN::run_;
    using vx_ClassifierKNN::train_;
    using vx_ClassifierKNN::trainIncremental_;
    using vx_ClassifierKNN::trainStart_;
    using vx_ClassifierKNN::untrain_;
};

inline OpenKNN trained(const vxClassifierDataProvider& data, const vxClassifierTrainParams& params) {
    OpenKNN classifier;
    classifier.train(data, params);
    return classifier;
}

inline vxClassifierResult run(const vx_Classifier& classifier, const std::vector<double>& measurements) {
    vxClassifierResult result;
    classifier.run(*pattern(measurements), result);
    return result;
}

inline std::uint64_t bits(double value) {
    std::uint64_t result = 0;
    std::memcpy(&result, &value, sizeof value);
    return result;
}

/// The labels of a result, in its order.
inline std::vector<long> labels(const vxClassifierResult& result) {
    std::vector<long> found;
    for (const vxClassifierCategoryResult& entry : result.categoryResults()) {
        found.push_back(entry.categoryLabel());
    }
    return found;
}

/// Exchanges one primitive of a record that is written by hand.
template <class T>
void put(vxArchive& archive, T value) {
    archive || value;
}

inline void putVersion(vxArchive& archive, unsigned char version = 0) {
    put(archive, version);
}

/// Exchanges the version bytes of a record that is written by hand, one for each level of its class from the
/// most derived one to the root; one of them may claim to be newer.
inline void putLevels(vxArchive& archive, int count, int newerLevel = -1) {
    for (int level = 0; level < count; ++level) {
        putVersion(archive, level == newerLevel ? 1 : 0);
    }
}

} // namespace test

#endif
