#include "platform/archive/class_registry.h"

#include <cxxabi.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <new>

namespace detail {

namespace {

struct Entry {
    const std::type_info* type;
    MakeFunction make;
};

struct Registry {
    std::mutex mutex;
    std::map<std::string, Entry> entries;
};

// Made at its first use, since other libraries register their classes while this one may not be initialised
// yet; never destroyed, since they take their classes back when they are unloaded, which may come later.
Registry& registry() {
    static Registry& instance = *new Registry;
    return instance;
}

} // namespace

std::string archivedClassName(const std::type_info& type) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    if (status == -1) {
        throw std::bad_alloc();
    }
    return name ? name.get() : type.name();
}

bool registerClass(const std::type_info& type, MakeFunction make) {
    Registry& all = registry();
    const std::string name = archivedClassName(type);
    const std::lock_guard<std::mutex> lock(all.mutex);
    return all.entries.emplace(name, Entry{&type, make}).second;
}

void unregisterClass(const std::type_info& type) noexcept {
    Registry& all = registry();
    const std::lock_guard<std::mutex> lock(all.mutex);
    for (auto entry = all.entries.begin(); entry != all.entries.end(); ++entry) {
        if (*entry->second.type == type) {
            all.entries.erase(entry);
            return;
        }
    }
}

bool isRegisteredClass(const std::type_info& type) {
    Registry& all = registry();
    const std::string name = archivedClassName(type);
    const std::lock_guard<std::mutex> lock(all.mutex);
    const auto entry = all.entries.find(name);
    return entry != all.entries.end() && *entry->second.type == type;
}

MakeFunction findClass(const std::string& name) {
    Registry& all = registry();
    const std::lock_guard<std::mutex> lock(all.mutex);
    const auto entry = all.entries.find(name);
    return entry == all.entries.end() ? nullptr : entry->second.make;
}

std::vector<std::string> registeredClassNames() {
    Registry& all = registry();
    const std::lock_guard<std::mutex> lock(all.mutex);
    std::vector<std::string> names;
    for (const auto& entry : all.entries) {
        names.push_back(entry.first);
    }
    return names;
}

} // namespace detail

vx_Instantiator::vx_Instantiator(const std::type_info& type, vxPersistent* (*make)())
    : type_(type), registered_(detail::registerClass(type, make)) {}

vx_Instantiator::~vx_Instantiator() {
    if (registered_) {
        detail::unregisterClass(type_);
    }
}
