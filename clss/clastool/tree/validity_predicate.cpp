#include <vxclassifier/validity_predicate.h>

#include "clss/clastool/tree/measurement_index.h"
#include "platform/archive/class_level.h"

#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/platform/archive.h>

#include <algorithm>

vx_Instantiator vxValidityPredicate::sExemplar(typeid(vxValidityPredicate), &vxValidityPredicate::make);

vxValidityPredicate::vxValidityPredicate() : measurementIndices_{0} {}

vxValidityPredicate::vxValidityPredicate(const std::vector<long>& indices) : measurementIndices_(indices) {
    detail::requireMeasurementIndices(measurementIndices_);
}

vxValidityPredicate::vxValidityPredicate(const vxValidityPredicate&) = default;
vxValidityPredicate& vxValidityPredicate::operator=(const vxValidityPredicate&) = default;
vxValidityPredicate::~vxValidityPredicate() = default;

vxPersistent* vxValidityPredicate::make() {
    return new vxValidityPredicate;
}

bool vxValidityPredicate::outcome(const vxFeaturePattern& pattern) const {
    return std::all_of(measurementIndices_.begin(), measurementIndices_.end(),
                       [&pattern](long index) { return pattern.isValid(index); });
}

vxPtrHandle<vxPredicateFunction> vxValidityPredicate::clone() const {
    return vxPtrHandle<vxPredicateFunction>(new vxValidityPredicate(*this));
}

bool vxValidityPredicate::isEqual(const vxPredicateFunction& other) const {
    const auto* validity = dynamic_cast<const vxValidityPredicate*>(&other);
    return validity != nullptr && measurementIndices_ == validity->measurementIndices_;
}

void vxValidityPredicate::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vxValidityPredicate::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxPredicateFunction::dispatchSerialize(archive);
    archive || measurementIndices_;
}
