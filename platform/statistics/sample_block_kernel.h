#ifndef PLATFORM_STATISTICS_SAMPLE_BLOCK_KERNEL_H
#define PLATFORM_STATISTICS_SAMPLE_BLOCK_KERNEL_H

#include "platform/statistics/lanes.h"

#include <cstddef>

namespace detail {

/// A block of samples as seen from the mean of the statistics that it enters. Rows lie `stride` numbers apart
/// and are filled up with zeros to whole lanes.
struct BlockDifferences {
    const double* rows; // of the differences
    std::size_t numRows;
    std::size_t stride;
    const double* sums;         // one row: the sums of the differences
    const double* shiftsOfMean; // one row: these divided by the number of all samples
    double* products;           // one row of working memory
};

/// What is left of the old covariance, and what a sum of products adds to it.
struct BlockWeights {
    double ofOldLost; // the samples of the block, divided by all samples less one
    double ofProducts;
};

/// Puts the sums of products of one measurement with itself and those behind it into `products`. Each is a
/// sum in the order of the samples.
template <class Lanes>
VXCLASSIFIER_INLINE void addUpProductsIn(const BlockDifferences& block, std::size_t measurement) noexcept {
    for (std::size_t first = measurement / numLanes * numLanes; first < block.stride; first += numLanes) {
        Lanes products;
        for (std::size_t i = 0; i < block.numRows; ++i) {
            const double* const row = block.rows + i * block.stride;
            Lanes differences;
            differences.load(row + first);
            products.addProduct(differences, row[measurement]);
        }
        products.store(block.products + first);
    }
}

/// Adds to averages that are kept as doubles and their rounding errors; no sum may overflow.
VXCLASSIFIER_INLINE void addToAverage(double& average, double& rest, double increment) noexcept {
    const double sum = average + increment;
    const double part = sum - average;
    const double error = (average - (sum - part)) + (increment - part);
    const double wholeRest = rest + error;
    average = sum + wholeRest;
    rest = wholeRest - (average - sum);
}

/// Brings the covariances of one measurement with itself and those behind it up to date. The scatter around
/// the old mean is that of all samples around the new one, and the shift of the mean.
VXCLASSIFIER_INLINE void updateCovariances(const BlockDifferences& block, const BlockWeights& weights,
                                           std::size_t measurement, std::size_t number,
                                           double* __restrict covariances,
                                           double* __restrict rests) noexcept {
    const double shift = block.shiftsOfMean[measurement];
    const double* __restrict const products = block.products + measurement;
    const double* __restrict const sums = block.sums + measurement;
    for (std::size_t i = 0; i < number; ++i) {
        const double scatter = products[i] - shift * sums[i];
        const double lost = covariances[i] * weights.ofOldLost;
        const double increment = (scatter * weights.ofProducts - lost) - rests[i] * weights.ofOldLost;
        addToAverage(covariances[i], rests[i], increment);
    }
}

/// Brings the upper triangle of a covariance up to date; `covariances(i)` and `rests(i)` give the entries of
/// measurement i with itself and those behind it.
template <class Lanes, class Covariances, class Rests>
VXCLASSIFIER_INLINE void enterBlockIn(const BlockDifferences& block, const BlockWeights& weights,
                                      std::size_t size, Covariances covariances, Rests rests) noexcept {
    for (std::size_t i = 0; i < size; ++i) {
        addUpProductsIn<Lanes>(block, i);
        updateCovariances(block, weights, i, size - i, covariances(i), rests(i));
    }
}

} // namespace detail

#endif
