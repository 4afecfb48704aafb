#ifndef TESTS_SUPPORT_ARCHIVE_BYTES_H
#define TESTS_SUPPORT_ARCHIVE_BYTES_H

#include "tests/support/archives.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace test {

/// CRC-32C bit by bit from its definition (reflected polynomial 0x82f63b78), to check the library's fast one
/// and to seal archives that the library would not write.
inline std::uint32_t crc32c(const Bytes& bytes) {
    std::uint32_t crc = 0xffffffffU;
    for (const unsigned char byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1) ^ ((crc & 1U) != 0 ? 0x82f63b78U : 0U);
        }
    }
    return ~crc;
}

/// The content of an archive, put together by hand. Each operation appends.
class Payload {
public:
    Payload& byte(unsigned value) { return number(value, 1); }
    Payload& u32(std::uint32_t value) { return number(value, 4); }
    Payload& u64(std::uint64_t value) { return number(value, 8); }
    Payload& real(double value) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        return u64(bits);
    }
    /// Bytes as they stand, without a count.
    Payload& ascii(const std::string& text) {
        bytes_.insert(bytes_.end(), text.begin(), text.end());
        return *this;
    }
    Payload& append(const Bytes& bytes) {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        return *this;
    }
    /// The first record of a class, which brings the name along.
    Payload& firstRecord(std::uint32_t classNumber, const std::string& className, const Payload& content) {
        u32(classNumber).u32(static_cast<std::uint32_t>(className.size())).ascii(className);
        return u64(content.bytes().size()).append(content.bytes());
    }
    /// A later record of a class that has its number.
    Payload& record(std::uint32_t classNumber, const Payload& content) {
        return u32(classNumber).u64(content.bytes().size()).append(content.bytes());
    }

    const Bytes& bytes() const { return bytes_; }

    /// The archive of this content, whatever it is.
    Bytes sealed() const {
        Payload frame;
        frame.ascii("\x8bVXC\r\n\x1a\n").u32(1).u64(bytes_.size()).u32(crc32c(bytes_));
        frame.u32(crc32c(frame.bytes())).append(bytes_);
        return frame.bytes();
    }

private:
    Payload& number(std::uint64_t value, int size) {
        for (int i = 0; i < size; ++i) {
            bytes_.push_back(static_cast<unsigned char>(value >> (8 * i)));
        }
        return *this;
    }

    Bytes bytes_;
};

} // namespace test

#endif
