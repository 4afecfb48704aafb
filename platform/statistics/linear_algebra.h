#ifndef PLATFORM_STATISTICS_LINEAR_ALGEBRA_H
#define PLATFORM_STATISTICS_LINEAR_ALGEBRA_H

#include <cstddef>
#include <vector>

namespace detail {

/// The lower triangle of a symmetric or triangular matrix, column by column, diagonal included.
class PackedLower {
public:
    PackedLower() = default;
    explicit PackedLower(std::size_t order) : order_(order), entries_(order * (order + 1) / 2) {}

    std::size_t order() const noexcept { return order_; }

    /// Where column `column` begins: its diagonal entry, followed by the entries below it.
    double* column(std::size_t column) noexcept { return entries_.data() + start(column); }
    const double* column(std::size_t column) const noexcept { return entries_.data() + start(column); }

    /// The entry of a row and a column, `column` <= `row`.
    double& operator()(std::size_t row, std::size_t column) noexcept {
        return entries_[start(column) + row - column];
    }
    double operator()(std::size_t row, std::size_t column) const noexcept {
        return entries_[start(column) + row - column];
    }

private:
    std::size_t start(std::size_t column) const noexcept { return column * (2 * order_ - column + 1) / 2; }

    std::size_t order_ = 0;
    std::vector<double> entries_; // order_ * (order_ + 1) / 2
};

/// The Cholesky factor of `matrix` minus `shift` times the identity. Returns false, with `factor` in an
/// unspecified state, if that matrix is not positive definite in the arithmetic of doubles. The entries must
/// be finite.
bool choleskyFactor(const PackedLower& matrix, double shift, PackedLower& factor);

/// The inverse of a triangular matrix without zeros on its diagonal.
PackedLower inverseOf(const PackedLower& lower);

/// The smallest eigenvalue of a symmetric matrix with finite entries, within a small multiple of the rounding
/// error of its norm.
double smallestEigenvalue(const PackedLower& matrix);

} // namespace detail

#endif
