#include "platform/archive/address_table.h"

#include <algorithm>

namespace detail {

void AddressTable::grow() {
    constexpr unsigned leastBits = 6;
    constexpr unsigned mostBits = 32; // those of a hash
    const unsigned bits = slots_.empty() ? leastBits : std::min(mostBits, mostBits - shift_ + 1);
    std::vector<Slot> old(std::size_t{1} << bits, Slot{0, none});
    old.swap(slots_);
    shift_ = mostBits - bits;
    const auto differsFromAll = [](std::uint32_t) { return false; };
    for (const Slot& slot : old) {
        if (slot.number != none) {
            slots_[slotOf(slot.hash, differsFromAll)] = slot;
        }
    }
}

} // namespace detail
