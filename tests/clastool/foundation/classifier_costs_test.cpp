#include <vxclassifier/classifier_costs.h>

#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/hand_written.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using test::HandWritten;
using vxClassifierDefs::BadLabel;
using vxClassifierDefs::BadParams;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double tiny = std::numeric_limits<double>::denorm_min();

constexpr const wchar_t* negativeCost = L"Costs must be >= 0.0";
constexpr const wchar_t* negativeLabel = L"Category labels must be >= 0";
constexpr const wchar_t* sameLabel = L"Category labels must be different";
constexpr const char* source = "clss/clastool/clastool";

vxClassifierCosts forged(double defaultCost, const std::vector<long>& trueLabels,
                         const std::vector<long>& assignedLabels, const std::vector<double>& costs) {
    return test::loaded(HandWritten()
                            .byte(0)
                            .real(defaultCost)
                            .numbers(trueLabels)
                            .numbers(assignedLabels)
                            .reals(costs)
                            .sealed(),
                        vxClassifierCosts(1.0));
}

TEST(ClassifierCosts, TheDefaultHoldsForEveryPairOfDifferentLabels) {
    const vxClassifierCosts costs(2.5);
    EXPECT_EQ(costs.defaultMisclassificationCost(), 2.5);
    EXPECT_EQ(costs.misclassificationCost(0, 1), 2.5);
    EXPECT_EQ(costs.misclassificationCost(2147483647, 0), 2.5);
    EXPECT_EQ(costs.misclOverrideIndex_(0, 1), -1);
}

TEST(ClassifierCosts, TheDefaultMustNotBeNegative) {
    for (const double refused : {-tiny, -1.0, -infinity}) {
        EXPECT_ERROR(vxClassifierCosts{refused}, BadParams, negativeCost);
        vxClassifierCosts costs(2.5);
        EXPECT_ERROR(costs.defaultMisclassificationCost(refused), BadParams, negativeCost);
        EXPECT_EQ(costs.defaultMisclassificationCost(), 2.5) << "a refused value changes nothing";
    }
}

TEST(ClassifierCosts, ZeroAnyPositiveDefaultAndNotANumberPass) {
    for (const double accepted : {0.0, -0.0, tiny, 1e300, infinity}) {
        EXPECT_EQ(vxClassifierCosts(accepted).defaultMisclassificationCost(), accepted);
        vxClassifierCosts costs(2.5);
        costs.defaultMisclassificationCost(accepted);
        EXPECT_EQ(costs.misclassificationCost(1, 2), accepted);
    }
    EXPECT_TRUE(std::isnan(vxClassifierCosts(nan).defaultMisclassificationCost()));
    vxClassifierCosts costs(2.5);
    costs.defaultMisclassificationCost(nan);
    EXPECT_TRUE(std::isnan(costs.misclassificationCost(1, 2)));
}

TEST(ClassifierCosts, APairAndItsReverseAreIndependent) {
    vxClassifierCosts costs(1.0);
    costs.misclassificationCostOverride(1, 2, 5.0);
    EXPECT_EQ(costs.misclassificationCost(1, 2), 5.0);
    EXPECT_EQ(costs.misclassificationCost(2, 1), 1.0);
    EXPECT_EQ(costs.misclassificationCost(1, 3), 1.0);
    EXPECT_EQ(costs.misclassificationCost(3, 2), 1.0);
}

TEST(ClassifierCosts, OverridingAgainReplacesInPlace) {
    vxClassifierCosts costs(1.0);
    costs.misclassificationCostOverride(1, 2, 5.0);
    costs.misclassificationCostOverride(2, 1, 6.0);
    costs.misclassificationCostOverride(1, 2, 0.0);
    EXPECT_EQ(costs.misclOverrideIndex_(1, 2), 0);
    EXPECT_EQ(costs.misclOverrideIndex_(2, 1), 1);
    EXPECT_EQ(costs.misclassificationCost(1, 2), 0.0);
    EXPECT_EQ(test::stored(costs),
              HandWritten().byte(0).real(1.0).numbers({1, 2}).numbers({2, 1}).reals({0.0, 6.0}).sealed());
}

TEST(ClassifierCosts, ARightAssignmentHasNoCostAndThatIsCheckedBeforeTheSign) {
    const vxClassifierCosts costs(1.0);
    EXPECT_ERROR(costs.misclassificationCost(3, 3), BadLabel, sameLabel);
    EXPECT_ERROR(costs.misclassificationCost(0, 0), BadLabel, sameLabel);
    EXPECT_ERROR(costs.misclassificationCost(-1, -1), BadLabel, sameLabel);
}

TEST(ClassifierCosts, LabelsMustNotBeNegative) {
    vxClassifierCosts costs(1.0);
    EXPECT_ERROR(costs.misclassificationCost(-1, 2), BadLabel, negativeLabel);
    EXPECT_ERROR(costs.misclassificationCost(2, -1), BadLabel, negativeLabel);
    EXPECT_ERROR(costs.misclassificationCost(-2, -1), BadLabel, negativeLabel);
    EXPECT_ERROR(costs.misclassificationCostOverride(-1, 2, 1.0), BadLabel, negativeLabel);
    EXPECT_ERROR(costs.misclassificationCostOverride(2, -1, 1.0), BadLabel, negativeLabel);
    EXPECT_EQ(costs, vxClassifierCosts(1.0));
}

TEST(ClassifierCosts, TheIndexLooksAtTheSignsButNotAtEqualLabels) {
    const vxClassifierCosts costs(1.0);
    EXPECT_ERROR(costs.misclOverrideIndex_(-1, 2), BadLabel, negativeLabel);
    EXPECT_ERROR(costs.misclOverrideIndex_(2, -1), BadLabel, negativeLabel);
    EXPECT_ERROR(costs.misclOverrideIndex_(-1, -1), BadLabel, negativeLabel);
    EXPECT_EQ(costs.misclOverrideIndex_(4, 4), -1);
    EXPECT_EQ(forged(1.0, {7, 4}, {7, 4}, {1.0, 2.0}).misclOverrideIndex_(4, 4), 1);
}

TEST(ClassifierCosts, AnOverrideChecksTheCostThenTheDifferenceThenTheSigns) {
    vxClassifierCosts costs(1.0);
    EXPECT_ERROR(costs.misclassificationCostOverride(1, 1, -5.0), BadParams, negativeCost);
    EXPECT_ERROR(costs.misclassificationCostOverride(-1, 2, -tiny), BadParams, negativeCost);
    EXPECT_ERROR(costs.misclassificationCostOverride(-1, -1, 5.0), BadLabel, sameLabel);
    EXPECT_ERROR(costs.misclassificationCostOverride(1, 1, nan), BadLabel, sameLabel);
    EXPECT_ERROR(costs.misclassificationCostOverride(-1, 1, nan), BadLabel, negativeLabel);
    EXPECT_EQ(costs, vxClassifierCosts(1.0));
    costs.misclassificationCostOverride(1, 2, nan);
    EXPECT_TRUE(std::isnan(costs.misclassificationCost(1, 2)));
}

TEST(ClassifierCosts, ARefusedReplacementKeepsTheOldOverride) {
    vxClassifierCosts costs(1.0);
    costs.misclassificationCostOverride(1, 2, 4.0);
    EXPECT_ERROR(costs.misclassificationCostOverride(1, 2, -1.0), BadParams, negativeCost);
    EXPECT_EQ(costs.misclassificationCost(1, 2), 4.0);
}

TEST(ClassifierCosts, ClearingRemovesEveryOverrideAndKeepsTheDefault) {
    vxClassifierCosts costs(1.5);
    costs.misclassificationCostOverride(1, 2, 4.0);
    costs.misclassificationCostOverride(2, 1, 5.0);
    costs.clearMisclassificationOverrides();
    EXPECT_EQ(costs.misclassificationCost(1, 2), 1.5);
    EXPECT_EQ(costs, vxClassifierCosts(1.5));
}

TEST(ClassifierCosts, EqualityDependsOnTheOrderOfTheOverrides) {
    vxClassifierCosts ab(1.0);
    ab.misclassificationCostOverride(1, 2, 3.0);
    ab.misclassificationCostOverride(2, 1, 4.0);
    vxClassifierCosts ba(1.0);
    ba.misclassificationCostOverride(2, 1, 4.0);
    ba.misclassificationCostOverride(1, 2, 3.0);
    EXPECT_TRUE(ab != ba);
    EXPECT_FALSE(ab == ba);
}

TEST(ClassifierCosts, EqualityComparesDefaultLabelsAndCostsExactly) {
    EXPECT_TRUE(vxClassifierCosts(1.0) == vxClassifierCosts(1.0));
    EXPECT_FALSE(vxClassifierCosts(1.0) != vxClassifierCosts(1.0));
    EXPECT_TRUE(vxClassifierCosts(1.0) != vxClassifierCosts(std::nextafter(1.0, 2.0)));
    EXPECT_TRUE(vxClassifierCosts(0.0) == vxClassifierCosts(-0.0));
    const vxClassifierCosts one = forged(1.0, {1}, {2}, {3.0});
    EXPECT_TRUE(one == forged(1.0, {1}, {2}, {3.0}));
    EXPECT_TRUE(one != vxClassifierCosts(1.0));
    EXPECT_TRUE(one != forged(1.0, {3}, {2}, {3.0}));
    EXPECT_TRUE(one != forged(1.0, {1}, {3}, {3.0}));
    EXPECT_TRUE(one != forged(1.0, {1}, {2}, {4.0}));
}

TEST(ClassifierCosts, ANotANumberIsUnequalToItself) {
    const vxClassifierCosts byDefault(nan);
    EXPECT_FALSE(byDefault == byDefault);
    vxClassifierCosts overridden(1.0);
    overridden.misclassificationCostOverride(1, 2, nan);
    EXPECT_FALSE(overridden == overridden);
    EXPECT_TRUE(overridden != overridden);
}

TEST(ClassifierCosts, ACopyIsEqualAndIndependent) {
    vxClassifierCosts original(1.0);
    original.misclassificationCostOverride(1, 2, 3.0);
    const vxClassifierCosts copy(original);
    vxClassifierCosts assigned(5.0);
    EXPECT_EQ(&(assigned = original), &assigned);
    EXPECT_EQ(copy, original);
    EXPECT_EQ(assigned, original);
    original.clearMisclassificationOverrides();
    EXPECT_EQ(copy.misclassificationCost(1, 2), 3.0);
    EXPECT_EQ(assigned.misclassificationCost(1, 2), 3.0);
    vxClassifierCosts& self = assigned;
    assigned = self;
    EXPECT_EQ(assigned, copy);
}

TEST(ClassifierCostsArchive, HoldsVersionDefaultTrueLabelsAssignedLabelsAndCosts) {
    EXPECT_EQ(test::stored(vxClassifierCosts(0.25)),
              HandWritten().byte(0).real(0.25).numbers({}).numbers({}).reals({}).sealed());
    vxClassifierCosts costs(0.25);
    costs.misclassificationCostOverride(9, 8, 1.0);
    costs.misclassificationCostOverride(2, 3, nan);
    EXPECT_EQ(test::stored(costs),
              HandWritten().byte(0).real(0.25).numbers({9, 2}).numbers({8, 3}).reals({1.0, nan}).sealed());
}

TEST(ClassifierCostsArchive, BringsThemBackInPlaceOfWhatWasThere) {
    vxClassifierCosts costs(0.25);
    costs.misclassificationCostOverride(9, 8, 1.0);
    vxClassifierCosts into(7.0);
    into.misclassificationCostOverride(1, 2, 1.0);
    into.misclassificationCostOverride(2, 1, 2.0);
    EXPECT_EQ(test::loaded(test::stored(costs), into), costs);
}

TEST(ClassifierCostsArchive, AnotherVersionIsRefusedWithItsPlace) {
    vxClassifierCosts into(3.0);
    EXPECT_UNKNOWN_VERSION(
        test::load(HandWritten().byte(1).real(1.0).numbers({}).numbers({}).reals({}).sealed(), into), source,
        435);
    EXPECT_EQ(into, vxClassifierCosts(3.0));
}

TEST(ClassifierCostsArchive, AnotherVersionOfAVectorIsRefusedWithoutAPlace) {
    vxClassifierCosts into(3.0);
    EXPECT_UNKNOWN_VERSION(test::load(HandWritten().byte(0).real(1.0).byte(1).count(0).sealed(), into),
                           nullptr, 0);
    EXPECT_UNKNOWN_VERSION(
        test::load(HandWritten().byte(0).real(1.0).numbers({}).byte(1).count(0).sealed(), into), nullptr, 0);
    EXPECT_UNKNOWN_VERSION(
        test::load(HandWritten().byte(0).real(1.0).numbers({}).numbers({}).byte(1).count(0).sealed(), into),
        nullptr, 0);
    EXPECT_EQ(into.defaultMisclassificationCost(), 1.0) << "what was read stays";
}

TEST(ClassifierCostsArchive, LoadedValuesAreNotChecked) {
    const vxClassifierCosts costs = forged(-1.0, {3, 3, 5}, {4, 4, 5}, {-2.0, 2.0, 1.0});
    EXPECT_EQ(costs.defaultMisclassificationCost(), -1.0);
    EXPECT_EQ(costs.misclassificationCost(3, 4), -2.0) << "the first of two equal pairs counts";
    EXPECT_ERROR(costs.misclassificationCost(5, 5), BadLabel, sameLabel);
}

TEST(ClassifierCostsArchive, ALabelOfMoreThanThirtyTwoBitsCannotBeStored) {
    vxClassifierCosts costs(1.0);
    costs.misclassificationCostOverride(1, 2147483648L, 2.0);
    EXPECT_EQ(costs.misclassificationCost(1, 2147483648L), 2.0);
    EXPECT_ERROR_CLASS(test::stored(costs), vxArchive::NotRepresentable);
}

} // namespace
