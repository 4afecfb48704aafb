#ifndef PLATFORM_ARCHIVE_ARCHIVE_FRAME_H
#define PLATFORM_ARCHIVE_ARCHIVE_FRAME_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <vector>

namespace detail {

/// The header that seals an archive: magic, format version, payload length, CRC-32C of the payload and of the
/// header.
constexpr std::size_t frameSize = 28;

/// Writes the header over the first frameSize bytes of `archive`, whose payload stands behind them and has
/// this CRC-32C.
void sealFrame(std::vector<unsigned char>& archive, std::uint32_t payloadCrc);

/// Checks the whole archive. Throws vxArchive::CorruptFrame, or ShortData when its end is missing.
void verifyFrame(const unsigned char* archive, std::size_t size);

/// Reads a stream that holds one archive. What is not an archive is refused by its header, so memory is only
/// taken for bytes that are there. Throws as verifyFrame does.
std::vector<unsigned char> readFramed(std::istream& source);

} // namespace detail

#endif
