#ifndef VXCLASSIFIER_PLATFORM_ARCHIVE_HANDLE_H
#define VXCLASSIFIER_PLATFORM_ARCHIVE_HANDLE_H

#include <vxclassifier/platform/archive_direction.h>
#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/persistent.h>
#include <vxclassifier/platform/ptr_handle.h>

#include <type_traits>
#include <typeinfo>
#include <utility>

class vxArchive;

namespace detail {

/// Tells the archive that whoever asked for the pointer that it loaded last does not take the object.
VXCLASSIFIER_API void leaveWithArchive(vxArchive& archive) noexcept;

template <class To, class From, class = void>
inline constexpr bool isStaticallyCastable = false;
template <class To, class From>
inline constexpr bool
    isStaticallyCastable<To, From, std::void_t<decltype(static_cast<To>(std::declval<From>()))>> = true;

/// The object as a T, or null. Usually it is of exactly that class, which takes less time to find out than
/// how another class may be derived from it. (A virtual base has no static way down.)
template <class T>
T* castTo(vxPersistent* object) {
    if constexpr (isStaticallyCastable<T*, vxPersistent*>) {
        if (typeid(*object) == typeid(T)) {
            return static_cast<T*>(object);
        }
    }
    return dynamic_cast<T*>(object);
}

template <class T, class Handle>
vxArchive& exchangeHandle(vxArchive& archive, Handle& handle) {
    vxPersistent* stored = nullptr;
    if (isLoading(archive)) {
        handle.reset();
    } else {
        // An archive only reads what it stores, whatever the handle allows.
        stored = const_cast<T*>(handle.get());
    }
    vxPersistent* loaded = nullptr;
    vxPersistent::serializePointer(archive, stored, loaded);
    if (loaded != nullptr) {
        if (T* object = castTo<T>(loaded)) {
            handle.reset(object);
        } else {
            leaveWithArchive(archive);
        }
    }
    return archive;
}

} // namespace detail

/// Exchanges the pointer to a shared object. Loading first releases the object that the handle holds; an
/// object of a class that the handle cannot hold leaves the handle null.
template <class T>
vxArchive& operator||(vxArchive& archive, vxPtrHandle<T>& handle) {
    return detail::exchangeHandle<T>(archive, handle);
}

template <class T>
vxArchive& operator||(vxArchive& archive, vxPtrHandle_const<T>& handle) {
    return detail::exchangeHandle<T>(archive, handle);
}

#endif
