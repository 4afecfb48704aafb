// What rounding errors could do to the factorisation of a correlation matrix, but do not for any matrix that
// is small enough for a test: the linker puts a factorisation in place of the library's own that fails when
// it is told to.

#include "platform/statistics/normal_density.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

namespace {

using detail::PackedLower;

/// Whether the factorisation of the matrix fails; asked only where the result is to be used.
std::function<bool(const PackedLower&)> fails = [](const PackedLower&) { return false; };
int numFactorisations = 0;

} // namespace

// The linker's names for what it puts in place of detail::choleskyFactor(), and for that itself.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {
bool __real__ZN6detail14choleskyFactorERKNS_11PackedLowerEdRS0_(const PackedLower& matrix, double shift,
                                                                PackedLower& factor);
bool __wrap__ZN6detail14choleskyFactorERKNS_11PackedLowerEdRS0_(const PackedLower& matrix, double shift,
                                                                PackedLower& factor);

bool __wrap__ZN6detail14choleskyFactorERKNS_11PackedLowerEdRS0_(const PackedLower& matrix, double shift,
                                                                PackedLower& factor) {
    if (shift == 0.0) {
        ++numFactorisations;
        if (fails(matrix)) {
            return false;
        }
    }
    return __real__ZN6detail14choleskyFactorERKNS_11PackedLowerEdRS0_(matrix, shift, factor);
}
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

namespace {

/// The density of two measurements with mean 0, deviation 1 and this correlation, as the library makes it.
double logValueOf(double correlation, const std::vector<double>& values) {
    double means[] = {0.0, 0.0};
    double covariances[] = {1.0, correlation, correlation, 1.0};
    double* meanRows[] = {means, means + 1};
    double* covarianceRows[] = {covariances, covariances + 2};
    vmath_nmmatrix mean{};
    mean.numRows = 2;
    mean.numColumns = 1;
    mean.rows = meanRows;
    vmath_nmmatrix covariance{};
    covariance.numRows = 2;
    covariance.numColumns = 2;
    covariance.rows = covarianceRows;
    numFactorisations = 0;
    return detail::NormalDensity(mean, covariance, 1000).logValue(values.data());
}

/// The same by the textbook.
double expectedLogValue(double correlation, const std::vector<double>& values) {
    const double x = values[0];
    const double y = values[1];
    const double determinant = 1.0 - correlation * correlation;
    const double distance = (x * x - 2.0 * correlation * x * y + y * y) / determinant;
    return -std::log(2.0 * M_PI) - 0.5 * std::log(determinant) - 0.5 * distance;
}

class Rounding : public ::testing::Test {
protected:
    ~Rounding() override {
        fails = [](const PackedLower&) { return false; };
    }

    const std::vector<double> values_{0.7, -1.3};
    const double firstShare_ = std::ldexp(1.0, -43); // of the way to independent measurements
};

TEST_F(Rounding, LeavesARegularMatrixAsItIs) {
    EXPECT_NEAR(logValueOf(0.5, values_), expectedLogValue(0.5, values_), 1e-14);
    EXPECT_EQ(numFactorisations, 1);
}

TEST_F(Rounding, DrawsAMatrixTwiceAsFarEachTimeThatItsFactorisationFails) {
    for (const int number : {1, 2, 30, 41, 43}) {
        int left = number;
        fails = [&left](const PackedLower&) { return left-- > 0; };
        double correlation = 0.5;
        double share = firstShare_;
        for (int i = 0; i < number; ++i, share *= 2.0) {
            correlation *= 1.0 - share;
        }
        EXPECT_NEAR(logValueOf(0.5, values_), expectedLogValue(correlation, values_), 1e-14) << number;
        EXPECT_EQ(numFactorisations, number + 1);
    }
}

TEST_F(Rounding, EndsWithIndependentMeasurementsWhateverTheErrorsAre) {
    fails = [](const PackedLower& matrix) { return matrix(1, 0) != 0.0; };
    for (const double correlation : {0.5, -0.9, 1.0}) { // the last one is drawn a little beforehand
        EXPECT_NEAR(logValueOf(correlation, values_), expectedLogValue(0.0, values_), 1e-14);
        EXPECT_EQ(numFactorisations, 45); // 2^-43, 2^-42, ... 1 of the way
    }
}

} // namespace
