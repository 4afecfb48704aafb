#include <vxclassifier/platform/archive_file.h>

#include <vxclassifier/platform/archive.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

namespace {

std::wstring wide(const std::string& text) {
    std::wstring result;
    for (const char character : text) {
        // Names are bytes in an encoding that only the user knows.
        const bool isAscii = static_cast<unsigned char>(character) < 0x80;
        result.push_back(isAscii ? static_cast<wchar_t>(character) : L'?');
    }
    return result;
}

/// Throws the error of the system call that has just failed.
template <class Error>
[[noreturn]] void throwLastError(const char* step, const std::string& path) {
    const int error = errno; // before anything below changes it
    const std::string reason = std::generic_category().message(error);
    throw Error(wide(std::string("Could not ") + step + " " + path + ": " + reason + "."));
}

/// The system would take a name with a zero in it for a shorter one.
template <class Error>
void requireWholeName(const std::string& path) {
    if (path.find('\0') != std::string::npos) {
        throw Error(L"The name of a file must not hold a zero byte.");
    }
}

/// Repeats a system call as long as signals interrupt it.
template <class Call>
auto retried(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

/// An open file, closed at the end; -1 stands for none.
class Descriptor {
public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    ~Descriptor() {
        if (number_ != -1) {
            ::close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const noexcept { return number_; }
    bool isOpen() const noexcept { return number_ != -1; }

    /// Closes now, where failing to matters. It is not repeated after a signal: the number may already belong
    /// to another thread's file.
    int close() noexcept { return ::close(std::exchange(number_, -1)); }

private:
    int number_;
};

std::atomic<unsigned long> temporaries{0};

/// A new file in a folder, which is removed again unless it takes the place of another one.
class Temporary {
public:
    Temporary(const std::string& folder, mode_t mode) : file_(create(folder, mode, path_)) {
        if (!file_.isOpen()) {
            throwLastError<vxArchive::WriteFailed>("make a file in", folder);
        }
    }
    ~Temporary() {
        if (!path_.empty()) {
            ::unlink(path_.c_str());
        }
    }
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;

    Descriptor& file() noexcept { return file_; }

    void takePlaceOf(const std::string& target) {
        if (::rename(path_.c_str(), target.c_str()) != 0) {
            throwLastError<vxArchive::WriteFailed>("put the new file in the place of", target);
        }
        path_.clear();
    }

private:
    /// Opens a file that did not exist, and tells its path.
    static int create(const std::string& folder, mode_t mode, std::string& path) {
        constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
        constexpr int mostAttempts = 1000; // processes that were killed may have left theirs behind
        for (int attempt = 0; attempt < mostAttempts; ++attempt) {
            path = folder + "/.vxclassifier-" + std::to_string(::getpid()) + "-" +
                   std::to_string(temporaries.fetch_add(1));
            const int file = retried([&] { return ::open(path.c_str(), flags, mode); });
            if (file != -1 || errno != EEXIST) {
                return file;
            }
        }
        return -1;
    }

    std::string path_; // empty once it has taken its place
    Descriptor file_;
};

/// The file that `path` names in the end, whether it exists or not.
std::string followLinks(const std::string& path) {
    std::string target = path;
    constexpr int mostLinks = 40; // what the system itself follows
    for (int links = 0; links <= mostLinks; ++links) {
        char content[4096];
        const ssize_t length = ::readlink(target.c_str(), content, sizeof content);
        if (length < 0) {
            if (errno == EINVAL || errno == ENOENT || errno == ENOTDIR) {
                return target; // no link; whether it is a file will show
            }
            // What may be a link must not be taken for a file: the new one would replace the link.
            throwLastError<vxArchive::WriteFailed>("follow the links of", path);
        }
        const std::string next(content, static_cast<std::size_t>(length));
        const std::size_t slash = target.rfind('/');
        const bool isRelative = next.empty() || next.front() != '/';
        target = isRelative && slash != std::string::npos ? target.substr(0, slash + 1).append(next) : next;
    }
    errno = ELOOP;
    throwLastError<vxArchive::WriteFailed>("follow the links of", path);
}

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

/// The permission bits of the file that is there; none if there is no file.
std::optional<mode_t> permissionsOf(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        if (errno == ENOENT) {
            return std::nullopt;
        }
        throwLastError<vxArchive::WriteFailed>("examine", path);
    }
    if (!S_ISREG(status.st_mode)) {
        // A device is not a thing to put a file in the place of.
        errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        throwLastError<vxArchive::WriteFailed>("replace", path);
    }
    return status.st_mode & 07777;
}

void writeAll(int file, const std::vector<unsigned char>& bytes, const std::string& path) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count =
            retried([&] { return ::write(file, bytes.data() + written, bytes.size() - written); });
        if (count == 0) {
            errno = EIO; // nothing was written and nothing said why, so the next attempt might do the same
        }
        if (count <= 0) {
            throwLastError<vxArchive::WriteFailed>("write", path);
        }
        written += static_cast<std::size_t>(count);
    }
}

void flush(const Descriptor& file, const char* step, const std::string& path) {
    if (retried([&] { return ::fsync(file.get()); }) != 0) {
        throwLastError<vxArchive::WriteFailed>(step, path);
    }
}

void flushFolder(const std::string& path) {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    const Descriptor folder(retried([&] { return ::open(path.c_str(), flags); }));
    if (!folder.isOpen()) {
        throwLastError<vxArchive::WriteFailed>("open the folder", path);
    }
    flush(folder, "flush the folder", path);
}

} // namespace

void vfReplaceFile(const std::string& path, const std::vector<unsigned char>& bytes) {
    requireWholeName<vxArchive::WriteFailed>(path);
    const std::string target = followLinks(path);
    const std::string folder = folderOf(target);
    const std::optional<mode_t> permissions = permissionsOf(target);

    // A new file gets what the process gives to all its files; the bytes of one that others may not read are
    // not shown to them for a moment either.
    Temporary temporary(folder, permissions ? 0600 : 0666);
    Descriptor& file = temporary.file();
    writeAll(file.get(), bytes, target);
    if (permissions && ::fchmod(file.get(), *permissions) != 0) {
        throwLastError<vxArchive::WriteFailed>("set the permissions of", target);
    }
    flush(file, "flush", target);
    if (file.close() != 0) {
        throwLastError<vxArchive::WriteFailed>("close", target);
    }
    temporary.takePlaceOf(target);
    flushFolder(folder);
}

std::vector<unsigned char> vfReadFile(const std::string& path) {
    requireWholeName<vxArchive::ReadFailed>(path);
    const Descriptor file(retried([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (!file.isOpen()) {
        throwLastError<vxArchive::ReadFailed>("open", path);
    }
    constexpr std::size_t block = std::size_t{1} << 16;
    std::vector<unsigned char> bytes;
    for (;;) {
        const std::size_t before = bytes.size();
        bytes.resize(before + block);
        const ssize_t count = retried([&] { return ::read(file.get(), bytes.data() + before, block); });
        if (count < 0) {
            throwLastError<vxArchive::ReadFailed>("read", path);
        }
        bytes.resize(before + static_cast<std::size_t>(count));
        if (count == 0) {
            return bytes;
        }
    }
}
