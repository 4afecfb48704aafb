#include "tests/clastool/foundation/results.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"

#include <vxclassifier/classifier_result.h>
#include <vxclassifier/platform/archive.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace {

using test::Bytes;
using test::HandWritten;
using test::labelsOf;
using testing::ElementsAre;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr const char* source = "clss/clastool/clastool";

/// One entry of a hand-written result.
void putEntry(HandWritten& byHand, long label, double matchScore, double classScore, double expectedCost) {
    byHand.byte(0).number(label).real(matchScore).real(classScore).real(expectedCost);
}

TEST(ClassifierResultArchive, AnEmptyResultIsAVersionAnEmptyVectorAndTheFactor) {
    EXPECT_EQ(test::stored(vxClassifierResult()), HandWritten().byte(0).byte(0).count(0).real(0.0).sealed());
}

TEST(ClassifierResultArchive, HoldsEachEntryWithItsOwnVersion) {
    const vxClassifierResult result({{7, 0.5, 0.5, 2.0}, {3, 0.25, 0.5, 1.0}}, -4.5);
    HandWritten byHand;
    byHand.byte(0).byte(0).count(2);
    putEntry(byHand, 3, 0.25, 0.5, 1.0);
    putEntry(byHand, 7, 0.5, 0.5, 2.0);
    byHand.real(-4.5);
    EXPECT_EQ(test::stored(result), byHand.sealed());
}

TEST(ClassifierResultArchive, BringsTheResultBackInPlaceOfWhatWasThere) {
    const vxClassifierResult result({{7, 0.5, 0.5, 2.0}, {3, 0.25, 0.5, 1.0}}, -4.5);
    const vxClassifierResult longer({{1, 0.5, 0.5, 2.0}, {2, 0.25, 0.5, 1.0}, {3, 0.1, 0.1, 0.1}}, 8.0);
    EXPECT_EQ(test::loaded(test::stored(result), vxClassifierResult()), result);
    EXPECT_EQ(test::loaded(test::stored(result), longer), result);
    EXPECT_EQ(test::loaded(test::stored(vxClassifierResult()), longer), vxClassifierResult());
}

TEST(ClassifierResultArchive, LoadedEntriesAreNeitherCheckedNorNormalisedNorOrdered) {
    HandWritten byHand;
    byHand.byte(0).byte(0).count(3);
    putEntry(byHand, 5, 7.0, 0.25, 9.0);
    putEntry(byHand, 5, 0.5, 0.25, -1.0);
    putEntry(byHand, -2, nan, 0.25, 3.0);
    const Bytes sealed = byHand.real(nan).sealed();
    const vxClassifierResult result = test::loaded(sealed, vxClassifierResult());
    EXPECT_THAT(labelsOf(result), ElementsAre(5, 5, -2));
    EXPECT_EQ(result.categoryResults()[0].matchScore(), 7.0);
    EXPECT_EQ(result.categoryResults()[0].classScore(), 0.25);
    EXPECT_EQ(result.categoryResults()[1].expectedCost(), -1.0);
    EXPECT_EQ(test::stored(result), sealed);
}

TEST(ClassifierResultArchive, AnotherVersionIsRefusedWithItsPlace) {
    const vxClassifierResult before({{7, 0.5, 1.0, 2.0}}, 1.0);
    vxClassifierResult into(before);
    EXPECT_UNKNOWN_VERSION(test::load(HandWritten().byte(1).byte(0).count(0).real(0.0).sealed(), into),
                           source, 670);
    EXPECT_EQ(into, before);
}

TEST(ClassifierResultArchive, AnotherVersionOfTheVectorIsRefusedWithoutAPlace) {
    const vxClassifierResult before({{7, 0.5, 1.0, 2.0}}, 1.0);
    vxClassifierResult into(before);
    EXPECT_UNKNOWN_VERSION(test::load(HandWritten().byte(0).byte(1).count(0).real(0.0).sealed(), into),
                           nullptr, 0);
    EXPECT_EQ(into, before);
}

TEST(ClassifierResultArchive, AnotherVersionOfAnEntryIsRefusedWithItsPlaceAndWhatWasReadStays) {
    HandWritten byHand;
    byHand.byte(0).byte(0).count(2);
    putEntry(byHand, 3, 0.25, 0.5, 1.0);
    byHand.byte(1).number(4).real(0.0).real(0.0).real(0.0).real(0.0);
    vxClassifierResult into;
    EXPECT_UNKNOWN_VERSION(test::load(byHand.sealed(), into), source, 346);
    ASSERT_EQ(into.categoryResults().size(), 2U);
    EXPECT_EQ(into.categoryResults()[0], vxClassifierCategoryResult(3, 0.25, 0.5, 1.0));
}

TEST(ClassifierResultArchive, ALabelOfMoreThanThirtyTwoBitsCannotBeStored) {
    EXPECT_ERROR_CLASS(test::stored(vxClassifierResult({{2147483648L, 0.5, 1.0, 2.0}}, 1.0)),
                       vxArchive::NotRepresentable);
}

} // namespace
