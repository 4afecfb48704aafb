#ifndef VXCLASSIFIER_PLATFORM_REP_BASE_H
#define VXCLASSIFIER_PLATFORM_REP_BASE_H

#include <vxclassifier/platform/export.h>

#include <atomic>
#include <cstdint>

namespace detail {
class ShareCount;
}

/// Base of every object that handles share: carries the reference count.
///
/// Initial state: a count of 0. Copying an object copies no count: the copy starts at 0, and an assigned
/// object keeps its own, since the count says how many handles point here and not what the object holds.
///
/// Ownership: the handle that brings the count to 0 deletes the object through the virtual destructor. An
/// object that no handle ever held (on the stack, say) is never deleted by the library.
///
/// Threads: the count changes atomically, so handles to one object may be copied and released on several
/// threads.
class VXCLASSIFIER_API vxRepBase {
public:
    virtual ~vxRepBase();

protected:
    vxRepBase() noexcept = default;
    vxRepBase(const vxRepBase&) noexcept {}
    vxRepBase& operator=(const vxRepBase&) noexcept { return *this; }

private:
    friend class detail::ShareCount;
    friend class vx_PtrHandleBase_RepAccessor;

    // The number of shares. Once it has reached 0 and the object waits for its deletion, the link to the next
    // object that waits.
    mutable std::atomic<std::intptr_t> count_{0};
};

#endif
