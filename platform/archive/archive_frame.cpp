#include "platform/archive/archive_frame.h"

#include "platform/archive/byte_order.h"
#include "platform/archive/checksum.h"

#include <vxclassifier/platform/archive.h>

#include <algorithm>
#include <istream>

namespace detail {

namespace {

// Begins with a byte that no text holds and has all line ends in it, so that a copy made in text mode, or
// over a channel of seven bits, is noticed at once.
constexpr unsigned char magic[8] = {0x8b, 'V', 'X', 'C', '\r', '\n', 0x1a, '\n'};
constexpr std::uint32_t formatVersion = 1;

constexpr std::size_t versionOffset = 8;
constexpr std::size_t lengthOffset = 12;
constexpr std::size_t payloadCrcOffset = 20;
constexpr std::size_t headerCrcOffset = 24;

/// Checks the header and returns the payload's length.
std::uint64_t verifyHeader(const unsigned char* header) {
    if (!std::equal(std::begin(magic), std::end(magic), header)) {
        throw vxArchive::CorruptFrame(L"This is not an archive, or it was copied in text mode.");
    }
    if (getLittleEndian<std::uint32_t>(header + headerCrcOffset) != crc32c(header, headerCrcOffset)) {
        throw vxArchive::CorruptFrame(L"The header of the archive is damaged.");
    }
    if (getLittleEndian<std::uint32_t>(header + versionOffset) != formatVersion) {
        throw vxArchive::CorruptFrame(L"The archive has a format version that this release does not know.");
    }
    return getLittleEndian<std::uint64_t>(header + lengthOffset);
}

void verifyPayload(const unsigned char* archive, std::size_t size) {
    if (getLittleEndian<std::uint32_t>(archive + payloadCrcOffset) !=
        crc32c(archive + frameSize, size - frameSize)) {
        throw vxArchive::CorruptFrame(L"The content of the archive is damaged.");
    }
}

[[noreturn]] void throwShort() {
    throw vxArchive::ShortData(L"The archive ends too early.");
}

[[noreturn]] void throwLong() {
    throw vxArchive::CorruptFrame(L"Something stands behind the end of the archive.");
}

/// Appends up to `count` bytes of the stream; fewer when it ends.
void appendFrom(std::istream& source, std::uint64_t count, std::vector<unsigned char>& to) {
    constexpr std::uint64_t block = std::uint64_t{1} << 20;
    while (count > 0) {
        const std::size_t wanted = static_cast<std::size_t>(std::min(count, block));
        const std::size_t before = to.size();
        to.resize(before + wanted);
        source.read(reinterpret_cast<char*>(to.data() + before), static_cast<std::streamsize>(wanted));
        const std::size_t got = static_cast<std::size_t>(source.gcount());
        to.resize(before + got);
        if (got < wanted) {
            return;
        }
        count -= got;
    }
}

} // namespace

void sealFrame(std::vector<unsigned char>& archive, std::uint32_t payloadCrc) {
    const std::size_t payloadSize = archive.size() - frameSize;
    unsigned char* header = archive.data();
    std::copy(std::begin(magic), std::end(magic), header);
    putLittleEndian<std::uint32_t>(header + versionOffset, formatVersion);
    putLittleEndian<std::uint64_t>(header + lengthOffset, payloadSize);
    putLittleEndian<std::uint32_t>(header + payloadCrcOffset, payloadCrc);
    putLittleEndian<std::uint32_t>(header + headerCrcOffset, crc32c(header, headerCrcOffset));
}

void verifyFrame(const unsigned char* archive, std::size_t size) {
    if (size < frameSize) {
        throwShort();
    }
    const std::uint64_t payloadSize = verifyHeader(archive);
    if (size - frameSize < payloadSize) {
        throwShort();
    }
    if (size - frameSize > payloadSize) {
        throwLong();
    }
    verifyPayload(archive, size);
}

std::vector<unsigned char> readFramed(std::istream& source) {
    std::vector<unsigned char> archive;
    appendFrom(source, frameSize, archive);
    if (archive.size() < frameSize) {
        throwShort();
    }
    const std::uint64_t payloadSize = verifyHeader(archive.data());
    appendFrom(source, payloadSize, archive);
    if (archive.size() - frameSize < payloadSize) {
        throwShort();
    }
    if (source.peek() != std::istream::traits_type::eof()) {
        throwLong();
    }
    verifyPayload(archive.data(), archive.size());
    return archive;
}

} // namespace detail
