#include <vxclassifier/platform/persistent.h>

#include "platform/archive/loading_core.h"
#include "platform/archive/object_tracker.h"
#include "platform/archive/persistent_access.h"
#include "platform/archive/storing_core.h"
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
    if (detail::StoringCore* core = detail::ArchiveAccess::storing(archive)) {
        core->putPointer(archive, in);
    } else {
        out = detail::ArchiveAccess::loading(archive)->getPointer(archive);
    }
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

void vxPersistent::mutating_() noexcept {
    detail::ObjectTracker::forgetEverywhere(*this);
}

vxArchive& operator||(vxArchive& archive, vxPersistent& object) {
    detail::StoringCore* storing = detail::ArchiveAccess::storing(archive);
    detail::LoadingCore* loading = detail::ArchiveAccess::loading(archive);
    const detail::VisitedScope scope;
    try {
        detail::PersistentAccess::dispatchSerialize(object, archive);
        if (loading != nullptr) {
            object.reInit();
        }
    } catch (...) {
        // What follows a half exchanged object would be misread.
        if (storing != nullptr) {
            storing->fail();
        } else {
            loading->fail();
        }
        throw;
    }
    return archive;
}
