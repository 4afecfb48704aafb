#include "platform/statistics/whitening.h"
#include "platform/statistics/whitening_kernel.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace {

using detail::inverseOf;
using detail::numLanes;
using detail::PackedLower;
using detail::paddedToLanes;
using detail::VaryingMeasurement;
using detail::Whitening;

std::uint64_t bitsOf(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

/// One case of a given size, and the plain way to its result.
class Case {
public:
    Case(std::size_t order, unsigned seed) : factor(order), values(order), random_(seed) {
        for (std::size_t i = 0; i < order; ++i) {
            measurements.push_back(
                {i, 10.0 * number(), std::ldexp(1.0 + number(), static_cast<int>(i % 40) * 20 - 400)});
            values[i] = measurements[i].mean + 3.0 * number() * measurements[i].deviation;
            for (std::size_t row = i; row < order; ++row) {
                factor(row, i) = row == i ? 0.75 + 0.25 * number() : 0.5 * number();
            }
        }
    }

    double squaredLength() const {
        std::vector<double> standardised(values.size());
        return Whitening(measurements, factor).squaredLength(values.data(), standardised.data());
    }

    /// One number after the other.
    double plainSquaredLength() const {
        const PackedLower inverse = inverseOf(factor);
        std::array<double, numLanes> sums{};
        for (std::size_t row = 0; row < values.size(); ++row) {
            double whitened = 0.0;
            for (std::size_t column = 0; column <= row; ++column) {
                const VaryingMeasurement& measurement = measurements[column];
                const double reciprocal = 1.0 / measurement.deviation;
                whitened += inverse(row, column) * ((values[column] - measurement.mean) * reciprocal);
            }
            sums[row % numLanes] += whitened * whitened;
        }
        return ((sums[0] + sums[1]) + (sums[2] + sums[3])) + ((sums[4] + sums[5]) + (sums[6] + sums[7]));
    }

    /// The solution with the factor.
    double solvedSquaredLength() const {
        std::vector<double> solution(values.size());
        double sum = 0.0;
        for (std::size_t row = 0; row < values.size(); ++row) {
            double rest = (values[row] - measurements[row].mean) / measurements[row].deviation;
            for (std::size_t column = 0; column < row; ++column) {
                rest -= factor(row, column) * solution[column];
            }
            solution[row] = rest / factor(row, row);
            sum += solution[row] * solution[row];
        }
        return sum;
    }

    std::vector<VaryingMeasurement> measurements;
    PackedLower factor;
    std::vector<double> values;

private:
    double number() { return std::uniform_real_distribution<double>(-0.5, 0.5)(random_); }

    std::mt19937 random_;
};

TEST(Whitening, GivesTheBitsOfOneNumberAfterTheOther) {
    for (std::size_t order = 0; order <= 70; ++order) {
        for (unsigned seed = 0; seed < 20; ++seed) {
            const Case one(order, seed);
            EXPECT_EQ(bitsOf(one.squaredLength()), bitsOf(one.plainSquaredLength())) << order;
        }
    }
}

TEST(Whitening, GivesTheLengthOfTheSolution) {
    for (const std::size_t order : {1U, 2U, 8U, 9U, 20U}) {
        const Case one(order, 77);
        const double solved = one.solvedSquaredLength();
        EXPECT_NEAR(one.squaredLength(), solved, 1e-12 * solved) << order;
    }
}

TEST(Whitening, LeavesTheStandardisedMeasurements) {
    for (std::size_t order = 1; order <= 20; ++order) {
        const Case one(order, 5);
        const Whitening whitening(one.measurements, one.factor);
        std::vector<double> aside(order);
        std::vector<double> inPlace = one.values;
        EXPECT_EQ(bitsOf(whitening.squaredLength(one.values.data(), aside.data())),
                  bitsOf(whitening.squaredLength(inPlace.data(), inPlace.data())));
        EXPECT_EQ(aside, inPlace);
        for (std::size_t i = 0; i < order; ++i) {
            const VaryingMeasurement& measurement = one.measurements[i];
            EXPECT_EQ(aside[i], (one.values[i] - measurement.mean) * (1.0 / measurement.deviation));
        }
    }
}

TEST(Whitening, OfWhatIsNotFiniteIsNotFinite) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double value : {infinity, -infinity, std::nan(""), std::numeric_limits<double>::max()}) {
        for (std::size_t order = 1; order <= 19; ++order) {
            for (std::size_t place = 0; place < order; ++place) {
                Case one(order, 3);
                one.values[place] = value;
                one.measurements[place].deviation = 0.25;
                EXPECT_FALSE(one.squaredLength() <= std::numeric_limits<double>::max()) << place;
            }
        }
    }
}

/// The block of a whitening, with any numbers.
std::vector<double> blockOf(std::size_t order) {
    std::vector<double> block;
    for (std::size_t i = 0; i < 2 * paddedToLanes(order); ++i) {
        block.push_back(1.0 / static_cast<double>(i + 3));
    }
    for (std::size_t top = 0; top < order; top += numLanes) {
        for (std::size_t i = 0; i < numLanes * detail::numColumns(top, order); ++i) {
            block.push_back(std::sin(static_cast<double>(block.size())));
        }
    }
    return block;
}

#if VXCLASSIFIER_HAS_AVX2
VXCLASSIFIER_AVX2 double squaredLengthInWideLanes(const double* block, std::size_t order, double* values) {
    return detail::squaredLengthIn<detail::WideLanes>(block, order, values, values);
}

TEST(Whitening, HasTheSameBitsInNarrowAndWideRegisters) {
    if (!detail::hasAvx2()) {
        GTEST_SKIP() << "this processor has no wide registers";
    }
    for (std::size_t order = 0; order <= 70; ++order) {
        const std::vector<double> block = blockOf(order);
        std::vector<double> wide(order, 1.25);
        std::vector<double> narrow(wide);
        const double ofWide = squaredLengthInWideLanes(block.data(), order, wide.data());
        const double ofNarrow =
            detail::squaredLengthIn<detail::NarrowLanes>(block.data(), order, narrow.data(), narrow.data());
        EXPECT_EQ(bitsOf(ofWide), bitsOf(ofNarrow)) << order;
        EXPECT_EQ(wide, narrow);
    }
}
#endif

} // namespace
