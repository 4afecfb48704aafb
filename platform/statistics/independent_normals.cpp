#include "platform/statistics/independent_normals.h"

#include "platform/statistics/independent_normals_kernel.h"

#include <algorithm>

namespace detail {

namespace {

#if VXCLASSIFIER_HAS_AVX2
VXCLASSIFIER_AVX2 void toLogValuesInWideLanes(const double* block, std::size_t padded,
                                              double* values) noexcept {
    toLogValuesIn<WideLanes>(block, padded, values);
}
#endif

void toLogValues(const double* block, std::size_t padded, double* values) noexcept {
#if VXCLASSIFIER_HAS_AVX2
    if (hasAvx2()) {
        toLogValuesInWideLanes(block, padded, values);
        return;
    }
#endif
    toLogValuesIn<NarrowLanes>(block, padded, values);
}

} // namespace

bool IndependentNormals::canTake(const NormalDensity& density) noexcept {
    return density.constant().empty() && density.varying().measurements().size() == 1;
}

void IndependentNormals::append(const NormalDensity& density, std::size_t index) {
    const VaryingMeasurement& measurement = density.varying().measurements().front();
    const std::size_t lane = size() % numLanes;
    if (lane == 0) {
        block_.resize(block_.size() + 3 * numLanes);
    }
    double* const group = block_.data() + block_.size() - 3 * numLanes;
    areLeading_ = areLeading_ && index == size();
    indices_.push_back(index);
    group[lane] = measurement.mean;
    group[numLanes + lane] = 1.0 / measurement.deviation;
    group[2 * numLanes + lane] = density.varying().logNormaliser();
}

void IndependentNormals::logValues(const double* values, double* logValues) const noexcept {
    const std::size_t padded = paddedToLanes(size());
    fillLastLanes(logValues, padded);
    if (areLeading_) {
        std::copy_n(values, size(), logValues);
    } else {
        std::transform(indices_.begin(), indices_.end(), logValues,
                       [values](std::size_t index) { return values[index]; });
    }
    toLogValues(block_.data(), padded, logValues);
}

} // namespace detail
