#include "platform/statistics/joint_normals.h"

#include "platform/statistics/joint_normals_kernel.h"
#include "platform/statistics/scratch.h"

#include <algorithm>

namespace detail {

namespace {

using Member = JointNormals::Member;

#if VXCLASSIFIER_HAS_AVX2
VXCLASSIFIER_AVX2 bool evaluateInWideLanes(const Member* begin, const Member* end, const double* values,
                                           double* standardised, double* logValues) noexcept {
    return evaluateMembersIn<WideLanes>(begin, end, values, standardised, logValues);
}
#endif

bool evaluateAll(const Member* begin, const Member* end, const double* values, double* standardised,
                 double* logValues) noexcept {
#if VXCLASSIFIER_HAS_AVX2
    if (hasAvx2()) {
        return evaluateInWideLanes(begin, end, values, standardised, logValues);
    }
#endif
    return evaluateMembersIn<NarrowLanes>(begin, end, values, standardised, logValues);
}

} // namespace

bool JointNormals::canTake(const NormalDensity& density) noexcept {
    return density.constant().empty(); // so those that vary are all of them, in order
}

void JointNormals::append(const NormalDensity& density, std::size_t first) {
    const CorrelatedNormal& normal = density.varying();
    const std::size_t order = normal.measurements().size();
    members_.push_back({normal.whitening().block(), order, first, normal.logNormaliser()});
    largestOrder_ = std::max(largestOrder_, order);
}

bool JointNormals::evaluate(const double* values, double* logValues) const {
    Scratch<double> standardised(largestOrder_);
    const Member* const begin = members_.data();
    return evaluateAll(begin, begin + members_.size(), values, standardised.data(), logValues);
}

} // namespace detail
