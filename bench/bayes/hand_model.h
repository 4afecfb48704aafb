#ifndef BENCH_BAYES_HAND_MODEL_H
#define BENCH_BAYES_HAND_MODEL_H

#include "bench/bayes/bayes.h"

#include <cstddef>
#include <vector>

namespace bench::bayes {

/// A multivariate normal distribution as one would write it for oneself: the mean, the Cholesky factor's rows
/// one after the other, the reciprocals of its diagonal, and the logarithm of the constant factor.
class HandJoint {
public:
    HandJoint(const Workload& workload, std::size_t category);

    /// By one triangular solve. `scratch` has room for one row.
    double logDensity(const double* row, double* scratch) const noexcept;

private:
    void accumulate(const Workload& workload, std::size_t category);
    void factorize();

    std::size_t size_;
    std::vector<double> mean_;
    std::vector<double> factor_;      // lower triangle, packed
    std::vector<double> reciprocals_; // of the diagonal
    double logFactor_ = 0.0;
};

/// The same for measurements that do not depend on each other.
class HandIndependent {
public:
    HandIndependent(const Workload& workload, std::size_t category);

    double logDensity(const double* row, double* scratch) const noexcept;

private:
    std::vector<double> mean_;
    std::vector<double> reciprocals_; // of twice the variances
    double logFactor_ = 0.0;
};

} // namespace bench::bayes

#endif
