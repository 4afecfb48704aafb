#include <vxclassifier/platform/archive_vector.h>

#include "platform/archive/loading_core.h"
#include "platform/archive/persistent_access.h"
#include "platform/archive/storing_core.h"

#include <vxclassifier/platform/archive.h>

#include <cstdint>
#include <limits>

namespace detail {

namespace {

void exchangeVersion(vxArchive& archive) {
    unsigned char version = 0;
    archive || version;
    if (version != 0) {
        throw vxArchive::UnknownVersion(nullptr, 0);
    }
}

/// What is stored is only read, so that several threads may store the same vector.
void storeTruth(vxArchive& archive, const std::vector<bool>& values) {
    for (const bool value : values) {
        unsigned char byte = value ? 1 : 0;
        archive || byte;
    }
}

void loadTruth(vxArchive& archive, std::vector<bool>& values, unsigned long count) {
    values.clear();
    for (unsigned long i = 0; i < count; ++i) {
        unsigned char byte = 0;
        archive || byte;
        if (byte > 1) {
            throw vxArchive::CorruptData(L"A truth value in the archive is neither 0 nor 1.");
        }
        values.push_back(byte == 1);
    }
}

} // namespace

unsigned long exchangeVectorHead(vxArchive& archive, std::size_t count, std::size_t leastElementSize) {
    if (archive.isStoring() && count > std::numeric_limits<std::uint32_t>::max()) {
        throw vxArchive::TooLarge(L"An archive counts the elements of a vector with 32 bits only.");
    }
    unsigned long exchanged = static_cast<unsigned long>(count);
    exchangeVersion(archive);
    archive || exchanged;
    if (LoadingCore* core = ArchiveAccess::loading(archive)) {
        guarded(archive, [&] { core->requireElements(exchanged, leastElementSize); });
    }
    return exchanged;
}

} // namespace detail

vxArchive& operator||(vxArchive& archive, std::vector<double>& values) {
    detail::guarded(archive, [&] {
        const unsigned long count = detail::exchangeVectorHead(archive, values.size(), sizeof(double));
        if (detail::StoringCore* core = detail::ArchiveAccess::storing(archive)) {
            core->putDoubles(values.data(), values.size());
        } else {
            values.resize(count);
            detail::ArchiveAccess::loading(archive)->getDoubles(values.data(), count);
        }
    });
    return archive;
}

vxArchive& operator||(vxArchive& archive, std::vector<long>& values) {
    detail::guarded(archive, [&] {
        const unsigned long count = detail::exchangeVectorHead(archive, values.size(), sizeof(std::uint32_t));
        if (archive.isLoading()) {
            values.resize(count);
        }
        for (long& value : values) {
            archive || value;
        }
    });
    return archive;
}

vxArchive& operator||(vxArchive& archive, std::vector<bool>& values) {
    detail::guarded(archive, [&] {
        const unsigned long count = detail::exchangeVectorHead(archive, values.size(), 1);
        if (archive.isStoring()) {
            detail::storeTruth(archive, values);
        } else {
            detail::loadTruth(archive, values, count);
        }
    });
    return archive;
}
