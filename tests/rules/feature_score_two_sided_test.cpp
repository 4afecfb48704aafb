#include "tests/rules/functions.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/feature_score.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using test::oneSided;
using test::trapezoid;
using vxClassifierDefs::BadParams;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr const wchar_t* badY0 = L"y0 must be between 0 and 1";
constexpr const wchar_t* badY1 = L"y1 must be between 0 and 1";
constexpr const wchar_t* badY0h = L"y0h must be between 0 and 1";
constexpr const wchar_t* badY1h = L"y1h must be between 0 and 1";
constexpr const wchar_t* overlap = L"x0 > lowest || x1 > lowest || xc > lowest";
constexpr const wchar_t* badInit = L"x1 must be lie between x0 and xc";
constexpr const wchar_t* badScore = L"x1 must lie between x0 and xc";
constexpr const wchar_t* badValues = L"Bad x values";

using TwoSided = vxClassifierFeatureScoreTwoSided;

class DerivedTwoSided : public TwoSided {};

void expectFields(const TwoSided& f, const std::vector<double>& expected) {
    EXPECT_EQ((std::vector<double>{f.x0(), f.x1(), f.xc(), f.y0(), f.y1(), f.x0h(), f.x1h(), f.xch(), f.y0h(),
                                   f.y1h()}),
              expected);
}

void expectTrapezoid(const TwoSided& function) {
    expectFields(function, {0, 1, 2, 0.125, 0.75, 5, 4, 3, 0.25, 0.875});
}

} // namespace

TEST(FeatureScoreTwoSided, BeginsWithTwoDefaultPartsAndCannotScoreYet) {
    const TwoSided function;
    EXPECT_TRUE(function.Low() == vxClassifierFeatureScoreOneSided());
    EXPECT_TRUE(function.High() == vxClassifierFeatureScoreOneSided());
    EXPECT_ERROR(function.score(0), BadParams, badValues);
}

TEST(FeatureScoreTwoSided, InitTakesTheSixXValuesFirst) {
    const TwoSided function = trapezoid();
    expectTrapezoid(function);
    EXPECT_TRUE(function.Low() == oneSided(0, 1, 2, 0.125, 0.75));
    EXPECT_TRUE(function.High() == oneSided(5, 4, 3, 0.25, 0.875));
}

TEST(FeatureScoreTwoSided, InitRefusesALowPartThatPassesTheBoundary) {
    TwoSided function = trapezoid();
    EXPECT_ERROR(function.init(4, 2, 1, 3, 4, 5, 0, 1, 0, 1), BadParams, overlap);
    EXPECT_ERROR(function.init(0, 4, 1, 3, 4, 5, 0, 1, 0, 1), BadParams, overlap);
    EXPECT_ERROR(function.init(0, 1, std::nextafter(3, 4), 3, 4, 5, 0, 1, 0, 1), BadParams, overlap);
    EXPECT_ERROR(function.init(0, 1, 2, 5, 4, std::nextafter(2, 1), 0, 1, 0, 1), BadParams, overlap);
    // The boundary is the smallest high value even when the high part itself is bad.
    EXPECT_ERROR(function.init(0, 1, 2, 5, 1.5, 3, 0, 1, 0, 1), BadParams, overlap);
    expectTrapezoid(function);
}

TEST(FeatureScoreTwoSided, InitAcceptsALowPartThatTouchesTheBoundary) {
    TwoSided function;
    function.init(0, 1, 3, 5, 4, 3, 0, 1, 0, 1);
    EXPECT_EQ(function.score(3), 1.0);
    function.init(3, 3, 3, 3, 3, 3, 0.25, 0.5, 0.75, 1);
    EXPECT_EQ(function.score(2), 0.25);
    EXPECT_EQ(function.score(3), 1.0);
}

TEST(FeatureScoreTwoSided, InitChecksTheBoundaryThenTheLowPartThenTheHighPart) {
    TwoSided function = trapezoid();
    EXPECT_ERROR(function.init(9, 1, 2, 5, 4, 3, 7, 7, 7, 7), BadParams, overlap);
    EXPECT_ERROR(function.init(0, -1, 2, 5, 6, 3, 7, 7, 7, 7), BadParams, badY0);
    EXPECT_ERROR(function.init(0, -1, 2, 5, 6, 3, 0, 7, 7, 7), BadParams, badY1);
    EXPECT_ERROR(function.init(0, -1, 2, 5, 6, 3, 0, 1, 7, 7), BadParams, badInit);
    EXPECT_ERROR(function.init(0, 1, 2, 5, 6, 3, 0, 1, 7, 7), BadParams, badY0);
    EXPECT_ERROR(function.init(0, 1, 2, 5, 6, 3, 0, 1, 0, 7), BadParams, badY1);
    EXPECT_ERROR(function.init(0, 1, 2, 5, 6, 3, 0, 1, 0, 1), BadParams, badInit);
    expectTrapezoid(function);
}

TEST(FeatureScoreTwoSided, InitRefusesNaNScores) {
    TwoSided function = trapezoid();
    EXPECT_ERROR(function.init(0, 1, 2, 5, 4, 3, notANumber, 1, 0, 1), BadParams, badY0);
    EXPECT_ERROR(function.init(0, 1, 2, 5, 4, 3, 0, notANumber, 0, 1), BadParams, badY1);
    EXPECT_ERROR(function.init(0, 1, 2, 5, 4, 3, 0, 1, notANumber, 1), BadParams, badY0);
    EXPECT_ERROR(function.init(0, 1, 2, 5, 4, 3, 0, 1, 0, notANumber), BadParams, badY1);
    expectTrapezoid(function);
}

TEST(FeatureScoreTwoSided, TheXSettersStoreAnythingInTheirOwnField) {
    TwoSided function = trapezoid();
    function.x0(10);
    function.x1(11);
    function.xc(12);
    function.x0h(-1);
    function.x1h(-2);
    function.xch(-3);
    expectFields(function, {10, 11, 12, 0.125, 0.75, -1, -2, -3, 0.25, 0.875});
}

TEST(FeatureScoreTwoSided, TheYSettersStoreScoresInTheirOwnField) {
    TwoSided function = trapezoid();
    function.y0(0);
    function.y1(1);
    function.y0h(0.375);
    function.y1h(0.625);
    expectFields(function, {0, 1, 2, 0, 1, 5, 4, 3, 0.375, 0.625});
}

TEST(FeatureScoreTwoSided, TheYSettersNameThePartInTheirMessagesAndChangeNothing) {
    TwoSided function = trapezoid();
    for (const double bad : {1.0000001, -0.5, infinity, notANumber}) {
        EXPECT_ERROR(function.y0(bad), BadParams, badY0);
        EXPECT_ERROR(function.y1(bad), BadParams, badY1);
        EXPECT_ERROR(function.y0h(bad), BadParams, badY0h);
        EXPECT_ERROR(function.y1h(bad), BadParams, badY1h);
    }
    expectTrapezoid(function);
}

TEST(FeatureScoreTwoSided, TheHighPartBeginsAtItsSmallestXValue) {
    const TwoSided function = trapezoid();
    EXPECT_EQ(function.score(-1), 0.125);
    EXPECT_EQ(function.score(0.5), 0.4375);
    EXPECT_EQ(function.score(1), 0.75);
    EXPECT_EQ(function.score(2), 0.75);
    EXPECT_EQ(function.score(2.5), 0.0); // beyond the low cut-off, below the high part
    EXPECT_EQ(function.score(std::nextafter(3, 2)), 0.0);
    EXPECT_EQ(function.score(3), 0.875);
    EXPECT_EQ(function.score(4), 0.875);
    EXPECT_EQ(function.score(4.5), 0.5625);
    EXPECT_EQ(function.score(5), 0.25);
    EXPECT_EQ(function.score(6), 0.25);
}

TEST(FeatureScoreTwoSided, ARisingHighPartBeginsAtItsX0) {
    TwoSided function;
    function.init(2, 1, 0, 3, 4, 5, 0.25, 0.5, 0.75, 1);
    EXPECT_EQ(function.score(-1), 0.0);
    EXPECT_EQ(function.score(0.5), 0.5);
    EXPECT_EQ(function.score(2.5), 0.25);
    EXPECT_EQ(function.score(3), 0.75);
    EXPECT_EQ(function.score(5), 1.0);
    EXPECT_EQ(function.score(5.5), 0.0);
}

TEST(FeatureScoreTwoSided, ANaNValueIsScoredByTheLowPart) {
    EXPECT_TRUE(std::isnan(trapezoid().score(notANumber)));
    TwoSided function;
    function.init(2, 1, 0, 3, 4, 5, 0.25, 0.5, 0.75, 1);
    EXPECT_EQ(function.score(notANumber), 0.0);
}

TEST(FeatureScoreTwoSided, ScoringChecksBothPartsThenTheBoundary) {
    TwoSided low = trapezoid();
    low.x1(2.5);
    EXPECT_ERROR(low.score(0), BadParams, badScore);
    EXPECT_ERROR(low.score(4), BadParams, badScore);
    TwoSided high = trapezoid();
    high.x1h(5.5);
    EXPECT_ERROR(high.score(0), BadParams, badScore);
    EXPECT_ERROR(high.score(4), BadParams, badScore);
    TwoSided both = trapezoid();
    both.xc(4);
    both.x1h(5.5);
    EXPECT_ERROR(both.score(0), BadParams, badScore);
    both.x1h(4);
    EXPECT_ERROR(both.score(0), BadParams, badValues);
}

TEST(FeatureScoreTwoSided, ScoringRefusesEachLowValueAboveTheBoundary) {
    TwoSided x0 = trapezoid();
    x0.init(2, 1, 0, 5, 4, 3, 0, 1, 0, 1);
    x0.x0(3.5);
    EXPECT_ERROR(x0.score(0), BadParams, badValues);
    TwoSided x1 = trapezoid();
    x1.x1(3.5);
    x1.xc(4.5);
    EXPECT_ERROR(x1.score(0), BadParams, badValues);
    TwoSided xc = trapezoid();
    xc.xc(3.5);
    EXPECT_ERROR(xc.score(0), BadParams, badValues);
    TwoSided x0h = trapezoid();
    x0h.init(0, 1, 2, 3, 4, 5, 0, 1, 0, 1);
    x0h.x0h(1.5);
    EXPECT_ERROR(x0h.score(0), BadParams, badValues);
    TwoSided xch = trapezoid();
    xch.xch(1.5);
    EXPECT_ERROR(xch.score(0), BadParams, badValues);
}

TEST(FeatureScoreTwoSided, FunctionsAreEqualWhenBothPartsAre) {
    const TwoSided function = trapezoid();
    EXPECT_TRUE(function == trapezoid());
    EXPECT_FALSE(function != trapezoid());
    TwoSided low = trapezoid();
    low.y1(0.5);
    TwoSided high = trapezoid();
    high.y1h(0.5);
    for (const TwoSided& other : {low, high}) {
        EXPECT_FALSE(function == other);
        EXPECT_FALSE(other == function);
        EXPECT_TRUE(function != other);
    }
}

TEST(FeatureScoreTwoSided, ANaNFieldIsEqualToAnything) {
    TwoSided spoilt = trapezoid();
    spoilt.xch(notANumber);
    EXPECT_TRUE(spoilt == trapezoid());
    EXPECT_TRUE(trapezoid() == spoilt);
}

TEST(FeatureScoreTwoSided, ADerivedClassIsAnotherClass) {
    const TwoSided plain;
    const DerivedTwoSided derived;
    EXPECT_FALSE(plain == derived);
    EXPECT_FALSE(derived == plain);
    EXPECT_TRUE(derived == DerivedTwoSided());
}

TEST(FeatureScoreTwoSided, ACopyIsIndependent) {
    TwoSided original = trapezoid();
    const TwoSided copy = original;
    TwoSided assigned;
    assigned = original;
    original.x0(-7);
    original.xch(2.5);
    expectTrapezoid(copy);
    expectTrapezoid(assigned);
}
