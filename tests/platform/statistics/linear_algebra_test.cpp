#include "platform/statistics/linear_algebra.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using detail::choleskyFactor;
using detail::inverseOf;
using detail::PackedLower;
using detail::smallestEigenvalue;

/// The correlation matrix with the same correlation everywhere; its eigenvalues are known.
PackedLower equallyCorrelated(std::size_t order, double r) {
    PackedLower matrix(order);
    for (std::size_t row = 0; row < order; ++row) {
        for (std::size_t column = 0; column <= row; ++column) {
            matrix(row, column) = row == column ? 1.0 : r;
        }
    }
    return matrix;
}

TEST(LinearAlgebra, PacksColumnAfterColumn) {
    PackedLower matrix(3);
    matrix(2, 1) = 5.0;
    EXPECT_EQ(matrix.column(1)[1], 5.0);
    EXPECT_EQ(matrix.column(1), matrix.column(0) + 3);
    EXPECT_EQ(matrix.column(2), matrix.column(0) + 5);
}

TEST(LinearAlgebra, FactorTimesItsTransposeIsTheMatrix) {
    for (const std::size_t order : {1U, 2U, 5U, 40U, 130U}) {
        const PackedLower matrix = equallyCorrelated(order, 0.3);
        PackedLower factor;
        ASSERT_TRUE(choleskyFactor(matrix, 0.25, factor));
        for (std::size_t row = 0; row < order; ++row) {
            for (std::size_t column = 0; column <= row; ++column) {
                double sum = 0.0;
                for (std::size_t k = 0; k <= column; ++k) {
                    sum += factor(row, k) * factor(column, k);
                }
                EXPECT_NEAR(sum, matrix(row, column) - (row == column ? 0.25 : 0.0), 1e-14);
            }
        }
    }
}

TEST(LinearAlgebra, FactorTimesItsInverseIsTheIdentity) {
    for (const std::size_t order : {0U, 1U, 2U, 7U, 40U}) {
        PackedLower factor;
        ASSERT_TRUE(choleskyFactor(equallyCorrelated(order, 0.3), 0.25, factor));
        const PackedLower inverse = inverseOf(factor);
        ASSERT_EQ(inverse.order(), order);
        for (std::size_t row = 0; row < order; ++row) {
            for (std::size_t column = 0; column <= row; ++column) {
                double sum = 0.0;
                for (std::size_t k = column; k <= row; ++k) {
                    sum += factor(row, k) * inverse(k, column);
                }
                EXPECT_NEAR(sum, row == column ? 1.0 : 0.0, 1e-14);
            }
        }
    }
}

TEST(LinearAlgebra, ThereIsNoFactorOfAMatrixThatIsNotPositiveDefinite) {
    PackedLower factor;
    EXPECT_FALSE(choleskyFactor(equallyCorrelated(3, -0.6), 0.0, factor));
    EXPECT_FALSE(choleskyFactor(equallyCorrelated(3, 0.3), 0.75, factor));
    EXPECT_TRUE(choleskyFactor(PackedLower(), 0.0, factor));
    EXPECT_EQ(factor.order(), 0U);
}

TEST(LinearAlgebra, FindsTheSmallestEigenvalue) {
    EXPECT_NEAR(smallestEigenvalue(equallyCorrelated(1, 0.0)), 1.0, 1e-15);
    EXPECT_NEAR(smallestEigenvalue(equallyCorrelated(6, 0.3)), 0.7, 1e-14);
    EXPECT_NEAR(smallestEigenvalue(equallyCorrelated(40, 1.0)), 0.0, 1e-13);
    EXPECT_NEAR(smallestEigenvalue(equallyCorrelated(4, -0.5)), -0.5, 1e-14);
}

} // namespace
