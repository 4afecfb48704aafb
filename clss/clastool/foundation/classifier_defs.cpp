#include <vxclassifier/classifier_defs.h>

#include "platform/archive/class_level.h"
#include "platform/status/rethrow.h"

namespace vxClassifierDefs {

Errors::Errors() noexcept = default;
Errors::Errors(const std::wstring& message) : vxExceptionWithString(message) {}
Errors::Errors(const Errors&) noexcept = default;
Errors& Errors::operator=(const Errors&) noexcept = default;
Errors::~Errors() = default;

void Errors::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void Errors::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version, "vxClassifierDefs::Errors");
    vxExceptionWithString::dispatchSerialize(archive);
}

#define VXCLASSIFIER_ERROR(Name, number)                                                                     \
    Name::Name() noexcept = default;                                                                         \
    Name::Name(const std::wstring& message) : Errors(message) {}                                             \
    Name::Name(const Name&) noexcept = default;                                                              \
    Name& Name::operator=(const Name&) noexcept = default;                                                   \
    Name::~Name() = default;                                                                                 \
    vxPersistent* Name::make() {                                                                             \
        return new Name;                                                                                     \
    }                                                                                                        \
    void Name::dispatchSerialize(vxArchive& archive) {                                                       \
        detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });  \
    }                                                                                                        \
    long Name::errorNumber() const {                                                                         \
        return number;                                                                                       \
    }                                                                                                        \
    void Name::suicideAndRethrow() {                                                                         \
        detail::deleteAndRethrow(this);                                                                      \
    }                                                                                                        \
    void Name::serialize_(vxArchive& archive, unsigned char version) {                                       \
        detail::requireVersionZero(version, "vxClassifierDefs::" #Name);                                     \
        Errors::dispatchSerialize(archive);                                                                  \
    }                                                                                                        \
    vx_Instantiator Name::sExemplar(typeid(Name), &Name::make)

VXCLASSIFIER_ERROR(BadParams, 0x10004200);
VXCLASSIFIER_ERROR(NotTrained, 0x10004201);
VXCLASSIFIER_ERROR(BadIndex, 0x10004202);
VXCLASSIFIER_ERROR(BadLabel, 0x10004203);
VXCLASSIFIER_ERROR(BadMethod, 0x10004204);
VXCLASSIFIER_ERROR(NotImplemented, 0x10004205);
VXCLASSIFIER_ERROR(BadFeatures, 0x10004206);
VXCLASSIFIER_ERROR(InsufficientTrainData, 0x10004207);

} // namespace vxClassifierDefs
