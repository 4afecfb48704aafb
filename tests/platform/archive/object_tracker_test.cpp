#include "tests/platform/archive/test_objects.h"
#include "tests/support/archive_bytes.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <new>
#include <vector>

namespace {

using test::Bytes;
using test::exchangePointer;
using test::Node;
using test::Note;
using test::Payload;

constexpr wchar_t gone[] = L"The archive refers to an object that is gone already.";

/// An archive with two pointers to one object that is not counted.
Bytes twoPointersToOneNote() {
    Note note(3);
    return test::archiveOf([&](vxArchive& archive) {
        exchangePointer(archive, &note);
        exchangePointer(archive, &note);
    });
}

long valueOf(vxPersistent* object) {
    return dynamic_cast<Note&>(*object).value;
}

TEST(ObjectTracker, AnObjectWithoutACountIsStoredOnce) {
    const Payload expected =
        Payload().u32(1).firstRecord(0, "test::Note", Payload().byte(0).u32(3)).u32(1).u32(0).u32(1);
    EXPECT_EQ(test::payload(twoPointersToOneNote()), expected.bytes());
}

TEST(ObjectTracker, AnObjectOnTheStackIsNotDeleted) {
    const long before = Node::living;
    {
        Node node(1);
        const Bytes bytes = test::storedPointer(&node);
        EXPECT_EQ(Node::living, before + 1);
        EXPECT_EQ(node.value, 1);
    }
    EXPECT_EQ(Node::living, before);
}

TEST(ObjectTracker, AnAddressUsedAgainIsAnotherObject) {
    alignas(Note) unsigned char place[sizeof(Note)];
    const Bytes bytes = test::archiveOf([&](vxArchive& archive) {
        for (const long value : {10, 11, 12}) {
            Note* note = new (place) Note(value);
            exchangePointer(archive, note);
            note->~Note();
        }
    });
    vxLoadingArchive archive(bytes);
    for (const long value : {10, 11, 12}) {
        const std::unique_ptr<vxPersistent> note(exchangePointer(archive));
        EXPECT_EQ(valueOf(note.get()), value);
    }
    archive.finish();
}

TEST(ObjectTracker, AnObjectIsTrackedUntilTheLastArchiveThatKnowsItEnds) {
    Note note(1);
    EXPECT_FALSE(note.isTracked_());
    {
        vxStoringArchive outer;
        exchangePointer(outer, &note);
        EXPECT_TRUE(note.isTracked_());
        {
            vxStoringArchive inner;
            exchangePointer(inner, &note);
            inner.finish();
        }
        EXPECT_TRUE(note.isTracked_());
        outer.finish();
        EXPECT_FALSE(note.isTracked_());
    }
    EXPECT_FALSE(note.isTracked_());
}

TEST(ObjectTracker, AnAbandonedArchiveTracksNothing) {
    const vxPtrHandle<Node> node(new Node(1));
    Note note(1);
    {
        vxStoringArchive archive;
        exchangePointer(archive, node.get());
        exchangePointer(archive, &note);
        EXPECT_TRUE(node->isTracked_());
        EXPECT_TRUE(note.isTracked_());
    }
    EXPECT_FALSE(node->isTracked_());
    EXPECT_FALSE(note.isTracked_());
}

TEST(ObjectTracker, CopyingDoesNotCopyTheMark) {
    Note note(1);
    vxStoringArchive archive;
    exchangePointer(archive, &note);
    Note target;
    target = note;
    EXPECT_TRUE(note.isTracked_());
    EXPECT_FALSE(target.isTracked_());
    Note source(2);
    note = source;
    EXPECT_FALSE(note.isTracked_()) << "it has reported that it changes";
}

TEST(ObjectTracker, AnObjectThatChangesIsStoredAnew) {
    Note note(1);
    const Bytes bytes = test::archiveOf([&](vxArchive& archive) {
        exchangePointer(archive, &note);
        note = Note(2);
        exchangePointer(archive, &note);
        exchangePointer(archive, &note);
    });
    vxLoadingArchive archive(bytes);
    const std::unique_ptr<vxPersistent> first(exchangePointer(archive));
    const std::unique_ptr<vxPersistent> second(exchangePointer(archive));
    EXPECT_EQ(exchangePointer(archive), second.get());
    EXPECT_EQ(valueOf(first.get()), 1);
    EXPECT_EQ(valueOf(second.get()), 2);
}

TEST(ObjectTracker, EveryArchiveLearnsOfAChange) {
    Note note(1);
    vxStoringArchive first;
    vxStoringArchive second;
    exchangePointer(first, &note);
    exchangePointer(second, &note);
    note = Note(2);
    EXPECT_FALSE(note.isTracked_());
    for (vxStoringArchive* archive : {&first, &second}) {
        exchangePointer(*archive, &note);
        archive->finish();
        vxLoadingArchive loading(archive->bytes());
        const std::unique_ptr<vxPersistent> before(exchangePointer(loading));
        const std::unique_ptr<vxPersistent> after(exchangePointer(loading));
        EXPECT_EQ(valueOf(before.get()), 1);
        EXPECT_EQ(valueOf(after.get()), 2);
    }
}

TEST(ObjectTracker, ACountedObjectThatChangesIsStoredAnew) {
    vxPtrHandle<Node> node(new Node(1));
    const Bytes bytes = test::archiveOf([&](vxArchive& archive) {
        archive || node;
        ASSERT_TRUE(node->isTracked_());
        node->mutating_();
        node->value = 2;
        archive || node;
    });
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*node), 1);
    vxPtrHandle<Node> first;
    vxPtrHandle<Node> second;
    vxLoadingArchive archive(bytes);
    archive || first || second;
    EXPECT_EQ(first->value, 1);
    EXPECT_EQ(second->value, 2);
}

/// The values of the objects in an archive, in the order of the pointers to them.
std::vector<long> nodesIn(const Bytes& bytes, int pointers) {
    std::vector<long> values;
    vxLoadingArchive archive(bytes);
    for (int i = 0; i < pointers; ++i) {
        vxPtrHandle<Node> node;
        archive || node;
        values.push_back(node->value);
    }
    archive.finish();
    return values;
}

TEST(ObjectTracker, AnyNumberOfArchivesLearnOfAChangeOfACountedObject) {
    vxPtrHandle<Node> node(new Node(1));
    std::vector<vxStoringArchive> archives(200);
    for (vxStoringArchive& archive : archives) {
        archive || node;
    }
    node->mutating_();
    EXPECT_FALSE(node->isTracked_());
    node->value = 2;
    for (vxStoringArchive& archive : archives) {
        archive || node || node;
        EXPECT_TRUE(node->isTracked_());
        archive.finish();
        EXPECT_EQ(nodesIn(archive.bytes(), 3), (std::vector<long>{1, 2, 2}));
    }
    EXPECT_FALSE(node->isTracked_());
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*node), 1);
}

TEST(ObjectTracker, AnObjectIsTrackedUntilTheLastOfAnyNumberOfArchivesEnds) {
    vxPtrHandle<Node> node(new Node(1));
    std::vector<vxStoringArchive> archives(200);
    for (vxStoringArchive& archive : archives) {
        archive || node;
    }
    for (vxStoringArchive& archive : archives) {
        EXPECT_TRUE(node->isTracked_());
        archive || node;
        archive.finish();
        EXPECT_EQ(nodesIn(archive.bytes(), 2), (std::vector<long>{1, 1}));
    }
    EXPECT_FALSE(node->isTracked_());
}

TEST(ObjectTracker, AnObjectThatChangesOverAndOverIsStoredEachTime) {
    vxPtrHandle<Node> node(new Node(0));
    constexpr int rounds = 100;
    const Bytes bytes = test::archiveOf([&](vxArchive& archive) {
        for (int i = 0; i < rounds; ++i) {
            archive || node || node;
            node->mutating_();
            ++node->value;
        }
    });
    const std::vector<long> values = nodesIn(bytes, 2 * rounds);
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(values[i], static_cast<long>(i / 2));
    }
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*node), 1);
}

TEST(ObjectTracker, AChangeTakesNothingFromAnArchiveThatMetTheObjectLater) {
    vxPtrHandle<Node> node(new Node(1));
    vxStoringArchive later;
    {
        vxStoringArchive earlier;
        earlier || node;
        node->mutating_();
        later || node;
    }
    EXPECT_TRUE(node->isTracked_()) << "the archive that ended no longer tracked it";
    later || node;
    later.finish();
    EXPECT_FALSE(node->isTracked_());
    const Bytes once = test::archiveOf([&](vxArchive& archive) { archive || node || node; });
    EXPECT_EQ(later.bytes(), once);
}

TEST(ObjectTracker, AnObjectThatIsCountedOnlyLaterIsStoredOnce) {
    Node* node = new Node(1);
    vxPtrHandle<Node> handle;
    const Bytes bytes = test::archiveOf([&](vxArchive& archive) {
        exchangePointer(archive, node);
        handle.reset(node);
        archive || handle;
        vxStoringArchive other;
        other || handle;
        archive || handle;
    });
    EXPECT_FALSE(handle->isTracked_());
    EXPECT_EQ(nodesIn(bytes, 3), (std::vector<long>{1, 1, 1}));
    const Bytes three = test::archiveOf([&](vxArchive& archive) { archive || handle || handle || handle; });
    EXPECT_EQ(bytes, three);
}

TEST(ObjectTracker, ReportingAChangeUntrackedHasNoEffect) {
    Note note(1);
    note.mutating_();
    EXPECT_FALSE(note.isTracked_());
}

TEST(ObjectTracker, ALoadedObjectThatWasFreedIsNotGivenOutAgain) {
    const Bytes bytes = twoPointersToOneNote();
    vxLoadingArchive archive(bytes);
    delete exchangePointer(archive);
    EXPECT_ERROR(exchangePointer(archive), vxArchive::BadReference, gone);
}

TEST(ObjectTracker, ALoadedObjectThatWasFreedIsNotTakenForAnotherAtItsAddress) {
    const Bytes bytes = twoPointersToOneNote();
    vxLoadingArchive archive(bytes);
    vxPersistent* note = exchangePointer(archive);
    void* const place = dynamic_cast<void*>(note);
    note->~vxPersistent();
    Note* other = new (place) Note(4);
    vxStoringArchive elsewhere;
    exchangePointer(elsewhere, other); // tracked, but by another archive
    EXPECT_ERROR(exchangePointer(archive), vxArchive::BadReference, gone);
    delete other;
}

TEST(ObjectTracker, ALoadedObjectThatChangedIsNotGivenOutAgain) {
    const Bytes bytes = twoPointersToOneNote();
    vxLoadingArchive archive(bytes);
    const std::unique_ptr<vxPersistent> note(exchangePointer(archive));
    ASSERT_TRUE(note->isTracked_());
    dynamic_cast<Note&>(*note) = Note(8);
    EXPECT_ERROR(exchangePointer(archive), vxArchive::BadReference, gone);
}

TEST(ObjectTracker, ALoadedObjectBelongsToWhoeverTookIt) {
    const Bytes bytes = twoPointersToOneNote();
    std::unique_ptr<vxPersistent> note;
    {
        vxLoadingArchive archive(bytes);
        note.reset(exchangePointer(archive));
        EXPECT_EQ(exchangePointer(archive), note.get());
        archive.finish();
        EXPECT_FALSE(note->isTracked_());
    }
    EXPECT_EQ(valueOf(note.get()), 3);
}

TEST(ObjectTracker, AHandleThatCannotHoldAnObjectDoesNotFreeItForItsOwner) {
    const Bytes bytes = twoPointersToOneNote();
    vxPtrHandle<Node> handle;
    for (const bool freedEarly : {false, true}) {
        vxLoadingArchive archive(bytes);
        std::unique_ptr<vxPersistent> note(exchangePointer(archive));
        archive || handle;
        EXPECT_TRUE(handle.isNull());
        if (freedEarly) {
            note.reset();
        }
        archive.finish();
        EXPECT_EQ(Note::living, freedEarly ? 0 : 1);
    }
    EXPECT_EQ(Note::living, 0);
}

TEST(ObjectTracker, AnObjectThatAHandleLeftCanBeTakenLater) {
    const Bytes bytes = twoPointersToOneNote();
    std::unique_ptr<vxPersistent> note;
    {
        vxLoadingArchive archive(bytes);
        vxPtrHandle<Node> handle;
        archive || handle;
        note.reset(exchangePointer(archive));
        archive.finish();
    }
    EXPECT_EQ(Note::living, 1);
    EXPECT_EQ(valueOf(note.get()), 3);
}

} // namespace
