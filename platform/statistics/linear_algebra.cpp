#include "platform/statistics/linear_algebra.h"

// Vector code would add up in another order on each kind of processor; published results have the same bits
// on all of them.
#define EIGEN_DONT_VECTORIZE
#define EIGEN_DONT_PARALLELIZE
#define EIGEN_MPL2_ONLY
// Working memory comes from the heap: the caller's thread may have a small stack.
#define EIGEN_STACK_ALLOCATION_LIMIT 4096
#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>

namespace detail {

namespace {

Eigen::MatrixXd lowerTriangle(const PackedLower& packed, double shift) {
    const std::size_t order = packed.order();
    const Eigen::Index size = static_cast<Eigen::Index>(order);
    Eigen::MatrixXd matrix = Eigen::MatrixXd::Zero(size, size);
    for (std::size_t column = 0; column < order; ++column) {
        const Eigen::Index c = static_cast<Eigen::Index>(column);
        matrix.col(c).tail(size - c) = Eigen::Map<const Eigen::VectorXd>(packed.column(column), size - c);
        matrix(c, c) -= shift;
    }
    return matrix;
}

} // namespace

bool choleskyFactor(const PackedLower& matrix, double shift, PackedLower& factor) {
    if (matrix.order() == 0) {
        factor = PackedLower();
        return true;
    }
    Eigen::MatrixXd work = lowerTriangle(matrix, shift);
    const Eigen::LLT<Eigen::Ref<Eigen::MatrixXd>, Eigen::Lower> decomposition(work);
    if (decomposition.info() != Eigen::Success) {
        return false;
    }
    factor = PackedLower(matrix.order());
    for (std::size_t column = 0; column < matrix.order(); ++column) {
        const Eigen::Index c = static_cast<Eigen::Index>(column);
        const Eigen::Index length = work.rows() - c;
        Eigen::Map<Eigen::VectorXd>(factor.column(column), length) = work.col(c).tail(length);
    }
    return true;
}

/// Solves for each column of the identity, whose upper numbers are zeros and stay so.
PackedLower inverseOf(const PackedLower& lower) {
    const std::size_t order = lower.order();
    PackedLower inverse(order);
    for (std::size_t solved = 0; solved < order; ++solved) {
        double* const solution = inverse.column(solved);
        solution[0] = 1.0;
        for (std::size_t i = 0; i < order - solved; ++i) {
            const double* const column = lower.column(solved + i);
            solution[i] /= column[0];
            for (std::size_t below = i + 1; below < order - solved; ++below) {
                solution[below] -= column[below - i] * solution[i];
            }
        }
    }
    return inverse;
}

double smallestEigenvalue(const PackedLower& matrix) {
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(lowerTriangle(matrix, 0.0),
                                                                Eigen::EigenvaluesOnly);
    return solver.eigenvalues().minCoeff();
}

} // namespace detail
