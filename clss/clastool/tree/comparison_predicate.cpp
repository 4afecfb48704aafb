#include <vxclassifier/comparison_predicate.h>

#include "clss/clastool/tree/measurement_index.h"
#include "platform/archive/class_level.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/platform/archive.h>

vx_Instantiator vxComparisonPredicate::sExemplar(typeid(vxComparisonPredicate), &vxComparisonPredicate::make);

vxComparisonPredicate::vxComparisonPredicate() noexcept = default;

vxComparisonPredicate::vxComparisonPredicate(long measurementIndex1, long measurementIndex2)
    : measurementIndex1_(measurementIndex1), measurementIndex2_(measurementIndex2) {
    if (measurementIndex1 == measurementIndex2) {
        throw vxClassifierDefs::BadParams(L"Measurement indices must be different.");
    }
    detail::requireMeasurementIndex(measurementIndex1);
    detail::requireMeasurementIndex(measurementIndex2);
}

vxComparisonPredicate::vxComparisonPredicate(const vxComparisonPredicate&) noexcept = default;
vxComparisonPredicate& vxComparisonPredicate::operator=(const vxComparisonPredicate&) noexcept = default;
vxComparisonPredicate::~vxComparisonPredicate() = default;

vxPersistent* vxComparisonPredicate::make() {
    return new vxComparisonPredicate;
}

bool vxComparisonPredicate::outcome(const vxFeaturePattern& pattern) const {
    if (!pattern.isValid(measurementIndex1_) || !pattern.isValid(measurementIndex2_)) {
        return false;
    }
    return pattern.featureMeasurement(measurementIndex1_, true) >
           pattern.featureMeasurement(measurementIndex2_, true);
}

vxPtrHandle<vxPredicateFunction> vxComparisonPredicate::clone() const {
    return vxPtrHandle<vxPredicateFunction>(new vxComparisonPredicate(*this));
}

bool vxComparisonPredicate::isEqual(const vxPredicateFunction& other) const {
    const auto* comparison = dynamic_cast<const vxComparisonPredicate*>(&other);
    return comparison != nullptr && measurementIndex1_ == comparison->measurementIndex1_ &&
           measurementIndex2_ == comparison->measurementIndex2_;
}

void vxComparisonPredicate::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vxComparisonPredicate::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxPredicateFunction::dispatchSerialize(archive);
    archive || measurementIndex1_;
    archive || measurementIndex2_;
}
