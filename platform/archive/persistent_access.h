#ifndef PLATFORM_ARCHIVE_PERSISTENT_ACCESS_H
#define PLATFORM_ARCHIVE_PERSISTENT_ACCESS_H

#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/persistent.h>

namespace detail {

/// The archive's own way to what only it may do with a persistent object.
class PersistentAccess {
public:
    static void dispatchSerialize(vxPersistent& object, vxArchive& archive) {
        object.dispatchSerialize(archive);
    }

    static void markTracked(vxPersistent& object, bool tracked) noexcept {
        object.tracked_.store(tracked, std::memory_order_relaxed);
    }
};

/// The way from an archive to its core.
class ArchiveAccess {
public:
    static StoringCore* storing(const vxArchive& archive) noexcept { return archive.storing_; }
    static LoadingCore* loading(const vxArchive& archive) noexcept { return archive.loading_; }
};

} // namespace detail

#endif
