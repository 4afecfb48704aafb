#include <vxclassifier/platform/archive_vector.h>

#include "platform/archive/loading_core.h"
#include "platform/archive/persistent_access.h"
#include "platform/archive/storing_core.h"

#include <vxclassifier/platform/archive.h>

#include <cstdint>

namespace detail {

bool isLoading(const vxArchive& archive) noexcept {
    return archive.isLoading();
}

void leaveWithArchive(vxArchive& archive, vxPersistent* object) noexcept {
    ArchiveAccess::loading(archive)->leave(object);
}

unsigned long exchangeVectorHead(vxArchive& archive, std::size_t count, std::size_t leastElementSize) {
    unsigned char version = 0;
    archive || version;
    if (version != 0) {
        throw vxArchive::UnknownVersion(nullptr, 0);
    }
    unsigned long exchanged = count;
    archive || exchanged;
    if (LoadingCore* core = ArchiveAccess::loading(archive)) {
        core->requireElements(exchanged, leastElementSize);
    }
    return exchanged;
}

} // namespace detail

vxArchive& operator||(vxArchive& archive, std::vector<double>& values) {
    const unsigned long count = detail::exchangeVectorHead(archive, values.size(), sizeof(double));
    if (detail::StoringCore* core = detail::ArchiveAccess::storing(archive)) {
        core->putDoubles(values.data(), values.size());
    } else {
        values.resize(count);
        detail::ArchiveAccess::loading(archive)->getDoubles(values.data(), count);
    }
    return archive;
}

vxArchive& operator||(vxArchive& archive, std::vector<long>& values) {
    const unsigned long count = detail::exchangeVectorHead(archive, values.size(), sizeof(std::uint32_t));
    values.resize(count);
    for (long& value : values) {
        archive || value;
    }
    return archive;
}

vxArchive& operator||(vxArchive& archive, std::vector<bool>& values) {
    const unsigned long count = detail::exchangeVectorHead(archive, values.size(), 1);
    values.resize(count);
    for (std::vector<bool>::reference value : values) {
        unsigned char byte = value ? 1 : 0;
        archive || byte;
        if (byte > 1) {
            throw vxArchive::CorruptData(L"A truth value in the archive is neither 0 nor 1.");
        }
        value = byte == 1;
    }
    return archive;
}
