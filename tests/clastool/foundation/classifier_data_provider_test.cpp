#include <vxclassifier/classifier_data_provider.h>

#include "tests/support/archives.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/hand_written.h"
#include "tests/support/vtable_slots.h"

#include <vxclassifier/classifier_data_provider_memory.h>

#include <gtest/gtest.h>

#include <type_traits>

// The interface that trainings read.

namespace {

using test::HandWritten;

/// A caller's own provider that leaves everything that has a base version to the base.
struct OwnProvider : vxClassifierDataProvider {
    std::wstring name() const override { return L"own"; }
    std::wstring description() const override { return L""; }
    long numMeasurements() const override { return 0; }
    long numPatterns() const override { return 0; }
    vxPtrHandle_const<vxFeaturePattern> featurePattern(long) const override { return nullptr; }
    long categoryLabel(long) const override { return -1; }

    using vxClassifierDataProvider::isEqual_;

    void body(vxArchive& archive, unsigned char version) { serialize_(archive, version); }
    static std::size_t dispatchSlot() { return test::slotOf(&OwnProvider::dispatchSerialize); }
};

struct DoubledProvider : OwnProvider {
protected:
    void dispatchSerialize(vxArchive& archive) override {
        OwnProvider::dispatchSerialize(archive);
        OwnProvider::dispatchSerialize(archive);
    }
};

struct Slots : vxClassifierDataProvider {
    static std::size_t dispatch() { return test::slotOf(&Slots::dispatchSerialize); }
    static std::size_t isEqual() { return test::slotOf(&Slots::isEqual_); }
};

TEST(ClassifierDataProvider, TheVirtualFunctionsStandInTheirPublishedOrder) {
    EXPECT_EQ(Slots::dispatch(), 2U);
    EXPECT_EQ(test::slotOf(&vxClassifierDataProvider::reInit), 3U);
    EXPECT_EQ(test::slotOf(&vxClassifierDataProvider::loadSimple), 4U);
    EXPECT_EQ(test::slotOf(&vxClassifierDataProvider::name), 5U);
    EXPECT_EQ(test::slotOf(&vxClassifierDataProvider::description), 6U);
    EXPECT_EQ(test::slotOf(&vxClassifierDataProvider::numMeasurements), 7U);
    EXPECT_EQ(test::slotOf(&vxClassifierDataProvider::numPatterns), 8U);
    EXPECT_EQ(test::slotOf(&vxClassifierDataProvider::featurePattern), 9U);
    EXPECT_EQ(test::slotOf(&vxClassifierDataProvider::categoryLabel), 10U);
    EXPECT_EQ(Slots::isEqual(), 11U);
}

TEST(ClassifierDataProvider, IsAbstractPersistentAndShared) {
    EXPECT_TRUE(std::is_abstract_v<vxClassifierDataProvider>);
    EXPECT_TRUE((std::is_convertible_v<vxClassifierDataProvider*, vxPersistent*>));
    EXPECT_TRUE((std::is_convertible_v<vxClassifierDataProvider*, vxRepBase*>));
}

TEST(ClassifierDataProvider, TheBaseHasNothingToCompare) {
    EXPECT_TRUE(OwnProvider().isEqual_(OwnProvider()));
    vxClassifierDataProviderMemory memory;
    memory.setName(L"x");
    EXPECT_TRUE(OwnProvider().isEqual_(memory));
}

TEST(ClassifierDataProvider, CanBeCopiedAndAssigned) {
    const OwnProvider original;
    OwnProvider copy(original);
    EXPECT_EQ(&(copy = original), &copy);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(copy), 0);
}

TEST(ClassifierDataProviderArchive, HoldsTheVersionsOnly) {
    EXPECT_EQ(test::stored(OwnProvider()), HandWritten().byte(0).byte(0).sealed());
}

TEST(ClassifierDataProviderArchive, AnotherVersionIsRefusedWithoutAPlace) {
    OwnProvider into;
    EXPECT_UNKNOWN_VERSION(test::load(HandWritten().byte(1).byte(0).sealed(), into), nullptr, 0);
}

TEST(ClassifierDataProviderArchive, TheBodyChecksTheVersionItself) {
    OwnProvider provider;
    test::archiveOf(
        [&](vxArchive& archive) { EXPECT_UNKNOWN_VERSION(provider.body(archive, 1), nullptr, 0); });
    EXPECT_EQ(test::archiveOf([&](vxArchive& archive) { provider.body(archive, 0); }),
              HandWritten().byte(0).sealed());
}

TEST(ClassifierDataProviderArchive, TheLevelIsExchangedOnceInAPass) {
    EXPECT_EQ(test::stored(DoubledProvider()), test::stored(OwnProvider()));
}

} // namespace
