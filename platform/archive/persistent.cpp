#include <vxclassifier/platform/persistent.h>

#include "platform/archive/loading_core.h"
#include "platform/archive/object_tracker.h"
#include "platform/archive/persistent_access.h"
#include "platform/archive/storing_core.h"
#include "platform/archive/tracking_mark.h"
#include "platform/archive/visited_scope.h"

vxPersistent::~vxPersistent() {
    if (isTracked_()) {
        mutating_();
    }
}

void vxPersistent::dispatchSerialize(vxArchive& archive) {
    if (haveVisited(this, sizeof(vxPersistent))) {
        return;
    }
    unsigned char version = 0;
    archive || version;
    if (version != 0) {
        throw vxArchive::UnknownVersion(nullptr, 0);
    }
    setVisited(this, sizeof(vxPersistent));
}

void vxPersistent::reInit() {}

void vxPersistent::loadSimple(vxArchive& archive) {
    if (archive.isStoring()) {
        throw vxArchive::Misuse(L"An object can be loaded only from an archive that is being read.");
    }
    archive || *this;
}

void vxPersistent::serializePointer(vxArchive& archive, vxPersistent* in, vxPersistent*& out) {
    detail::guarded(archive, [&] {
        if (detail::StoringCore* core = detail::ArchiveAccess::storing(archive)) {
            core->putPointer(archive, in);
        } else {
            out = detail::ArchiveAccess::loading(archive)->getPointer(archive);
        }
    });
}

bool vxPersistent::haveVisited(const void* object, std::size_t size) noexcept {
    const detail::VisitedScope* scope = detail::VisitedScope::current();
    return scope != nullptr && scope->has(object, size);
}

void vxPersistent::setVisited(const void* object, std::size_t size) {
    if (detail::VisitedScope* scope = detail::VisitedScope::current()) {
        scope->add(object, size);
    }
}

// NOLINTNEXTLINE(readability-make-member-function-const): an object that cannot change has nothing to announce.
void vxPersistent::mutating_() noexcept {
    if (detail::TrackingMark::hasTrackers(tracking_)) {
        detail::ObjectTracker::forgetEverywhere(*this);
    }
    detail::TrackingMark::removeAnyStamp(tracking_);
}

vxArchive& operator||(vxArchive& archive, vxPersistent& object) {
    const detail::VisitedScope scope;
    detail::guarded(archive, [&] {
        detail::PersistentAccess::dispatchSerialize(object, archive);
        if (archive.isLoading()) {
            object.reInit();
        }
    });
    return archive;
}
