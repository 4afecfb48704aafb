#include <vxclassifier/feature_pattern.h>

#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/hand_written.h"
#include "tests/support/vtable_slots.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/ptr_handle.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

namespace {

using test::Bytes;
using test::HandWritten;
using testing::ElementsAre;
using testing::IsEmpty;
using vxClassifierDefs::BadFeatures;
using vxClassifierDefs::BadIndex;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr long longMax = std::numeric_limits<long>::max();
constexpr long longMin = std::numeric_limits<long>::min();

constexpr const wchar_t* negativeIndex = L"Feature measurement indices must be >= 0";
constexpr const wchar_t* largeIndex = L"Feature measurement indices must be < number of features";
constexpr const wchar_t* notValid = L"The measurement for the specified measurement index is not valid.";
constexpr const wchar_t* notAllValid = L"Access to full feature vector requires that all features are valid.";

struct Access : vxFeaturePattern {
    using vxFeaturePattern::vxFeaturePattern;
    static std::size_t dispatchSlot() { return test::slotOf(&Access::dispatchSerialize); }
    void body(vxArchive& archive, unsigned char version) { serialize_(archive, version); }
};

struct Doubled : vxFeaturePattern {
    using vxFeaturePattern::vxFeaturePattern;

protected:
    void dispatchSerialize(vxArchive& archive) override {
        vxFeaturePattern::dispatchSerialize(archive);
        vxFeaturePattern::dispatchSerialize(archive);
    }
};

TEST(FeaturePattern, WithoutMeasurementsHasNone) {
    const vxFeaturePattern pattern({}, {});
    EXPECT_EQ(pattern.numMeasurements(), 0);
    EXPECT_EQ(pattern.numInvalid(), 0);
    EXPECT_THAT(pattern.featureMeasurements(true), IsEmpty());
    EXPECT_THAT(pattern.featureMeasurements(false), IsEmpty());
    EXPECT_THAT(pattern.invalidFeatureIndices(), IsEmpty());
}

TEST(FeaturePattern, MeasurementsAreValidUnlessListed) {
    const vxFeaturePattern pattern({1.5, 2.5, 3.5}, {});
    EXPECT_EQ(pattern.numMeasurements(), 3);
    EXPECT_EQ(pattern.numInvalid(), 0);
    for (long i = 0; i < 3; ++i) {
        EXPECT_TRUE(pattern.isValid(i)) << i;
        EXPECT_EQ(pattern.featureMeasurement(i, true), 1.5 + static_cast<double>(i));
    }
    EXPECT_THAT(pattern.featureMeasurements(true), ElementsAre(1.5, 2.5, 3.5));
}

TEST(FeaturePattern, InvalidIndicesComeInAnyOrderAndMayRepeat) {
    const vxFeaturePattern pattern({1, 2, 3, 4}, {3, 0, 3, 3});
    EXPECT_EQ(pattern.numInvalid(), 2);
    EXPECT_FALSE(pattern.isValid(0));
    EXPECT_TRUE(pattern.isValid(1));
    EXPECT_TRUE(pattern.isValid(2));
    EXPECT_FALSE(pattern.isValid(3));
    EXPECT_THAT(pattern.invalidFeatureIndices(), ElementsAre(0, 3));
}

TEST(FeaturePattern, InvalidIndicesMustNotBeNegative) {
    EXPECT_ERROR(vxFeaturePattern({1, 2}, {-1}), BadIndex, negativeIndex);
    EXPECT_ERROR(vxFeaturePattern({1, 2}, {longMin}), BadIndex, negativeIndex);
    EXPECT_ERROR(vxFeaturePattern({}, {-1}), BadIndex, negativeIndex);
}

TEST(FeaturePattern, InvalidIndicesMustLieBelowTheNumberOfMeasurements) {
    EXPECT_ERROR(vxFeaturePattern({1, 2}, {2}), BadIndex, largeIndex);
    EXPECT_ERROR(vxFeaturePattern({}, {0}), BadIndex, largeIndex);
}

TEST(FeaturePattern, TheFirstBadInvalidIndexDecides) {
    EXPECT_ERROR(vxFeaturePattern({1, 2}, {0, -1, 2}), BadIndex, negativeIndex);
    EXPECT_ERROR(vxFeaturePattern({1, 2}, {0, 2, -1}), BadIndex, largeIndex);
}

TEST(FeaturePattern, AnIndexPastTheEndCountsAsInvalid) {
    const vxFeaturePattern pattern({1, 2}, {});
    EXPECT_FALSE(pattern.isValid(2));
    EXPECT_FALSE(pattern.isValid(longMax));
    EXPECT_FALSE(pattern.isValid(4294967296L));
    EXPECT_FALSE(vxFeaturePattern({}, {}).isValid(0));
}

TEST(FeaturePattern, ValidityOfANegativeIndexIsRefused) {
    EXPECT_ERROR(vxFeaturePattern({1, 2}, {}).isValid(-1), BadIndex, negativeIndex);
    EXPECT_ERROR(vxFeaturePattern({}, {}).isValid(longMin), BadIndex, negativeIndex);
}

TEST(FeaturePattern, AMeasurementAtANegativeIndexIsRefused) {
    const vxFeaturePattern pattern({1, 2}, {0});
    EXPECT_ERROR(pattern.featureMeasurement(-1, true), BadIndex, negativeIndex);
    EXPECT_ERROR(pattern.featureMeasurement(-1, false), BadIndex, negativeIndex);
}

TEST(FeaturePattern, AMeasurementThatMustBeValidIsOrThrows) {
    const vxFeaturePattern pattern({1, 2}, {0});
    EXPECT_ERROR(pattern.featureMeasurement(0, true), BadFeatures, notValid);
    EXPECT_EQ(pattern.featureMeasurement(1, true), 2.0);
    EXPECT_ERROR(pattern.featureMeasurement(2, true), BadFeatures, notValid);
    EXPECT_ERROR(pattern.featureMeasurement(longMax, true), BadFeatures, notValid);
}

TEST(FeaturePattern, AMeasurementThatNeedNotBeValidGivesWhatIsStoredOrZeroPastTheEnd) {
    const vxFeaturePattern pattern({1, 2}, {0});
    EXPECT_EQ(pattern.featureMeasurement(0, false), 1.0);
    EXPECT_EQ(pattern.featureMeasurement(1, false), 2.0);
    EXPECT_EQ(pattern.featureMeasurement(2, false), 0.0);
    EXPECT_FALSE(std::signbit(pattern.featureMeasurement(2, false)));
    EXPECT_EQ(pattern.featureMeasurement(longMax, false), 0.0);
}

TEST(FeaturePattern, AllMeasurementsAreGivenUnlessOneIsInvalidAndMustNotBe) {
    const vxFeaturePattern pattern({1, 2}, {1});
    EXPECT_ERROR(pattern.featureMeasurements(true), BadFeatures, notAllValid);
    EXPECT_THAT(pattern.featureMeasurements(false), ElementsAre(1, 2));
}

TEST(FeaturePattern, TheMeasurementsAreGivenByReference) {
    const vxFeaturePattern pattern({1, 2}, {});
    EXPECT_EQ(&pattern.featureMeasurements(true), &pattern.featureMeasurements(false));
}

TEST(FeaturePattern, WhatIsAssignedMayHaveInvalidMeasurementsOrNone) {
    const vxFeaturePattern all({1, 2}, {});
    const vxFeaturePattern some({3, 4, 5}, {1});
    const vxFeaturePattern others({6, 7}, {0});
    vxFeaturePattern pattern({}, {});
    for (const vxFeaturePattern* next : {&all, &some, &others, &all, &all, &some, &some, &all}) {
        pattern = *next;
        EXPECT_EQ(pattern, *next);
        EXPECT_EQ(pattern.invalidFeatureIndices(), next->invalidFeatureIndices());
        EXPECT_EQ(&pattern.featureMeasurements(false), &pattern.featureMeasurements(false));
        EXPECT_NE(&pattern.featureMeasurements(false), &next->featureMeasurements(false));
    }
}

TEST(FeaturePattern, EqualityComparesEveryValueExactly) {
    const vxFeaturePattern pattern({1, 2}, {});
    EXPECT_TRUE(pattern == vxFeaturePattern({1, 2}, {}));
    EXPECT_FALSE(pattern != vxFeaturePattern({1, 2}, {}));
    EXPECT_TRUE(pattern != vxFeaturePattern({1, std::nextafter(2.0, 3.0)}, {}));
    EXPECT_TRUE(pattern != vxFeaturePattern({2, 1}, {}));
    EXPECT_TRUE(pattern != vxFeaturePattern({1, 2, 0}, {}));
    EXPECT_TRUE(pattern != vxFeaturePattern({1}, {}));
    EXPECT_TRUE(vxFeaturePattern({0.0}, {}) == vxFeaturePattern({-0.0}, {}));
    EXPECT_TRUE(vxFeaturePattern({infinity}, {}) == vxFeaturePattern({infinity}, {}));
    EXPECT_TRUE(vxFeaturePattern({}, {}) == vxFeaturePattern({}, {}));
}

TEST(FeaturePattern, EqualityComparesTheValidity) {
    EXPECT_TRUE(vxFeaturePattern({1, 2}, {0}) != vxFeaturePattern({1, 2}, {}));
    EXPECT_TRUE(vxFeaturePattern({1, 2}, {0}) != vxFeaturePattern({1, 2}, {1}));
    EXPECT_TRUE(vxFeaturePattern({1, 2}, {0, 1}) == vxFeaturePattern({1, 2}, {1, 0}));
}

TEST(FeaturePattern, EqualityComparesInvalidPositionsByValueToo) {
    EXPECT_TRUE(vxFeaturePattern({1, 2}, {0}) == vxFeaturePattern({1, 2}, {0}));
    EXPECT_TRUE(vxFeaturePattern({1, 2}, {0}) != vxFeaturePattern({3, 2}, {0}));
}

TEST(FeaturePattern, OneThatHoldsANotANumberIsUnequalEvenToItself) {
    const vxFeaturePattern valid({nan}, {});
    EXPECT_FALSE(valid == valid);
    EXPECT_TRUE(valid != valid);
    const vxFeaturePattern invalid({nan}, {0});
    EXPECT_FALSE(invalid == invalid);
}

TEST(FeaturePattern, ACopyIsEqualAndIndependent) {
    vxFeaturePattern original({1, 2}, {1});
    const vxFeaturePattern copy(original);
    EXPECT_EQ(copy, vxFeaturePattern({1, 2}, {1}));
    original = vxFeaturePattern({5}, {});
    EXPECT_EQ(original, vxFeaturePattern({5}, {}));
    EXPECT_EQ(copy, vxFeaturePattern({1, 2}, {1}));
    vxFeaturePattern& self = original;
    EXPECT_EQ(&(original = self), &original);
    EXPECT_EQ(original, vxFeaturePattern({5}, {}));
}

TEST(FeaturePattern, ACopyStartsWithoutShares) {
    const vxPtrHandle_const<vxFeaturePattern> original(new vxFeaturePattern({1}, {}));
    const auto second = original;
    vxFeaturePattern copy(*original);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(copy), 0);
    copy = *original;
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(copy), 0);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*original), 2);
}

TEST(FeaturePattern, MakeGivesOneWithoutMeasurements) {
    const std::unique_ptr<vxPersistent> made(vxFeaturePattern::make());
    const auto* pattern = dynamic_cast<const vxFeaturePattern*>(made.get());
    ASSERT_NE(pattern, nullptr);
    EXPECT_EQ(*pattern, vxFeaturePattern({}, {}));
}

TEST(FeaturePattern, TheVirtualFunctionsStandInTheirPublishedOrder) {
    EXPECT_EQ(Access::dispatchSlot(), 2U);
    EXPECT_EQ(test::slotOf(&vxFeaturePattern::reInit), 3U);
    EXPECT_EQ(test::slotOf(&vxFeaturePattern::loadSimple), 4U);
}

TEST(FeaturePatternArchive, HoldsTheVersionsTheMeasurementsAndTheValidity) {
    const vxFeaturePattern pattern({1.5, nan, -0.0}, {1});
    EXPECT_EQ(test::stored(pattern), HandWritten()
                                         .byte(0) // vxFeaturePattern
                                         .byte(0) // vxPersistent
                                         .reals({1.5, nan, -0.0})
                                         .flags({true, false, true})
                                         .sealed());
    EXPECT_EQ(test::stored(vxFeaturePattern({}, {})),
              HandWritten().byte(0).byte(0).reals({}).flags({}).sealed());
}

TEST(FeaturePatternArchive, BringsThePatternBack) {
    const vxFeaturePattern pattern({1.5, infinity, -0.0}, {1});
    EXPECT_EQ(test::loaded(test::stored(pattern), vxFeaturePattern({9, 9}, {0})), pattern);
}

TEST(FeaturePatternArchive, AnotherVersionIsRefusedWithoutAPlaceAndBeforeAnythingChanges) {
    vxFeaturePattern into({1}, {0});
    EXPECT_UNKNOWN_VERSION(test::load(HandWritten().byte(1).byte(0).reals({}).flags({}).sealed(), into),
                           nullptr, 0);
    EXPECT_EQ(into, vxFeaturePattern({1}, {0}));
}

TEST(FeaturePatternArchive, AnotherVersionOfTheVectorsIsRefusedWithoutAPlace) {
    vxFeaturePattern into({1}, {});
    EXPECT_UNKNOWN_VERSION(test::load(HandWritten().byte(0).byte(0).byte(1).count(0).sealed(), into), nullptr,
                           0);
    EXPECT_UNKNOWN_VERSION(
        test::load(HandWritten().byte(0).byte(0).reals({2, 3}).byte(1).count(0).sealed(), into), nullptr, 0);
    EXPECT_THAT(into.featureMeasurements(false), ElementsAre(2, 3)) << "what was read stays";
}

TEST(FeaturePatternArchive, TheBodyChecksTheVersionItself) {
    Access pattern({1.0}, {});
    test::archiveOf(
        [&](vxArchive& archive) { EXPECT_UNKNOWN_VERSION(pattern.body(archive, 1), nullptr, 0); });
    EXPECT_EQ(test::archiveOf([&](vxArchive& archive) { pattern.body(archive, 0); }),
              HandWritten().byte(0).reals({1.0}).flags({true}).sealed());
}

TEST(FeaturePatternArchive, ALevelIsExchangedOnceInAPass) {
    EXPECT_EQ(test::stored(Doubled({1.0}, {})), test::stored(vxFeaturePattern({1.0}, {})));
}

TEST(FeaturePatternArchive, APatternReferredToTwiceComesBackAsOne) {
    const vxPtrHandle_const<vxFeaturePattern> pattern(new vxFeaturePattern({1, 2}, {1}));
    const Bytes sealed = HandWritten().pointer(pattern.get()).pointer(pattern.get()).sealed();
    vxPtrHandle_const<vxFeaturePattern> a;
    vxPtrHandle_const<vxFeaturePattern> b;
    vxLoadingArchive archive(sealed);
    archive || a;
    archive || b;
    archive.finish();
    EXPECT_EQ(a, b);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*a), 2);
    EXPECT_EQ(*a, *pattern);
}

TEST(FeaturePatternArchive, AnUnfinishedArchiveDoesNotSeeAnAssignment) {
    const vxPtrHandle<vxFeaturePattern> pattern(new vxFeaturePattern({1, 2}, {}));
    vxPtrHandle_const<vxFeaturePattern> stored(pattern.get());
    vxStoringArchive storing;
    storing || stored;
    *pattern = vxFeaturePattern({3}, {0});
    EXPECT_TRUE(pattern->isTracked_());
    storing || stored;
    storing.finish();
    vxLoadingArchive loading(storing.bytes());
    vxPtrHandle_const<vxFeaturePattern> first;
    vxPtrHandle_const<vxFeaturePattern> second;
    loading || first;
    loading || second;
    loading.finish();
    EXPECT_EQ(first, second);
    EXPECT_EQ(*first, vxFeaturePattern({1, 2}, {}));
}

/// What a derived class may do from anywhere.
struct ExchangedDirectly : vxFeaturePattern {
    using vxFeaturePattern::dispatchSerialize;
    using vxFeaturePattern::vxFeaturePattern;
};

TEST(FeaturePattern, MayBeExchangedByADerivedClassOutsideOfAnObject) {
    ExchangedDirectly pattern({1.0, 2.0, 3.0}, {1});
    const Bytes directly = test::archiveOf([&](vxArchive& archive) { pattern.dispatchSerialize(archive); });
    vxFeaturePattern plain = pattern;
    EXPECT_EQ(directly, test::archiveOf([&](vxArchive& archive) { archive || plain; }));
    ExchangedDirectly loaded({9.0}, {});
    vxLoadingArchive archive(directly);
    loaded.dispatchSerialize(archive);
    archive.finish();
    EXPECT_EQ(loaded, plain);
}

} // namespace
