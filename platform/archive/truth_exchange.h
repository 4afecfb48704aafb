#ifndef PLATFORM_ARCHIVE_TRUTH_EXCHANGE_H
#define PLATFORM_ARCHIVE_TRUTH_EXCHANGE_H

#include "platform/archive/loading_core.h"
#include "platform/archive/persistent_access.h"
#include "platform/archive/storing_core.h"
#include "platform/archive/truth_values.h"

#include <vxclassifier/platform/archive_vector.h>

#include <cstddef>

namespace detail {

// For those who keep a list of truth values in some other form than a vector, which would take memory for
// each of many small lists: the same bytes, the same errors.

/// `put(to)` writes `count` bytes, each 0 or 1.
template <class Put>
void storeTruths(vxArchive& archive, std::size_t count, Put put) {
    guarded(archive, [&] {
        exchangeVectorHead(archive, count, 1);
        put(ArchiveAccess::storing(archive)->putBlock(count));
    });
}

/// `take(from, count)` gets the bytes, each 0 or 1. Where one is neither, it gets those in front of it before
/// this throws.
template <class Take>
void loadTruths(vxArchive& archive, Take take) {
    guarded(archive, [&] {
        const std::size_t count = exchangeVectorHead(archive, 0, 1);
        const unsigned char* from = ArchiveAccess::loading(archive)->getBlock(count);
        const std::size_t valid = countTruthValues(from, count);
        take(from, valid);
        if (valid < count) {
            LoadingCore::throwNoTruthValue();
        }
    });
}

} // namespace detail

#endif
