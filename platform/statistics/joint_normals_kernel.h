#ifndef PLATFORM_STATISTICS_JOINT_NORMALS_KERNEL_H
#define PLATFORM_STATISTICS_JOINT_NORMALS_KERNEL_H

#include "platform/statistics/joint_normals.h"
#include "platform/statistics/whitening_kernel.h"

namespace detail {

/// What JointNormals computes. `standardised` has room for the measurements of each member.
template <class Lanes>
VXCLASSIFIER_INLINE bool evaluateMembersIn(const JointNormals::Member* begin, const JointNormals::Member* end,
                                           const double* values, double* standardised,
                                           double* logValues) noexcept {
    bool areNear = true;
    for (const JointNormals::Member* member = begin; member != end; ++member) {
        const double squaredLength =
            squaredLengthIn<Lanes>(member->block, member->order, values + member->first, standardised);
        areNear &= squaredLength <= CorrelatedNormal::surelyNear;
        *logValues++ = member->logNormaliser - 0.5 * squaredLength;
    }
    return areNear;
}

} // namespace detail

#endif
