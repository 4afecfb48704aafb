#include <vxclassifier/classifier_frequencies.h>

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

constexpr const wchar_t* notPositive = L"Category frequencies must be > 0.0";
constexpr const wchar_t* negativeLabel = L"Category labels must be >= 0";
constexpr const char* source = "clss/clastool/clastool";

vxClassifierFrequencies forged(double defaultFrequency, const std::vector<long>& labels,
                               const std::vector<double>& frequencies) {
    return test::loaded(
        HandWritten().byte(0).real(defaultFrequency).numbers(labels).reals(frequencies).sealed(),
        vxClassifierFrequencies(1.0));
}

TEST(ClassifierFrequencies, TheDefaultHoldsForEveryLabel) {
    const vxClassifierFrequencies frequencies(2.5);
    EXPECT_EQ(frequencies.defaultCategoryFrequency(), 2.5);
    EXPECT_EQ(frequencies.categoryFrequency(0), 2.5);
    EXPECT_EQ(frequencies.categoryFrequency(2147483647), 2.5);
    EXPECT_EQ(frequencies.freqOverrideIndex_(0), -1);
}

TEST(ClassifierFrequencies, TheDefaultMustBePositive) {
    for (const double refused : {0.0, -0.0, -tiny, -1.0, -infinity}) {
        EXPECT_ERROR(vxClassifierFrequencies{refused}, BadParams, notPositive);
        vxClassifierFrequencies frequencies(2.5);
        EXPECT_ERROR(frequencies.defaultCategoryFrequency(refused), BadParams, notPositive);
        EXPECT_EQ(frequencies.defaultCategoryFrequency(), 2.5) << "a refused value changes nothing";
    }
}

TEST(ClassifierFrequencies, AnyPositiveDefaultAndNotANumberPass) {
    for (const double accepted : {tiny, 1e300, infinity}) {
        EXPECT_EQ(vxClassifierFrequencies(accepted).defaultCategoryFrequency(), accepted);
        vxClassifierFrequencies frequencies(2.5);
        frequencies.defaultCategoryFrequency(accepted);
        EXPECT_EQ(frequencies.categoryFrequency(1), accepted);
    }
    EXPECT_TRUE(std::isnan(vxClassifierFrequencies(nan).defaultCategoryFrequency()));
    vxClassifierFrequencies frequencies(2.5);
    frequencies.defaultCategoryFrequency(nan);
    EXPECT_TRUE(std::isnan(frequencies.categoryFrequency(1)));
}

TEST(ClassifierFrequencies, AnOverrideHoldsForItsLabelOnly) {
    vxClassifierFrequencies frequencies(1.0);
    frequencies.categoryFrequencyOverride(7, 3.0);
    EXPECT_EQ(frequencies.categoryFrequency(7), 3.0);
    EXPECT_EQ(frequencies.categoryFrequency(6), 1.0);
    frequencies.defaultCategoryFrequency(2.0);
    EXPECT_EQ(frequencies.categoryFrequency(7), 3.0);
    EXPECT_EQ(frequencies.categoryFrequency(6), 2.0);
}

TEST(ClassifierFrequencies, OverridingAgainReplacesInPlace) {
    vxClassifierFrequencies frequencies(1.0);
    frequencies.categoryFrequencyOverride(7, 3.0);
    frequencies.categoryFrequencyOverride(4, 5.0);
    frequencies.categoryFrequencyOverride(7, 9.0);
    EXPECT_EQ(frequencies.freqOverrideIndex_(7), 0);
    EXPECT_EQ(frequencies.freqOverrideIndex_(4), 1);
    EXPECT_EQ(frequencies.categoryFrequency(7), 9.0);
    EXPECT_EQ(test::stored(frequencies),
              HandWritten().byte(0).real(1.0).numbers({7, 4}).reals({9.0, 5.0}).sealed());
}

TEST(ClassifierFrequencies, LabelsMustNotBeNegative) {
    vxClassifierFrequencies frequencies(1.0);
    EXPECT_ERROR(frequencies.categoryFrequency(-1), BadLabel, negativeLabel);
    EXPECT_ERROR(frequencies.freqOverrideIndex_(-1), BadLabel, negativeLabel);
    EXPECT_ERROR(frequencies.categoryFrequencyOverride(-1, 2.0), BadLabel, negativeLabel);
    EXPECT_ERROR(frequencies.categoryFrequency(std::numeric_limits<long>::min()), BadLabel, negativeLabel);
    EXPECT_EQ(frequencies, vxClassifierFrequencies(1.0));
}

TEST(ClassifierFrequencies, AnOverrideMustBePositiveAndThatIsCheckedBeforeTheLabel) {
    vxClassifierFrequencies frequencies(1.0);
    for (const double refused : {0.0, -0.0, -tiny, -infinity}) {
        EXPECT_ERROR(frequencies.categoryFrequencyOverride(3, refused), BadParams, notPositive);
        EXPECT_ERROR(frequencies.categoryFrequencyOverride(-3, refused), BadParams, notPositive);
    }
    EXPECT_EQ(frequencies, vxClassifierFrequencies(1.0));
    EXPECT_ERROR(frequencies.categoryFrequencyOverride(-3, nan), BadLabel, negativeLabel);
    frequencies.categoryFrequencyOverride(3, nan);
    EXPECT_TRUE(std::isnan(frequencies.categoryFrequency(3)));
}

TEST(ClassifierFrequencies, ARefusedReplacementKeepsTheOldOverride) {
    vxClassifierFrequencies frequencies(1.0);
    frequencies.categoryFrequencyOverride(3, 4.0);
    EXPECT_ERROR(frequencies.categoryFrequencyOverride(3, 0.0), BadParams, notPositive);
    EXPECT_EQ(frequencies.categoryFrequency(3), 4.0);
}

TEST(ClassifierFrequencies, ClearingRemovesEveryOverrideAndKeepsTheDefault) {
    vxClassifierFrequencies frequencies(1.5);
    frequencies.categoryFrequencyOverride(7, 3.0);
    frequencies.categoryFrequencyOverride(8, 4.0);
    frequencies.clearFrequencyOverrides();
    EXPECT_EQ(frequencies.categoryFrequency(7), 1.5);
    EXPECT_EQ(frequencies.categoryFrequency(8), 1.5);
    EXPECT_EQ(frequencies, vxClassifierFrequencies(1.5));
}

TEST(ClassifierFrequencies, EqualityDependsOnTheOrderOfTheOverrides) {
    vxClassifierFrequencies ab(1.0);
    ab.categoryFrequencyOverride(1, 2.0);
    ab.categoryFrequencyOverride(2, 3.0);
    vxClassifierFrequencies ba(1.0);
    ba.categoryFrequencyOverride(2, 3.0);
    ba.categoryFrequencyOverride(1, 2.0);
    EXPECT_TRUE(ab != ba);
    EXPECT_FALSE(ab == ba);
}

TEST(ClassifierFrequencies, EqualityComparesDefaultLabelsAndFrequenciesExactly) {
    EXPECT_TRUE(vxClassifierFrequencies(1.0) == vxClassifierFrequencies(1.0));
    EXPECT_FALSE(vxClassifierFrequencies(1.0) != vxClassifierFrequencies(1.0));
    EXPECT_TRUE(vxClassifierFrequencies(1.0) != vxClassifierFrequencies(std::nextafter(1.0, 2.0)));
    vxClassifierFrequencies one(1.0);
    one.categoryFrequencyOverride(1, 2.0);
    EXPECT_TRUE(one != vxClassifierFrequencies(1.0));
    vxClassifierFrequencies otherLabel(1.0);
    otherLabel.categoryFrequencyOverride(2, 2.0);
    EXPECT_TRUE(one != otherLabel);
    vxClassifierFrequencies otherValue(1.0);
    otherValue.categoryFrequencyOverride(1, 2.5);
    EXPECT_TRUE(one != otherValue);
    vxClassifierFrequencies overriddenByDefault(1.0);
    overriddenByDefault.categoryFrequencyOverride(1, 1.0);
    EXPECT_TRUE(overriddenByDefault != vxClassifierFrequencies(1.0));
}

TEST(ClassifierFrequencies, ANotANumberIsUnequalToItself) {
    const vxClassifierFrequencies byDefault(nan);
    EXPECT_FALSE(byDefault == byDefault);
    vxClassifierFrequencies overridden(1.0);
    overridden.categoryFrequencyOverride(1, nan);
    EXPECT_FALSE(overridden == overridden);
    EXPECT_TRUE(overridden != overridden);
}

TEST(ClassifierFrequencies, ACopyIsEqualAndIndependent) {
    vxClassifierFrequencies original(1.0);
    original.categoryFrequencyOverride(1, 2.0);
    const vxClassifierFrequencies copy(original);
    vxClassifierFrequencies assigned(5.0);
    EXPECT_EQ(&(assigned = original), &assigned);
    EXPECT_EQ(copy, original);
    EXPECT_EQ(assigned, original);
    original.clearFrequencyOverrides();
    EXPECT_EQ(copy.categoryFrequency(1), 2.0);
    EXPECT_EQ(assigned.categoryFrequency(1), 2.0);
    vxClassifierFrequencies& self = assigned;
    assigned = self;
    EXPECT_EQ(assigned, copy);
}

TEST(ClassifierFrequenciesArchive, HoldsVersionDefaultLabelsAndFrequencies) {
    EXPECT_EQ(test::stored(vxClassifierFrequencies(0.25)),
              HandWritten().byte(0).real(0.25).numbers({}).reals({}).sealed());
    vxClassifierFrequencies frequencies(0.25);
    frequencies.categoryFrequencyOverride(9, 1.0);
    frequencies.categoryFrequencyOverride(2, nan);
    EXPECT_EQ(test::stored(frequencies),
              HandWritten().byte(0).real(0.25).numbers({9, 2}).reals({1.0, nan}).sealed());
}

TEST(ClassifierFrequenciesArchive, BringsThemBackInPlaceOfWhatWasThere) {
    vxClassifierFrequencies frequencies(0.25);
    frequencies.categoryFrequencyOverride(9, 1.0);
    vxClassifierFrequencies into(7.0);
    into.categoryFrequencyOverride(1, 1.0);
    into.categoryFrequencyOverride(2, 2.0);
    EXPECT_EQ(test::loaded(test::stored(frequencies), into), frequencies);
}

TEST(ClassifierFrequenciesArchive, AnotherVersionIsRefusedWithItsPlace) {
    vxClassifierFrequencies into(3.0);
    EXPECT_UNKNOWN_VERSION(test::load(HandWritten().byte(1).real(1.0).numbers({}).reals({}).sealed(), into),
                           source, 522);
    EXPECT_EQ(into, vxClassifierFrequencies(3.0));
}

TEST(ClassifierFrequenciesArchive, AnotherVersionOfAVectorIsRefusedWithoutAPlace) {
    vxClassifierFrequencies into(3.0);
    EXPECT_UNKNOWN_VERSION(test::load(HandWritten().byte(0).real(1.0).byte(1).count(0).sealed(), into),
                           nullptr, 0);
    EXPECT_UNKNOWN_VERSION(
        test::load(HandWritten().byte(0).real(1.0).numbers({}).byte(1).count(0).sealed(), into), nullptr, 0);
    EXPECT_EQ(into.defaultCategoryFrequency(), 1.0) << "what was read stays";
}

TEST(ClassifierFrequenciesArchive, LoadedValuesAreNotChecked) {
    const vxClassifierFrequencies frequencies = forged(-1.0, {3, 3, -5}, {0.0, 2.0, nan});
    EXPECT_EQ(frequencies.defaultCategoryFrequency(), -1.0);
    EXPECT_EQ(frequencies.categoryFrequency(3), 0.0) << "the first of two equal labels counts";
    EXPECT_ERROR(frequencies.categoryFrequency(-5), BadLabel, negativeLabel);
}

TEST(ClassifierFrequenciesArchive, ALabelOfMoreThanThirtyTwoBitsCannotBeStored) {
    vxClassifierFrequencies frequencies(1.0);
    frequencies.categoryFrequencyOverride(2147483648L, 2.0);
    EXPECT_EQ(frequencies.categoryFrequency(2147483648L), 2.0);
    EXPECT_EQ(frequencies.categoryFrequency(2147483647L), 1.0);
    EXPECT_ERROR_CLASS(test::stored(frequencies), vxArchive::NotRepresentable);
}

} // namespace
