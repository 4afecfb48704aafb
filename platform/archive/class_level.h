#ifndef PLATFORM_ARCHIVE_CLASS_LEVEL_H
#define PLATFORM_ARCHIVE_CLASS_LEVEL_H

#include <vxclassifier/platform/archive.h>

#include <cstddef>

namespace detail {

/// Every class of this release has version 0. The place is what vxArchive::UnknownVersion is told; a null
/// name and line 0 say nothing.
inline void requireVersionZero(unsigned char version, const char* sourceName = nullptr, long line = 0) {
    if (version != 0) {
        throw vxArchive::UnknownVersion(sourceName, line);
    }
}

/// Exchanges the version byte that every archived value begins with.
inline void exchangeVersion(vxArchive& archive, const char* sourceName = nullptr, long line = 0) {
    unsigned char version = 0;
    archive || version;
    requireVersionZero(version, sourceName, line);
}

/// The frame of every dispatchSerialize: passes over a level that was exchanged already, exchanges the
/// version byte, calls `body(version)`, and marks the level only then, since a level can share address and
/// size with one below it.
template <class Level, class Body>
void exchangeLevel(vxArchive& archive, Level* level, Body body) {
    if (vxPersistent::haveVisited(level, sizeof(Level))) {
        return;
    }
    unsigned char version = 0;
    archive || version;
    body(version);
    vxPersistent::setVisited(level, sizeof(Level));
}

} // namespace detail

#endif
