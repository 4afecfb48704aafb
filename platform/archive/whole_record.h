#ifndef PLATFORM_ARCHIVE_WHOLE_RECORD_H
#define PLATFORM_ARCHIVE_WHOLE_RECORD_H

#include "platform/archive/class_registry.h"

#include <cstddef>
#include <typeinfo>

namespace detail {

/// How the objects of one class go into an archive, and come out of it, in one step. For classes of which an
/// archive holds very many objects, which refer to no others and do not override reInit(). Their
/// dispatchSerialize stays: it says what the bytes are and what is wrong with others, and classes derived
/// from them use it.
///
/// The functions are given objects of exactly that class.
struct WholeRecord {
    /// How many bytes dispatchSerialize writes; 0 if it has to be asked itself.
    std::size_t (*size)(const vxPersistent& object);

    /// Writes these bytes. Calls nothing of the archive's user.
    void (*put)(const vxPersistent& object, unsigned char* to) noexcept;

    /// Makes an object from so many bytes, if dispatchSerialize would take exactly these and find nothing
    /// wrong; otherwise null.
    vxPersistent* (*get)(const unsigned char* from, std::size_t size);
};

/// What was offered for exactly this class, or null. May be asked on several threads at once, as the other.
const WholeRecord* wholeRecordOf(const std::type_info& type) noexcept;

/// What was offered for exactly the class whose objects this function makes, or null.
const WholeRecord* wholeRecordOf(MakeFunction make) noexcept;

/// Offers the whole records of a class of this library. Only as a static object: all offers are made while
/// the library is loaded, before anybody can look one up, and so need no lock.
class WholeRecordOffer {
public:
    WholeRecordOffer(const std::type_info& type, MakeFunction make, const WholeRecord& whole);
};

} // namespace detail

#endif
