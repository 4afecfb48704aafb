#ifndef PLATFORM_ARCHIVE_CLASS_REGISTRY_H
#define PLATFORM_ARCHIVE_CLASS_REGISTRY_H

#include <vxclassifier/platform/persistent.h>

#include <string>
#include <typeinfo>
#include <vector>

namespace detail {

using MakeFunction = vxPersistent* (*)();

/// The name under which a class is archived: as the programmer wrote it, with its namespaces.
std::string archivedClassName(const std::type_info& type);

/// Adds a class and returns true; false, and no effect, when its name is taken. Thread-safe, as are the
/// look-ups.
bool registerClass(const std::type_info& type, MakeFunction make);

/// Removes what registerClass added for this class.
void unregisterClass(const std::type_info& type) noexcept;

/// Whether exactly this class is registered.
bool isRegisteredClass(const std::type_info& type);

/// The factory of a class, or null.
MakeFunction findClass(const std::string& name);

/// The names of all registered classes, in alphabetical order.
std::vector<std::string> registeredClassNames();

} // namespace detail

#endif
