#include "tests/support/expect_error.h"

#include <vxclassifier/platform/diag_object.h>

#include <gtest/gtest.h>

namespace {

constexpr wchar_t circle[] = L"The destination of a diagnostic object must not lead back to the object.";

struct Found {
    vxDiagObject* destination;
    unsigned long flags;
};

Found destinationOf(vxDiagObject* diag, unsigned long flags) {
    vxDiagObject* const destination = vxDiagObject::getRecordingDestination(diag, flags);
    return Found{destination, flags};
}

TEST(DiagObject, NullStaysNullAndLeavesTheFlags) {
    const Found found = destinationOf(nullptr, 0x35UL);
    EXPECT_EQ(found.destination, nullptr);
    EXPECT_EQ(found.flags, 0x35UL);
}

TEST(DiagObject, RecordsIntoItselfWithAllFlagsAtFirst) {
    vxDiagObject diag;
    EXPECT_TRUE(diag.isEnabled());
    EXPECT_EQ(diag.passedFlags(), ~0UL);
    EXPECT_EQ(diag.destination(), nullptr);
    const Found found = destinationOf(&diag, ~0UL);
    EXPECT_EQ(found.destination, &diag);
    EXPECT_EQ(found.flags, ~0UL);
}

TEST(DiagObject, RecordsNothingWhenSwitchedOff) {
    vxDiagObject diag;
    diag.disable();
    EXPECT_FALSE(diag.isEnabled());
    Found found = destinationOf(&diag, 0x35UL);
    EXPECT_EQ(found.destination, nullptr);
    EXPECT_EQ(found.flags, 0UL);
    diag.enable();
    found = destinationOf(&diag, 0x35UL);
    EXPECT_EQ(found.destination, &diag);
    EXPECT_EQ(found.flags, 0x35UL);
}

TEST(DiagObject, PassesOnOnlySomeFlags) {
    vxDiagObject diag;
    diag.passedFlags(0x0fUL);
    const Found found = destinationOf(&diag, 0x35UL);
    EXPECT_EQ(found.destination, &diag);
    EXPECT_EQ(found.flags, 0x05UL);
}

TEST(DiagObject, ARedirectionIsFollowedToItsEndAndEachStepMasksTheFlags) {
    vxDiagObject first;
    vxDiagObject second;
    vxDiagObject third;
    first.destination(&second);
    second.destination(&third);
    first.passedFlags(0x7UL);
    second.passedFlags(0xdUL);
    third.passedFlags(0xeUL);
    Found found = destinationOf(&first, 0xfUL);
    EXPECT_EQ(found.destination, &third);
    EXPECT_EQ(found.flags, 0x4UL);
    found = destinationOf(&second, 0xfUL);
    EXPECT_EQ(found.destination, &third);
    EXPECT_EQ(found.flags, 0xcUL);
    first.destination(nullptr);
    EXPECT_EQ(destinationOf(&first, 0xfUL).destination, &first);
}

TEST(DiagObject, OneSwitchedOffOnTheWayEndsTheRecording) {
    vxDiagObject first;
    vxDiagObject second;
    vxDiagObject third;
    first.destination(&second);
    second.destination(&third);
    for (vxDiagObject* off : {&first, &second, &third}) {
        off->disable();
        const Found found = destinationOf(&first, 0xfUL);
        EXPECT_EQ(found.destination, nullptr);
        EXPECT_EQ(found.flags, 0UL);
        off->enable();
    }
}

TEST(DiagObject, ACircleIsRefusedAndChangesNothing) {
    vxDiagObject first;
    vxDiagObject second;
    vxDiagObject third;
    EXPECT_ERROR(first.destination(&first), vxBadPointer, circle);
    EXPECT_EQ(first.destination(), nullptr);
    first.destination(&second);
    second.destination(&third);
    EXPECT_ERROR(third.destination(&first), vxBadPointer, circle);
    EXPECT_ERROR(second.destination(&first), vxBadPointer, circle);
    EXPECT_EQ(third.destination(), nullptr);
    EXPECT_EQ(second.destination(), &third);
    EXPECT_EQ(destinationOf(&first, 1UL).destination, &third);
}

TEST(DiagObject, ACopyHasTheSwitchAndTheFlagsButNoDestination) {
    vxDiagObject target;
    vxDiagObject original;
    original.disable();
    original.passedFlags(0x3UL);
    original.destination(&target);
    const vxDiagObject copy(original);
    EXPECT_FALSE(copy.isEnabled());
    EXPECT_EQ(copy.passedFlags(), 0x3UL);
    EXPECT_EQ(copy.destination(), nullptr);
    vxDiagObject assigned;
    vxDiagObject ownTarget;
    assigned.destination(&ownTarget);
    assigned = original;
    EXPECT_FALSE(assigned.isEnabled());
    EXPECT_EQ(assigned.passedFlags(), 0x3UL);
    EXPECT_EQ(assigned.destination(), &ownTarget) << "an assigned object keeps its own destination";
}

} // namespace
