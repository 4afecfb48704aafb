#include <vxclassifier/predicate_function.h>

#include "platform/archive/class_level.h"

vxPredicateFunction::vxPredicateFunction() noexcept = default;
vxPredicateFunction::vxPredicateFunction(const vxPredicateFunction&) noexcept = default;
vxPredicateFunction& vxPredicateFunction::operator=(const vxPredicateFunction&) noexcept = default;
vxPredicateFunction::~vxPredicateFunction() = default;

bool vxPredicateFunction::isEqual(const vxPredicateFunction&) const {
    return true;
}

void vxPredicateFunction::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vxPredicateFunction::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxPersistent::dispatchSerialize(archive);
}
