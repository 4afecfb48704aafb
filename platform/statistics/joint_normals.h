#ifndef PLATFORM_STATISTICS_JOINT_NORMALS_H
#define PLATFORM_STATISTICS_JOINT_NORMALS_H

#include "platform/statistics/normal_density.h"

#include <cstddef>
#include <vector>

namespace detail {

/// Normal densities of several measurements, evaluated one after the other in one place with the bits of
/// NormalDensity: with few measurements, the ways to each density and back take longer than the arithmetic.
class JointNormals {
public:
    /// Whether a density is the normal density of measurements that all vary.
    static bool canTake(const NormalDensity& density) noexcept;

    /// Refers to such a density, which has to live as long; it reads the values from `first` on.
    void append(const NormalDensity& density, std::size_t first);

    /// Puts the log value of each density at the values of a pattern into `logValues`. False, with anything
    /// there, if a value is so far away that NormalDensity has to be asked.
    bool evaluate(const double* values, double* logValues) const;

    std::size_t size() const noexcept { return members_.size(); }

    struct Member {
        const double* block; // of the whitening
        std::size_t order;
        std::size_t first;
        double logNormaliser;
    };

private:
    std::vector<Member> members_;
    std::size_t largestOrder_ = 0;
};

} // namespace detail

#endif
