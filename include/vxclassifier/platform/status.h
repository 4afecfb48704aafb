#ifndef VXCLASSIFIER_PLATFORM_STATUS_H
#define VXCLASSIFIER_PLATFORM_STATUS_H

#include <vxclassifier/platform/exception.h>

/// Status codes are 32-bit numbers, whatever the width of `long`: bit 31 set means failure, the bits below it
/// hold 32 times the number of the module that failed plus the module's own code.
namespace vxStatus {
inline constexpr long success = 0;

constexpr bool isFailure(long status) noexcept {
    return (static_cast<unsigned long>(status) & 0x80000000UL) != 0;
}
constexpr long module(long status) noexcept {
    return static_cast<long>((static_cast<unsigned long>(status) & 0x7fffffffUL) / 32);
}
/// The failure status of a module; `code` lies between 0 and 31.
constexpr long failure(long module, long code) noexcept {
    return static_cast<long>(0x80000000UL + static_cast<unsigned long>(module) * 32UL +
                             static_cast<unsigned long>(code));
}
} // namespace vxStatus

/// Turns a failure status into an exception of its own by throwing it, or returns if it does not know the
/// status.
using vfExceptionConverter = void (*)(long status);

/// Registers the converter of a module; a later registration replaces an earlier one, null removes it.
/// Thread-safe.
VXCLASSIFIER_API void vfRegisterExceptionConverter(long module, vfExceptionConverter converter);

/// Returns if `status`, of which only the low 32 bits count, is no failure. Otherwise asks the converter
/// registered for its module, which throws if it knows the status, and else throws vxStatusFailure.
/// Thread-safe.
VXCLASSIFIER_API void vfThrowExceptionOnFailure(long status);

/// A failure status that no converter knows; the message gives it in hexadecimal.
///
/// Initial state: the given status. Ownership and threads: as for vxException.
class VXCLASSIFIER_API vxStatusFailure : public vxExceptionWithString {
public:
    explicit vxStatusFailure(long status);
    vxStatusFailure(const vxStatusFailure&) noexcept;
    vxStatusFailure& operator=(const vxStatusFailure&) noexcept;
    ~vxStatusFailure() override;

    /// The low 32 bits of the status.
    long status() const noexcept;

    long errorNumber() const override;
    void suicideAndRethrow() override;

private:
    long status_;
};

#endif
