#include <vxclassifier/platform/archive.h>

#include "platform/status/code_points.h"
#include "platform/status/exception_numbers.h"
#include "platform/status/rethrow.h"

vxArchive::Errors::Errors(const std::wstring& message) : vxExceptionWithString(message) {}
vxArchive::Errors::Errors(const Errors&) noexcept = default;
vxArchive::Errors& vxArchive::Errors::operator=(const Errors&) noexcept = default;
vxArchive::Errors::~Errors() = default;

namespace {

std::wstring unknownVersionMessage(const char* sourceName, long line) {
    std::wstring message = L"The archive has a version that this release does not know.";
    if (sourceName != nullptr) {
        message += L" (" + detail::widened(sourceName) + L", " + std::to_wstring(line) + L")";
    }
    return message;
}

} // namespace

vxArchive::UnknownVersion::UnknownVersion(const char* sourceName, long line)
    : Errors(unknownVersionMessage(sourceName, line)), sourceName_(sourceName), line_(line) {}
vxArchive::UnknownVersion::UnknownVersion(const UnknownVersion&) noexcept = default;
vxArchive::UnknownVersion& vxArchive::UnknownVersion::operator=(const UnknownVersion&) noexcept = default;
vxArchive::UnknownVersion::~UnknownVersion() = default;
long vxArchive::UnknownVersion::errorNumber() const {
    return detail::errorNumber::unknownVersion;
}
void vxArchive::UnknownVersion::suicideAndRethrow() {
    detail::deleteAndRethrow(this);
}

#define VXCLASSIFIER_ARCHIVE_ERROR(Name, number)                                                             \
    vxArchive::Name::Name(const std::wstring& message) : Errors(message) {}                                  \
    vxArchive::Name::Name(const Name&) noexcept = default;                                                   \
    vxArchive::Name& vxArchive::Name::operator=(const Name&) noexcept = default;                             \
    vxArchive::Name::~Name() = default;                                                                      \
    long vxArchive::Name::errorNumber() const {                                                              \
        return detail::errorNumber::number;                                                                  \
    }                                                                                                        \
    void vxArchive::Name::suicideAndRethrow() {                                                              \
        detail::deleteAndRethrow(this);                                                                      \
    }                                                                                                        \
    static_assert(true, "the macro's use ends with a semicolon")

VXCLASSIFIER_ARCHIVE_ERROR(ShortData, shortData);
VXCLASSIFIER_ARCHIVE_ERROR(CorruptFrame, corruptFrame);
VXCLASSIFIER_ARCHIVE_ERROR(CorruptData, corruptData);
VXCLASSIFIER_ARCHIVE_ERROR(UnknownClass, unknownClass);
VXCLASSIFIER_ARCHIVE_ERROR(BadReference, badReference);
VXCLASSIFIER_ARCHIVE_ERROR(TooLarge, tooLarge);
VXCLASSIFIER_ARCHIVE_ERROR(NotRepresentable, notRepresentable);
VXCLASSIFIER_ARCHIVE_ERROR(WriteFailed, writeFailed);
VXCLASSIFIER_ARCHIVE_ERROR(Misuse, misuse);
VXCLASSIFIER_ARCHIVE_ERROR(ReadFailed, readFailed);
