#include <vxclassifier/classifier_train_params.h>

#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/expect_unknown_version.h"
#include "tests/support/fake_technique.h"
#include "tests/support/vtable_slots.h"

#include <vxclassifier/classifier.h>
#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

namespace {

using test::FakeClassifier;
using test::FakeParams;
using test::OtherFakeParams;

/// Leaves everything that has a base version to the base.
struct BaseOnlyParams : vxClassifierTrainParams {
    vxPtrHandle<vxClassifierTrainParams> clone() const override {
        return vxPtrHandle<vxClassifierTrainParams>(new BaseOnlyParams(*this));
    }
    bool isSameTechnique_(const vxClassifierTrainParams&) const override { return false; }
    vx_Classifier* newClassifier_() const override { return nullptr; }

    BaseOnlyParams() = default;
    BaseOnlyParams(const BaseOnlyParams& other)
        : vxPersistent(), vxRepBase(), vxClassifierTrainParams(other) {}
    BaseOnlyParams& operator=(const BaseOnlyParams&) = default;

    using vxClassifierTrainParams::isEqual_;

    void serializeOnly(vxArchive& archive, unsigned char version) { serialize_(archive, version); }
    void dispatchTwice(vxArchive& archive) {
        vxClassifierTrainParams::dispatchSerialize(archive);
        vxClassifierTrainParams::dispatchSerialize(archive);
    }
};

/// Exchanges the base level twice, as a class with two ways to it would.
struct DoubledParams : BaseOnlyParams {
    void dispatchSerialize(vxArchive& archive) override { dispatchTwice(archive); }
};

struct Slots : vxClassifierTrainParams {
    static std::size_t isEqual() { return test::slotOf(&Slots::isEqual_); }
    static std::size_t isSameTechnique() { return test::slotOf(&Slots::isSameTechnique_); }
    static std::size_t newClassifier() { return test::slotOf(&Slots::newClassifier_); }
};

TEST(ClassifierTrainParams, TheVirtualFunctionsStandInTheirPublishedOrder) {
    EXPECT_EQ(test::slotOf(&vxClassifierTrainParams::clone), 0U);
    EXPECT_EQ(Slots::isEqual(), 1U);
    EXPECT_EQ(Slots::isSameTechnique(), 2U);
    EXPECT_EQ(Slots::newClassifier(), 3U);
}

TEST(ClassifierTrainParams, TheBasesAreVirtualSoThatADiamondHasOneOfEach) {
    struct Left : virtual vxPersistent {};
    struct Both : FakeParams, Left {};
    EXPECT_TRUE((std::is_convertible_v<Both*, vxPersistent*>)) << "two vxPersistent would be ambiguous";
    struct Counted : virtual vxRepBase {};
    struct BothCounted : FakeParams, Counted {};
    EXPECT_TRUE((std::is_convertible_v<BothCounted*, vxRepBase*>)) << "two vxRepBase would be ambiguous";
}

TEST(ClassifierTrainParams, WhatOnlyTheFrameMayCallIsNotPublic) {
    EXPECT_TRUE(std::is_abstract_v<vxClassifierTrainParams>);
    EXPECT_FALSE(std::is_copy_constructible_v<vxClassifierTrainParams>);
    EXPECT_TRUE(std::is_copy_assignable_v<vxClassifierTrainParams>);
    EXPECT_TRUE(std::has_virtual_destructor_v<vxClassifierTrainParams>);
}

TEST(ClassifierTrainParams, ANewObjectThrowsIfNotReady) {
    EXPECT_TRUE(FakeParams().throwIfNotReady());
}

TEST(ClassifierTrainParams, TheFlagIsWhatWasSet) {
    FakeParams params;
    params.throwIfNotReady(false);
    EXPECT_FALSE(params.throwIfNotReady());
    params.throwIfNotReady(true);
    EXPECT_TRUE(params.throwIfNotReady());
}

TEST(ClassifierTrainParams, ANewObjectIsSharedByNobodyAndTrackedByNoArchive) {
    const auto* params = new FakeParams;
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*params), 0);
    EXPECT_FALSE(params->isTracked_());
    const vxPtrHandle_const<vxClassifierTrainParams> handle(params);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*params), 1);
}

TEST(ClassifierTrainParams, ACopyHasTheDefaultFlagWhateverTheOriginalHas) {
    FakeParams original(nullptr, 4);
    original.throwIfNotReady(false);
    const FakeParams copy(original);
    EXPECT_TRUE(copy.throwIfNotReady());
    EXPECT_EQ(copy.value(), 4);
    EXPECT_TRUE(original.clone()->throwIfNotReady());
    EXPECT_FALSE(original.throwIfNotReady());
}

TEST(ClassifierTrainParams, AssigningKeepsTheFlagOfTheAssignedObject) {
    FakeParams off;
    off.throwIfNotReady(false);
    const FakeParams on;
    off = on;
    EXPECT_FALSE(off.throwIfNotReady());

    FakeParams stillOn;
    FakeParams offAgain;
    offAgain.throwIfNotReady(false);
    stillOn = offAgain;
    EXPECT_TRUE(stillOn.throwIfNotReady());
}

TEST(ClassifierTrainParams, AssigningThroughTheBaseGivesTheObjectAndChangesNothing) {
    FakeParams params(nullptr, 1);
    params.throwIfNotReady(false);
    const OtherFakeParams other(nullptr, 2);
    vxClassifierTrainParams& base = params;
    EXPECT_EQ(&(base = other), &base);
    EXPECT_EQ(params.value(), 1);
    EXPECT_FALSE(params.throwIfNotReady());
}

TEST(ClassifierTrainParams, TheFlagTakesNoPartInEquality) {
    FakeParams a(nullptr, 3);
    const FakeParams b(nullptr, 3);
    a.throwIfNotReady(false);
    EXPECT_TRUE(a.isEqual_(b));
    EXPECT_TRUE(b.isEqual_(a));
}

TEST(ClassifierTrainParams, TheBaseFindsEverythingEqual) {
    const BaseOnlyParams base;
    EXPECT_TRUE(base.isEqual_(base));
    EXPECT_TRUE(base.isEqual_(FakeParams(nullptr, 1)));
    EXPECT_TRUE(base.isEqual_(OtherFakeParams()));
}

TEST(ClassifierTrainParams, AHandleOwnsTheClone) {
    test::HookLog log;
    const FakeParams original(&log, 8);
    {
        const vxPtrHandle<vxClassifierTrainParams> copy = original.clone();
        EXPECT_NE(copy.get(), &original);
        EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*copy), 1);
        EXPECT_TRUE(original.isEqual_(*copy));
        EXPECT_EQ(log.alive.size(), 2U);
    }
    EXPECT_EQ(log.alive.size(), 1U);
}

TEST(ClassifierTrainParams, OnlyTheVersionsOfTheLevelsAreArchived) {
    BaseOnlyParams params;
    params.throwIfNotReady(false);
    const test::Bytes byHand = test::archiveOf([](vxArchive& archive) {
        unsigned char version = 0;
        archive || version; // the parameters
        archive || version; // vxPersistent
    });
    EXPECT_EQ(test::stored(params), byHand);
}

TEST(ClassifierTrainParams, TheFlagIsNotArchived) {
    FakeParams params(nullptr, 6);
    params.throwIfNotReady(false);
    const test::Bytes sealed = test::storedPointer(&params);

    vxLoadingArchive archive(sealed);
    vxPersistent* loaded = nullptr;
    vxPersistent::serializePointer(archive, nullptr, loaded);
    const vxPtrHandle<vxClassifierTrainParams> handle(dynamic_cast<vxClassifierTrainParams*>(loaded));
    archive.finish();
    ASSERT_FALSE(handle.isNull());
    EXPECT_TRUE(params.isEqual_(*handle));
    EXPECT_TRUE(handle->throwIfNotReady());
}

TEST(ClassifierTrainParams, LoadingLeavesTheFlagOfTheObjectAsItIs) {
    const test::Bytes sealed = test::stored(BaseOnlyParams());
    BaseOnlyParams into;
    into.throwIfNotReady(false);
    test::load(sealed, into);
    EXPECT_FALSE(into.throwIfNotReady());
}

TEST(ClassifierTrainParams, AnotherVersionIsRefusedWithoutAPlace) {
    const test::Bytes sealed = test::archiveOf([](vxArchive& archive) {
        unsigned char version = 1;
        archive || version;
        version = 0;
        archive || version;
    });
    BaseOnlyParams into;
    EXPECT_UNKNOWN_VERSION(test::load(sealed, into), nullptr, 0);
}

TEST(ClassifierTrainParams, TheBodyChecksTheVersionItselfAndWritesTheRootOnly) {
    BaseOnlyParams params;
    test::archiveOf([&](vxArchive& archive) {
        EXPECT_UNKNOWN_VERSION(params.serializeOnly(archive, 1), nullptr, 0);
        EXPECT_UNKNOWN_VERSION(params.serializeOnly(archive, 255), nullptr, 0);
    });
    const test::Bytes body = test::archiveOf([&](vxArchive& archive) { params.serializeOnly(archive, 0); });
    EXPECT_EQ(test::payload(body), test::Bytes{0});
}

TEST(ClassifierTrainParams, TheBaseLevelIsExchangedOnceInAPass) {
    EXPECT_EQ(test::payload(test::stored(DoubledParams())), (test::Bytes{0, 0}));
}

TEST(ClassifierTrainParams, TheSameTechniqueMeansTheSameClassWhateverTheValues) {
    EXPECT_TRUE(FakeParams(nullptr, 1).isSameTechnique_(FakeParams(nullptr, 2)));
    EXPECT_FALSE(FakeParams(nullptr, 1).isSameTechnique_(OtherFakeParams(nullptr, 1)));
}

} // namespace
