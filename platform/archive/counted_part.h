#ifndef PLATFORM_ARCHIVE_COUNTED_PART_H
#define PLATFORM_ARCHIVE_COUNTED_PART_H

#include "platform/archive/class_cache.h"

#include <vxclassifier/platform/persistent.h>
#include <vxclassifier/platform/rep_base.h>

#include <cstddef>

namespace detail {

/// Finds the part of an object that counts its handles, as dynamic_cast does, and remembers for each class
/// where it lies.
class CountedPart {
public:
    /// Null for an object that is not counted.
    const vxRepBase* of(const vxPersistent& object) {
        const std::ptrdiff_t distance = distances_.get(object, [&object] { return distanceIn(object); });
        if (distance == none) {
            return nullptr;
        }
        return static_cast<const vxRepBase*>(static_cast<const void*>(addressOf(object) + distance));
    }

private:
    static constexpr std::ptrdiff_t none = 0; // the two parts do not lie in one place

    static const char* addressOf(const vxPersistent& object) noexcept {
        return static_cast<const char*>(static_cast<const void*>(&object));
    }

    static std::ptrdiff_t distanceIn(const vxPersistent& object) {
        const auto* rep = dynamic_cast<const vxRepBase*>(&object);
        const void* address = rep;
        return rep == nullptr ? none : static_cast<const char*>(address) - addressOf(object);
    }

    ClassCache<std::ptrdiff_t> distances_;
};

} // namespace detail

#endif
