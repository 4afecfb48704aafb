#ifndef PLATFORM_ARCHIVE_PERSISTENT_ACCESS_H
#define PLATFORM_ARCHIVE_PERSISTENT_ACCESS_H

#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/persistent.h>

#include <atomic>
#include <cstdint>

namespace detail {

/// The archive's own way to what only it may do with a persistent object.
class PersistentAccess {
public:
    static void dispatchSerialize(vxPersistent& object, vxArchive& archive) {
        object.dispatchSerialize(archive);
    }

    /// To be used with TrackingMark.
    static std::atomic<std::uint64_t>& tracking(const vxPersistent& object) noexcept {
        return object.tracking_;
    }
};

/// The way from an archive to its core.
class ArchiveAccess {
public:
    static StoringCore* storing(const vxArchive& archive) noexcept { return archive.storing_; }
    static LoadingCore* loading(const vxArchive& archive) noexcept { return archive.loading_; }

    /// Makes the archive unusable.
    static void fail(const vxArchive& archive) noexcept;
};

/// Runs one exchange with the archive. After an exception something may be half written or half read, and
/// what follows would be misread, so the archive cannot be used any more.
template <class Exchange>
void guarded(const vxArchive& archive, Exchange exchange) {
    try {
        exchange();
    } catch (...) {
        ArchiveAccess::fail(archive);
        throw;
    }
}

} // namespace detail

#endif
