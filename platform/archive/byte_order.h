#ifndef PLATFORM_ARCHIVE_BYTE_ORDER_H
#define PLATFORM_ARCHIVE_BYTE_ORDER_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace detail {

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
constexpr bool isLittleEndian = true;
#else
constexpr bool isLittleEndian = false; // or not known: the way that is right on all machines
#endif

/// Writes `value` little-endian: with one store where the machine does so itself, which not every compiler
/// makes of the loop.
template <class Unsigned>
void putLittleEndian(unsigned char* to, Unsigned value) noexcept {
    if constexpr (isLittleEndian) {
        std::memcpy(to, &value, sizeof value);
    } else {
        for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
            to[i] = static_cast<unsigned char>(value >> (8 * i));
        }
    }
}

template <class Unsigned>
Unsigned getLittleEndian(const unsigned char* from) noexcept {
    Unsigned value = 0;
    if constexpr (isLittleEndian) {
        std::memcpy(&value, from, sizeof value);
    } else {
        for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
            value |= static_cast<Unsigned>(static_cast<Unsigned>(from[i]) << (8 * i));
        }
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

inline void putDoubles(unsigned char* to, const double* values, std::size_t count) noexcept {
    if constexpr (isLittleEndian) {
        std::copy_n(reinterpret_cast<const unsigned char*>(values), count * sizeof(double), to);
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            putLittleEndian(to + i * sizeof(double), bitsOf(values[i]));
        }
    }
}

inline void getDoubles(double* values, const unsigned char* from, std::size_t count) noexcept {
    if constexpr (isLittleEndian) {
        std::copy_n(from, count * sizeof(double), reinterpret_cast<unsigned char*>(values));
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            values[i] = doubleOf(getLittleEndian<std::uint64_t>(from + i * sizeof(double)));
        }
    }
}

} // namespace detail

#endif
