#ifndef VXCLASSIFIER_PLATFORM_ARCHIVE_DIRECTION_H
#define VXCLASSIFIER_PLATFORM_ARCHIVE_DIRECTION_H

#include <vxclassifier/platform/export.h>

class vxArchive;

namespace detail {

/// vxArchive::isLoading(), for templates that see the archive's name only.
VXCLASSIFIER_API bool isLoading(const vxArchive& archive) noexcept;

} // namespace detail

#endif
