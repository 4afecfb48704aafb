#include <vxclassifier/comparison_predicate.h>

#include "tests/clastool/tree/trees.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"

#include <vxclassifier/classifier_defs.h>

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

namespace {

using test::patternOf;

const wchar_t* const badIndex = L"Measurement index must be >= 0 and < number of measurements.";

struct Access : vxComparisonPredicate {
    using vxComparisonPredicate::vxComparisonPredicate;
    void body(vxArchive& archive, unsigned char version) { serialize_(archive, version); }
};

test::Bytes record(std::vector<unsigned char> versions, long index1, long index2) {
    return test::archiveOf([&](vxArchive& archive) {
        for (unsigned char version : versions) {
            archive || version;
        }
        archive || index1;
        archive || index2;
    });
}

TEST(ComparisonPredicate, MakeComparesMeasurementZeroWithOne) {
    const std::unique_ptr<vxPersistent> made(vxComparisonPredicate::make());
    EXPECT_EQ(dynamic_cast<const vxComparisonPredicate&>(*made), vxComparisonPredicate(0, 1));
}

TEST(ComparisonPredicate, HasNoPublicDefaultConstructor) {
    EXPECT_FALSE(std::is_default_constructible_v<vxComparisonPredicate>);
}

TEST(ComparisonPredicate, KeepsItsIndices) {
    const vxComparisonPredicate predicate(7, 0);
    EXPECT_EQ(predicate.measurementIndex1(), 7);
    EXPECT_EQ(predicate.measurementIndex2(), 0);
}

TEST(ComparisonPredicate, EqualIndicesAreRefusedBeforeNegativeOnes) {
    EXPECT_ERROR(vxComparisonPredicate(3, 3), vxClassifierDefs::BadParams,
                 L"Measurement indices must be different.");
    EXPECT_ERROR(vxComparisonPredicate(-1, -1), vxClassifierDefs::BadParams,
                 L"Measurement indices must be different.");
}

TEST(ComparisonPredicate, ANegativeIndexIsRefused) {
    EXPECT_ERROR(vxComparisonPredicate(-1, 2), vxClassifierDefs::BadIndex, badIndex);
    EXPECT_ERROR(vxComparisonPredicate(2, -1), vxClassifierDefs::BadIndex, badIndex);
    EXPECT_ERROR(vxComparisonPredicate(-1, -2), vxClassifierDefs::BadIndex, badIndex);
}

TEST(ComparisonPredicate, IsTrueIfTheFirstIsStrictlyGreater) {
    const vxComparisonPredicate predicate(0, 1);
    EXPECT_TRUE(predicate.outcome(patternOf({3.0, 2.0})));
    EXPECT_FALSE(predicate.outcome(patternOf({2.0, 2.0})));
    EXPECT_FALSE(predicate.outcome(patternOf({1.0, 2.0})));
    EXPECT_TRUE(vxComparisonPredicate(1, 0).outcome(patternOf({1.0, 2.0})));
}

TEST(ComparisonPredicate, NaNOnEitherSideFailsTheTest) {
    const vxComparisonPredicate predicate(0, 1);
    EXPECT_FALSE(predicate.outcome(patternOf({test::nan, 2.0})));
    EXPECT_FALSE(predicate.outcome(patternOf({3.0, test::nan})));
}

TEST(ComparisonPredicate, AnInvalidMeasurementFailsTheTest) {
    const vxComparisonPredicate predicate(0, 1);
    EXPECT_FALSE(predicate.outcome(patternOf({3.0, 2.0}, {1})));
    EXPECT_FALSE(predicate.outcome(patternOf({3.0, 2.0}, {0})));
}

TEST(ComparisonPredicate, AnIndexPastTheEndFailsTheTest) {
    EXPECT_FALSE(vxComparisonPredicate(0, 2).outcome(patternOf({3.0, 2.0})));
    EXPECT_FALSE(vxComparisonPredicate(2, 0).outcome(patternOf({3.0, -2.0})));
}

TEST(ComparisonPredicate, TheOrderOfTheIndicesMatters) {
    EXPECT_TRUE(vxComparisonPredicate(1, 2).isEqual(vxComparisonPredicate(1, 2)));
    EXPECT_FALSE(vxComparisonPredicate(1, 2).isEqual(vxComparisonPredicate(2, 1)));
    EXPECT_FALSE(vxComparisonPredicate(1, 2).isEqual(vxComparisonPredicate(1, 3)));
    EXPECT_FALSE(vxComparisonPredicate(1, 2).isEqual(vxComparisonPredicate(0, 2)));
    EXPECT_FALSE(vxComparisonPredicate(0, 1).isEqual(vxRangePredicate(vxRange::FullRange(), {0, 1})));
    EXPECT_FALSE(vxComparisonPredicate(0, 1).isEqual(vxValidityPredicate(std::vector<long>{0, 1})));
}

TEST(ComparisonPredicate, IsEqualToADerivedOneWithTheSameIndices) {
    struct Derived : vxComparisonPredicate {
        using vxComparisonPredicate::vxComparisonPredicate;
    };
    EXPECT_TRUE(vxComparisonPredicate(2, 1).isEqual(Derived(2, 1)));
    EXPECT_TRUE(Derived(2, 1).isEqual(vxComparisonPredicate(2, 1)));
}

TEST(ComparisonPredicate, TheOperatorsAreIsEqualAndItsOpposite) {
    const vxComparisonPredicate predicate(0, 1);
    EXPECT_TRUE(predicate == vxComparisonPredicate(0, 1));
    EXPECT_FALSE(predicate != vxComparisonPredicate(0, 1));
    EXPECT_FALSE(predicate == vxValidityPredicate());
    EXPECT_TRUE(predicate != vxValidityPredicate());
}

TEST(ComparisonPredicate, ClonesAndAssignmentsAreEqual) {
    const vxComparisonPredicate predicate(4, 2);
    const vxPtrHandle<vxPredicateFunction> clone = predicate.clone();
    EXPECT_NE(clone.get(), &predicate);
    EXPECT_TRUE(predicate.isEqual(*clone));
    vxComparisonPredicate assigned(0, 1);
    EXPECT_EQ(&(assigned = predicate), &assigned);
    EXPECT_EQ(assigned, predicate);
}

TEST(ComparisonPredicatePersistence, TheRecordIsThreeVersionsAndTheTwoIndices) {
    EXPECT_EQ(test::stored(vxComparisonPredicate(4, 2)), record({0, 0, 0}, 4, 2));
    vxComparisonPredicate loaded(0, 1);
    test::load(record({0, 0, 0}, 4, 2), loaded);
    EXPECT_EQ(loaded, vxComparisonPredicate(4, 2));
}

TEST(ComparisonPredicatePersistence, AnotherVersionAtAnyLevelIsRefusedWithoutAPlace) {
    vxComparisonPredicate loaded(0, 1);
    EXPECT_UNKNOWN_VERSION(test::load(record({1, 0, 0}, 4, 2), loaded), nullptr, 0);
    EXPECT_UNKNOWN_VERSION(test::load(record({0, 1, 0}, 4, 2), loaded), nullptr, 0);
    EXPECT_UNKNOWN_VERSION(test::load(record({0, 0, 1}, 4, 2), loaded), nullptr, 0);
    vxStoringArchive archive;
    EXPECT_UNKNOWN_VERSION(Access(0, 1).body(archive, 1), nullptr, 0);
}

TEST(ComparisonPredicatePersistence, LoadingDoesNotCheckTheIndices) {
    vxComparisonPredicate loaded(0, 1);
    test::load(record({0, 0, 0}, -3, -3), loaded);
    EXPECT_EQ(loaded.measurementIndex1(), -3);
    EXPECT_EQ(loaded.measurementIndex2(), -3);
}

TEST(ComparisonPredicatePersistence, IsRegistered) {
    const test::Predicate predicate(new vxComparisonPredicate(4, 2));
    const test::Bytes bytes = test::stored(predicate);
    test::Predicate loaded;
    test::load(bytes, loaded);
    ASSERT_FALSE(loaded.isNull());
    EXPECT_TRUE(loaded->isEqual(*predicate));
}

} // namespace
