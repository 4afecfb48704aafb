#include "platform/statistics/joint_normals.h"

#include "platform/statistics/scratch.h"
#include "platform/statistics/whitening_kernel.h"

#include <algorithm>

namespace detail {

namespace {

using Member = JointNormals::Member;

template <class Lanes>
VXCLASSIFIER_INLINE bool evaluateIn(const Member* begin, const Member* end, const double* values,
                                    double* standardised, double* logValues) noexcept {
    bool areNear = true;
    for (const Member* member = begin; member != end; ++member) {
        const double squaredLength =
            squaredLengthIn<Lanes>(member->block, member->order, values + member->first, standardised);
        areNear = areNear && squaredLength <= CorrelatedNormal::surelyNear;
        *logValues++ = member->logNormaliser - 0.5 * squaredLength;
    }
    return areNear;
}

#if VXCLASSIFIER_HAS_AVX2
VXCLASSIFIER_AVX2 bool evaluateInWideLanes(const Member* begin, const Member* end, const double* values,
                                           double* standardised, double* logValues) noexcept {
    return evaluateIn<WideLanes>(begin, end, values, standardised, logValues);
}
#endif

bool evaluateAll(const Member* begin, const Member* end, const double* values, double* standardised,
                 double* logValues) noexcept {
#if VXCLASSIFIER_HAS_AVX2
    if (hasAvx2()) {
        return evaluateInWideLanes(begin, end, values, standardised, logValues);
    }
#endif
    return evaluateIn<NarrowLanes>(begin, end, values, standardised, logValues);
}

} // namespace

bool JointNormals::canTake(const NormalDensity& density) noexcept {
    return density.constant().empty() && density.varying().areLeading();
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
