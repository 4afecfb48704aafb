#include <vxclassifier/platform/archive_handle.h>

#include "platform/archive/loading_core.h"
#include "platform/archive/persistent_access.h"

void detail::leaveWithArchive(vxArchive& archive) noexcept {
    ArchiveAccess::loading(archive)->leaveLast();
}
