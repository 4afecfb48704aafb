#ifndef TESTS_LAWS_FAMILIES_H
#define TESTS_LAWS_FAMILIES_H

#include <vxclassifier/category_model_bayesian.h>
#include <vxclassifier/classifier.h>
#include <vxclassifier/classifier_data_provider.h>
#include <vxclassifier/decision_tree.h>
#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/pattern_distance_metric.h>
#include <vxclassifier/platform/exception.h>
#include <vxclassifier/platform/persistent.h>
#include <vxclassifier/predicate_function.h>
#include <vxclassifier/probability_density_function.h>

#include <memory>
#include <typeinfo>
#include <vector>

namespace laws {

/// An object of any class that archives can hold: kept by a share if it is counted, by itself if not.
using Object = std::shared_ptr<vxPersistent>;

Object own(vxPersistent* object);

/// The object that an archive holds by pointer, and nothing else.
Object loadPointer(const std::vector<unsigned char>& sealed);

/// What comes back when the object is stored by pointer.
Object reloaded(const vxPersistent& object);

template <class T>
const T& as(const vxPersistent& object) {
    return dynamic_cast<const T&>(object);
}

/// The class that the object was made as.
inline const std::type_info& classOf(const vxPersistent& object) {
    return typeid(object);
}

// How the objects of a family compare: the first one is asked whether the second one is equal. A new family
// adds its line here and in families.cpp.
bool areEqual(const vxException& a, const vxPersistent& b);
bool areEqual(const vxFeaturePattern& a, const vxPersistent& b);
bool areEqual(const vxClassifierDataProvider& a, const vxPersistent& b);
bool areEqual(const vxClassifierTrainParams& a, const vxPersistent& b);
bool areEqual(const vx_Classifier& a, const vxPersistent& b);
bool areEqual(const vxPatternDistanceMetric& a, const vxPersistent& b);
bool areEqual(const vxPredicateFunction& a, const vxPersistent& b);
bool areEqual(const vxDecisionTree& a, const vxPersistent& b);
bool areEqual(const vx_ProbabilityDensityFunction& a, const vxPersistent& b);
bool areEqual(const vx_CategoryModelBayesian& a, const vxPersistent& b);

/// The way to what only the frame may ask of parameters.
struct ParamsAccess : vxClassifierTrainParams {
    static bool isEqual(const vxClassifierTrainParams& asked, const vxClassifierTrainParams& other);
    static bool isSameTechnique(const vxClassifierTrainParams& asked, const vxClassifierTrainParams& other);
    static vxPtrHandle<vx_Classifier> newClassifier(const vxClassifierTrainParams& asked);
};

} // namespace laws

#endif
