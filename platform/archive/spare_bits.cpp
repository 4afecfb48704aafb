#include <vxclassifier/platform/detail/spare_bits.h>

#include "platform/archive/persistent_access.h"
#include "platform/archive/tracking_mark.h"
#include "platform/handle/only_thread.h"

namespace detail {

void SpareBits::set(const vxPersistent& object, Bit bit) noexcept {
    static_assert(vxPersistent::spareBits_ < TrackingMark::oneTracker, "the trackers are counted above them");
    const auto mask = static_cast<std::uint64_t>(bit);
    std::atomic<std::uint64_t>& word = PersistentAccess::tracking(object);
    if (isOnlyThread()) {
        word.store(word.load(std::memory_order_relaxed) | mask, std::memory_order_relaxed);
    } else {
        word.fetch_or(mask, std::memory_order_relaxed);
    }
}

void SpareBits::clear(const vxPersistent& object, Bit bit) noexcept {
    PersistentAccess::tracking(object).fetch_and(~static_cast<std::uint64_t>(bit), std::memory_order_relaxed);
}

} // namespace detail
