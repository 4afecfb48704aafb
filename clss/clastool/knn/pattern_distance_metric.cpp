#include <vxclassifier/pattern_distance_metric.h>

#include "platform/archive/class_level.h"

vxPatternDistanceMetric::vxPatternDistanceMetric() noexcept = default;
vxPatternDistanceMetric::vxPatternDistanceMetric(const vxPatternDistanceMetric&) noexcept = default;
// Not defaulted: that would assign the virtual bases, perhaps twice.
vxPatternDistanceMetric& vxPatternDistanceMetric::operator=(const vxPatternDistanceMetric&) noexcept {
    return *this;
}
vxPatternDistanceMetric::~vxPatternDistanceMetric() = default;

bool vxPatternDistanceMetric::isEquivalent(const vxPatternDistanceMetric&) const {
    return true;
}

void vxPatternDistanceMetric::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vxPatternDistanceMetric::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxPersistent::dispatchSerialize(archive);
}
