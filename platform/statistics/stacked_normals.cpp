#include "platform/statistics/stacked_normals.h"

#include "platform/statistics/scratch.h"
#include "platform/statistics/stacked_normals_kernel.h"

#include <algorithm>

namespace detail {

namespace {

#if VXCLASSIFIER_HAS_AVX2
VXCLASSIFIER_AVX2 void addUpStacksInWideLanes(const double* blocks, std::size_t size, const double* values,
                                              std::size_t number, double* sums) noexcept {
    addUpStacksIn<WideLanes>(blocks, size, values, number, sums);
}
#endif

void addUpStacks(const double* blocks, std::size_t size, const double* values, std::size_t number,
                 double* sums) noexcept {
#if VXCLASSIFIER_HAS_AVX2
    if (hasAvx2()) {
        addUpStacksInWideLanes(blocks, size, values, number, sums);
        return;
    }
#endif
    addUpStacksIn<NarrowLanes>(blocks, size, values, number, sums);
}

} // namespace

bool StackedNormals::canTake(const IndependentNormals& normals) const noexcept {
    return size_ == 0 || normals.indices() == indices_;
}

void StackedNormals::append(const IndependentNormals& normals) {
    const std::size_t number = normals.size();
    const std::size_t lane = size_ % membersOfStack;
    if (lane == 0) {
        blocks_.resize(blocks_.size() + 3 * membersOfStack * number);
        indices_ = normals.indices();
        areLeading_ = normals.areLeading();
    }
    std::size_t place = blocks_.size() - 3 * membersOfStack * number + lane;
    for (std::size_t i = 0; i < number; ++i) {
        const IndependentNormals::Parameters one = normals[i];
        blocks_[place] = one.mean;
        blocks_[place + membersOfStack] = one.reciprocalDeviation;
        blocks_[place + 2 * membersOfStack] = one.logNormaliser;
        place += 3 * membersOfStack;
    }
    ++size_;
}

bool StackedNormals::addUp(const double* values, double* sums) const {
    Scratch<double> scratch(areLeading_ ? 0 : indices_.size());
    if (!areLeading_) {
        std::transform(indices_.begin(), indices_.end(), scratch.data(),
                       [values](std::size_t index) { return values[index]; });
        values = scratch.data();
    }
    addUpStacks(blocks_.data(), size_, values, indices_.size(), sums);
    return std::all_of(sums, sums + size_, IndependentNormals::isCertainSum);
}

} // namespace detail
