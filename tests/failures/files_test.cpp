#include "tests/failures/faults.h"

#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/archive_file.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

// Replacing and reading a file without memory. What the system calls do that it is made of is in
// writing_test.py.

namespace {

using namespace failures;
namespace fs = std::filesystem;

using Bytes = std::vector<unsigned char>;

/// A folder of its own, with a file in it that is reached through a link.
struct FolderWithFile {
    std::string path = newFolder();
    std::string target = path + "/file";
    std::string link = path + "/link";
    Bytes before = Bytes(100, 1);

    FolderWithFile() {
        vfReplaceFile(target, before);
        fs::create_symlink("file", link);
    }
    ~FolderWithFile() { fs::remove_all(path); }
    FolderWithFile(const FolderWithFile&) = delete;
    FolderWithFile& operator=(const FolderWithFile&) = delete;

    void expectContent(const Bytes& content) const {
        EXPECT_EQ(vfReadFile(target), content);
        EXPECT_EQ(std::distance(fs::directory_iterator(path), fs::directory_iterator()), 2)
            << "the file and the link, and no temporary";
    }

private:
    static std::string newFolder() {
        std::string pattern = (fs::temp_directory_path() / "files_test_XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no folder for the test");
        }
        return pattern;
    }
};

struct Replace : FolderWithFile {
    Bytes after = Bytes(100000, 7);
    void attempt() { vfReplaceFile(link, after); }
    void expectDone() const { expectContent(after); }
    void expectFailed() const { expectContent(before); }
};

struct Read : FolderWithFile {
    Bytes bytes;
    void attempt() { bytes = vfReadFile(link); }
    void expectDone() const { EXPECT_EQ(bytes, before); }
    void expectFailed() const { EXPECT_TRUE(bytes.empty()); }
};

/// That the file is not there has to be said, which takes memory too.
struct ReadMissing : FolderWithFile {
    std::string message;
    void attempt() {
        try {
            vfReadFile(path + "/missing");
        } catch (const vxArchive::ReadFailed& error) {
            message = error.what();
        }
    }
    void expectDone() const { EXPECT_NE(message.find("/missing: No such file"), std::string::npos); }
    void expectFailed() const { EXPECT_EQ(message, ""); }
};

TEST(FailingFile, IsTheOldOneWithoutATemporaryWhenMemoryEnds) {
    failEachStepOf<Replace>(allocationFaults());
}

TEST(FailingFile, IsReadAltogetherOrNotAtAll) {
    failEachStepOf<Read>(allocationFaults());
    failEachStepOf<ReadMissing>(allocationFaults());
}

} // namespace
