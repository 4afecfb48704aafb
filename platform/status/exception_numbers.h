#ifndef PLATFORM_STATUS_EXCEPTION_NUMBERS_H
#define PLATFORM_STATUS_EXCEPTION_NUMBERS_H

/// The error numbers of the platform's exceptions; they stay as they are once released. Those of the
/// classifier's own errors lie in another range.
namespace detail::errorNumber {

inline constexpr long badPointer = 0x10000001;
inline constexpr long statusFailure = 0x10000002;
inline constexpr long interrupted = 0x10000003;
inline constexpr long unknownVersion = 0x10000101;
inline constexpr long shortData = 0x10000102;
inline constexpr long corruptFrame = 0x10000103;
inline constexpr long corruptData = 0x10000104;
inline constexpr long unknownClass = 0x10000105;
inline constexpr long badReference = 0x10000106;
inline constexpr long tooLarge = 0x10000107;
inline constexpr long notRepresentable = 0x10000108;
inline constexpr long writeFailed = 0x10000109;
inline constexpr long misuse = 0x1000010a;
inline constexpr long readFailed = 0x1000010b;

} // namespace detail::errorNumber

#endif
