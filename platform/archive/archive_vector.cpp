#include <vxclassifier/platform/archive_vector.h>

#include "platform/archive/loading_core.h"
#include "platform/archive/persistent_access.h"
#include "platform/archive/storing_core.h"

#include <vxclassifier/platform/archive.h>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace detail {

namespace {

constexpr unsigned char vectorVersion = 0;

constexpr std::size_t mostElements = std::numeric_limits<std::uint32_t>::max();

[[noreturn]] void throwTooManyElements() {
    throw vxArchive::TooLarge(L"An archive counts the elements of a vector with 32 bits only.");
}

void storeVectorHead(StoringCore& core, std::size_t count) {
    if (count > mostElements) {
        throwTooManyElements();
    }
    core.putByte(vectorVersion);
    core.putUnsigned(static_cast<unsigned long>(count));
}

unsigned long loadVectorHead(LoadingCore& core, std::size_t leastElementSize) {
    if (core.getByte() != vectorVersion) {
        throw vxArchive::UnknownVersion(nullptr, 0);
    }
    const unsigned long count = core.getUnsigned();
    core.requireElements(count, leastElementSize);
    return count;
}

/// Exchanges what all vectors begin with, and then the elements: `put(core)` stores them, `get(core, count)`
/// loads so many.
template <class Put, class Get>
void exchangeVector(vxArchive& archive, std::size_t size, std::size_t elementSize, Put put, Get get) {
    guarded(archive, [&] {
        if (StoringCore* core = ArchiveAccess::storing(archive)) {
            storeVectorHead(*core, size);
            put(*core);
        } else {
            LoadingCore& loading = *ArchiveAccess::loading(archive);
            get(loading, loadVectorHead(loading, elementSize));
        }
    });
}

} // namespace

unsigned long exchangeVectorHead(vxArchive& archive, std::size_t count, std::size_t leastElementSize) {
    if (archive.isStoring() && count > mostElements) { // nothing is half written yet
        throwTooManyElements();
    }
    unsigned long exchanged = static_cast<unsigned long>(count);
    guarded(archive, [&] {
        if (StoringCore* core = ArchiveAccess::storing(archive)) {
            storeVectorHead(*core, count);
        } else {
            exchanged = loadVectorHead(*ArchiveAccess::loading(archive), leastElementSize);
        }
    });
    return exchanged;
}

std::size_t reservableElements(const vxArchive& archive, unsigned long count,
                               std::size_t elementSize) noexcept {
    const std::size_t left = ArchiveAccess::loading(archive)->left();
    return std::min(static_cast<std::size_t>(count), left / elementSize);
}

} // namespace detail

using detail::LoadingCore;
using detail::StoringCore;

vxArchive& operator||(vxArchive& archive, std::vector<double>& values) {
    detail::exchangeVector(
        archive, values.size(), sizeof(double),
        [&](StoringCore& core) { core.putDoubles(values.data(), values.size()); },
        [&](LoadingCore& core, std::size_t count) { core.getDoubles(values, count); });
    return archive;
}

vxArchive& operator||(vxArchive& archive, std::vector<long>& values) {
    detail::exchangeVector(
        archive, values.size(), sizeof(std::uint32_t), [&](StoringCore& core) { core.putNumbers(values); },
        [&](LoadingCore& core, std::size_t count) { core.getNumbers(values, count); });
    return archive;
}

vxArchive& operator||(vxArchive& archive, std::vector<bool>& values) {
    detail::exchangeVector(
        archive, values.size(), 1, [&](StoringCore& core) { core.putTruths(values); },
        [&](LoadingCore& core, std::size_t count) { core.getTruths(values, count); });
    return archive;
}
