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
using test::Payload;
using test::stored;
using test::Stranger;
using NodeHandle = vxPtrHandle<Node>;

constexpr wchar_t notBefore[] = L"The archive refers to an object that does not stand before the reference.";
constexpr wchar_t tooLarge[] = L"A size in the archive is larger than what is left of it.";
constexpr wchar_t tooShort[] = L"The archive holds fewer bytes than are to be read.";

Payload nodeRecord(std::uint32_t value, std::uint32_t left, std::uint32_t right) {
    return Payload().byte(0).byte(0).u32(value).u32(left).u32(right);
}

void loadNode(const Payload& content) {
    NodeHandle node;
    load(content.sealed(), node);
}

/// A pointer to one new object of class Node with this record.
Payload pointerTo(const Payload& record) {
    return Payload().u32(1).firstRecord(0, "test::Node", record).u32(1);
}

TEST(LoadingCore, AReferenceInsideARecordNamesAnEarlierOne) {
    for (const std::uint32_t reference : {1U, 2U, 0x80000000U, 0xffffffffU}) {
        EXPECT_ERROR(loadNode(pointerTo(nodeRecord(0, reference, 0))), vxArchive::BadReference, notBefore);
        EXPECT_ERROR(loadNode(pointerTo(nodeRecord(0, 0, reference))), vxArchive::BadReference, notBefore);
    }
    Payload forward = Payload().u32(2).firstRecord(0, "test::Node", nodeRecord(0, 2, 0));
    EXPECT_ERROR(loadNode(forward.record(0, nodeRecord(0, 0, 0)).u32(2)), vxArchive::BadReference, notBefore);
}

TEST(LoadingCore, AReferenceAtTopLevelNamesAnObjectThatIsThere) {
    for (const std::uint32_t reference : {1U, 2U, 0xffffffffU}) {
        EXPECT_ERROR(loadNode(Payload().u32(0).u32(reference)), vxArchive::BadReference, notBefore);
    }
    Payload content = Payload().u32(1).firstRecord(0, "test::Node", nodeRecord(0, 0, 0));
    EXPECT_ERROR(loadNode(content.u32(2)), vxArchive::BadReference, notBefore);
}

TEST(LoadingCore, ObjectsThatNothingRefersToAreRefused) {
    constexpr wchar_t message[] = L"The archive holds objects that nothing refers to.";
    const Payload one = Payload().u32(1).firstRecord(0, "test::Node", nodeRecord(0, 0, 0));
    EXPECT_ERROR(loadNode(Payload(one).u32(0)), vxArchive::CorruptData, message);
    Payload two = Payload().u32(2).firstRecord(0, "test::Node", nodeRecord(0, 0, 0));
    EXPECT_ERROR(loadNode(two.record(0, nodeRecord(0, 1, 0)).u32(1)), vxArchive::CorruptData, message);
    Payload alone = Payload().u32(2).firstRecord(0, "test::Node", nodeRecord(0, 0, 0));
    EXPECT_ERROR(loadNode(alone.record(0, nodeRecord(0, 0, 0)).u32(2)), vxArchive::CorruptData, message);
}

TEST(LoadingCore, AnUnknownClassIsNamed) {
    EXPECT_ERROR(loadNode(Payload().u32(1).firstRecord(0, "test::Nobody", Payload()).u32(1)),
                 vxArchive::UnknownClass, L"The archive holds an object of the unknown class test::Nobody.");
    EXPECT_ERROR(loadNode(Payload().u32(1).firstRecord(0, "", Payload()).u32(1)), vxArchive::UnknownClass,
                 L"The archive holds an object of the unknown class .");
}

TEST(LoadingCore, AStrangeClassNameDoesNotSpoilTheMessage) {
    const std::string name = "\x01\x7f\xff" + std::string(1000, 'x');
    EXPECT_ERROR(loadNode(Payload().u32(1).firstRecord(0, name, Payload()).u32(1)), vxArchive::UnknownClass,
                 L"The archive holds an object of the unknown class ???" + std::wstring(197, L'x') + L"....");
}

TEST(LoadingCore, AClassNameIsShownWholeUpTo200Characters) {
    const auto expectShown = [](const std::string& name, const std::wstring& shown) {
        EXPECT_ERROR(loadNode(Payload().u32(1).firstRecord(0, name, Payload()).u32(1)),
                     vxArchive::UnknownClass,
                     L"The archive holds an object of the unknown class " + shown + L".");
    };
    // The first and the last printable character stand at the beginning.
    expectShown(" ~" + std::string(198, 'x'), L" ~" + std::wstring(198, L'x'));
    expectShown(" ~" + std::string(199, 'x'), L" ~" + std::wstring(198, L'x') + L"...");
}

TEST(LoadingCore, AClassIsNamedOnceAndInOrder) {
    EXPECT_ERROR(loadNode(Payload().u32(1).firstRecord(1, "test::Node", nodeRecord(0, 0, 0)).u32(1)),
                 vxArchive::CorruptData, L"The archive uses a class before it names it.");
    Payload twice = Payload().u32(2).firstRecord(0, "test::Node", nodeRecord(0, 0, 0));
    twice.firstRecord(1, "test::Node", nodeRecord(0, 1, 0)).u32(2);
    EXPECT_ERROR(loadNode(twice), vxArchive::CorruptData, L"The archive names a class twice.");
}

TEST(LoadingCore, ARecordIsExactlyAsLongAsItsClassKnows) {
    EXPECT_ERROR(loadNode(pointerTo(nodeRecord(0, 0, 0).byte(0))), vxArchive::CorruptData,
                 L"An object in the archive is longer than its class knows.");
    const Bytes whole = nodeRecord(0, 0, 0).bytes();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        Payload part;
        part.append(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
        EXPECT_ERROR(loadNode(pointerTo(part)), vxArchive::ShortData, tooShort);
    }
}

TEST(LoadingCore, SizesLargerThanWhatIsLeftAreRefused) {
    EXPECT_ERROR(loadNode(Payload().u32(0xffffffff).u64(0)), vxArchive::TooLarge, tooLarge);
    EXPECT_ERROR(loadNode(Payload().u32(1).u32(0).u32(0xffffffff).u64(0)), vxArchive::TooLarge, tooLarge);
    Payload hugeRecord = Payload().u32(1).u32(0).u32(10).ascii("test::Node").u64(~std::uint64_t{0});
    EXPECT_ERROR(loadNode(hugeRecord.append(nodeRecord(0, 0, 0).bytes()).u32(1)), vxArchive::TooLarge,
                 tooLarge);
}

TEST(LoadingCore, AnotherVersionInsideARecordIsRefused) {
    const Payload classVersion = Payload().byte(1).byte(0).u32(0).u32(0).u32(0);
    const Payload rootVersion = Payload().byte(0).byte(1).u32(0).u32(0).u32(0);
    EXPECT_ERROR_CLASS(loadNode(pointerTo(classVersion)), vxArchive::UnknownVersion);
    EXPECT_ERROR_CLASS(loadNode(pointerTo(rootVersion)), vxArchive::UnknownVersion);
}

TEST(LoadingCore, AFailedLoadFreesWhatItHadMade) {
    NodeHandle top(new Node(1));
    top->left = NodeHandle(new Node(2));
    top->right = NodeHandle(new Node(3));
    const Bytes whole = test::payload(stored(top));
    const long before = Node::living;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        Payload part;
        part.append(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
        EXPECT_THROW(loadNode(part), vxArchive::Errors) << "cut after " << size;
        EXPECT_EQ(Node::living, before) << "cut after " << size;
    }
}

TEST(LoadingCore, AMendedSealLetsOnlyRefusalsAndValidObjectsThrough) {
    NodeHandle top(new Node(1));
    top->left = NodeHandle(new Node(2));
    const Bytes whole = test::payload(stored(top));
    const long before = Node::living;
    int accepted = 0;
    for (std::size_t bit = 0; bit < 8 * whole.size(); ++bit) {
        Bytes changed = whole;
        changed[bit / 8] = static_cast<unsigned char>(changed[bit / 8] ^ (1U << (bit % 8)));
        const Bytes sealed = Payload().append(changed).sealed();
        try {
            NodeHandle loaded;
            load(sealed, loaded);
            EXPECT_EQ(stored(loaded), sealed) << "bit " << bit;
            ++accepted;
        } catch (const vxArchive::Errors&) {
        }
        EXPECT_EQ(Node::living, before) << "bit " << bit;
    }
    // Each bit of the two values, and the one that makes the null reference one to the other object.
    EXPECT_EQ(accepted, 65);
}

TEST(LoadingCore, AfterAFailureTheArchiveIsUseless) {
    const Bytes bytes = pointerTo(nodeRecord(0, 9, 0)).sealed();
    vxLoadingArchive archive(bytes);
    NodeHandle node;
    long number = 0;
    EXPECT_ERROR_CLASS(archive || node, vxArchive::BadReference);
    EXPECT_ERROR_CLASS(archive || node, vxArchive::Misuse);
    EXPECT_ERROR_CLASS(archive || number, vxArchive::Misuse);
    EXPECT_ERROR_CLASS(archive.finish(), vxArchive::Misuse);
}

TEST(LoadingCore, AHandleLoadedFirstOutlivesTheArchive) {
    NodeHandle node;
    {
        const Bytes bytes = stored(NodeHandle(new Node(4)));
        vxLoadingArchive archive(bytes);
        archive || node;
    }
    EXPECT_EQ(node->value, 4);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*node), 1);
}

TEST(LoadingCore, AReferenceOfTheWrongClassInsideARecordIsNull) {
    Payload content = Payload().u32(2).firstRecord(0, "test::Stranger", Payload().byte(0));
    content.firstRecord(1, "test::Node", nodeRecord(5, 1, 1)).u32(2);
    NodeHandle node;
    load(content.sealed(), node);
    EXPECT_EQ(node->value, 5);
    EXPECT_TRUE(node->left.isNull());
    EXPECT_TRUE(node->right.isNull());
    EXPECT_EQ(Stranger::living, 0);
}

} // namespace
