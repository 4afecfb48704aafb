#include <vxclassifier/platform/ptr_handle.h>

#include "platform/handle/share_count.h"

#include <vxclassifier/platform/exception.h>

namespace {

// Deletions of objects that own each other nest up to this depth, so that ordinary structures go in the order
// that their owners expect: an object is gone when the handle to it is. A chain of a million objects would
// need a stack of hundreds of megabytes that way, so deeper ones wait in a list until the outermost deletion
// is done.
constexpr int deepestNesting = 64;

struct Deletions {
    int nesting = 0;
    const vxRepBase* waiting = nullptr;
};

// There when the thread begins, as it holds nothing to be made first; finding one of a library that is loaded
// later would take a call of the system's linker for each deletion.
[[gnu::tls_model("initial-exec")]] thread_local Deletions deletions;

} // namespace

vxRepBase::~vxRepBase() = default;

void vx_PtrHandleBase_RepAccessor::share(const vxRepBase& object) noexcept {
    detail::ShareCount::share(object);
}

void vx_PtrHandleBase_RepAccessor::release(const vxRepBase& object) noexcept {
    detail::ShareCount::release(object);
}

void detail::ShareCount::destroy(const vxRepBase& object) noexcept {
    Deletions& state = deletions;
    if (state.nesting == deepestNesting) {
        // Nobody counts any more, so the count can hold the link: letting go must not need memory.
        object.count_.store(reinterpret_cast<std::intptr_t>(state.waiting), std::memory_order_relaxed);
        state.waiting = &object;
        return;
    }
    ++state.nesting;
    delete &object;
    while (state.nesting == 1 && state.waiting != nullptr) {
        const vxRepBase* next = state.waiting;
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the link was stored by the branch above.
        state.waiting = reinterpret_cast<const vxRepBase*>(next->count_.load(std::memory_order_relaxed));
        // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): it waited, so nobody deleted it yet.
        delete next;
    }
    --state.nesting;
}

long vx_PtrHandleBase_RepAccessor::count(const vxRepBase& object) noexcept {
    return static_cast<long>(object.count_.load(std::memory_order_relaxed));
}

void vxPtrHandleBase_const::throwBadPointer_() {
    throw vxBadPointer();
}
