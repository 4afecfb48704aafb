#include "tests/support/archives.h"

#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/ptr_handle.h>

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

// The class of the example has no namespace there, so it has none here.
class Link : public vxPersistent, public vxRepBase {
public:
    Link() = default;
    explicit Link(long aNumber) : number(aNumber) {}

    static vxPersistent* make() { return new Link; }

    long number = 0;
    vxPtrHandle<Link> next;

protected:
    void dispatchSerialize(vxArchive& archive) override {
        unsigned char version = 0;
        archive || version;
        vxPersistent::dispatchSerialize(archive);
        archive || number;
        archive || next;
    }

private:
    static const vx_Instantiator sExemplar;
};
const vx_Instantiator Link::sExemplar(typeid(Link), &Link::make);

namespace {

using test::Bytes;

/// The bytes of the block that the page shows: lines of an offset, bytes and an explanation, with two spaces
/// between them.
Bytes documentedBytes() {
    std::ifstream page(VXCLASSIFIER_SOURCE_DIR "/docs/archive-format.md");
    std::string line;
    while (std::getline(page, line) && line != "```archive") {
    }
    Bytes bytes;
    while (std::getline(page, line) && line != "```") {
        const std::size_t first = line.find("  ") + 2;
        EXPECT_EQ(std::stoul(line.substr(0, first), nullptr, 16), bytes.size())
            << "the offset is wrong: " << line;
        std::istringstream columns(line.substr(first, line.find("  ", first) - first));
        std::string byte;
        while (columns >> byte) {
            bytes.push_back(static_cast<unsigned char>(std::stoul(byte, nullptr, 16)));
        }
    }
    return bytes;
}

TEST(FormatExample, IsWhatTheLibraryWrites) {
    const Bytes written = test::archiveOf([](vxArchive& archive) {
        long seven = 7;
        vxPtrHandle<Link> first(new Link(1));
        first->next = vxPtrHandle<Link>(new Link(2));
        archive || seven;
        archive || first;
        archive || first->next;
    });
    EXPECT_EQ(documentedBytes(), written);
}

TEST(FormatExample, IsWhatTheLibraryReads) {
    const Bytes bytes = documentedBytes();
    vxLoadingArchive archive(bytes);
    long seven = 0;
    vxPtrHandle<Link> first;
    vxPtrHandle<Link> second;
    archive || seven;
    archive || first || second;
    archive.finish();
    EXPECT_EQ(seven, 7);
    EXPECT_EQ(first->number, 1);
    EXPECT_EQ(second->number, 2);
    EXPECT_EQ(first->next, second);
    EXPECT_TRUE(second->next.isNull());
}

} // namespace
