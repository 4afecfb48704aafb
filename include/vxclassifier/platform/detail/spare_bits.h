#ifndef VXCLASSIFIER_PLATFORM_DETAIL_SPARE_BITS_H
#define VXCLASSIFIER_PLATFORM_DETAIL_SPARE_BITS_H

#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/persistent.h>

#include <atomic>
#include <cstdint>

namespace detail {

/// Two bits that each persistent object has left over, for the one class of this library whose objects come
/// by the million: a member of its own would take sixteen bytes of each, since memory is given in such steps.
///
/// Initial state: not set. They belong to the object's place in memory: neither copied nor assigned.
///
/// Ownership: none.
///
/// Threads: all operations are atomic, and order nothing else.
class VXCLASSIFIER_API SpareBits {
public:
    enum class Bit : std::uint64_t { first = 1, second = 2 };

    static bool isSet(const vxPersistent& object, Bit bit) noexcept {
        return (object.tracking_.load(std::memory_order_relaxed) & static_cast<std::uint64_t>(bit)) != 0;
    }

    static void set(const vxPersistent& object, Bit bit) noexcept;
    static void clear(const vxPersistent& object, Bit bit) noexcept;
};

} // namespace detail

#endif
