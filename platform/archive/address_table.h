#ifndef PLATFORM_ARCHIVE_ADDRESS_TABLE_H
#define PLATFORM_ARCHIVE_ADDRESS_TABLE_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace detail {

/// Finds a number by an address: a hash table without deletion, in one block of memory and at most half full,
/// so that an operation costs the same however many there are. It keeps a hash instead of each address;
/// whoever gave the numbers tells with `isAt(number)` whether one belongs to the address.
class AddressTable {
public:
    static constexpr std::uint32_t none = 0xffffffffU;

    /// The number of the address, or `none`.
    template <class IsAt>
    std::uint32_t find(const void* address, IsAt isAt) const {
        return slots_.empty() ? none : slots_[slotOf(hashOf(address), isAt)].number;
    }

    /// Gives the address a number, which is not `none`, in place of the one that it may have. If there is no
    /// memory for it, nothing has changed.
    template <class IsAt>
    void set(const void* address, std::uint32_t number, IsAt isAt) {
        if (2 * (used_ + 1) > slots_.size()) {
            grow();
        }
        const std::uint32_t hash = hashOf(address);
        Slot& slot = slots_[slotOf(hash, isAt)];
        used_ += slot.number == none ? 1 : 0;
        slot = Slot{hash, number};
    }

private:
    struct Slot {
        std::uint32_t hash;
        std::uint32_t number; // `none`: the slot is free
    };

    /// The upper half of a product with 2^64 divided by the golden ratio: addresses at any regular distance
    /// spread evenly.
    static std::uint32_t hashOf(const void* address) noexcept {
        const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(address));
        return static_cast<std::uint32_t>((bits * 0x9e3779b97f4a7c15U) >> 32);
    }

    /// The slot with this hash whose number is the right one, or the free slot where it would be.
    template <class IsAt>
    std::size_t slotOf(std::uint32_t hash, IsAt isAt) const {
        std::size_t i = hash >> shift_;
        while (slots_[i].number != none && (slots_[i].hash != hash || !isAt(slots_[i].number))) {
            i = (i + 1) & (slots_.size() - 1);
        }
        return i;
    }

    void grow();

    std::vector<Slot> slots_; // none, or a power of two of them, of which at most half are used
    std::size_t used_ = 0;
    unsigned shift_ = 0; // takes a hash to the number of its first slot
};

} // namespace detail

#endif
