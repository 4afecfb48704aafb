#ifndef PLATFORM_ARCHIVE_COUNT_LIMIT_H
#define PLATFORM_ARCHIVE_COUNT_LIMIT_H

#include <vxclassifier/platform/archive.h>

#include <cstddef>
#include <cstdint>

namespace detail {

/// The count as an archive has it. Throws vxArchive::TooLarge if it is above `most`.
inline std::uint32_t countWithin(std::uint32_t most, std::size_t count, const wchar_t* message) {
    if (count > most) {
        throw vxArchive::TooLarge(message);
    }
    return static_cast<std::uint32_t>(count);
}

} // namespace detail

#endif
