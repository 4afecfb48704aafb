#include "platform/statistics/joint_normals.h"

#include "platform/statistics/joint_normals_kernel.h"
#include "platform/statistics/ready_density.h"
#include "tests/platform/statistics/normal_pdf.h"
#include "tests/support/random_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <deque>
#include <limits>
#include <vector>

namespace {

using detail::JointNormals;
using detail::NormalDensity;
using test::NormalPdf;
using test::RandomNumbers;

test::Rows rowsOf(RandomNumbers& numbers, std::size_t number, std::size_t size) {
    test::Rows all;
    for (std::size_t i = 0; i < number; ++i) {
        all.push_back(numbers.row(size));
    }
    return all;
}

const NormalDensity& densityOf(const NormalPdf& pdf) {
    return *detail::readyDensity(pdf.record(), pdf.record().mean.numRows);
}

/// Densities of 1 to 12 measurements and of more than the stack has room for, each from another place on.
class Several {
public:
    Several() {
        for (std::size_t size = 1; size <= 12; ++size) {
            add(size, 20);
        }
        add(70, 80);
        add(3, 2); // singular
    }

    void add(std::size_t size, std::size_t numSamples) {
        pdfs_.emplace_back(rowsOf(numbers, numSamples, size));
        EXPECT_TRUE(JointNormals::canTake(densityOf(pdfs_.back())));
        normals.append(densityOf(pdfs_.back()), pdfs_.size() % 5);
    }

    void expectTheirBits(const std::vector<double>& values) const {
        std::vector<double> logValues(pdfs_.size());
        ASSERT_EQ(normals.size(), pdfs_.size());
        EXPECT_TRUE(normals.evaluate(values.data(), logValues.data()));
        for (std::size_t i = 0; i < pdfs_.size(); ++i) {
            EXPECT_EQ(logValues[i], densityOf(pdfs_[i]).logValue(values.data() + (i + 1) % 5)) << i;
        }
    }

    RandomNumbers numbers{3};
    JointNormals normals;

private:
    std::deque<NormalPdf> pdfs_; // which stay where they are
};

TEST(JointNormals, GiveTheBitsOfEachDensity) {
    Several several;
    for (int i = 0; i < 20; ++i) {
        std::vector<double> values = several.numbers.row(80);
        several.expectTheirBits(values);
        values[2] = 1e130;
        several.expectTheirBits(values);
    }
}

TEST(JointNormals, LeaveValuesThatAreFarAwayToTheDensities) {
    const double infinity = std::numeric_limits<double>::infinity();
    Several several;
    for (const double odd : {infinity, -infinity, std::nan(""), 1e140, -1e300}) {
        for (std::size_t place = 0; place < 70; ++place) {
            std::vector<double> values = several.numbers.row(80);
            values[place] = odd;
            std::vector<double> logValues(several.normals.size());
            EXPECT_FALSE(several.normals.evaluate(values.data(), logValues.data())) << odd << ' ' << place;
        }
    }
}

TEST(JointNormals, LeaveConstantMeasurementsToTheDensities) {
    const NormalPdf constant(test::Rows{{1.0, 3.0}, {2.0, 3.0}, {4.0, 3.0}});
    EXPECT_FALSE(JointNormals::canTake(densityOf(constant)));
    const NormalPdf firstIsConstant(test::Rows{{3.0, 1.0}, {3.0, 2.0}, {3.0, 4.0}});
    EXPECT_FALSE(JointNormals::canTake(densityOf(firstIsConstant)));
}

/// Two members of any order, one behind the other.
template <class Evaluate>
std::vector<double> anyMembers(std::size_t order, double value, Evaluate evaluate) {
    std::vector<double> block(2 * detail::paddedToLanes(order), 0.75);
    for (std::size_t i = 0; i < 2 * order * detail::paddedToLanes(order); ++i) {
        block.push_back(std::sin(static_cast<double>(i)));
    }
    const JointNormals::Member members[] = {{block.data(), order, 0, 0.5}, {block.data(), order, 1, -0.25}};
    const std::vector<double> values(order + 1, value);
    std::vector<double> standardised(order);
    std::vector<double> logValues(2);
    const bool areNear = evaluate(&members[0], &members[0] + 2, values, standardised, logValues);
    logValues.push_back(areNear ? 1.0 : 0.0);
    return logValues;
}

#if VXCLASSIFIER_HAS_AVX2
std::vector<double> narrowMembers(std::size_t order, double value) {
    return anyMembers(order, value,
                      [](auto* begin, auto* end, auto& values, auto& standardised, auto& logValues) {
                          return detail::evaluateMembersIn<detail::NarrowLanes>(
                              begin, end, values.data(), standardised.data(), logValues.data());
                      });
}

VXCLASSIFIER_AVX2 bool evaluateInWideLanes(const JointNormals::Member* begin, const JointNormals::Member* end,
                                           const double* values, double* standardised, double* logValues) {
    return detail::evaluateMembersIn<detail::WideLanes>(begin, end, values, standardised, logValues);
}

TEST(JointNormals, HaveTheSameBitsInNarrowAndWideRegisters) {
    if (!detail::hasAvx2()) {
        GTEST_SKIP() << "this processor has no wide registers";
    }
    for (std::size_t order = 1; order < 40; ++order) {
        for (const double value : {1.25, -1e130, 1e140}) {
            const std::vector<double> wide = anyMembers(
                order, value, [](auto* begin, auto* end, auto& values, auto& standardised, auto& logValues) {
                    return evaluateInWideLanes(begin, end, values.data(), standardised.data(),
                                               logValues.data());
                });
            EXPECT_EQ(narrowMembers(order, value), wide);
            EXPECT_EQ(wide.back(), value < 1e140 ? 1.0 : 0.0);
        }
    }
}
#endif

} // namespace
