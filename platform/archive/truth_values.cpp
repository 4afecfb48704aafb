#include "platform/archive/truth_values.h"

#include "platform/archive/byte_order.h"

#include <algorithm>
#include <cstdint>

namespace detail {

namespace {

constexpr std::size_t group = sizeof(std::uint64_t);
constexpr std::uint64_t ones = 0x0101010101010101U;

#if defined(__GLIBCXX__)

/// Spreads the lowest eight bits over eight bytes: bit i makes byte i a 1.
std::uint64_t spread(std::uint64_t bits) noexcept {
    const std::uint64_t each =
        (bits & 0xffU) * ones & 0x8040201008040201U; // in byte i only bit i, if it was set
    return ((each + 0x7f * ones) >> 7) & ones;
}

/// Writes all whole groups and returns how many values they have. The standard has no way to the words in
/// which this library keeps the bits.
std::size_t putGroups(unsigned char* to, const std::vector<bool>& values) noexcept {
    const auto* words = values.begin()._M_p;
    constexpr std::size_t wordBits = 8 * sizeof *words;
    const std::size_t size = values.size() / group * group;
    for (std::size_t i = 0; i < size; i += group) {
        putLittleEndian(to + i, spread(words[i / wordBits] >> (i % wordBits)));
    }
    return size;
}

#else

std::size_t putGroups(unsigned char*, const std::vector<bool>&) noexcept {
    return 0;
}

#endif

} // namespace

void putTruthValues(unsigned char* to, const std::vector<bool>& values) noexcept {
    for (std::size_t i = putGroups(to, values); i < values.size(); ++i) {
        to[i] = values[i] ? 1 : 0;
    }
}

std::size_t countTruthValues(const unsigned char* from, std::size_t count) noexcept {
    std::size_t good = 0;
    while (count - good >= group && (getLittleEndian<std::uint64_t>(from + good) & ~ones) == 0) {
        good += group;
    }
    const auto isNone = [](unsigned char byte) { return byte > 1; };
    return static_cast<std::size_t>(std::find_if(from + good, from + count, isNone) - from);
}

std::size_t countTrue(const unsigned char* from, std::size_t count) noexcept {
    std::size_t good = 0;
    while (count - good >= group && getLittleEndian<std::uint64_t>(from + good) == ones) {
        good += group;
    }
    const auto isNotTrue = [](unsigned char byte) { return byte != 1; };
    return static_cast<std::size_t>(std::find_if(from + good, from + count, isNotTrue) - from);
}

void getTruthValues(std::vector<bool>& values, const unsigned char* from, std::size_t count) {
    values.assign(count, true);
    for (std::size_t first = 0; first < count; first += group) {
        const std::size_t last = std::min(first + group, count);
        if (last - first == group && getLittleEndian<std::uint64_t>(from + first) == ones) {
            continue;
        }
        for (std::size_t i = first; i < last; ++i) {
            values[i] = from[i] == 1;
        }
    }
}

} // namespace detail
