#include <vxclassifier/range_predicate.h>

#include "tests/clastool/tree/trees.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"

#include <vxclassifier/classifier_defs.h>

#include <gtest/gtest.h>

#include <limits>
#include <memory>

namespace {

using test::patternOf;
using Indices = std::vector<long>;

constexpr double infinity = std::numeric_limits<double>::infinity();
const wchar_t* const badIndex = L"Measurement index must be >= 0 and < number of measurements.";

struct Access : vxRangePredicate {
    void body(vxArchive& archive, unsigned char version) { serialize_(archive, version); }
};

test::Bytes record(std::vector<unsigned char> versions, vxRange range, Indices indices) {
    return test::archiveOf([&](vxArchive& archive) {
        for (unsigned char version : versions) {
            archive || version;
        }
        archive || range;
        archive || indices;
    });
}

TEST(RangePredicate, ADefaultOneTestsMeasurementZeroForTheFullRange) {
    const vxRangePredicate predicate;
    EXPECT_EQ(predicate.measurementRange(), vxRange::FullRange());
    EXPECT_EQ(predicate.measurementIndices(), Indices{0});
}

TEST(RangePredicate, MakeGivesADefaultOne) {
    const std::unique_ptr<vxPersistent> made(vxRangePredicate::make());
    EXPECT_EQ(dynamic_cast<const vxRangePredicate&>(*made), vxRangePredicate());
}

TEST(RangePredicate, KeepsItsRangeAndItsIndicesInTheGivenOrder) {
    const vxRangePredicate predicate(vxRange(-1.0, 2.0), {3, 0, 3, 1000000});
    EXPECT_EQ(predicate.measurementRange(), vxRange(-1.0, 2.0));
    EXPECT_EQ(predicate.measurementIndices(), (Indices{3, 0, 3, 1000000}));
}

TEST(RangePredicate, ANegativeIndexIsRefused) {
    EXPECT_ERROR(vxRangePredicate(vxRange(0.0, 1.0), {-1}), vxClassifierDefs::BadIndex, badIndex);
    EXPECT_ERROR(vxRangePredicate(vxRange(0.0, 1.0), {0, 5, -2}), vxClassifierDefs::BadIndex, badIndex);
}

TEST(RangePredicate, IsTrueWithoutAnyMeasurementsToTest) {
    const vxRangePredicate predicate(vxRange(0.0, 1.0), {});
    EXPECT_TRUE(predicate.outcome(patternOf({})));
    EXPECT_TRUE(predicate.outcome(patternOf({7.0}, {0})));
}

TEST(RangePredicate, IsTrueIfAllListedMeasurementsLieWithinTheClosedRange) {
    const vxRangePredicate predicate(vxRange(1.0, 2.0), {0, 2});
    EXPECT_TRUE(predicate.outcome(patternOf({1.0, 9.0, 2.0})));
    EXPECT_FALSE(predicate.outcome(patternOf({0.9, 9.0, 1.5})));
    EXPECT_FALSE(predicate.outcome(patternOf({1.5, 9.0, 2.1})));
}

TEST(RangePredicate, AnInvalidMeasurementFailsTheTest) {
    const vxRangePredicate predicate(vxRange(1.0, 2.0), {0, 2});
    EXPECT_FALSE(predicate.outcome(patternOf({1.5, 1.5, 1.5}, {2})));
    EXPECT_FALSE(predicate.outcome(patternOf({1.5, 1.5, 1.5}, {0})));
    EXPECT_TRUE(predicate.outcome(patternOf({1.5, 1.5, 1.5}, {1})));
}

TEST(RangePredicate, AnIndexPastTheEndFailsTheTest) {
    const vxRangePredicate predicate(vxRange::FullRange(), {0, 5});
    EXPECT_FALSE(predicate.outcome(patternOf({1.0, 2.0, 3.0})));
    EXPECT_FALSE(vxRangePredicate(vxRange::FullRange(), {3}).outcome(patternOf({1.0, 2.0, 3.0})));
}

TEST(RangePredicate, TheFullRangeHoldsTheInfinitiesButNoNaN) {
    const vxRangePredicate predicate;
    EXPECT_TRUE(predicate.outcome(patternOf({infinity})));
    EXPECT_TRUE(predicate.outcome(patternOf({-infinity})));
    EXPECT_FALSE(predicate.outcome(patternOf({test::nan})));
}

TEST(RangePredicate, IsEqualToOneWithTheSameRangeAndIndices) {
    const vxRangePredicate predicate(vxRange(1.0, 2.0), {0, 1});
    EXPECT_TRUE(predicate.isEqual(vxRangePredicate(vxRange(1.0, 2.0), {0, 1})));
    EXPECT_FALSE(predicate.isEqual(vxRangePredicate(vxRange(1.0, 2.5), {0, 1})));
    EXPECT_FALSE(predicate.isEqual(vxRangePredicate(vxRange(0.5, 2.0), {0, 1})));
    EXPECT_FALSE(predicate.isEqual(vxRangePredicate(vxRange(1.0, 2.0), {1, 0})));
    EXPECT_FALSE(predicate.isEqual(vxRangePredicate(vxRange(1.0, 2.0), {0})));
}

TEST(RangePredicate, IsNotEqualToAPredicateOfAnotherKind) {
    EXPECT_FALSE(vxRangePredicate().isEqual(vxValidityPredicate()));
    EXPECT_FALSE(vxRangePredicate().isEqual(vxComparisonPredicate(0, 1)));
}

TEST(RangePredicate, AnObjectOfADerivedClassCountsAsARangePredicate) {
    EXPECT_TRUE(vxRangePredicate().isEqual(Access()));
}

TEST(RangePredicate, TheOperatorsAreIsEqualAndItsOpposite) {
    const vxRangePredicate predicate(vxRange(1.0, 2.0), {0});
    const vxRangePredicate other(vxRange(1.0, 3.0), {0});
    EXPECT_TRUE(predicate == vxRangePredicate(predicate));
    EXPECT_FALSE(predicate != vxRangePredicate(predicate));
    EXPECT_FALSE(predicate == other);
    EXPECT_TRUE(predicate != other);
    EXPECT_FALSE(vxRangePredicate() == vxValidityPredicate());
    EXPECT_TRUE(vxRangePredicate() != vxValidityPredicate());
}

TEST(RangePredicate, ACloneIsAnEqualObjectOfItsOwn) {
    const vxRangePredicate predicate(vxRange(1.0, 2.0), {4, 2});
    const vxPtrHandle<vxPredicateFunction> clone = predicate.clone();
    EXPECT_NE(clone.get(), &predicate);
    EXPECT_TRUE(predicate.isEqual(*clone));
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*clone), 1);
}

TEST(RangePredicate, AssignmentCopiesRangeAndIndices) {
    vxRangePredicate predicate;
    const vxRangePredicate other(vxRange(1.0, 2.0), {4, 2});
    EXPECT_EQ(&(predicate = other), &predicate);
    EXPECT_EQ(predicate, other);
    const vxRangePredicate& itself = predicate;
    predicate = itself;
    EXPECT_EQ(predicate, other);
}

TEST(RangePredicatePersistence, TheRecordIsThreeVersionsTheRangeAndTheIndices) {
    EXPECT_EQ(test::stored(vxRangePredicate(vxRange(1.0, 2.0), {4, 2})),
              record({0, 0, 0}, vxRange(1.0, 2.0), {4, 2}));
}

TEST(RangePredicatePersistence, LoadingGivesWhatWasStored) {
    vxRangePredicate loaded;
    test::load(record({0, 0, 0}, vxRange(1.0, 2.0), {4, 2}), loaded);
    EXPECT_EQ(loaded, vxRangePredicate(vxRange(1.0, 2.0), {4, 2}));
}

TEST(RangePredicatePersistence, AnotherVersionAtAnyLevelIsRefusedWithoutAPlace) {
    vxRangePredicate loaded;
    EXPECT_UNKNOWN_VERSION(test::load(record({1, 0, 0}, vxRange(1.0, 2.0), {}), loaded), nullptr, 0);
    EXPECT_UNKNOWN_VERSION(test::load(record({0, 1, 0}, vxRange(1.0, 2.0), {}), loaded), nullptr, 0);
    EXPECT_UNKNOWN_VERSION(test::load(record({0, 0, 1}, vxRange(1.0, 2.0), {}), loaded), nullptr, 0);
    vxStoringArchive archive;
    EXPECT_UNKNOWN_VERSION(Access().body(archive, 1), nullptr, 0);
}

TEST(RangePredicatePersistence, LoadingDoesNotCheckTheIndices) {
    vxRangePredicate loaded;
    test::load(record({0, 0, 0}, vxRange(1.0, 2.0), {-4}), loaded);
    EXPECT_EQ(loaded.measurementIndices(), Indices{-4});
}

TEST(RangePredicatePersistence, IsRegistered) {
    const test::Predicate predicate(new vxRangePredicate(vxRange(1.0, 2.0), {4}));
    const test::Bytes bytes = test::stored(predicate);
    test::Predicate loaded;
    test::load(bytes, loaded);
    ASSERT_FALSE(loaded.isNull());
    EXPECT_TRUE(loaded->isEqual(*predicate));
}

} // namespace
