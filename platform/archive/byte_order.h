#ifndef PLATFORM_ARCHIVE_BYTE_ORDER_H
#define PLATFORM_ARCHIVE_BYTE_ORDER_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace detail {

/// Writes `value` little-endian; compilers turn the loop into one store.
template <class Unsigned>
void putLittleEndian(unsigned char* to, Unsigned value) noexcept {
    for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
        to[i] = static_cast<unsigned char>(value >> (8 * i));
    }
}

template <class Unsigned>
Unsigned getLittleEndian(const unsigned char* from) noexcept {
    Unsigned value = 0;
    for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
        value |= static_cast<Unsigned>(static_cast<Unsigned>(from[i]) << (8 * i));
    }
    return value;
}

template <class Unsigned>
void appendLittleEndian(std::vector<unsigned char>& to, Unsigned value) {
    unsigned char bytes[sizeof(Unsigned)];
    putLittleEndian(bytes, value);
    to.insert(to.end(), bytes, bytes + sizeof(Unsigned));
}

static_assert(sizeof(double) == sizeof(std::uint64_t), "doubles are archived as their 64 bits");

inline std::uint64_t bitsOf(double value) noexcept {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

inline double doubleOf(std::uint64_t bits) noexcept {
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

} // namespace detail

#endif
