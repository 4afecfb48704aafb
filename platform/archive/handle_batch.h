#ifndef PLATFORM_ARCHIVE_HANDLE_BATCH_H
#define PLATFORM_ARCHIVE_HANDLE_BATCH_H

#include "platform/archive/loading_core.h"
#include "platform/archive/persistent_access.h"
#include "platform/archive/storing_core.h"

#include <vxclassifier/platform/archive_handle.h>
#include <vxclassifier/platform/archive_vector.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace detail {

// For those who keep handles by the hundred thousand: the same bytes, the same errors as `archive || handles`
// gives, which takes each handle through the whole archive alone.

template <class T>
void storeHandles(vxArchive& archive, std::vector<vxPtrHandle_const<T>>& handles) {
    exchangeVectorHead(archive, handles.size(), 1);
    guarded(archive, [&] {
        StoringCore& core = *ArchiveAccess::storing(archive);
        core.expectPointers(handles.size());
        constexpr std::size_t atOnce = 64;
        std::array<vxPersistent*, atOnce> objects;
        for (std::size_t first = 0; first < handles.size(); first += atOnce) {
            const std::size_t count = std::min(atOnce, handles.size() - first);
            for (std::size_t i = 0; i < count; ++i) {
                objects[i] = const_cast<T*>(handles[first + i].get()); // it is only read
            }
            core.putPointers(archive, objects.data(), count);
        }
    });
}

template <class T>
void loadHandles(vxArchive& archive, std::vector<vxPtrHandle_const<T>>& handles) {
    const unsigned long count = exchangeVectorHead(archive, 0, 1);
    handles.clear();
    handles.reserve(reservableElements(archive, count, sizeof(handles.front())));
    guarded(archive, [&] {
        LoadingCore& core = *ArchiveAccess::loading(archive);
        for (unsigned long i = 0; i < count; ++i) {
            vxPersistent* loaded = core.getCounted();
            if (loaded == nullptr) {
                loaded = core.getPointer(archive);
            }
            const T* const object = loaded == nullptr ? nullptr : castTo<T>(loaded);
            if (loaded != nullptr && object == nullptr) {
                core.leaveLast();
            }
            handles.emplace_back(object);
        }
    });
}

template <class T>
void exchangeHandles(vxArchive& archive, std::vector<vxPtrHandle_const<T>>& handles) {
    if (archive.isStoring()) {
        storeHandles(archive, handles);
    } else {
        loadHandles(archive, handles);
    }
}

} // namespace detail

#endif
