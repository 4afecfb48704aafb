#include <vxclassifier/validity_predicate.h>

#include "tests/clastool/tree/trees.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"

#include <vxclassifier/classifier_defs.h>

#include <gtest/gtest.h>

#include <memory>

namespace {

using test::patternOf;
using Indices = std::vector<long>;

const wchar_t* const badIndex = L"Measurement index must be >= 0 and < number of measurements.";

struct Access : vxValidityPredicate {
    void body(vxArchive& archive, unsigned char version) { serialize_(archive, version); }
};

test::Bytes record(std::vector<unsigned char> versions, Indices indices) {
    return test::archiveOf([&](vxArchive& archive) {
        for (unsigned char version : versions) {
            archive || version;
        }
        archive || indices;
    });
}

TEST(ValidityPredicate, ADefaultOneTestsMeasurementZero) {
    EXPECT_EQ(vxValidityPredicate().measurementIndices(), Indices{0});
    const std::unique_ptr<vxPersistent> made(vxValidityPredicate::make());
    EXPECT_EQ(dynamic_cast<const vxValidityPredicate&>(*made), vxValidityPredicate());
}

TEST(ValidityPredicate, KeepsItsIndicesInTheGivenOrder) {
    EXPECT_EQ(vxValidityPredicate(Indices{3, 0, 3}).measurementIndices(), (Indices{3, 0, 3}));
}

TEST(ValidityPredicate, ANegativeIndexIsRefused) {
    EXPECT_ERROR(vxValidityPredicate(Indices{-1}), vxClassifierDefs::BadIndex, badIndex);
    EXPECT_ERROR(vxValidityPredicate(Indices{2, -7}), vxClassifierDefs::BadIndex, badIndex);
}

TEST(ValidityPredicate, IsTrueWithoutAnyMeasurementsToTest) {
    const vxValidityPredicate predicate{Indices()};
    EXPECT_TRUE(predicate.outcome(patternOf({})));
    EXPECT_TRUE(predicate.outcome(patternOf({1.0}, {0})));
}

TEST(ValidityPredicate, IsTrueIfAllListedMeasurementsAreValid) {
    const vxValidityPredicate predicate(Indices{2, 0});
    EXPECT_TRUE(predicate.outcome(patternOf({1.0, 2.0, test::nan})));
    EXPECT_TRUE(predicate.outcome(patternOf({1.0, 2.0, 3.0}, {1})));
    EXPECT_FALSE(predicate.outcome(patternOf({1.0, 2.0, 3.0}, {2})));
    EXPECT_FALSE(predicate.outcome(patternOf({1.0, 2.0, 3.0}, {0})));
}

TEST(ValidityPredicate, AnIndexPastTheEndFailsTheTest) {
    EXPECT_FALSE(vxValidityPredicate(Indices{3}).outcome(patternOf({1.0, 2.0, 3.0})));
}

TEST(ValidityPredicate, IsEqualToOneWithTheSameIndices) {
    const vxValidityPredicate predicate(Indices{0, 1});
    EXPECT_TRUE(predicate.isEqual(vxValidityPredicate(Indices{0, 1})));
    EXPECT_FALSE(predicate.isEqual(vxValidityPredicate(Indices{1, 0})));
    EXPECT_FALSE(predicate.isEqual(vxValidityPredicate(Indices{0})));
    EXPECT_FALSE(predicate.isEqual(vxRangePredicate(vxRange::FullRange(), {0, 1})));
    EXPECT_FALSE(predicate.isEqual(vxComparisonPredicate(0, 1)));
}

TEST(ValidityPredicate, IsEqualToADerivedOneWithTheSameIndices) {
    struct Derived : vxValidityPredicate {};
    EXPECT_TRUE(vxValidityPredicate().isEqual(Derived()));
    EXPECT_TRUE(Derived().isEqual(vxValidityPredicate()));
}

TEST(ValidityPredicate, TheOperatorsAreIsEqualAndItsOpposite) {
    const vxValidityPredicate predicate(Indices{1});
    EXPECT_TRUE(predicate == vxValidityPredicate(Indices{1}));
    EXPECT_FALSE(predicate != vxValidityPredicate(Indices{1}));
    EXPECT_FALSE(predicate == vxRangePredicate(vxRange::FullRange(), {1}));
    EXPECT_TRUE(predicate != vxRangePredicate(vxRange::FullRange(), {1}));
}

TEST(ValidityPredicate, ClonesAndAssignmentsAreEqual) {
    const vxValidityPredicate predicate(Indices{4, 2});
    const vxPtrHandle<vxPredicateFunction> clone = predicate.clone();
    EXPECT_NE(clone.get(), &predicate);
    EXPECT_TRUE(predicate.isEqual(*clone));
    vxValidityPredicate assigned;
    EXPECT_EQ(&(assigned = predicate), &assigned);
    EXPECT_EQ(assigned, predicate);
}

TEST(ValidityPredicatePersistence, TheRecordIsThreeVersionsAndTheIndices) {
    EXPECT_EQ(test::stored(vxValidityPredicate(Indices{4, 2})), record({0, 0, 0}, {4, 2}));
    vxValidityPredicate loaded;
    test::load(record({0, 0, 0}, {4, 2}), loaded);
    EXPECT_EQ(loaded, vxValidityPredicate(Indices{4, 2}));
}

TEST(ValidityPredicatePersistence, AnotherVersionAtAnyLevelIsRefusedWithoutAPlace) {
    vxValidityPredicate loaded;
    EXPECT_UNKNOWN_VERSION(test::load(record({1, 0, 0}, {}), loaded), nullptr, 0);
    EXPECT_UNKNOWN_VERSION(test::load(record({0, 1, 0}, {}), loaded), nullptr, 0);
    EXPECT_UNKNOWN_VERSION(test::load(record({0, 0, 1}, {}), loaded), nullptr, 0);
    vxStoringArchive archive;
    EXPECT_UNKNOWN_VERSION(Access().body(archive, 1), nullptr, 0);
}

TEST(ValidityPredicatePersistence, LoadingDoesNotCheckTheIndices) {
    vxValidityPredicate loaded;
    test::load(record({0, 0, 0}, {-4}), loaded);
    EXPECT_EQ(loaded.measurementIndices(), Indices{-4});
}

TEST(ValidityPredicatePersistence, IsRegistered) {
    const test::Predicate predicate = test::has(4);
    const test::Bytes bytes = test::stored(predicate);
    test::Predicate loaded;
    test::load(bytes, loaded);
    ASSERT_FALSE(loaded.isNull());
    EXPECT_TRUE(loaded->isEqual(*predicate));
}

} // namespace
