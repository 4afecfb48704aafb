#ifndef VXCLASSIFIER_PLATFORM_RANDOM_H
#define VXCLASSIFIER_PLATFORM_RANDOM_H

#include <vxclassifier/platform/export.h>

#include <memory>

namespace detail {
class RandomBits;
}

/// Repeatable uniformly distributed numbers: the same seed gives the same doubles on every machine, compiler
/// and standard library (64-bit Mersenne twister, and a transformation that uses exactly rounded operations
/// only).
///
/// Initial state: the sequence of the given seed, from its beginning. A copy continues where the original is.
///
/// Ownership: a plain value. Threads: `next` changes the object; give each thread its own.
class VXCLASSIFIER_API vxRandomUniform {
public:
    /// Only the low 32 bits of the seed count.
    explicit vxRandomUniform(long seed);
    vxRandomUniform(const vxRandomUniform&);
    vxRandomUniform& operator=(const vxRandomUniform&);
    ~vxRandomUniform();

    /// low + (high - low) * u with u one of the 2^53 multiples of 2^-53 in [0, 1), all equally likely.
    /// Rounding can make the value equal to `high`.
    double next(double low, double high);

private:
    std::unique_ptr<detail::RandomBits> bits_; // never null
};

/// Repeatable normally distributed numbers, as portable as those of vxRandomUniform. Each number takes one
/// draw: the inverse of the normal distribution function at the middle of one of 2^53 equal parts of (0, 1),
/// by the rational approximations of Wichura, "Algorithm AS 241: The Percentage Points of the Normal
/// Distribution", Applied Statistics 37 (1988).
///
/// Initial state, ownership, threads: as for vxRandomUniform.
class VXCLASSIFIER_API vxRandomGaussian {
public:
    /// Only the low 32 bits of the seed count.
    explicit vxRandomGaussian(long seed);
    vxRandomGaussian(const vxRandomGaussian&);
    vxRandomGaussian& operator=(const vxRandomGaussian&);
    ~vxRandomGaussian();

    /// mean + standardDeviation * z with z standard normal; |z| stays below 8.3.
    double next(double mean, double standardDeviation);

private:
    std::unique_ptr<detail::RandomBits> bits_; // never null
};

#endif
