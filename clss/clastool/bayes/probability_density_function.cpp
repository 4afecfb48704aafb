#include <vxclassifier/probability_density_function.h>

#include "platform/archive/class_level.h"

vx_ProbabilityDensityFunction::vx_ProbabilityDensityFunction() noexcept = default;
vx_ProbabilityDensityFunction::vx_ProbabilityDensityFunction(const vx_ProbabilityDensityFunction&) noexcept =
    default;
vx_ProbabilityDensityFunction&
vx_ProbabilityDensityFunction::operator=(const vx_ProbabilityDensityFunction&) noexcept = default;
vx_ProbabilityDensityFunction::~vx_ProbabilityDensityFunction() = default;

void vx_ProbabilityDensityFunction::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vx_ProbabilityDensityFunction::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxPersistent::dispatchSerialize(archive);
}
