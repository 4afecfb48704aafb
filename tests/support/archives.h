#ifndef TESTS_SUPPORT_ARCHIVES_H
#define TESTS_SUPPORT_ARCHIVES_H

#include <vxclassifier/platform/archive.h>

#include <cstddef>
#include <vector>

namespace test {

using Bytes = std::vector<unsigned char>;

/// The bytes in front of an archive's content.
constexpr std::size_t frameSize = 28;

/// Calls `write(archive)` on a storing archive and returns the sealed bytes.
template <class Write>
Bytes archiveOf(Write write) {
    vxStoringArchive archive;
    write(archive);
    archive.finish();
    return archive.bytes();
}

/// The sealed archive of one value, written with `archive || value`.
template <class T>
Bytes stored(const T& value) {
    // An archive only reads what it stores.
    return archiveOf([&](vxArchive& archive) { archive || const_cast<T&>(value); });
}

/// What an archive holds between its frame and its end.
inline Bytes payload(const Bytes& sealed) {
    return Bytes(sealed.begin() + frameSize, sealed.end());
}

/// Fills `into` from an archive that holds nothing else.
template <class T>
void load(const Bytes& sealed, T& into) {
    vxLoadingArchive archive(sealed);
    archive || into;
    archive.finish();
}

/// Stores an object by pointer and returns the sealed bytes.
inline Bytes storedPointer(vxPersistent* object) {
    return archiveOf([&](vxArchive& archive) {
        vxPersistent* unused = nullptr;
        vxPersistent::serializePointer(archive, object, unused);
    });
}

} // namespace test

#endif
