#ifndef PLATFORM_ARCHIVE_CHECKSUM_H
#define PLATFORM_ARCHIVE_CHECKSUM_H

#include <cstddef>
#include <cstdint>

namespace detail {

/// The CRC-32C of bytes that arrive in parts.
class Checksum {
public:
    void add(const unsigned char* bytes, std::size_t size) noexcept;

    /// As if all that the other one was given came next: takes as many steps as the size has bits.
    void append(const Checksum& other) noexcept;

    /// How many bytes there were.
    std::size_t size() const noexcept { return size_; }

    std::uint32_t value() const noexcept { return ~state_; }

private:
    std::uint32_t state_ = 0xffffffffU;
    std::size_t size_ = 0;
};

/// The CRC-32C of these bytes.
std::uint32_t crc32c(const unsigned char* bytes, std::size_t size) noexcept;

} // namespace detail

#endif
