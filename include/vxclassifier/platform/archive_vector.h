#ifndef VXCLASSIFIER_PLATFORM_ARCHIVE_VECTOR_H
#define VXCLASSIFIER_PLATFORM_ARCHIVE_VECTOR_H

#include <vxclassifier/platform/archive_direction.h>
#include <vxclassifier/platform/export.h>

#include <cstddef>
#include <utility>
#include <vector>

class vxArchive;

/// Vectors of every kind: a version byte 0 (any other throws vxArchive::UnknownVersion without a source), a
/// 32-bit count, and the elements. A count for which too few bytes are left throws vxArchive::TooLarge before
/// memory is taken; a load that fails later leaves the elements read so far.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, std::vector<double>& values);
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, std::vector<long>& values);
/// One byte, 0 or 1, for each element; loading any other throws vxArchive::CorruptData.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, std::vector<bool>& values);

namespace detail {

/// Exchanges the version byte and the count of a vector; `leastElementSize` is the fewest bytes an element
/// can take.
VXCLASSIFIER_API unsigned long exchangeVectorHead(vxArchive& archive, std::size_t count,
                                                  std::size_t leastElementSize);

/// For how many of `count` elements to take memory at once when they are loaded: not for more of it than
/// there are bytes left, whatever the count says.
VXCLASSIFIER_API std::size_t reservableElements(const vxArchive& archive, unsigned long count,
                                                std::size_t elementSize) noexcept;

} // namespace detail

template <class T>
vxArchive& operator||(vxArchive& archive, std::vector<T>& values) {
    const unsigned long count = detail::exchangeVectorHead(archive, values.size(), 1);
    if (!detail::isLoading(archive)) {
        for (T& value : values) {
            archive || value;
        }
        return archive;
    }
    // Memory grows with the elements that are there, not with the count that was read.
    values.clear();
    values.reserve(detail::reservableElements(archive, count, sizeof(T)));
    for (unsigned long i = 0; i < count; ++i) {
        T value{};
        archive || value;
        values.push_back(std::move(value));
    }
    return archive;
}

#endif
