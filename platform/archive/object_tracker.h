#ifndef PLATFORM_ARCHIVE_OBJECT_TRACKER_H
#define PLATFORM_ARCHIVE_OBJECT_TRACKER_H

#include <vxclassifier/platform/persistent.h>

#include <cstdint>

namespace detail {

/// Knows the objects that an archive has met and cannot keep alive, because no reference count holds them:
/// exceptions, objects on the stack. Their destructors and mutating operations report themselves here, on
/// whatever thread they run. One archive has one tracker, which forgets everything when it ends.
class ObjectTracker {
public:
    ObjectTracker() = default;
    ~ObjectTracker();
    ObjectTracker(const ObjectTracker&) = delete;
    ObjectTracker& operator=(const ObjectTracker&) = delete;

    /// Remembers `record` for the object and sets the object's mark. 0 stands for a record that is not yet
    /// written.
    void track(vxPersistent& object, std::uint32_t record);

    /// Whether the object is tracked and has not reported itself since.
    bool tracks(const vxPersistent& object) const noexcept;

    /// The record given to track(); only for an object that is tracked.
    std::uint32_t record(const vxPersistent& object) const noexcept;

    /// The object is about to change or to go: no archive knows it any more.
    static void forgetEverywhere(vxPersistent& object) noexcept;
};

} // namespace detail

#endif
