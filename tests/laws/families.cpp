#include "tests/laws/families.h"

#include "tests/support/archives.h"

#include <vxclassifier/platform/archive.h>

#include <typeinfo>

namespace laws {

Object own(vxPersistent* object) {
    const auto* counted = dynamic_cast<const vxRepBase*>(object);
    if (counted == nullptr) {
        return Object(object);
    }
    vx_PtrHandleBase_RepAccessor::share(*counted);
    return Object(object, [counted](vxPersistent*) { vx_PtrHandleBase_RepAccessor::release(*counted); });
}

Object loadPointer(const std::vector<unsigned char>& sealed) {
    vxLoadingArchive archive(sealed);
    vxPersistent* loaded = nullptr;
    vxPersistent::serializePointer(archive, nullptr, loaded);
    const Object object = loaded == nullptr ? nullptr : own(loaded);
    archive.finish();
    return object;
}

Object reloaded(const vxPersistent& object) {
    return loadPointer(test::storedPointer(const_cast<vxPersistent*>(&object)));
}

namespace {

/// Reaches the comparison that providers keep for their derived classes.
struct ProviderAccess : vxClassifierDataProvider {
    static bool isEqual(const vxClassifierDataProvider& asked, const vxClassifierDataProvider& other) {
        return (asked.*(&ProviderAccess::isEqual_))(other);
    }
};

} // namespace

bool areEqual(const vxException& a, const vxPersistent& b) {
    // Exceptions have no comparison of their own.
    const auto& other = as<vxException>(b);
    return typeid(a) == typeid(other) && a.message() == other.message();
}

bool areEqual(const vxFeaturePattern& a, const vxPersistent& b) {
    return a == as<vxFeaturePattern>(b);
}

bool areEqual(const vxClassifierDataProvider& a, const vxPersistent& b) {
    return ProviderAccess::isEqual(a, as<vxClassifierDataProvider>(b));
}

bool areEqual(const vxClassifierTrainParams& a, const vxPersistent& b) {
    return ParamsAccess::isEqual(a, as<vxClassifierTrainParams>(b));
}

bool areEqual(const vx_Classifier& a, const vxPersistent& b) {
    return a.isEquivalent(as<vx_Classifier>(b));
}

bool areEqual(const vxPatternDistanceMetric& a, const vxPersistent& b) {
    return a.isEquivalent(as<vxPatternDistanceMetric>(b));
}

bool areEqual(const vxPredicateFunction& a, const vxPersistent& b) {
    return a.isEqual(as<vxPredicateFunction>(b));
}

bool areEqual(const vxDecisionTree& a, const vxPersistent& b) {
    return a.isEqual(as<vxDecisionTree>(b));
}

bool areEqual(const vx_ProbabilityDensityFunction& a, const vxPersistent& b) {
    return a.isEquivalent(as<vx_ProbabilityDensityFunction>(b));
}

bool areEqual(const vx_CategoryModelBayesian& a, const vxPersistent& b) {
    return a == as<vx_CategoryModelBayesian>(b);
}

bool ParamsAccess::isEqual(const vxClassifierTrainParams& asked, const vxClassifierTrainParams& other) {
    return (asked.*(&ParamsAccess::isEqual_))(other);
}

bool ParamsAccess::isSameTechnique(const vxClassifierTrainParams& asked,
                                   const vxClassifierTrainParams& other) {
    return (asked.*(&ParamsAccess::isSameTechnique_))(other);
}

vxPtrHandle<vx_Classifier> ParamsAccess::newClassifier(const vxClassifierTrainParams& asked) {
    return vxPtrHandle<vx_Classifier>((asked.*(&ParamsAccess::newClassifier_))());
}

} // namespace laws
