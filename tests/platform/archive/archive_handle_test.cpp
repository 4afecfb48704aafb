#include "tests/platform/archive/test_objects.h"
#include "tests/support/archive_bytes.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

namespace {

using test::Bytes;
using test::load;
using test::Node;
using test::Note;
using test::payload;
using test::Payload;
using test::stored;
using test::Stranger;
using NodeHandle = vxPtrHandle<Node>;

long countOf(const NodeHandle& handle) {
    return vx_PtrHandleBase_RepAccessor::count(*handle);
}

NodeHandle newNode(long value, const NodeHandle& left = {}, const NodeHandle& right = {}) {
    NodeHandle node(new Node(value));
    node->left = left;
    node->right = right;
    return node;
}

TEST(ArchiveHandle, ANullHandleIsNoNewObjectAndReferenceZero) {
    EXPECT_EQ(payload(stored(NodeHandle())), Payload().u32(0).u32(0).bytes());
    NodeHandle loaded = newNode(1);
    load(stored(NodeHandle()), loaded);
    EXPECT_TRUE(loaded.isNull());
}

TEST(ArchiveHandle, AnObjectComesBackWithItsFieldsAndIsCompletedOnce) {
    NodeHandle loaded;
    load(stored(newNode(1, newNode(2), newNode(3))), loaded);
    ASSERT_FALSE(loaded.isNull());
    EXPECT_EQ(loaded->value, 1);
    EXPECT_EQ(loaded->left->value, 2);
    EXPECT_EQ(loaded->right->value, 3);
    EXPECT_EQ(loaded->completions, 1);
    EXPECT_EQ(loaded->left->completions, 1);
}

TEST(ArchiveHandle, TwoHandlesToOneObjectComeBackAsTwoHandlesToOneObject) {
    const NodeHandle shared = newNode(7);
    const Bytes bytes = test::archiveOf([&](vxArchive& archive) {
        NodeHandle first = shared;
        vxPtrHandle_const<Node> second = shared;
        archive || first;
        archive || second;
    });
    NodeHandle first;
    vxPtrHandle_const<Node> second;
    {
        vxLoadingArchive archive(bytes);
        archive || first;
        archive || second;
        EXPECT_EQ(countOf(first), 3) << "the archive keeps a share";
        archive.finish();
    }
    EXPECT_EQ(first.get(), second.get());
    EXPECT_EQ(countOf(first), 2);
}

TEST(ArchiveHandle, SharingInsideAnObjectIsRestored) {
    const NodeHandle bottom = newNode(4);
    const NodeHandle top = newNode(1, newNode(2, bottom, bottom), newNode(3, {}, bottom));
    NodeHandle loaded;
    load(stored(top), loaded);
    const NodeHandle& loadedBottom = loaded->right->right;
    EXPECT_EQ(loadedBottom->value, 4);
    EXPECT_EQ(loaded->left->left, loadedBottom);
    EXPECT_EQ(loaded->left->right, loadedBottom);
    EXPECT_EQ(countOf(loadedBottom), 3);
}

TEST(ArchiveHandle, ATowerOfSharedObjectsTakesNoMoreRoomThanItHasFloors) {
    NodeHandle tower = newNode(0);
    for (long floor = 1; floor <= 64; ++floor) {
        tower = newNode(floor, tower, tower);
    }
    const Bytes bytes = stored(tower);
    EXPECT_LT(bytes.size(), 65U * 40U);
    NodeHandle loaded;
    load(bytes, loaded);
    EXPECT_EQ(stored(loaded), bytes);
}

TEST(ArchiveHandle, LoadingFirstReleasesTheObjectHeld) {
    const long before = Node::living;
    NodeHandle loaded = newNode(1);
    const Bytes bytes = Payload().u32(1).u32(5).sealed(); // a gap in the class numbers
    vxLoadingArchive archive(bytes);
    EXPECT_ERROR_CLASS(archive || loaded, vxArchive::TooLarge);
    EXPECT_TRUE(loaded.isNull());
    EXPECT_EQ(Node::living, before);
}

TEST(ArchiveHandle, AnObjectOfAnotherClassLeavesTheHandleNullAndIsFreed) {
    const Bytes bytes = stored(vxPtrHandle<Stranger>(new Stranger));
    ASSERT_EQ(Stranger::living, 0);
    NodeHandle loaded = newNode(1);
    vxLoadingArchive archive(bytes);
    archive || loaded;
    EXPECT_TRUE(loaded.isNull());
    EXPECT_EQ(Stranger::living, 1) << "known to the archive until it ends";
    archive.finish();
    EXPECT_EQ(Stranger::living, 0);
}

TEST(ArchiveHandle, AnObjectOfAnotherClassCanStillBeReferredTo) {
    const vxPtrHandle<Stranger> stranger(new Stranger);
    const Bytes bytes = test::archiveOf([&](vxArchive& archive) {
        vxPtrHandle<Stranger> first = stranger;
        vxPtrHandle<Stranger> second = stranger;
        archive || first;
        archive || second;
    });
    NodeHandle wrong;
    vxPtrHandle<Stranger> right;
    {
        vxLoadingArchive archive(bytes);
        archive || wrong;
        archive || right;
        archive.finish();
    }
    EXPECT_TRUE(wrong.isNull());
    EXPECT_FALSE(right.isNull());
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*right), 1);
}

TEST(ArchiveHandle, AnObjectThatNoHandleCanHoldIsFreedByTheArchive) {
    Note note(3);
    const Bytes bytes = test::storedPointer(&note);
    NodeHandle loaded;
    load(bytes, loaded);
    EXPECT_TRUE(loaded.isNull());
    EXPECT_EQ(Note::living, 1) << "only the one on the stack is left";
}

TEST(ArchiveHandle, AnUnregisteredClassIsRefusedAndNothingCanBeWrittenAfterwards) {
    const NodeHandle top = newNode(1, NodeHandle(new test::Unregistered));
    for (const NodeHandle& handle : {top, top->left}) {
        vxStoringArchive archive;
        NodeHandle copy = handle;
        EXPECT_ERROR(archive || copy, vxArchive::UnknownClass,
                     L"The class test::Unregistered is not registered with the archive.");
        EXPECT_ERROR_CLASS(archive || copy, vxArchive::Misuse);
        EXPECT_ERROR_CLASS(archive.finish(), vxArchive::Misuse);
        EXPECT_TRUE(archive.bytes().empty());
    }
    EXPECT_EQ(countOf(top), 1) << "the archive gave its share back";
}

TEST(ArchiveHandle, ObjectsThatReferToEachOtherInACircleAreRefused) {
    constexpr wchar_t message[] = L"The objects to be stored refer to each other in a circle.";
    const NodeHandle first = newNode(1);
    const NodeHandle second = newNode(2, {}, first);
    first->left = second;
    EXPECT_ERROR(stored(first), vxArchive::BadReference, message);
    EXPECT_ERROR(stored(newNode(0, second)), vxArchive::BadReference, message);
    second->right = second;
    EXPECT_ERROR(stored(second), vxArchive::BadReference, message);
    second->right.reset();
}

TEST(ArchiveHandle, ACircleIsRefusedBehindObjectsOfTheSameClass) {
    const NodeHandle first = newNode(1);
    const NodeHandle second = newNode(2, {}, first);
    first->left = second;
    NodeHandle itself = newNode(3);
    itself->left = itself;
    for (NodeHandle circle : {first, itself}) {
        vxStoringArchive archive;
        NodeHandle before = newNode(4);
        archive || before;
        EXPECT_ERROR(archive || circle, vxArchive::BadReference,
                     L"The objects to be stored refer to each other in a circle.");
    }
    first->left.reset();
    itself->left.reset();
}

TEST(ArchiveHandle, TheArchiveKeepsStoredObjectsUntilItIsFinished) {
    NodeHandle node = newNode(1);
    vxStoringArchive archive;
    archive || node;
    EXPECT_EQ(countOf(node), 2);
    archive.finish();
    EXPECT_EQ(countOf(node), 1);
}

} // namespace
