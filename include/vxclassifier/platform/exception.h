#ifndef VXCLASSIFIER_PLATFORM_EXCEPTION_H
#define VXCLASSIFIER_PLATFORM_EXCEPTION_H

#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/persistent.h>

#include <exception>
#include <iosfwd>
#include <memory>
#include <string>

namespace detail {
struct ExceptionText;
}

/// Base of all exceptions of the library and of the platform below it.
///
/// An application that knows nothing of the library can catch it as std::exception and print what().
///
/// Initial state: what the derived class sets.
///
/// Ownership: thrown by value. One that lies on the heap, because it came out of an archive, is rethrown and
/// freed by suicideAndRethrow.
///
/// Threads: an exception object is immutable once thrown, and may be read by several threads.
class VXCLASSIFIER_API vxException : public vxPersistent, public std::exception {
public:
    ~vxException() override;

    /// A number that names the kind of error; constant for each class.
    virtual long errorNumber() const = 0;

    /// Deletes this object, which must have been made with `new`, and throws a copy of it as its own class.
    virtual void suicideAndRethrow() = 0;

protected:
    /// Writes the message.
    virtual void message_(std::wostream& out) const = 0;

    void dispatchSerialize(vxArchive& archive) override;
    void serialize_(vxArchive& archive, unsigned char version);

public:
    /// The message as UTF-8, valid until this object changes or goes. A class that keeps its message in a
    /// form of its own overrides this together with message_; here it is empty.
    const char* what() const noexcept override;

    /// The message as the derived class writes it, whole. Throws what writing it throws (std::bad_alloc).
    std::wstring message() const;

protected:
    vxException() noexcept = default;
    vxException(const vxException&) noexcept = default;
    vxException& operator=(const vxException&) noexcept = default;
};

/// An exception that carries one text.
///
/// Initial state: an empty message, or the given one.
///
/// Ownership: the text is shared and immutable, so copying an exception cannot fail.
///
/// Threads: as for vxException.
class VXCLASSIFIER_API vxExceptionWithString : public vxException {
public:
    vxExceptionWithString() noexcept;
    explicit vxExceptionWithString(const std::wstring& message);
    vxExceptionWithString(const vxExceptionWithString&) noexcept;
    vxExceptionWithString& operator=(const vxExceptionWithString&) noexcept;
    ~vxExceptionWithString() override;

    const char* what() const noexcept override;

protected:
    void message_(std::wostream& out) const override;
    void dispatchSerialize(vxArchive& archive) override;
    void serialize_(vxArchive& archive, unsigned char version);

private:
    std::shared_ptr<const detail::ExceptionText> text_; // null stands for the empty message
};

/// A null handle was used where an object is needed, or an object is not of the class that is needed.
///
/// Initial state, ownership, threads: as for vxExceptionWithString.
class VXCLASSIFIER_API vxBadPointer : public vxExceptionWithString {
public:
    vxBadPointer();
    explicit vxBadPointer(const std::wstring& message);
    vxBadPointer(const vxBadPointer&) noexcept;
    vxBadPointer& operator=(const vxBadPointer&) noexcept;
    ~vxBadPointer() override;

    long errorNumber() const override;
    void suicideAndRethrow() override;
};

#endif
