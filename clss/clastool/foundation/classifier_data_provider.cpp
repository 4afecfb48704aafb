#include <vxclassifier/classifier_data_provider.h>

#include "platform/archive/class_level.h"

vxClassifierDataProvider::vxClassifierDataProvider() noexcept = default;
vxClassifierDataProvider::vxClassifierDataProvider(const vxClassifierDataProvider&) noexcept = default;
vxClassifierDataProvider&
vxClassifierDataProvider::operator=(const vxClassifierDataProvider&) noexcept = default;
vxClassifierDataProvider::~vxClassifierDataProvider() = default;

void vxClassifierDataProvider::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

bool vxClassifierDataProvider::isEqual_(const vxClassifierDataProvider&) const {
    return true;
}

void vxClassifierDataProvider::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxPersistent::dispatchSerialize(archive);
}
