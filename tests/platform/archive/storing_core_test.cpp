#include "tests/platform/archive/test_objects.h"
#include "tests/support/archive_bytes.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"
#include "tests/support/small_stack.h"

#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <functional>
#include <new>

namespace {

using test::Bytes;
using test::exchangePointer;
using test::load;
using test::Node;
using test::Note;
using test::payload;
using test::Payload;
using test::stored;
using NodeHandle = vxPtrHandle<Node>;

/// What an object of class Node writes.
Payload nodeRecord(std::uint32_t value, std::uint32_t left, std::uint32_t right) {
    return Payload().byte(0).byte(0).u32(value).u32(left).u32(right);
}

/// Makes the objects that it refers to only while it is stored.
class Fleeting : public vxPersistent, public vxRepBase {
public:
    static vxPersistent* make() { return new Fleeting; }
    NodeHandle loaded[4];

protected:
    void dispatchSerialize(vxArchive& archive) override {
        vxPersistent::dispatchSerialize(archive);
        for (long i = 0; i < 4; ++i) {
            NodeHandle handle(archive.isStoring() ? new Node(i) : nullptr);
            archive || handle;
            loaded[i] = archive.isLoading() ? handle : NodeHandle();
        }
    }

private:
    static const vx_Instantiator sExemplar;
};
const vx_Instantiator Fleeting::sExemplar(typeid(Fleeting), &Fleeting::make);

/// Does something in the middle of its record, in either direction.
class Busy : public vxPersistent, public vxRepBase {
public:
    static vxPersistent* make() { return new Busy; }
    static std::function<void()> inTheMiddle;

protected:
    void dispatchSerialize(vxArchive& archive) override {
        vxPersistent::dispatchSerialize(archive);
        if (inTheMiddle) {
            inTheMiddle();
        }
    }

private:
    static const vx_Instantiator sExemplar;
};
std::function<void()> Busy::inTheMiddle;
const vx_Instantiator Busy::sExemplar(typeid(Busy), &Busy::make);

/// Refers to an object on the stack that is gone before the archive can follow the reference.
class Careless : public vxPersistent, public vxRepBase {
public:
    explicit Careless(int notes) : notes_(notes) {}
    static vxPersistent* make() { return new Careless(0); }

protected:
    void dispatchSerialize(vxArchive& archive) override {
        vxPersistent::dispatchSerialize(archive);
        alignas(Note) unsigned char place[sizeof(Note)];
        for (int i = 0; i < notes_; ++i) {
            Note* note = new (place) Note(i);
            exchangePointer(archive, note);
            note->~Note();
        }
        Note last(notes_);
        exchangePointer(archive, &last);
    }

private:
    int notes_;
    static const vx_Instantiator sExemplar;
};
const vx_Instantiator Careless::sExemplar(typeid(Careless), &Careless::make);

TEST(StoringCore, CannotBeFinishedInTheMiddleOfAnObject) {
    constexpr wchar_t message[] = L"An archive cannot be finished from within an object.";
    vxPtrHandle<Busy> object(new Busy);
    const Bytes bytes = stored(object);

    vxStoringArchive storing;
    Busy::inTheMiddle = [&] { storing.finish(); };
    EXPECT_ERROR(storing || object, vxArchive::Misuse, message);
    EXPECT_TRUE(storing.bytes().empty());

    vxLoadingArchive loading(bytes);
    Busy::inTheMiddle = [&] { loading.finish(); };
    EXPECT_ERROR(loading || object, vxArchive::Misuse, message);
    Busy::inTheMiddle = nullptr;
}

TEST(StoringCore, WritesWhatAnObjectRefersToBeforeTheObject) {
    NodeHandle top(new Node(1));
    top->left = NodeHandle(new Node(2));
    top->right = NodeHandle(new Node(3));
    top->right->left = top->left;
    const Payload expected = Payload()
                                 .u32(3) // new objects
                                 .firstRecord(0, "test::Node", nodeRecord(2, 0, 0))
                                 .record(0, nodeRecord(3, 1, 0))
                                 .record(0, nodeRecord(1, 1, 2))
                                 .u32(3); // the pointer itself
    EXPECT_EQ(payload(stored(top)), expected.bytes());
}

TEST(StoringCore, NumbersAClassByItsFirstCompleteRecord) {
    const vxPtrHandle<Fleeting> top(new Fleeting);
    Payload references = Payload().byte(0).u32(1).u32(2).u32(3).u32(4);
    Payload expected = Payload()
                           .u32(5)
                           .firstRecord(0, "test::Node", nodeRecord(0, 0, 0))
                           .record(0, nodeRecord(1, 0, 0))
                           .record(0, nodeRecord(2, 0, 0))
                           .record(0, nodeRecord(3, 0, 0))
                           .firstRecord(1, "(anonymous namespace)::Fleeting", references)
                           .u32(5);
    EXPECT_EQ(payload(stored(top)), expected.bytes());
}

TEST(StoringCore, AnObjectStoredAgainByPointerIsAReference) {
    NodeHandle node(new Node(9));
    const Bytes bytes = test::archiveOf([&](vxArchive& archive) { archive || node || node; });
    const Payload expected =
        Payload().u32(1).firstRecord(0, "test::Node", nodeRecord(9, 0, 0)).u32(1).u32(0).u32(1);
    EXPECT_EQ(payload(bytes), expected.bytes());
}

TEST(StoringCore, AnObjectStoredAgainByValueIsStoredAgain) {
    Node node(9);
    const Bytes bytes = test::archiveOf([&](vxArchive& archive) { archive || node || node; });
    const Payload once = Payload().byte(0).byte(0).u32(9).u32(0).u32(0).u32(0).u32(0);
    EXPECT_EQ(payload(bytes), Payload(once).append(once.bytes()).bytes());
}

TEST(StoringCore, AnObjectByValueIsWhatItsPrimitivesAreOneByOne) {
    Node node(9);
    node.left = NodeHandle(new Node(8));
    const Bytes byHand = test::archiveOf([&](vxArchive& archive) {
        unsigned char version = 0;
        long value = 9;
        NodeHandle right;
        archive || version || version;
        archive || value;
        archive || node.left || right;
    });
    EXPECT_EQ(stored(node), byHand);
}

TEST(StoringCore, AnObjectThatIsGoneAfterItWasReferredToIsStoredAllTheSame) {
    vxPtrHandle<Fleeting> loaded;
    load(stored(vxPtrHandle<Fleeting>(new Fleeting)), loaded);
    for (long i = 0; i < 4; ++i) {
        ASSERT_FALSE(loaded->loaded[i].isNull());
        EXPECT_EQ(loaded->loaded[i]->value, i);
        EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*loaded->loaded[i]), 1) << "four objects, not one";
    }
}

TEST(StoringCore, AnAddressUsedAgainAtTopLevelIsAnotherObject) {
    const Bytes bytes = test::archiveOf([](vxArchive& archive) {
        for (long i = 0; i < 3; ++i) {
            NodeHandle temporary(new Node(i));
            archive || temporary;
        }
    });
    vxLoadingArchive archive(bytes);
    for (long i = 0; i < 3; ++i) {
        NodeHandle loaded;
        archive || loaded;
        EXPECT_EQ(loaded->value, i);
    }
    archive.finish();
}

TEST(StoringCore, AnObjectWithoutACountThatIsGoneBeforeItsTurnIsRefused) {
    constexpr wchar_t message[] = L"An object to be stored was gone before it could be written.";
    for (const int notes : {0, 1, 2}) {
        const vxPtrHandle<Careless> careless(new Careless(notes));
        EXPECT_ERROR(stored(careless), vxArchive::BadReference, message);
    }
}

TEST(StoringCore, AnArchiveThatFailedGivesUpItsShares) {
    NodeHandle node(new Node(1));
    {
        vxStoringArchive archive;
        archive || node;
        NodeHandle unregistered(new test::Unregistered);
        EXPECT_ERROR_CLASS(archive || unregistered, vxArchive::UnknownClass);
    }
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*node), 1);
    EXPECT_FALSE(node->isTracked_());
}

TEST(StoringCore, AChainOfAnyLengthNeedsNoDeepStack) {
    const long before = Node::living;
    Bytes bytes;
    test::runOnSmallStack([&] {
        NodeHandle chain;
        for (long i = 0; i < test::longChain; ++i) {
            NodeHandle next(new Node(i));
            next->left = std::move(chain);
            chain = std::move(next);
        }
        bytes = stored(chain);
    });
    EXPECT_EQ(Node::living, before);
    test::runOnSmallStack([&] {
        NodeHandle chain;
        load(bytes, chain);
        EXPECT_EQ(Node::living, before + test::longChain);
        EXPECT_EQ(chain->value, test::longChain - 1);
        EXPECT_EQ(chain->left->value, test::longChain - 2);
    });
    EXPECT_EQ(Node::living, before);
}

} // namespace
