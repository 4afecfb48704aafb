#include "platform/archive/checksum.h"

#include <isa-l/crc.h>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include <algorithm>
#include <limits>

namespace detail {

namespace {

#if defined(__x86_64__)
__attribute__((target("avx"))) void clearUpperRegisterHalves() noexcept {
    _mm256_zeroupper();
}
#endif

/// ISA-L's checksum of 256 bytes and more leaves the upper halves of the AVX registers in use (measured
/// with 2.30 on a processor with AVX-512). All ordinary floating-point code of the thread is slower from then
/// on, std::log by a factor of 33, until somebody clears them.
void leaveRegistersClean() noexcept {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx")) {
        clearUpperRegisterHalves();
    }
#endif
}

// A remainder is kept with its highest power in the lowest bit.
constexpr std::uint32_t polynomial = 0x82f63b78U;
constexpr std::uint32_t one = 0x80000000U;
constexpr std::uint32_t byteOfZeros = one >> 8; // x to the power of 8

/// The product of two polynomials, but for multiples of the checksum's.
std::uint32_t product(std::uint32_t a, std::uint32_t b) noexcept {
    std::uint32_t sum = 0;
    for (std::uint32_t power = one; power != 0; power >>= 1) {
        sum ^= (a & power) != 0 ? b : 0;
        b = (b >> 1) ^ ((b & 1U) != 0 ? polynomial : 0);
    }
    return sum;
}

/// What becomes of a checksum when so many bytes follow that are all 0.
std::uint32_t shifted(std::uint32_t crc, std::size_t bytes) noexcept {
    std::uint32_t factor = byteOfZeros;
    for (; bytes != 0; bytes >>= 1) {
        if ((bytes & 1U) != 0) {
            crc = product(factor, crc);
        }
        factor = product(factor, factor);
    }
    return crc;
}

} // namespace

void Checksum::add(const unsigned char* bytes, std::size_t size) noexcept {
    constexpr std::size_t most = static_cast<std::size_t>(std::numeric_limits<int>::max());
    size_ += size;
    while (size > 0) {
        const std::size_t part = std::min(size, most);
        // The library reads only, but declares the bytes as writable.
        state_ = crc32_iscsi(const_cast<unsigned char*>(bytes), static_cast<int>(part), state_);
        bytes += part;
        size -= part;
    }
    leaveRegistersClean();
}

/// A checksum is linear but for what it starts with and what it is inverted by, and these two cancel each
/// other.
void Checksum::append(const Checksum& other) noexcept {
    state_ = ~(shifted(value(), other.size_) ^ other.value());
    size_ += other.size_;
}

std::uint32_t crc32c(const unsigned char* bytes, std::size_t size) noexcept {
    Checksum checksum;
    checksum.add(bytes, size);
    return checksum.value();
}

} // namespace detail
