#ifndef TESTS_RULES_BYTES_H
#define TESTS_RULES_BYTES_H

#include "tests/support/archives.h"

#include <cstdint>
#include <cstring>
#include <initializer_list>

namespace test {

/// Puts an archive's content together byte by byte, without the library's help.
class Content {
public:
    Content& byte(unsigned char value) {
        bytes_.push_back(value);
        return *this;
    }
    Content& number(std::uint32_t value) { return littleEndian(value, sizeof value); }
    Content& doubles(std::initializer_list<double> values) {
        for (const double value : values) {
            std::uint64_t bits = 0;
            std::memcpy(&bits, &value, sizeof bits);
            littleEndian(bits, sizeof bits);
        }
        return *this;
    }
    /// The version byte and the count in front of a vector's elements.
    Content& vectorHead(std::uint32_t count) { return byte(0).number(count); }

    const Bytes& bytes() const { return bytes_; }

    /// The content as a sealed archive.
    Bytes sealed() const {
        return archiveOf([this](vxArchive& archive) {
            for (unsigned char byte : bytes_) {
                archive || byte;
            }
        });
    }

private:
    Content& littleEndian(std::uint64_t value, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i) {
            bytes_.push_back(static_cast<unsigned char>(value >> (8 * i)));
        }
        return *this;
    }

    Bytes bytes_;
};

} // namespace test

#endif
