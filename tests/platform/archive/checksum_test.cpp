#include "platform/archive/checksum.h"

#include "tests/platform/archive/test_objects.h"
#include "tests/support/archive_bytes.h"
#include "tests/support/archives.h"

#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <random>

namespace {

using detail::Checksum;
using test::Bytes;
using test::Node;

Bytes randomBytes(std::size_t size) {
    std::mt19937 random(3);
    Bytes bytes(size);
    for (unsigned char& byte : bytes) {
        byte = static_cast<unsigned char>(random());
    }
    return bytes;
}

TEST(ArchiveChecksum, IsThatOfTheDefinition) {
    for (const std::size_t size : {0u, 1u, 9u, 255u, 256u, 1000u, 70000u}) {
        const Bytes bytes = randomBytes(size);
        EXPECT_EQ(detail::crc32c(bytes.data(), size), test::crc32c(bytes)) << size;
    }
}

TEST(ArchiveChecksum, DoesNotDependOnTheParts) {
    const Bytes bytes = randomBytes(5000);
    const std::uint32_t whole = test::crc32c(bytes);
    for (const std::size_t first : {0u, 1u, 7u, 256u, 4095u, 4096u, 4999u, 5000u}) {
        Checksum added;
        added.add(bytes.data(), first);
        Checksum second;
        second.add(bytes.data() + first, bytes.size() - first);
        Checksum appended = added;
        added.add(bytes.data() + first, bytes.size() - first);
        appended.append(second);
        for (const Checksum& sum : {added, appended}) {
            EXPECT_EQ(sum.value(), whole) << first;
            EXPECT_EQ(sum.size(), bytes.size());
        }
    }
}

TEST(ArchiveChecksum, GoesOnAfterASumWasAppended) {
    const Bytes bytes = randomBytes(3000);
    Checksum sum;
    for (std::size_t at = 0; at < bytes.size(); at += 300) {
        Checksum part;
        part.add(bytes.data() + at, 200);
        sum.append(part);
        sum.add(bytes.data() + at + 200, 100);
    }
    EXPECT_EQ(sum.value(), test::crc32c(bytes));
}

/// A chain of so many nodes, each of which refers to the next one.
vxPtrHandle<Node> chainOf(long count) {
    vxPtrHandle<Node> first;
    for (long i = 0; i < count; ++i) {
        const vxPtrHandle<Node> next(new Node(i));
        next->left = first;
        first = next;
    }
    return first;
}

/// A chain, each of whose nodes has a leaf beside it. The leaves' records are complete at once, and the
/// memory for them runs out within some of them.
vxPtrHandle<Node> combOf(long count) {
    vxPtrHandle<Node> first = chainOf(count);
    for (Node* node = first.get(); node != nullptr; node = node->left.get()) {
        node->right = vxPtrHandle<Node>(new Node(node->value));
    }
    return first;
}

TEST(ArchiveChecksum, OfManyRecordsThatStayWhereTheyAreIsThatOfThePayload) {
    const Bytes sealed = test::archiveOf([&](vxArchive& archive) {
        for (const long count : {1000L, 4000L, 30L, 2500L, 4001L, 7000L}) {
            vxPtrHandle<Node> comb = combOf(count);
            archive || comb;
        }
    });
    EXPECT_EQ(sealed, test::Payload().append(test::payload(sealed)).sealed());
}

TEST(ArchiveChecksum, OfAnArchiveIsThatOfItsPayloadHoweverItGrew) {
    std::vector<double> doubles(3000, 0.5);
    std::wstring text(5000, L't');
    const Bytes sealed = test::archiveOf([&](vxArchive& archive) {
        for (const long count : {0L, 1L, 3000L, 20L, 2000L, 2001L, 9000L, 0L, 5L}) { // graphs of all sizes
            vxPtrHandle<Node> chain = chainOf(count);
            archive || doubles || chain || text || chain;
            Node embedded(count);
            embedded.left = chainOf(count / 2);
            archive || embedded || doubles;
        }
    });
    const Bytes payload = test::payload(sealed);
    EXPECT_EQ(sealed, test::Payload().append(payload).sealed());
}

} // namespace
