#include <vxclassifier/classifier_train_params.h>

#include "platform/archive/class_level.h"

vxClassifierTrainParams::vxClassifierTrainParams() noexcept = default;

// The virtual bases have nothing to copy, and the flag of a copy is the default one.
vxClassifierTrainParams::vxClassifierTrainParams(const vxClassifierTrainParams& other) noexcept
    : vxPersistent(other), vxRepBase(other) {}

vxClassifierTrainParams& vxClassifierTrainParams::operator=(const vxClassifierTrainParams&) noexcept {
    return *this;
}

vxClassifierTrainParams::~vxClassifierTrainParams() = default;

bool vxClassifierTrainParams::isEqual_(const vxClassifierTrainParams&) const {
    return true;
}

void vxClassifierTrainParams::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vxClassifierTrainParams::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxPersistent::dispatchSerialize(archive);
}
