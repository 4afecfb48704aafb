#ifndef VXCLASSIFIER_PLATFORM_ARCHIVE_H
#define VXCLASSIFIER_PLATFORM_ARCHIVE_H

#include <vxclassifier/platform/archive_handle.h>
#include <vxclassifier/platform/archive_vector.h>
#include <vxclassifier/platform/exception.h>
#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/persistent.h>

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace detail {
class StoringCore;
class LoadingCore;
class ArchiveAccess;
} // namespace detail

/// A sequence of values that is either being written or being read; `archive || value` does the one or the
/// other, so that one piece of code describes both directions. Make a vxStoringArchive or a vxLoadingArchive.
///
/// The bytes are the same on every machine (docs/archive-format.md). The numbers of type `long` are 32 bits
/// wide in an archive.
///
/// Initial state: open, in one direction. After finish(), and after an operation of the archive that failed
/// (what follows a half exchanged value would be misread), every operation throws vxArchive::Misuse.
///
/// Ownership: see the two derived classes.
///
/// Threads: an archive belongs to one thread at a time. Several threads may store objects that they share,
/// each into an archive of its own.
class VXCLASSIFIER_API vxArchive {
public:
    class Errors;
    class UnknownVersion;
    class ShortData;
    class CorruptFrame;
    class CorruptData;
    class UnknownClass;
    class BadReference;
    class TooLarge;
    class NotRepresentable;
    class WriteFailed;
    class Misuse;
    class ReadFailed;

    vxArchive(const vxArchive&) = delete;
    vxArchive& operator=(const vxArchive&) = delete;

    bool isStoring() const noexcept { return storing_ != nullptr; }
    bool isLoading() const noexcept { return loading_ != nullptr; }

    /// A 32-bit signed number. Storing one that does not fit throws NotRepresentable.
    vxArchive& operator||(long& value);
    /// A 32-bit unsigned number. Storing one that does not fit throws NotRepresentable.
    vxArchive& operator||(unsigned long& value);
    /// A double, bit for bit, NaN payloads included.
    vxArchive& operator||(double& value);
    /// A text: a 32-bit count and one 32-bit Unicode code point per character. Storing a character beyond the
    /// last code point throws NotRepresentable, loading one throws CorruptData. Half of a surrogate pair
    /// passes, since a text can hold one.
    vxArchive& operator||(std::wstring& value);

protected:
    explicit vxArchive(detail::StoringCore& core) noexcept : storing_(&core) {}
    explicit vxArchive(detail::LoadingCore& core) noexcept : loading_(&core) {}
    ~vxArchive() = default;

private:
    friend class detail::ArchiveAccess;

    // Exactly one of the two is set.
    detail::StoringCore* storing_ = nullptr;
    detail::LoadingCore* loading_ = nullptr;
};

/// An archive that is being written.
///
/// Initial state: open and empty. Nothing reaches the destination before finish(): an archive that ends
/// without it, because an exception passed by, has written nothing.
///
/// Ownership: a stream is borrowed until finish() returns. Counted objects stored by pointer are kept alive
/// until then.
///
/// Threads: as for vxArchive.
class VXCLASSIFIER_API vxStoringArchive final : public vxArchive {
public:
    /// Writes to memory: bytes() after finish().
    vxStoringArchive();

    /// Writes to a binary stream, in finish(). A stream that its owner told to throw does so instead of
    /// vxArchive::WriteFailed.
    explicit vxStoringArchive(std::ostream& destination);

    ~vxStoringArchive();

    /// Seals the archive and hands it to its destination. Throws WriteFailed when the stream reports an
    /// error, Misuse when the archive is finished already or an operation on it had failed.
    void finish();

    /// The finished archive; empty before finish() and for an archive written to a stream.
    const std::vector<unsigned char>& bytes() const noexcept;

private:
    explicit vxStoringArchive(std::unique_ptr<detail::StoringCore> core, std::ostream* destination) noexcept;

    std::unique_ptr<detail::StoringCore> core_; // never null
    std::ostream* destination_;                 // null: memory
    std::vector<unsigned char> bytes_;
};

/// An archive that is being read.
///
/// Initial state: open, at its beginning. The frame is verified when the archive is opened, before any object
/// is made: a file that is cut short, extended or damaged throws CorruptFrame (ShortData when its end is
/// missing).
///
/// Ownership: memory is borrowed and must stay unchanged until the archive ends; a stream is read to its end
/// in the constructor. Counted objects that were loaded are kept alive until finish(); what nobody took is
/// freed then.
///
/// Threads: as for vxArchive.
class VXCLASSIFIER_API vxLoadingArchive final : public vxArchive {
public:
    /// Reads from memory; `bytes` may be null only if `size` is 0.
    vxLoadingArchive(const void* bytes, std::size_t size);
    explicit vxLoadingArchive(const std::vector<unsigned char>& bytes);
    explicit vxLoadingArchive(std::vector<unsigned char>&&) = delete;

    /// Reads a binary stream, which must hold nothing else, to its end. A stream that its owner told to throw
    /// at its end does so.
    explicit vxLoadingArchive(std::istream& source);

    ~vxLoadingArchive();

    /// Ends the reading. Throws CorruptData when something is left that was not read.
    void finish();

private:
    explicit vxLoadingArchive(std::unique_ptr<detail::LoadingCore> core) noexcept;

    std::unique_ptr<detail::LoadingCore> core_; // never null
};

/// Exchanges one byte.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, unsigned char& value);

/// Base of all errors of the archive itself.
///
/// Initial state: the given message. Ownership and threads: as for vxException.
class VXCLASSIFIER_API vxArchive::Errors : public vxExceptionWithString {
public:
    ~Errors() override;

protected:
    explicit Errors(const std::wstring& message);
    Errors(const Errors&) noexcept;
    Errors& operator=(const Errors&) noexcept;
};

/// A version byte that this release does not know.
///
/// Initial state: the given place. Ownership: the name is borrowed and must be a literal. Threads: as for
/// vxException.
class VXCLASSIFIER_API vxArchive::UnknownVersion : public vxArchive::Errors {
public:
    /// `sourceName` may be null: nothing is known of the place.
    UnknownVersion(const char* sourceName, long line);
    UnknownVersion(const UnknownVersion&) noexcept;
    UnknownVersion& operator=(const UnknownVersion&) noexcept;
    ~UnknownVersion() override;

    /// The class or source file that met the version, or null.
    const char* sourceName() const noexcept { return sourceName_; }
    long line() const noexcept { return line_; }

    long errorNumber() const override;
    void suicideAndRethrow() override;

private:
    const char* sourceName_;
    long line_;
};

// Initial state of each: the given message. Ownership and threads: as for vxException.
#define VXCLASSIFIER_ARCHIVE_ERROR(Name)                                                                     \
    class VXCLASSIFIER_API vxArchive::Name : public vxArchive::Errors {                                      \
    public:                                                                                                  \
        explicit Name(const std::wstring& message);                                                          \
        Name(const Name&) noexcept;                                                                          \
        Name& operator=(const Name&) noexcept;                                                               \
        ~Name() override;                                                                                    \
        long errorNumber() const override;                                                                   \
        void suicideAndRethrow() override;                                                                   \
    }

/// The data end before what is to be read.
VXCLASSIFIER_ARCHIVE_ERROR(ShortData);
/// What should be a sealed archive is none, or has been damaged.
VXCLASSIFIER_ARCHIVE_ERROR(CorruptFrame);
/// The bytes are not what storing would have written, or more of them are left than were read.
VXCLASSIFIER_ARCHIVE_ERROR(CorruptData);
/// An object is of a class that is not registered.
VXCLASSIFIER_ARCHIVE_ERROR(UnknownClass);
/// A reference to an object that is not there, or objects that refer to each other in a circle.
VXCLASSIFIER_ARCHIVE_ERROR(BadReference);
/// A size for which there are not enough bytes, or that an archive cannot express.
VXCLASSIFIER_ARCHIVE_ERROR(TooLarge);
/// A value that the archive's form of it cannot hold.
VXCLASSIFIER_ARCHIVE_ERROR(NotRepresentable);
/// The destination did not take the bytes.
VXCLASSIFIER_ARCHIVE_ERROR(WriteFailed);
/// An operation that the archive's state or direction does not allow.
VXCLASSIFIER_ARCHIVE_ERROR(Misuse);
/// A file could not be read.
VXCLASSIFIER_ARCHIVE_ERROR(ReadFailed);

#undef VXCLASSIFIER_ARCHIVE_ERROR

#endif
