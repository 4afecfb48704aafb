#include "tests/support/expect_error.h"

#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/archive_file.h>

#include <gtest/gtest.h>

#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;
namespace fs = std::filesystem;

const Bytes oldBytes = {1, 2, 3};
const Bytes newBytes(100000, 7);

std::wstring wide(const std::string& ascii) {
    return std::wstring(ascii.begin(), ascii.end());
}

mode_t permissionsOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

/// Works in a folder of its own, which it removes.
class ArchiveFile : public ::testing::Test {
protected:
    ArchiveFile() {
        std::string pattern = (fs::temp_directory_path() / "archive_file_XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no folder for the test");
        }
        folder_ = pattern;
    }
    ~ArchiveFile() override {
        ::chmod(folder_.c_str(), 0700);
        fs::remove_all(folder_);
    }

    std::string at(const std::string& name) const { return folder_ + "/" + name; }

    std::set<std::string> names() const {
        std::set<std::string> found;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder_)) {
            found.insert(entry.path().filename().string());
        }
        return found;
    }

    std::string folder_;
};

/// The permissions of the superuser would let everything through.
class WithoutPrivileges {
public:
    WithoutPrivileges() {
        constexpr uid_t nobody = 65534;
        if (::geteuid() == 0 && ::seteuid(nobody) != 0) {
            throw std::runtime_error("the superuser cannot step back");
        }
    }
    ~WithoutPrivileges() {
        if (::seteuid(::getuid()) != 0) {
            std::abort();
        }
    }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;
};

/// Files of this process can grow to `size` bytes and no further.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t size) : previousHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &previous_);
        rlimit limited = previous_;
        limited.rlim_cur = size;
        ::setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &previous_);
        std::signal(SIGXFSZ, previousHandler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*previousHandler_)(int);
    rlimit previous_{};
};

/// The number in the name of the temporary that replacing `path` makes in `folder`.
unsigned long numberOfTemporary(const std::string& folder, const std::string& path) {
    const int events = ::inotify_init1(IN_CLOEXEC);
    ::inotify_add_watch(events, folder.c_str(), IN_CREATE);
    vfReplaceFile(path, newBytes);
    alignas(inotify_event) char buffer[sizeof(inotify_event) + NAME_MAX + 1] = {};
    const bool isRead = ::read(events, buffer, sizeof buffer) > 0;
    ::close(events);
    const std::string name = buffer + offsetof(inotify_event, name);
    const std::string prefix = ".vxclassifier-" + std::to_string(::getpid()) + "-";
    if (!isRead || name.compare(0, prefix.size(), prefix) != 0) {
        throw std::runtime_error("no temporary was made");
    }
    return std::stoul(name.substr(prefix.size()));
}

TEST_F(ArchiveFile, AFileIsMadeAndReadBack) {
    vfReplaceFile(at("new"), newBytes);
    EXPECT_EQ(vfReadFile(at("new")), newBytes);
    EXPECT_EQ(names(), (std::set<std::string>{"new"})) << "no temporary is left";
}

TEST_F(ArchiveFile, AnEmptyFileIsOne) {
    vfReplaceFile(at("empty"), {});
    EXPECT_EQ(vfReadFile(at("empty")), Bytes());
}

TEST_F(ArchiveFile, TheNewContentReplacesTheOldOne) {
    vfReplaceFile(at("file"), newBytes);
    vfReplaceFile(at("file"), oldBytes);
    EXPECT_EQ(vfReadFile(at("file")), oldBytes);
    EXPECT_EQ(names(), (std::set<std::string>{"file"}));
}

TEST_F(ArchiveFile, AReaderOfTheOldFileKeepsTheOldFile) {
    vfReplaceFile(at("file"), oldBytes);
    std::ifstream reader(at("file"), std::ios::binary);
    vfReplaceFile(at("file"), newBytes);
    EXPECT_EQ(Bytes(std::istreambuf_iterator<char>(reader), {}), oldBytes);
}

TEST_F(ArchiveFile, AFileKeepsItsPermissions) {
    vfReplaceFile(at("file"), oldBytes);
    for (const mode_t mode : {0600U, 0640U, 0666U, 0444U}) {
        ASSERT_EQ(::chmod(at("file").c_str(), mode), 0);
        vfReplaceFile(at("file"), newBytes);
        EXPECT_EQ(permissionsOf(at("file")), mode);
    }
}

TEST_F(ArchiveFile, ANewFileGetsThePermissionsThatTheProcessGives) {
    const mode_t previous = ::umask(027);
    vfReplaceFile(at("file"), oldBytes);
    ::umask(previous);
    EXPECT_EQ(permissionsOf(at("file")), 0640U);
}

TEST_F(ArchiveFile, ALinkStaysAndItsTargetIsReplaced) {
    fs::create_directory(at("elsewhere"));
    vfReplaceFile(at("elsewhere/target"), oldBytes);
    fs::create_symlink("elsewhere/middle", at("link"));
    fs::create_symlink("target", at("elsewhere/middle"));
    vfReplaceFile(at("link"), newBytes);
    EXPECT_TRUE(fs::is_symlink(at("link")));
    EXPECT_TRUE(fs::is_symlink(at("elsewhere/middle")));
    EXPECT_FALSE(fs::is_symlink(at("elsewhere/target")));
    EXPECT_EQ(vfReadFile(at("elsewhere/target")), newBytes);
    EXPECT_EQ(names(), (std::set<std::string>{"elsewhere", "link"}));
}

TEST_F(ArchiveFile, ALinkToAFileThatIsNotThereMakesThatFile) {
    fs::create_symlink(at("target"), at("link"));
    vfReplaceFile(at("link"), newBytes);
    EXPECT_TRUE(fs::is_symlink(at("link")));
    EXPECT_EQ(vfReadFile(at("target")), newBytes);
}

TEST_F(ArchiveFile, ALinkInTheCurrentFolderIsFollowedThere) {
    const fs::path before = fs::current_path();
    fs::current_path(folder_);
    fs::create_symlink("target", "link");
    vfReplaceFile("link", newBytes);
    fs::current_path(before);
    EXPECT_TRUE(fs::is_symlink(at("link")));
    EXPECT_EQ(vfReadFile(at("target")), newBytes);
    EXPECT_EQ(names(), (std::set<std::string>{"link", "target"}));
}

TEST_F(ArchiveFile, WhatAKilledProcessLeftBehindIsNotTouched) {
    const std::string prefix = ".vxclassifier-" + std::to_string(::getpid()) + "-";
    const unsigned long next = numberOfTemporary(folder_, at("file")) + 1;
    std::set<std::string> expected{"file"};
    for (unsigned long i = next; i < next + 1000; ++i) {
        std::ofstream(at(prefix + std::to_string(i))) << "left";
        expected.insert(prefix + std::to_string(i));
    }
    EXPECT_ERROR(vfReplaceFile(at("file"), oldBytes), vxArchive::WriteFailed,
                 L"Could not make a file in " + wide(folder_) + L": File exists.");
    EXPECT_EQ(vfReadFile(at("file")), newBytes);
    EXPECT_EQ(names(), expected);

    std::ofstream(at(prefix + std::to_string(next + 1000))) << "left";
    expected.insert(prefix + std::to_string(next + 1000));
    vfReplaceFile(at("file"), oldBytes); // takes the second free number
    EXPECT_EQ(vfReadFile(at("file")), oldBytes);
    EXPECT_EQ(names(), expected);
    EXPECT_EQ(fs::file_size(at(prefix + std::to_string(next + 1000))), 4U);
}

TEST_F(ArchiveFile, LinksThatLeadToEachOtherAreRefused) {
    fs::create_symlink("second", at("first"));
    fs::create_symlink("first", at("second"));
    EXPECT_ERROR(vfReplaceFile(at("first"), newBytes), vxArchive::WriteFailed,
                 L"Could not follow the links of " + wide(at("first")) +
                     L": Too many levels of symbolic links.");
}

TEST_F(ArchiveFile, AFolderThatIsNotThereIsNamed) {
    EXPECT_ERROR(vfReplaceFile(at("missing/file"), newBytes), vxArchive::WriteFailed,
                 L"Could not make a file in " + wide(at("missing")) + L": No such file or directory.");
    EXPECT_ERROR(vfReplaceFile("", newBytes), vxArchive::WriteFailed,
                 L"Could not put the new file in the place of : No such file or directory.");
}

TEST_F(ArchiveFile, TheFolderOfANameInTheRootIsTheRoot) {
    const WithoutPrivileges scope;
    EXPECT_ERROR(vfReplaceFile("/archive_file_test_of_nobody", newBytes), vxArchive::WriteFailed,
                 L"Could not make a file in /: Permission denied.");
}

TEST_F(ArchiveFile, AFolderIsNotReplaced) {
    fs::create_directory(at("folder"));
    EXPECT_ERROR(vfReplaceFile(at("folder"), newBytes), vxArchive::WriteFailed,
                 L"Could not replace " + wide(at("folder")) + L": Is a directory.");
    EXPECT_TRUE(fs::is_directory(at("folder")));
    EXPECT_EQ(names(), (std::set<std::string>{"folder"}));
}

TEST_F(ArchiveFile, ADeviceIsNotReplaced) {
    if (!fs::is_character_file("/dev/full")) {
        GTEST_SKIP() << "this system has no device that is always full";
    }
    EXPECT_ERROR(vfReplaceFile("/dev/full", newBytes), vxArchive::WriteFailed,
                 L"Could not replace /dev/full: Invalid argument.");
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(ArchiveFile, AFileInTheWayOfAFolderIsNamed) {
    vfReplaceFile(at("file"), oldBytes);
    EXPECT_ERROR(vfReplaceFile(at("file/below"), newBytes), vxArchive::WriteFailed,
                 L"Could not examine " + wide(at("file/below")) + L": Not a directory.");
}

TEST_F(ArchiveFile, AFolderThatMayNotBeWrittenLeavesTheOldFile) {
    vfReplaceFile(at("file"), oldBytes);
    ASSERT_EQ(::chmod(folder_.c_str(), 0555), 0);
    {
        const WithoutPrivileges scope;
        EXPECT_ERROR(vfReplaceFile(at("file"), newBytes), vxArchive::WriteFailed,
                     L"Could not make a file in " + wide(folder_) + L": Permission denied.");
    }
    EXPECT_EQ(vfReadFile(at("file")), oldBytes);
    EXPECT_EQ(names(), (std::set<std::string>{"file"}));
}

TEST_F(ArchiveFile, ADiskThatFillsUpLeavesTheOldFileAndNoTemporary) {
    vfReplaceFile(at("file"), oldBytes);
    for (const rlim_t room : {0U, 1U, 50000U, 99999U}) {
        const FileSizeLimit limit(room); // the last write is cut short, the next one fails
        EXPECT_ERROR(vfReplaceFile(at("file"), newBytes), vxArchive::WriteFailed,
                     L"Could not write " + wide(at("file")) + L": File too large.");
    }
    EXPECT_EQ(vfReadFile(at("file")), oldBytes);
    EXPECT_EQ(names(), (std::set<std::string>{"file"}));
}

TEST_F(ArchiveFile, ANameWithAZeroByteIsRefused) {
    const std::string name = at(std::string("file\0tail", 9));
    EXPECT_ERROR(vfReplaceFile(name, newBytes), vxArchive::WriteFailed,
                 L"The name of a file must not hold a zero byte.");
    EXPECT_ERROR(vfReadFile(name), vxArchive::ReadFailed, L"The name of a file must not hold a zero byte.");
    EXPECT_TRUE(names().empty());
}

TEST_F(ArchiveFile, ARelativeNameMeansTheCurrentFolder) {
    const fs::path before = fs::current_path();
    fs::current_path(folder_);
    vfReplaceFile("file", newBytes);
    const Bytes read = vfReadFile("file");
    fs::current_path(before);
    EXPECT_EQ(read, newBytes);
    EXPECT_EQ(names(), (std::set<std::string>{"file"}));
}

TEST_F(ArchiveFile, WhatCannotBeReadIsNamed) {
    EXPECT_ERROR(vfReadFile(at("missing")), vxArchive::ReadFailed,
                 L"Could not open " + wide(at("missing")) + L": No such file or directory.");
    EXPECT_ERROR(vfReadFile(folder_), vxArchive::ReadFailed,
                 L"Could not read " + wide(folder_) + L": Is a directory.");
}

TEST_F(ArchiveFile, WhatIsNotAsciiInANameIsShownAsQuestionMarks) {
    EXPECT_ERROR(vfReadFile(at("gr\xc3\xb6\xc3\x9f"
                               "e")),
                 vxArchive::ReadFailed,
                 L"Could not open " + wide(at("gr????e")) + L": No such file or directory.");
}

TEST_F(ArchiveFile, AnArchivePassesThroughAFile) {
    vxStoringArchive storing;
    double value = 2.5;
    storing || value;
    storing.finish();
    vfReplaceFile(at("archive"), storing.bytes());
    const Bytes bytes = vfReadFile(at("archive"));
    vxLoadingArchive loading(bytes);
    double loaded = 0.0;
    loading || loaded;
    loading.finish();
    EXPECT_EQ(loaded, 2.5);
}

} // namespace
