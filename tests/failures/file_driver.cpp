// A program that replaces or reads one file, for writing_test.py to fail and kill at each of its system
// calls:
//
//     file_driver replace PATH TEXT COUNT    gives the file TEXT repeated COUNT times
//     file_driver read PATH                  prints the file
//
// The exit status is 0 after a success, 1 after an exception of the archive's, and 2 after anything else.
// With SHORTEN set in the environment, no single call writes or reads more than that many bytes.

#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/archive_file.h>

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

std::size_t longestTransfer() {
    const char* const shorten = std::getenv("SHORTEN");
    return shorten == nullptr ? static_cast<std::size_t>(-1) : std::strtoul(shorten, nullptr, 10);
}

/// Shows in the trace where the operation begins and where it ends.
void mark(const char* name) {
    static_cast<void>(::access(name, F_OK)); // that there is no such file is what it is to show
}

void replace(const std::string& path, const std::string& text, unsigned long count) {
    std::vector<unsigned char> bytes;
    for (unsigned long i = 0; i < count; ++i) {
        bytes.insert(bytes.end(), text.begin(), text.end());
    }
    mark("/operation-begins");
    vfReplaceFile(path, bytes);
}

void read(const std::string& path) {
    mark("/operation-begins");
    const std::vector<unsigned char> bytes = vfReadFile(path);
    mark("/operation-ends");
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
}

int perform(const std::vector<std::string>& arguments) {
    try {
        if (arguments.size() == 4 && arguments[0] == "replace") {
            replace(arguments[1], arguments[2], std::stoul(arguments[3]));
        } else if (arguments.size() == 2 && arguments[0] == "read") {
            read(arguments[1]);
        } else {
            return 2;
        }
    } catch (const vxArchive::Errors&) {
        return 1; // in silence: while every write fails, a message would wait for one that does not
    }
    mark("/operation-ends");
    return 0;
}

} // namespace

// The library calls these in place of the system's.
extern "C" ssize_t write(int file, const void* bytes, std::size_t count) {
    return ::syscall(SYS_write, file, bytes, std::min(count, longestTransfer()));
}
extern "C" ssize_t read(int file, void* bytes, std::size_t count) {
    return ::syscall(SYS_read, file, bytes, std::min(count, longestTransfer()));
}

int main(int argc, char** argv) {
    return perform(std::vector<std::string>(argv + 1, argv + argc));
}
