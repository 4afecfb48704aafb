#include "platform/statistics/whitening.h"

#include "platform/statistics/whitening_kernel.h"

namespace detail {

namespace {

void appendRows(const PackedLower& inverse, std::size_t top, std::vector<double>& block) {
    for (std::size_t column = 0; column < numColumns(top, inverse.order()); ++column) {
        for (std::size_t row = top; row < top + numLanes; ++row) {
            const bool isEntry = row < inverse.order() && column <= row;
            block.push_back(isEntry ? inverse(row, column) : 0.0);
        }
    }
}

} // namespace

/// Deviations are roots of doubles, so their reciprocals neither overflow nor underflow.
Whitening::Whitening(const std::vector<VaryingMeasurement>& measurements, const PackedLower& factor)
    : order_(measurements.size()), block_(2 * paddedToLanes(order_)) {
    for (std::size_t i = 0; i < order_; ++i) {
        block_[i] = measurements[i].mean;
        block_[paddedToLanes(order_) + i] = 1.0 / measurements[i].deviation;
    }
    const PackedLower inverse = inverseOf(factor);
    for (std::size_t top = 0; top < order_; top += numLanes) {
        appendRows(inverse, top, block_);
    }
}

#if VXCLASSIFIER_HAS_AVX2
VXCLASSIFIER_AVX2
#endif
double Whitening::squaredLengthInWideLanes(const double* block, std::size_t order, const double* values,
                                           double* standardised) noexcept {
    return squaredLengthIn<WideLanes>(block, order, values, standardised);
}

double Whitening::squaredLengthInNarrowLanes(const double* block, std::size_t order, const double* values,
                                             double* standardised) noexcept {
    return squaredLengthIn<NarrowLanes>(block, order, values, standardised);
}

} // namespace detail
