#include "tests/clastool/foundation/results.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_result.h>

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

constexpr const wchar_t* negativeLabel = L"Category labels must be >= 0";
constexpr const wchar_t* badScore = L"Scores must be >= 0.0 and <= 1.0";
constexpr const wchar_t* negativeCost = L"Costs must be >= 0.0";

TEST(ClassifierCategoryResult, HoldsItsFourValues) {
    const vxClassifierCategoryResult result(7, 0.25, 0.5, 3.0);
    EXPECT_EQ(result.categoryLabel(), 7);
    EXPECT_EQ(result.matchScore(), 0.25);
    EXPECT_EQ(result.classScore(), 0.5);
    EXPECT_EQ(result.expectedCost(), 3.0);
}

TEST(ClassifierCategoryResult, AcceptsTheEndsOfTheRanges) {
    const vxClassifierCategoryResult low(0, 0.0, -0.0, 0.0);
    EXPECT_EQ(low.matchScore(), 0.0);
    const vxClassifierCategoryResult high(std::numeric_limits<long>::max(), 1.0, 1.0, infinity);
    EXPECT_EQ(high.expectedCost(), infinity);
}

TEST(ClassifierCategoryResult, TheLabelMustNotBeNegative) {
    EXPECT_ERROR(vxClassifierCategoryResult(-1, 0.0, 0.0, 0.0), BadLabel, negativeLabel);
}

TEST(ClassifierCategoryResult, TheScoresMustLieBetweenZeroAndOne) {
    const double above = std::nextafter(1.0, 2.0);
    for (const double refused : {-tiny, -1.0, above, infinity, -infinity}) {
        EXPECT_ERROR(vxClassifierCategoryResult(0, refused, 0.0, 0.0), BadParams, badScore);
        EXPECT_ERROR(vxClassifierCategoryResult(0, 0.0, refused, 0.0), BadParams, badScore);
    }
}

TEST(ClassifierCategoryResult, TheCostMustNotBeNegative) {
    EXPECT_ERROR(vxClassifierCategoryResult(0, 0.0, 0.0, -tiny), BadParams, negativeCost);
    EXPECT_ERROR(vxClassifierCategoryResult(0, 0.0, 0.0, -infinity), BadParams, negativeCost);
}

TEST(ClassifierCategoryResult, ChecksLabelThenScoresThenCost) {
    EXPECT_ERROR(vxClassifierCategoryResult(-1, 2.0, 2.0, -1.0), BadLabel, negativeLabel);
    EXPECT_ERROR(vxClassifierCategoryResult(0, 2.0, 0.0, -1.0), BadParams, badScore);
    EXPECT_ERROR(vxClassifierCategoryResult(0, 0.0, 2.0, -1.0), BadParams, badScore);
    EXPECT_ERROR(vxClassifierCategoryResult(0, nan, nan, -1.0), BadParams, negativeCost);
}

TEST(ClassifierCategoryResult, NotANumberPassesEveryCheck) {
    const vxClassifierCategoryResult result(1, nan, nan, nan);
    EXPECT_TRUE(std::isnan(result.matchScore()));
    EXPECT_TRUE(std::isnan(result.classScore()));
    EXPECT_TRUE(std::isnan(result.expectedCost()));
}

TEST(ClassifierCategoryResult, EqualityComparesAllFourValues) {
    const vxClassifierCategoryResult result(7, 0.25, 0.5, 3.0);
    EXPECT_TRUE(result == vxClassifierCategoryResult(7, 0.25, 0.5, 3.0));
    EXPECT_FALSE(result != vxClassifierCategoryResult(7, 0.25, 0.5, 3.0));
    EXPECT_TRUE(result != vxClassifierCategoryResult(8, 0.25, 0.5, 3.0));
    EXPECT_TRUE(result != vxClassifierCategoryResult(7, std::nextafter(0.25, 1.0), 0.5, 3.0));
    EXPECT_TRUE(result != vxClassifierCategoryResult(7, 0.25, std::nextafter(0.5, 1.0), 3.0));
    EXPECT_TRUE(result != vxClassifierCategoryResult(7, 0.25, 0.5, std::nextafter(3.0, 4.0)));
    EXPECT_TRUE(vxClassifierCategoryResult(7, 0.0, 0.0, 0.0) ==
                vxClassifierCategoryResult(7, -0.0, -0.0, -0.0));
}

TEST(ClassifierCategoryResult, OneWithANotANumberIsUnequalToItself) {
    for (const vxClassifierCategoryResult& result :
         {vxClassifierCategoryResult(1, nan, 0.5, 1.0), vxClassifierCategoryResult(1, 0.5, nan, 1.0),
          vxClassifierCategoryResult(1, 0.5, 0.5, nan)}) {
        EXPECT_FALSE(result == result);
        EXPECT_TRUE(result != result);
    }
}

TEST(ClassifierCategoryResult, CanBeCopiedAndAssigned) {
    const vxClassifierCategoryResult original(7, 0.25, 0.5, 3.0);
    const vxClassifierCategoryResult copy(original);
    vxClassifierCategoryResult assigned(0, 0.0, 0.0, 0.0);
    EXPECT_EQ(&(assigned = original), &assigned);
    EXPECT_EQ(copy, original);
    EXPECT_EQ(assigned, original);
}

TEST(ClassifierCategoryResultArchive, HoldsTheVersionAndTheFourValues) {
    EXPECT_EQ(test::stored(vxClassifierCategoryResult(7, 0.25, 0.5, nan)),
              HandWritten().byte(0).number(7).real(0.25).real(0.5).real(nan).sealed());
}

TEST(ClassifierCategoryResultArchive, BringsItBackAndChecksNothing) {
    const vxClassifierCategoryResult sound(7, 0.25, 0.5, 3.0);
    EXPECT_EQ(test::loaded(test::stored(sound), vxClassifierCategoryResult(0, 0.0, 0.0, 0.0)), sound);
    const vxClassifierCategoryResult result = test::forgedCategory(-5, 2.0, -3.0, -4.0);
    EXPECT_EQ(result.categoryLabel(), -5);
    EXPECT_EQ(result.matchScore(), 2.0);
    EXPECT_EQ(result.classScore(), -3.0);
    EXPECT_EQ(result.expectedCost(), -4.0);
}

TEST(ClassifierCategoryResultArchive, AnotherVersionIsRefusedWithItsPlace) {
    vxClassifierCategoryResult into(7, 0.25, 0.5, 3.0);
    EXPECT_UNKNOWN_VERSION(
        test::load(HandWritten().byte(1).number(1).real(0.0).real(0.0).real(0.0).sealed(), into),
        "clss/clastool/clastool", 346);
    EXPECT_EQ(into, vxClassifierCategoryResult(7, 0.25, 0.5, 3.0));
}

} // namespace
