#ifndef PLATFORM_HANDLE_ONLY_THREAD_H
#define PLATFORM_HANDLE_ONLY_THREAD_H

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

namespace detail {

/// Whether the process surely has no other thread than the one that asks. Then reading and writing a variable
/// is as good as changing it atomically, which takes several times as long. A system that does not tell
/// answers false.
inline bool isOnlyThread() noexcept {
#if __has_include(<sys/single_threaded.h>)
    return __libc_single_threaded != 0;
#else
    return false;
#endif
}

} // namespace detail

#endif
