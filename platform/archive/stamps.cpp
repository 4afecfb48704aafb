#include "platform/archive/stamps.h"

#include <algorithm>
#include <atomic>

namespace detail {

namespace {

std::atomic<std::uint32_t> given{0};

/// So many stamps in a row, of which none is 0.
std::uint32_t takeStamps(std::uint32_t size) noexcept {
    for (;;) {
        const std::uint32_t first = given.fetch_add(size, std::memory_order_relaxed);
        if (first != 0 && first + (size - 1) >= first) {
            return first;
        }
    }
}

} // namespace

void Stamps::addBlock() noexcept {
    const Block& last = newest();
    Block& next = all_[blocks_ + 1];
    next.firstPlace = last.firstPlace + last.size;
    next.size = last.size == 0 ? leastSize : std::min(2 * last.size, mostSize);
    next.firstStamp = takeStamps(next.size);
    ++blocks_;
}

} // namespace detail
