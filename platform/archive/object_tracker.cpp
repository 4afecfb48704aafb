#include "platform/archive/object_tracker.h"

#include "platform/archive/persistent_access.h"
#include "platform/archive/tracking_mark.h"

#include <algorithm>
#include <vector>

namespace detail {

namespace {

struct LiveTrackers {
    std::mutex mutex; // taken before that of any tracker
    std::vector<ObjectTracker*> all;
};

// Never destroyed: objects with static storage may report themselves after the end of main().
LiveTrackers& liveTrackers() {
    static LiveTrackers& instance = *new LiveTrackers;
    return instance;
}

} // namespace

ObjectTracker::ObjectTracker() {
    LiveTrackers& live = liveTrackers();
    const std::lock_guard<std::mutex> lock(live.mutex);
    live.all.push_back(this);
}

ObjectTracker::~ObjectTracker() {
    // In this order: an object whose destructor finds itself tracked must still find the tracker.
    forgetAll();
    LiveTrackers& live = liveTrackers();
    const std::lock_guard<std::mutex> lock(live.mutex);
    live.all.erase(std::find(live.all.begin(), live.all.end(), this));
}

void ObjectTracker::track(const vxPersistent& object, std::uint32_t number) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (numbers_.insert_or_assign(&object, number).second) {
        TrackingMark::addTracker(PersistentAccess::tracking(object));
    }
}

std::uint32_t ObjectTracker::numberAt(const vxPersistent* object) const noexcept {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto entry = numbers_.find(object);
    return entry == numbers_.end() ? unknown : entry->second;
}

void ObjectTracker::forgetAll() noexcept {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const auto& entry : numbers_) {
        TrackingMark::removeTracker(PersistentAccess::tracking(*entry.first));
    }
    numbers_.clear();
}

void ObjectTracker::forget(const vxPersistent& object) noexcept {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (numbers_.erase(&object) != 0) {
        TrackingMark::removeTracker(PersistentAccess::tracking(object));
    }
}

void ObjectTracker::forgetEverywhere(const vxPersistent& object) noexcept {
    LiveTrackers& live = liveTrackers();
    const std::lock_guard<std::mutex> lock(live.mutex);
    for (ObjectTracker* tracker : live.all) {
        tracker->forget(object);
    }
}

} // namespace detail
