#include <vxclassifier/platform/exception.h>

#include "platform/status/code_points.h"
#include "platform/status/exception_numbers.h"
#include "platform/status/rethrow.h"

#include <vxclassifier/platform/archive.h>

#include <ostream>
#include <sstream>
#include <utility>

namespace detail {

/// A message in both forms, made once, so that what() cannot fail.
struct ExceptionText {
    std::wstring wide;
    std::string utf8;
};

} // namespace detail

namespace {

std::shared_ptr<const detail::ExceptionText> makeText(const std::wstring& message) {
    if (message.empty()) {
        return nullptr;
    }
    return std::make_shared<const detail::ExceptionText>(
        detail::ExceptionText{message, detail::toUtf8(message)});
}

void exchangeVersion(vxArchive& archive) {
    unsigned char version = 0;
    archive || version;
    if (version != 0) {
        throw vxArchive::UnknownVersion(nullptr, 0);
    }
}

} // namespace

vxException::~vxException() = default;

const char* vxException::what() const noexcept {
    return "";
}

std::wstring vxException::message() const {
    std::wostringstream out;
    // A stream that runs out of memory would keep that to itself and leave the rest of the text out.
    out.exceptions(std::ios_base::badbit);
    message_(out);
    return out.str();
}

void vxException::dispatchSerialize(vxArchive& archive) {
    if (haveVisited(this, sizeof(vxException))) {
        return;
    }
    exchangeVersion(archive);
    serialize_(archive, 0);
    setVisited(this, sizeof(vxException));
}

void vxException::serialize_(vxArchive& archive, unsigned char version) {
    if (version != 0) {
        throw vxArchive::UnknownVersion(nullptr, 0);
    }
    vxPersistent::dispatchSerialize(archive);
}

vxExceptionWithString::vxExceptionWithString() noexcept = default;
vxExceptionWithString::vxExceptionWithString(const std::wstring& message) : text_(makeText(message)) {}
vxExceptionWithString::vxExceptionWithString(const vxExceptionWithString&) noexcept = default;
vxExceptionWithString& vxExceptionWithString::operator=(const vxExceptionWithString&) noexcept = default;
vxExceptionWithString::~vxExceptionWithString() = default;

const char* vxExceptionWithString::what() const noexcept {
    return text_ ? text_->utf8.c_str() : "";
}

void vxExceptionWithString::message_(std::wostream& out) const {
    if (text_) {
        out << text_->wide;
    }
}

void vxExceptionWithString::dispatchSerialize(vxArchive& archive) {
    if (haveVisited(this, sizeof(vxExceptionWithString))) {
        return;
    }
    exchangeVersion(archive);
    serialize_(archive, 0);
    setVisited(this, sizeof(vxExceptionWithString));
}

void vxExceptionWithString::serialize_(vxArchive& archive, unsigned char version) {
    if (version != 0) {
        throw vxArchive::UnknownVersion(nullptr, 0);
    }
    vxException::dispatchSerialize(archive);
    std::wstring text = text_ ? text_->wide : std::wstring();
    archive || text;
    if (archive.isLoading()) {
        text_ = makeText(text);
    }
}

vxBadPointer::vxBadPointer() : vxBadPointer(L"A null pointer was used where an object is needed.") {}
vxBadPointer::vxBadPointer(const std::wstring& message) : vxExceptionWithString(message) {}
vxBadPointer::vxBadPointer(const vxBadPointer&) noexcept = default;
vxBadPointer& vxBadPointer::operator=(const vxBadPointer&) noexcept = default;
vxBadPointer::~vxBadPointer() = default;
long vxBadPointer::errorNumber() const {
    return detail::errorNumber::badPointer;
}
void vxBadPointer::suicideAndRethrow() {
    detail::deleteAndRethrow(this);
}
