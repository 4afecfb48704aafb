#ifndef VXCLASSIFIER_PLATFORM_PTR_HANDLE_H
#define VXCLASSIFIER_PLATFORM_PTR_HANDLE_H

#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/rep_base.h>

#include <cstddef>
#include <type_traits>
#include <utility>

/// The only door to the reference count of a vxRepBase; used by the handles and by the archive.
///
/// Initial state: none, it has only static operations. Ownership: whoever takes a share gives it back once.
///
/// Threads: all operations may be called from any thread that has a share of the object.
class VXCLASSIFIER_API vx_PtrHandleBase_RepAccessor {
public:
    /// Takes one share of `object`.
    static void share(const vxRepBase& object) noexcept;

    /// Gives one share back; the last one deletes the object. Deletions nest only to a fixed depth: beyond it
    /// an object waits until the deletion under way is finished, so letting go of a very long chain needs no
    /// deep stack.
    static void release(const vxRepBase& object) noexcept;

    /// How many shares there are now; another thread may change it at any moment.
    static long count(const vxRepBase& object) noexcept;
};

/// What all const handles have in common, whatever they point to.
///
/// Initial state: none, it has no members. Ownership and threads: as for vxPtrHandle.
class VXCLASSIFIER_API vxPtrHandleBase_const {
protected:
    /// Throws vxBadPointer.
    [[noreturn]] static void throwBadPointer_();
};

/// What all handles have in common, whatever they point to.
///
/// Initial state, ownership, threads: as for vxPtrHandleBase_const.
class VXCLASSIFIER_API vxPtrHandleBase : public vxPtrHandleBase_const {};

namespace detail {

/// The shared part of both handle templates: one pointer and its share of the object.
template <class T, class Base>
class SharedPointer : public Base {
public:
    SharedPointer() noexcept = default;
    explicit SharedPointer(T* object) noexcept : object_(object) { share(); }
    SharedPointer(const SharedPointer& other) noexcept : object_(other.object_) { share(); }
    SharedPointer(SharedPointer&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    ~SharedPointer() { release(object_); }

    // The new share is taken before the old one is given back: the old object may own the new one. Assigning
    // a handle to itself changes nothing.
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
    SharedPointer& operator=(const SharedPointer& other) noexcept {
        reset(other.object_);
        return *this;
    }
    SharedPointer& operator=(SharedPointer&& other) noexcept {
        if (this != &other) {
            release(std::exchange(object_, std::exchange(other.object_, nullptr)));
        }
        return *this;
    }

    /// Takes a share of `object` (or none, for null), then gives up the object held so far. Resetting to the
    /// object already held changes nothing.
    void reset(T* object = nullptr) noexcept {
        if (object == object_) {
            return;
        }
        T* old = std::exchange(object_, object);
        share();
        release(old);
    }

    /// The object, or null; never throws.
    T* get() const noexcept { return object_; }
    bool isNull() const noexcept { return object_ == nullptr; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    /// The object. Throws vxBadPointer when the handle is null.
    T* operator->() const {
        if (object_ == nullptr) {
            Base::throwBadPointer_();
        }
        return object_;
    }
    /// The object. Throws vxBadPointer when the handle is null.
    T& operator*() const { return *operator->(); }

    /// Handles are equal when they point to the same object (or both to none); the objects' values are not
    /// looked at.
    friend bool operator==(const SharedPointer& a, const SharedPointer& b) noexcept {
        return a.object_ == b.object_;
    }
    friend bool operator!=(const SharedPointer& a, const SharedPointer& b) noexcept {
        return a.object_ != b.object_;
    }
    friend bool operator==(const SharedPointer& a, std::nullptr_t) noexcept { return a.object_ == nullptr; }
    friend bool operator!=(const SharedPointer& a, std::nullptr_t) noexcept { return a.object_ != nullptr; }

private:
    void share() const noexcept {
        if (object_ != nullptr) {
            vx_PtrHandleBase_RepAccessor::share(*object_);
        }
    }
    static void release(T* object) noexcept {
        if (object != nullptr) {
            vx_PtrHandleBase_RepAccessor::release(*object);
        }
    }

    T* object_ = nullptr;
};

} // namespace detail

/// Shares an object of a class derived from vxRepBase, for reading and writing.
///
/// Initial state: null. `->` and `*` on a null handle throw vxBadPointer; test with isNull() where null is
/// legal.
///
/// Ownership: a handle made from a raw pointer takes a share, a copy takes another, a move takes none; the
/// last share given back deletes the object. Nothing is copied on write.
///
/// Threads: several threads may copy and release handles to one object; one handle object needs the caller's
/// care like any other variable.
template <class T>
class vxPtrHandle : public detail::SharedPointer<T, vxPtrHandleBase> {
    using Shared = detail::SharedPointer<T, vxPtrHandleBase>;

public:
    vxPtrHandle() noexcept = default;
    vxPtrHandle(std::nullptr_t) noexcept {}
    explicit vxPtrHandle(T* object) noexcept : Shared(object) {}

    /// A handle to a derived class gives a handle to its base.
    template <class U, std::enable_if_t<std::is_convertible_v<U*, T*>, int> = 0>
    vxPtrHandle(const vxPtrHandle<U>& other) noexcept : Shared(other.get()) {}
};

/// Shares an object of a class derived from vxRepBase, for reading only. Otherwise like vxPtrHandle, which
/// converts to it.
///
/// Initial state: null. Ownership and threads: as for vxPtrHandle.
template <class T>
class vxPtrHandle_const : public detail::SharedPointer<const T, vxPtrHandleBase_const> {
    using Shared = detail::SharedPointer<const T, vxPtrHandleBase_const>;

public:
    vxPtrHandle_const() noexcept = default;
    vxPtrHandle_const(std::nullptr_t) noexcept {}
    explicit vxPtrHandle_const(const T* object) noexcept : Shared(object) {}

    template <class U, std::enable_if_t<std::is_convertible_v<const U*, const T*>, int> = 0>
    vxPtrHandle_const(const vxPtrHandle_const<U>& other) noexcept : Shared(other.get()) {}
    template <class U, std::enable_if_t<std::is_convertible_v<const U*, const T*>, int> = 0>
    vxPtrHandle_const(const vxPtrHandle<U>& other) noexcept : Shared(other.get()) {}
};

#endif
