#include "platform/statistics/stacked_normals.h"

#include "platform/statistics/ready_density.h"
#include "platform/statistics/stacked_normals_kernel.h"
#include "tests/platform/statistics/normal_pdf.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace {

using detail::IndependentNormals;
using detail::NarrowLanes;
using detail::paddedToLanes;
using detail::StackedNormals;
using detail::WideLanes;
using test::NormalPdf;

/// Members with densities of their own for the same measurements.
class Stack {
public:
    Stack(std::size_t size, const std::vector<std::size_t>& indices) : indices_(indices) {
        for (std::size_t member = 0; member < size; ++member) {
            IndependentNormals normals;
            for (const std::size_t index : indices) {
                pdfs_.emplace_back(test::Rows{{number()}, {number()}, {number()}});
                normals.append(*detail::readyDensity(pdfs_.back().record(), 1), index);
            }
            EXPECT_TRUE(stacked.canTake(normals));
            stacked.append(normals);
        }
    }

    double number() { return std::uniform_real_distribution<double>(-2.0, 2.0)(random_); }

    /// One density after the other.
    double plainSum(std::size_t member, const std::vector<double>& values) const {
        double sum = 0.0;
        for (std::size_t i = 0; i < indices_.size(); ++i) {
            sum += pdfs_[member * indices_.size() + i].logValue({values[indices_[i]]});
        }
        return sum;
    }

    StackedNormals stacked;

private:
    std::mt19937 random_{5};
    std::vector<std::size_t> indices_;
    std::vector<NormalPdf> pdfs_;
};

std::vector<double> valuesFor(Stack& stack) {
    std::vector<double> values(20);
    for (double& value : values) {
        value = stack.number();
    }
    return values;
}

TEST(StackedNormals, GiveTheBitsOfOneDensityAfterTheOther) {
    for (const std::vector<std::size_t>& indices :
         {std::vector<std::size_t>{}, {0}, {0, 1, 2}, {2, 1, 0}, {7}, {3, 3, 19, 4, 0, 5, 6, 7, 8}}) {
        for (std::size_t size = 1; size <= 13; ++size) {
            Stack stack(size, indices);
            const std::vector<double> values = valuesFor(stack);
            std::vector<double> sums(paddedToLanes(size));
            EXPECT_TRUE(stack.stacked.addUp(values.data(), sums.data()));
            for (std::size_t member = 0; member < size; ++member) {
                EXPECT_EQ(sums[member], stack.plainSum(member, values)) << member << " of " << size;
            }
        }
    }
}

TEST(StackedNormals, LeaveOddValuesToTheDensities) {
    for (const double odd : {std::numeric_limits<double>::infinity(), std::nan(""), 1e140, -1e300}) {
        for (std::size_t place = 0; place < 3; ++place) {
            Stack stack(5, {0, 1, 2});
            std::vector<double> values = valuesFor(stack);
            values[place] = odd;
            std::vector<double> sums(paddedToLanes(5));
            EXPECT_FALSE(stack.stacked.addUp(values.data(), sums.data()));
            values[place] = 1.0;
            values[3] = odd; // which none of them reads
            EXPECT_TRUE(stack.stacked.addUp(values.data(), sums.data()));
        }
    }
}

TEST(StackedNormals, TakeOnlyWhatReadsTheSameMeasurements) {
    const NormalPdf pdf(test::Rows{{1.0}, {2.0}});
    const auto ofIndices = [&](const std::vector<std::size_t>& indices) {
        IndependentNormals normals;
        for (const std::size_t index : indices) {
            normals.append(*detail::readyDensity(pdf.record(), 1), index);
        }
        return normals;
    };
    StackedNormals stacked;
    EXPECT_TRUE(stacked.canTake(ofIndices({0, 1})));
    stacked.append(ofIndices({0, 1}));
    EXPECT_EQ(stacked.size(), 1U);
    EXPECT_TRUE(stacked.canTake(ofIndices({0, 1})));
    EXPECT_FALSE(stacked.canTake(ofIndices({1, 0})));
    EXPECT_FALSE(stacked.canTake(ofIndices({0})));
    EXPECT_FALSE(stacked.canTake(ofIndices({0, 1, 2})));
}

#if VXCLASSIFIER_HAS_AVX2
VXCLASSIFIER_AVX2 void addUpInWideLanes(const double* blocks, std::size_t size, const double* values,
                                        std::size_t number, double* sums) {
    detail::addUpStacksIn<WideLanes>(blocks, size, values, number, sums);
}

TEST(StackedNormals, HaveTheSameBitsInNarrowAndWideRegisters) {
    if (!detail::hasAvx2()) {
        GTEST_SKIP() << "this processor has no wide registers";
    }
    for (std::size_t number = 0; number < 20; ++number) {
        for (std::size_t size = 0; size < 10; ++size) {
            std::vector<double> blocks;
            std::vector<double> values;
            for (std::size_t i = 0; i < 3 * paddedToLanes(size) * number; ++i) {
                blocks.push_back(std::sin(static_cast<double>(7 * i)));
                values.push_back(std::cos(static_cast<double>(3 * i)));
            }
            std::vector<double> narrow(paddedToLanes(size), -1.0);
            std::vector<double> wide(paddedToLanes(size), -1.0);
            detail::addUpStacksIn<NarrowLanes>(blocks.data(), size, values.data(), number, narrow.data());
            addUpInWideLanes(blocks.data(), size, values.data(), number, wide.data());
            EXPECT_EQ(narrow, wide);
        }
    }
}
#endif

} // namespace
