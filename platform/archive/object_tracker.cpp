#include "platform/archive/object_tracker.h"

#include "platform/archive/persistent_access.h"

#include <map>
#include <mutex>
#include <utility>

namespace detail {

namespace {

// Ordered by object first, so that all archives that know an object stand together.
using Key = std::pair<const vxPersistent*, const ObjectTracker*>;

struct Tracked {
    vxPersistent* object;
    std::uint32_t record;
};

struct Table {
    std::mutex mutex;
    std::map<Key, Tracked> entries;
};

// Never destroyed: objects with static storage may report themselves after the end of main().
Table& table() {
    static Table& instance = *new Table;
    return instance;
}

bool isKnown(const Table& all, const vxPersistent& object) {
    const auto entry = all.entries.lower_bound(Key(&object, nullptr));
    return entry != all.entries.end() && entry->first.first == &object;
}

} // namespace

ObjectTracker::~ObjectTracker() {
    Table& all = table();
    const std::lock_guard<std::mutex> lock(all.mutex);
    for (auto entry = all.entries.begin(); entry != all.entries.end();) {
        if (entry->first.second != this) {
            ++entry;
            continue;
        }
        vxPersistent& object = *entry->second.object;
        entry = all.entries.erase(entry);
        if (!isKnown(all, object)) {
            PersistentAccess::markTracked(object, false);
        }
    }
}

void ObjectTracker::track(vxPersistent& object, std::uint32_t record) {
    Table& all = table();
    const std::lock_guard<std::mutex> lock(all.mutex);
    all.entries[Key(&object, this)] = Tracked{&object, record};
    PersistentAccess::markTracked(object, true);
}

bool ObjectTracker::tracks(const vxPersistent& object) const noexcept {
    Table& all = table();
    const std::lock_guard<std::mutex> lock(all.mutex);
    return all.entries.count(Key(&object, this)) != 0;
}

std::uint32_t ObjectTracker::record(const vxPersistent& object) const noexcept {
    Table& all = table();
    const std::lock_guard<std::mutex> lock(all.mutex);
    return all.entries.find(Key(&object, this))->second.record;
}

void ObjectTracker::forgetEverywhere(vxPersistent& object) noexcept {
    Table& all = table();
    const std::lock_guard<std::mutex> lock(all.mutex);
    auto entry = all.entries.lower_bound(Key(&object, nullptr));
    while (entry != all.entries.end() && entry->first.first == &object) {
        entry = all.entries.erase(entry);
    }
    PersistentAccess::markTracked(object, false);
}

} // namespace detail
