#ifndef VXCLASSIFIER_PLATFORM_INTERLOCKED_H
#define VXCLASSIFIER_PLATFORM_INTERLOCKED_H

#include <atomic>
#include <cstdint>

/// Adds one atomically and returns the new value. Taking a share needs no ordering: whoever takes one already
/// has one.
inline std::intptr_t vfInterlockedIncrement(std::atomic<std::intptr_t>& value) noexcept {
    return value.fetch_add(1, std::memory_order_relaxed) + 1;
}

/// Subtracts one atomically and returns the new value. Whoever brings a count to zero sees all that the other
/// holders did to the object before they let go of it.
inline std::intptr_t vfInterlockedDecrement(std::atomic<std::intptr_t>& value) noexcept {
    return value.fetch_sub(1, std::memory_order_acq_rel) - 1;
}

#endif
