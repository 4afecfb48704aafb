#ifndef PLATFORM_ARCHIVE_OBJECT_TRACKER_H
#define PLATFORM_ARCHIVE_OBJECT_TRACKER_H

#include <vxclassifier/platform/persistent.h>

#include <cstdint>
#include <mutex>
#include <unordered_map>

namespace detail {

/// Knows the objects that an archive has met, but does not keep alive, by their addresses, and a number for
/// each. Destructors and mutating operations of those objects report themselves here, on whatever thread they
/// run, so that a changed object is met anew and an address that is used again is not taken for the object
/// before.
///
/// One archive has one tracker. An object that it tracks is either alive or about to report itself, so the
/// tracker may touch it at any time.
class ObjectTracker {
public:
    static constexpr std::uint32_t unknown = 0xffffffffU;

    ObjectTracker();
    ~ObjectTracker();
    ObjectTracker(const ObjectTracker&) = delete;
    ObjectTracker& operator=(const ObjectTracker&) = delete;

    /// Remembers `number` for the object and marks the object as tracked.
    void track(const vxPersistent& object, std::uint32_t number);

    /// The number of the object that lies at this address, or `unknown`. The address may be that of an object
    /// that is gone.
    std::uint32_t numberAt(const vxPersistent* object) const noexcept;

    /// Forgets all objects; the archive gives up what keeps them alive only after that.
    void forgetAll() noexcept;

    /// The object is about to change or to go: no archive knows it any more.
    static void forgetEverywhere(const vxPersistent& object) noexcept;

private:
    void forget(const vxPersistent& object) noexcept;

    mutable std::mutex mutex_; // guards numbers_
    std::unordered_map<const vxPersistent*, std::uint32_t> numbers_;
};

} // namespace detail

#endif
