#include <vxclassifier/predicate_function.h>

#include "tests/clastool/tree/trees.h"
#include "tests/support/archives.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/vtable_slots.h"

#include <gtest/gtest.h>

#include <array>
#include <type_traits>

namespace {

/// Leaves everything that has a base version to the base.
struct BaseOnly : vxPredicateFunction {
    bool outcome(const vxFeaturePattern&) const override { return true; }
    vxPtrHandle<vxPredicateFunction> clone() const override {
        return vxPtrHandle<vxPredicateFunction>(new BaseOnly(*this));
    }
    static std::size_t dispatchSlot() { return test::slotOf(&BaseOnly::dispatchSerialize); }
    void serializeOnly(vxArchive& archive, unsigned char version) { serialize_(archive, version); }
};

/// Exchanges the base level twice, as a class with two ways to it would.
struct Doubled : BaseOnly {
protected:
    void dispatchSerialize(vxArchive& archive) override {
        vxPredicateFunction::dispatchSerialize(archive);
        vxPredicateFunction::dispatchSerialize(archive);
    }
};

TEST(PredicateFunction, TheVirtualFunctionsStandInTheirPublishedOrder) {
    EXPECT_EQ(BaseOnly::dispatchSlot(), 2U);
    EXPECT_EQ(test::slotOf(&vxPredicateFunction::reInit), 3U);
    EXPECT_EQ(test::slotOf(&vxPredicateFunction::loadSimple), 4U);
    EXPECT_EQ(test::slotOf(&vxPredicateFunction::outcome), 5U);
    EXPECT_EQ(test::slotOf(&vxPredicateFunction::clone), 6U);
    EXPECT_EQ(test::slotOf(&vxPredicateFunction::isEqual), 7U);
}

TEST(PredicateFunction, IsAbstractAndBasedOnTheArchiveAndTheCount) {
    EXPECT_TRUE(std::is_abstract_v<vxPredicateFunction>);
    EXPECT_TRUE((std::is_convertible_v<vxPredicateFunction*, vxPersistent*>));
    EXPECT_TRUE((std::is_convertible_v<vxPredicateFunction*, vxRepBase*>));
}

TEST(PredicateFunction, TheBaseHoldsThatAnyTwoAreEqual) {
    EXPECT_TRUE(BaseOnly().isEqual(vxRangePredicate()));
}

TEST(PredicateFunction, TheBaseLevelIsItsVersionAndTheRoot) {
    EXPECT_EQ(test::stored(BaseOnly()), test::archiveOf([](vxArchive& archive) {
                  test::putBytes(archive, {0, 0});
              }));
}

TEST(PredicateFunction, ALevelMetTwiceIsExchangedOnce) {
    EXPECT_EQ(test::stored(Doubled()), test::stored(BaseOnly()));
}

TEST(PredicateFunction, AnotherVersionIsRefusedWithoutAPlace) {
    BaseOnly predicate;
    for (const auto& versions : {std::array<unsigned char, 2>{1, 0}, std::array<unsigned char, 2>{0, 1}}) {
        const test::Bytes bytes = test::archiveOf([&](vxArchive& archive) {
            test::putBytes(archive, {versions[0], versions[1]});
        });
        EXPECT_UNKNOWN_VERSION(test::load(bytes, predicate), nullptr, 0);
    }
    vxStoringArchive archive;
    EXPECT_UNKNOWN_VERSION(predicate.serializeOnly(archive, 1), nullptr, 0);
}

} // namespace
