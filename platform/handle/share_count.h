#ifndef PLATFORM_HANDLE_SHARE_COUNT_H
#define PLATFORM_HANDLE_SHARE_COUNT_H

#include "platform/handle/only_thread.h"

#include <vxclassifier/platform/interlocked.h>
#include <vxclassifier/platform/rep_base.h>

#include <atomic>
#include <cstdint>

namespace detail {

/// Takes shares of objects and gives them back: what vx_PtrHandleBase_RepAccessor does, to be inlined where
/// the library does so for very many objects.
///
/// Threads: as there. Without another thread nobody can see the time between the reading and the writing of a
/// count.
class ShareCount {
public:
    static void share(const vxRepBase& object) noexcept {
        std::atomic<std::intptr_t>& count = object.count_;
        if (isOnlyThread()) {
            count.store(count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
        } else {
            vfInterlockedIncrement(count);
        }
    }

    static void release(const vxRepBase& object) noexcept {
        if (oneLess(object.count_) == 0) {
            destroy(object);
        }
    }

private:
    static std::intptr_t oneLess(std::atomic<std::intptr_t>& count) noexcept {
        if (!isOnlyThread()) {
            return vfInterlockedDecrement(count);
        }
        const std::intptr_t next = count.load(std::memory_order_relaxed) - 1;
        count.store(next, std::memory_order_relaxed);
        return next;
    }

    /// Deletes an object without any share, at once or when the deletion under way is finished.
    static void destroy(const vxRepBase& object) noexcept;
};

} // namespace detail

#endif
