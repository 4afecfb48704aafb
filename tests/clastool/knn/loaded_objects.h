#ifndef TESTS_CLASTOOL_KNN_LOADED_OBJECTS_H
#define TESTS_CLASTOOL_KNN_LOADED_OBJECTS_H

#include "tests/clastool/knn/knn_fixtures.h"
#include "tests/support/archives.h"

#include <vxclassifier/pattern_distance_metric_norm.h>

#include <string>
#include <vector>

namespace test {

/// A norm as an archive brings it, whose order no setter would take.
inline vxPatternDistanceMetricNorm loadedNorm(double order) {
    const Bytes record = archiveOf([&](vxArchive& archive) {
        putLevels(archive, 3);
        put(archive, order);
    });
    vxPatternDistanceMetricNorm norm(1.0);
    load(record, norm);
    return norm;
}

/// Parameters as an archive brings them, whose values no constructor would take.
template <class MetricHandle>
vxClassifierTrainParamsKNN loadedParams(long k, MetricHandle metric) {
    vxClassifierTrainParamsKNN params(1);
    load(archiveOf([&](vxArchive& archive) {
             putLevels(archive, 3);
             vxClassifierCosts costs(1.0);
             archive || k || metric || costs;
         }),
         params);
    return params;
}

/// A store as an archive brings it: with null patterns or vectors of different length.
inline vxClassifierDataProviderMemory loadedStore(std::vector<PatternHandle> patterns,
                                                  std::vector<long> patternLabels) {
    vxClassifierDataProviderMemory store;
    load(archiveOf([&](vxArchive& archive) {
             putLevels(archive, 3);
             std::wstring text;
             archive || text || text || patterns || patternLabels;
         }),
         store);
    return store;
}

/// A trained classifier that an archive brings with this store and these parameters, by default with K = 1.
inline OpenKNN
loadedClassifier(const vxClassifierDataProviderMemory& data,
                 vxPtrHandle<vxClassifierTrainParams> params = vxClassifierTrainParamsKNN(1).clone()) {
    OpenKNN classifier;
    load(archiveOf([&](vxArchive& archive) {
             putLevels(archive, 3);
             vxPtrHandle<vxClassifierDataProviderMemory> store(new vxClassifierDataProviderMemory(data));
             archive || params || store;
         }),
         classifier);
    return classifier;
}

} // namespace test

#endif
