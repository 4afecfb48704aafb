#include "tests/rules/functions.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/feature_score.h>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

using test::oneSided;
using vxClassifierDefs::BadParams;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr const wchar_t* badY0 = L"y0 must be between 0 and 1";
constexpr const wchar_t* badY1 = L"y1 must be between 0 and 1";
constexpr const wchar_t* badInit = L"x1 must be lie between x0 and xc";
constexpr const wchar_t* badScore = L"x1 must lie between x0 and xc";

using OneSided = vxClassifierFeatureScoreOneSided;

class DerivedOneSided : public OneSided {};

void expectFields(const OneSided& function, const std::vector<double>& expected) {
    EXPECT_EQ(
        (std::vector<double>{function.x0(), function.x1(), function.xc(), function.y0(), function.y1()}),
        expected);
}

double after(double x) {
    return std::nextafter(x, infinity);
}

double before(double x) {
    return std::nextafter(x, -infinity);
}

} // namespace

TEST(FeatureScoreOneSided, BeginsAsAFallOffFromOneAtZeroToNothingAtOne) {
    const OneSided function;
    expectFields(function, {0, 1, 1, 1, 0});
    EXPECT_EQ(function.score(-3), 1.0);
    EXPECT_EQ(function.score(0.25), 0.75);
    EXPECT_EQ(function.score(1), 0.0);
    EXPECT_EQ(function.score(2), 0.0);
}

TEST(FeatureScoreOneSided, InitStoresTheFiveValues) {
    expectFields(oneSided(2, 3, 4, 0.25, 0.75), {2, 3, 4, 0.25, 0.75});
}

TEST(FeatureScoreOneSided, InitAcceptsX1BetweenTheOthersInEitherOrder) {
    expectFields(oneSided(2, 3, 4, 0, 1), {2, 3, 4, 0, 1});
    expectFields(oneSided(4, 3, 2, 0, 1), {4, 3, 2, 0, 1});
    expectFields(oneSided(3, 3, 4, 0, 1), {3, 3, 4, 0, 1});
    expectFields(oneSided(4, 3, 3, 0, 1), {4, 3, 3, 0, 1});
    expectFields(oneSided(3, 3, 3, 0, 1), {3, 3, 3, 0, 1});
    expectFields(oneSided(-infinity, 3, infinity, 0, 1), {-infinity, 3, infinity, 0, 1});
}

TEST(FeatureScoreOneSided, InitRefusesX1AboveBothOrBelowBoth) {
    OneSided function = oneSided(2, 3, 4, 0.25, 0.75);
    EXPECT_ERROR(function.init(0, 2, 1, 0, 1), BadParams, badInit);
    EXPECT_ERROR(function.init(1, after(1), 1, 0, 1), BadParams, badInit);
    EXPECT_ERROR(function.init(1, before(1), 1, 0, 1), BadParams, badInit);
    EXPECT_ERROR(function.init(5, -1, 6, 0, 1), BadParams, badInit);
    expectFields(function, {2, 3, 4, 0.25, 0.75});
}

TEST(FeatureScoreOneSided, ANaNAmongTheXValuesIsTreatedAsTheComparisonsSay) {
    OneSided function = oneSided(2, 3, 4, 0.25, 0.75);
    // Not greater-or-equal to either of them.
    EXPECT_ERROR(function.init(0, notANumber, 2, 0, 1), BadParams, badInit);
    EXPECT_ERROR(function.init(notANumber, 1, notANumber, 0, 1), BadParams, badInit);
    EXPECT_ERROR(function.init(notANumber, 1, 2, 0, 1), BadParams, badInit);
    EXPECT_ERROR(function.init(2, 1, notANumber, 0, 1), BadParams, badInit);
    expectFields(function, {2, 3, 4, 0.25, 0.75});
    // Greater than one of them, and not greater than the NaN.
    function.init(notANumber, 2, 1, 0, 1);
    EXPECT_TRUE(std::isnan(function.x0()));
    function.init(1, 2, notANumber, 0, 1);
    EXPECT_TRUE(std::isnan(function.xc()));
}

TEST(FeatureScoreOneSided, IsRisingUnlessTheXValuesSayOtherwise) {
    // NaN says nothing: no cut-off above, and no ramp below.
    EXPECT_EQ(oneSided(0, 1, notANumber, 0.25, 0.75).score(5), 0.75);
    EXPECT_EQ(oneSided(0, 1, notANumber, 0.25, 0.75).score(-5), 0.25);
    EXPECT_EQ(oneSided(notANumber, 1, 1, 0.25, 0.75).score(1), 0.75);
    EXPECT_EQ(oneSided(notANumber, 1, 1, 0.25, 0.75).score(5), 0.0);
}

TEST(FeatureScoreOneSided, InitRefusesScoresOutsideZeroToOne) {
    OneSided function = oneSided(2, 3, 4, 0.25, 0.75);
    for (const double bad : {1.0000001, after(1.0), -1e-300, -1.0, infinity, -infinity, notANumber}) {
        EXPECT_ERROR(function.init(0, 1, 2, bad, 1), BadParams, badY0);
        EXPECT_ERROR(function.init(0, 1, 2, 0, bad), BadParams, badY1);
    }
    expectFields(function, {2, 3, 4, 0.25, 0.75});
}

TEST(FeatureScoreOneSided, InitAcceptsTheEndsOfTheScoreRangeAndMinusZero) {
    expectFields(oneSided(0, 1, 2, 1.0, 0.0), {0, 1, 2, 1, 0});
    const OneSided function = oneSided(0, 1, 2, -0.0, -0.0);
    EXPECT_TRUE(std::signbit(function.y0()));
    EXPECT_TRUE(std::signbit(function.y1()));
}

TEST(FeatureScoreOneSided, InitChecksY0ThenY1ThenX1) {
    OneSided function;
    EXPECT_ERROR(function.init(0, 5, 1, 2, 2), BadParams, badY0);
    EXPECT_ERROR(function.init(0, 5, 1, 1, 2), BadParams, badY1);
    EXPECT_ERROR(function.init(0, 5, 1, 1, 1), BadParams, badInit);
    expectFields(function, {0, 1, 1, 1, 0});
}

TEST(FeatureScoreOneSided, TheXSettersStoreAnything) {
    OneSided function = oneSided(2, 3, 4, 0.25, 0.75);
    function.x0(10);
    expectFields(function, {10, 3, 4, 0.25, 0.75});
    function.x1(-20);
    expectFields(function, {10, -20, 4, 0.25, 0.75});
    function.xc(infinity);
    expectFields(function, {10, -20, infinity, 0.25, 0.75});
    function.x1(notANumber);
    EXPECT_TRUE(std::isnan(function.x1()));
}

TEST(FeatureScoreOneSided, TheYSettersStoreScores) {
    OneSided function = oneSided(2, 3, 4, 0.25, 0.75);
    function.y0(0);
    function.y1(1);
    expectFields(function, {2, 3, 4, 0, 1});
}

TEST(FeatureScoreOneSided, TheYSettersRefuseEverythingElseAndChangeNothing) {
    OneSided function = oneSided(2, 3, 4, 0.25, 0.75);
    for (const double bad : {1.0000001, -0.5, infinity, -infinity, notANumber}) {
        EXPECT_ERROR(function.y0(bad), BadParams, badY0);
        EXPECT_ERROR(function.y1(bad), BadParams, badY1);
    }
    expectFields(function, {2, 3, 4, 0.25, 0.75});
}

TEST(FeatureScoreOneSided, TheRisingFormRampsHoldsAndCutsOff) {
    const OneSided function = oneSided(0, 1, 2, 0.2, 0.8);
    EXPECT_EQ(function.score(-infinity), 0.2);
    EXPECT_EQ(function.score(-1), 0.2);
    EXPECT_EQ(function.score(0), 0.2);
    EXPECT_EQ(function.score(0.5), 0.5);
    EXPECT_EQ(function.score(1), 0.8);
    EXPECT_EQ(function.score(1.5), 0.8);
    EXPECT_EQ(function.score(2), 0.8);
    EXPECT_EQ(function.score(after(2)), 0.0);
    EXPECT_EQ(function.score(2.0001), 0.0);
    EXPECT_EQ(function.score(infinity), 0.0);
}

TEST(FeatureScoreOneSided, TheFallingFormIsTheMirrorImage) {
    const OneSided function = oneSided(2, 1, 0, 0.2, 0.8);
    EXPECT_EQ(function.score(infinity), 0.2);
    EXPECT_EQ(function.score(3), 0.2);
    EXPECT_EQ(function.score(2), 0.2);
    EXPECT_EQ(function.score(1.5), 0.5);
    EXPECT_EQ(function.score(1), 0.8);
    EXPECT_EQ(function.score(0), 0.8);
    EXPECT_EQ(function.score(before(0)), 0.0);
    EXPECT_EQ(function.score(-0.1), 0.0);
    EXPECT_EQ(function.score(-infinity), 0.0);
}

TEST(FeatureScoreOneSided, WithoutARampX1BelongsToThePlateau) {
    const OneSided rising = oneSided(1, 1, 2, 0.25, 0.75);
    EXPECT_EQ(rising.score(before(1)), 0.25);
    EXPECT_EQ(rising.score(1), 0.75);
    EXPECT_EQ(rising.score(2), 0.75);
    EXPECT_EQ(rising.score(after(2)), 0.0);
    const OneSided falling = oneSided(1, 1, 0, 0.25, 0.75);
    EXPECT_EQ(falling.score(after(1)), 0.25);
    EXPECT_EQ(falling.score(1), 0.75);
    EXPECT_EQ(falling.score(0), 0.75);
    EXPECT_EQ(falling.score(before(0)), 0.0);
}

TEST(FeatureScoreOneSided, WithoutAPlateauTheCutOffPointStillScoresY1) {
    const OneSided rising = oneSided(0, 1, 1, 0.25, 0.75);
    EXPECT_EQ(rising.score(1), 0.75);
    EXPECT_EQ(rising.score(after(1)), 0.0);
    const OneSided falling = oneSided(1, 0, 0, 0.25, 0.75);
    EXPECT_EQ(falling.score(0), 0.75);
    EXPECT_EQ(falling.score(before(0)), 0.0);
}

TEST(FeatureScoreOneSided, WithAllXValuesEqualTheFormIsRising) {
    const OneSided function = oneSided(1, 1, 1, 0.25, 0.75);
    EXPECT_EQ(function.score(0), 0.25);
    EXPECT_EQ(function.score(1), 0.75);
    EXPECT_EQ(function.score(2), 0.0);
}

// The expected bits were computed with Python's doubles. Each other way to write the line that comes to mind
// (y0 + (y1 - y0) * ((x - x0) / (x1 - x0)), weights, fused multiply-add) gives other last bits here.
TEST(FeatureScoreOneSided, TheRampIsRoundedOperationByOperation) {
    EXPECT_EQ(oneSided(2.77, 5.46, 7, 0.06, 0.98).score(2.84), 0x1.57d203e200d5bp-4);
    EXPECT_EQ(oneSided(8.86, 8.52, 7, 0.63, 0.5).score(8.74), 0x1.2b1177de44abcp-1);
}

// The formula of the ramp would give 0.76 and 0.65 a little wrong there, and NaN where x0 is infinite.
TEST(FeatureScoreOneSided, X0ItselfScoresExactlyY0) {
    EXPECT_EQ(oneSided(1.21, 7.63, 9, 0.76, 0.26).score(1.21), 0.76);
    EXPECT_EQ(oneSided(4.46, 4.05, 3, 0.65, 0.79).score(4.46), 0.65);
    EXPECT_EQ(oneSided(-infinity, 1, 2, 0.25, 0.75).score(-infinity), 0.25);
}

TEST(FeatureScoreOneSided, ANaNValueGivesNaNWhenRisingAndNothingWhenFalling) {
    EXPECT_TRUE(std::isnan(oneSided(0, 1, 2, 0.25, 0.75).score(notANumber)));
    EXPECT_TRUE(std::isnan(oneSided(1, 1, 2, 0.25, 0.75).score(notANumber)));
    EXPECT_EQ(oneSided(2, 1, 0, 0.25, 0.75).score(notANumber), 0.0);
}

TEST(FeatureScoreOneSided, ScoringChecksTheXValuesAgain) {
    OneSided function;
    function.x1(5.0);
    EXPECT_ERROR(function.score(0), BadParams, badScore);
    function.x1(-5.0);
    EXPECT_ERROR(function.score(0), BadParams, badScore);
    function.x1(notANumber);
    EXPECT_ERROR(function.score(0), BadParams, badScore);
    function.x1(0.5);
    EXPECT_EQ(function.score(0.75), 0.0);
}

TEST(FeatureScoreOneSided, FunctionsAreEqualWhenAllFiveValuesAre) {
    const OneSided function = oneSided(2, 3, 4, 0.25, 0.75);
    EXPECT_TRUE(function == oneSided(2, 3, 4, 0.25, 0.75));
    EXPECT_FALSE(function != oneSided(2, 3, 4, 0.25, 0.75));
    for (const OneSided& other :
         {oneSided(1, 3, 4, 0.25, 0.75), oneSided(2, 3.5, 4, 0.25, 0.75), oneSided(2, 3, 5, 0.25, 0.75),
          oneSided(2, 3, 4, 0.5, 0.75), oneSided(2, 3, 4, 0.25, 0.5)}) {
        EXPECT_FALSE(function == other);
        EXPECT_FALSE(other == function);
        EXPECT_TRUE(function != other);
    }
}

TEST(FeatureScoreOneSided, ZerosOfBothSignsAreEqual) {
    EXPECT_TRUE(oneSided(0.0, 1, 2, 0.0, 1) == oneSided(-0.0, 1, 2, -0.0, 1));
}

TEST(FeatureScoreOneSided, ANaNFieldIsEqualToAnything) {
    const OneSided plain = oneSided(2, 3, 4, 0.25, 0.75);
    const std::vector<std::function<void(OneSided&)>> spoil = {[](OneSided& f) { f.x0(notANumber); },
                                                               [](OneSided& f) { f.x1(notANumber); },
                                                               [](OneSided& f) { f.xc(notANumber); }};
    for (const auto& change : spoil) {
        OneSided spoilt = plain;
        change(spoilt);
        EXPECT_TRUE(spoilt == plain);
        EXPECT_TRUE(plain == spoilt);
        EXPECT_TRUE(spoilt == spoilt);
    }
    OneSided spoilt = plain;
    spoilt.x0(notANumber);
    EXPECT_FALSE(spoilt == oneSided(2, 3, 4, 0.25, 0.5));
}

TEST(FeatureScoreOneSided, ADerivedClassIsAnotherClass) {
    const OneSided plain;
    const DerivedOneSided derived;
    EXPECT_FALSE(plain == derived);
    EXPECT_FALSE(derived == plain);
    EXPECT_TRUE(derived == DerivedOneSided());
}

TEST(FeatureScoreOneSided, ACopyIsIndependent) {
    OneSided original = oneSided(2, 3, 4, 0.25, 0.75);
    const OneSided copy = original;
    OneSided assigned;
    assigned = original;
    original.x0(0);
    expectFields(copy, {2, 3, 4, 0.25, 0.75});
    expectFields(assigned, {2, 3, 4, 0.25, 0.75});
}
