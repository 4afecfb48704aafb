#ifndef PLATFORM_STATISTICS_SAMPLE_BLOCK_KERNEL_H
#define PLATFORM_STATISTICS_SAMPLE_BLOCK_KERNEL_H

#include "platform/statistics/lanes.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

namespace detail {

/// A block of samples as seen from the mean of the statistics that it enters. Rows lie `stride` numbers apart
/// and are filled up with zeros to whole lanes.
struct BlockDifferences {
    const double* rows; // of the differences
    std::size_t numRows;
    std::size_t stride;
    const double* sums;         // one row: the sums of the differences
    const double* shiftsOfMean; // one row: these divided by the number of all samples
    double* products;           // productRows rows of working memory

    /// So many measurements at a time are multiplied with those behind them.
    static constexpr std::size_t productRows = 4;
};

/// What is left of the old covariance, and what a sum of products adds to it.
struct BlockWeights {
    double ofOldLost; // the samples of the block, divided by all samples less one
    double ofProducts;
};

/// Copies a sample, which may stand there already, into a row. Says whether all of its values are finite.
template <class Lanes>
VXCLASSIFIER_INLINE bool takeSampleIn(const double* values, std::size_t size, double* row) noexcept {
    using Numbers = Register<typename Lanes::Numbers>;
    SizeCheck<typename Lanes::Numbers> check(std::numeric_limits<double>::max());
    Numbers numbers;
    std::size_t i = 0;
    for (; i + Numbers::size <= size; i += Numbers::size) {
        numbers.load(values + i);
        numbers.store(row + i);
        check.look(numbers);
    }
    if (i < size) {
        std::memmove(row + i, values + i, (size - i) * sizeof(double));
        numbers.load(row + i); // with the zeros behind the sample
        check.look(numbers);
    }
    return check.areAllWithin();
}

/// Makes the differences of samples from a mean, which is given as doubles and their rounding errors, and
/// adds them up in the order of the samples. Says whether all differences are within the limit. All rows have
/// zeros behind the measurements.
template <class Lanes>
VXCLASSIFIER_INLINE bool makeDifferencesIn(const double* samples, std::size_t numSamples, std::size_t stride,
                                           const double* means, const double* rests, double limit,
                                           double* differences, double* sums) noexcept {
    SizeCheck<typename Lanes::Numbers> check(limit);
    for (std::size_t i = 0; i < stride; i += numLanes) {
        Lanes mean;
        Lanes rest;
        Lanes sum;
        mean.load(means + i);
        rest.load(rests + i);
        for (std::size_t sample = 0; sample < numSamples; ++sample) {
            Lanes numbers;
            numbers.load(samples + sample * stride + i);
            numbers.subtract(mean);
            numbers.subtract(rest);
            numbers.store(differences + sample * stride + i);
            sum.add(numbers);
            check.look(numbers);
        }
        sum.store(sums + i);
    }
    return check.areAllWithin();
}

/// Puts the sums of products of four measurements with themselves and those behind them into the four rows of
/// products. Each is a sum in the order of the samples. Sixteen sums at a time stay in registers, and while
/// one of them waits for its last addition the others get theirs.
template <class Lanes>
VXCLASSIFIER_INLINE void addUpProductsIn(const BlockDifferences& block, std::size_t measurement,
                                         std::size_t size) noexcept {
    using Four = typename Lanes::Half;
    static_assert(Four::size == BlockDifferences::productRows, "tiles are squares");
    for (std::size_t first = measurement; first < size; first += Four::size) {
        Four sums0;
        Four sums1;
        Four sums2;
        Four sums3;
        const double* row = block.rows;
        for (std::size_t i = 0; i < block.numRows; ++i) {
            Four differences;
            differences.load(row + first);
            sums0.addProduct(differences, row[measurement]);
            sums1.addProduct(differences, row[measurement + 1]);
            sums2.addProduct(differences, row[measurement + 2]);
            sums3.addProduct(differences, row[measurement + 3]);
            row += block.stride;
        }
        double* const products = block.products + first;
        sums0.store(products);
        sums1.store(products + block.stride);
        sums2.store(products + 2 * block.stride);
        sums3.store(products + 3 * block.stride);
    }
}

/// Adds to averages that are kept as numbers and their rounding errors, one at a time or many side by side;
/// no sum may overflow.
template <class Number>
VXCLASSIFIER_INLINE void addToAverage(Number& average, Number& rest, const Number& increment) noexcept {
    const Number sum = average + increment;
    const Number part = sum - average;
    const Number error = (average - (sum - part)) + (increment - part);
    const Number wholeRest = rest + error;
    average = sum + wholeRest;
    rest = wholeRest - (average - sum);
}

/// What a covariance becomes, or many do. The scatter around the old mean is that of all samples around the
/// new one, and the shift of the mean.
template <class Number>
VXCLASSIFIER_INLINE void updateCovariance(const Number& product, const Number& sum, double shift,
                                          const BlockWeights& weights, Number& covariance,
                                          Number& rest) noexcept {
    const Number scatter = product - sum * shift;
    const Number lost = covariance * weights.ofOldLost;
    const Number increment = (scatter * weights.ofProducts - lost) - rest * weights.ofOldLost;
    addToAverage(covariance, rest, increment);
}

/// Brings the covariances of one measurement with itself and those behind it up to date; `products` has their
/// sums of products.
template <class Lanes>
VXCLASSIFIER_INLINE void
updateCovariancesIn(const BlockDifferences& block, const BlockWeights& weights, std::size_t measurement,
                    std::size_t number, const double* products, double* covariances, double* rests) noexcept {
    using Numbers = Register<typename Lanes::Numbers>;
    const double shift = block.shiftsOfMean[measurement];
    const double* const sums = block.sums + measurement;
    std::size_t i = 0;
    for (; i + Numbers::size <= number; i += Numbers::size) {
        Numbers product;
        Numbers sum;
        Numbers covariance;
        Numbers rest;
        product.load(products + i);
        sum.load(sums + i);
        covariance.load(covariances + i);
        rest.load(rests + i);
        updateCovariance(product.numbers, sum.numbers, shift, weights, covariance.numbers, rest.numbers);
        covariance.store(covariances + i);
        rest.store(rests + i);
    }
    for (; i < number; ++i) {
        updateCovariance(products[i], sums[i], shift, weights, covariances[i], rests[i]);
    }
}

/// Brings the upper triangle of a covariance up to date; `covariances(i)` and `rests(i)` give the entries of
/// measurement i with itself and those behind it.
template <class Lanes, class Covariances, class Rests>
VXCLASSIFIER_INLINE void enterBlockIn(const BlockDifferences& block, const BlockWeights& weights,
                                      std::size_t size, Covariances covariances, Rests rests) noexcept {
    for (std::size_t first = 0; first < size; first += BlockDifferences::productRows) {
        addUpProductsIn<Lanes>(block, first, size);
        const std::size_t end = std::min(size, first + BlockDifferences::productRows);
        const double* products = block.products;
        for (std::size_t i = first; i < end; ++i) {
            updateCovariancesIn<Lanes>(block, weights, i, size - i, products + i, covariances(i), rests(i));
            products += block.stride;
        }
    }
}

} // namespace detail

#endif
