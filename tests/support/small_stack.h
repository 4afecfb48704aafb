#ifndef TESTS_SUPPORT_SMALL_STACK_H
#define TESTS_SUPPORT_SMALL_STACK_H

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <functional>
#include <stdexcept>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define TESTS_SUPPORT_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define TESTS_SUPPORT_SANITIZED 1
#endif
#endif

namespace test {

/// The least stack on which work on deep structures has to do: 64 KiB, or what the system needs for any
/// thread. The sanitizers make each frame several times larger.
inline std::size_t smallStackSize() {
#if defined(TESTS_SUPPORT_SANITIZED)
    constexpr std::size_t wanted = std::size_t{512} << 10;
#else
    constexpr std::size_t wanted = std::size_t{64} << 10;
#endif
    const long least = ::sysconf(_SC_THREAD_STACK_MIN);
    return std::max(wanted, least > 0 ? static_cast<std::size_t>(least) : std::size_t{0});
}

/// As many objects in a row as no recursion survives on the stack above. The sanitizers take their time for
/// each.
#if defined(TESTS_SUPPORT_SANITIZED)
constexpr long longChain = 100000;
#else
constexpr long longChain = 1000000;
#endif

/// Runs `work` on a thread with a stack of `size` bytes and passes its exception on.
inline void runOnStack(std::size_t size, const std::function<void()>& work) {
    struct Job {
        const std::function<void()>& work;
        std::exception_ptr error;
    } job{work, nullptr};
    pthread_attr_t attributes;
    pthread_t thread;
    if (::pthread_attr_init(&attributes) != 0 || ::pthread_attr_setstacksize(&attributes, size) != 0) {
        throw std::runtime_error("the system refuses a stack of that size");
    }
    const auto run = [](void* argument) -> void* {
        Job& mine = *static_cast<Job*>(argument);
        try {
            mine.work();
        } catch (...) {
            mine.error = std::current_exception();
        }
        return nullptr;
    };
    const int failed = ::pthread_create(&thread, &attributes, run, &job);
    ::pthread_attr_destroy(&attributes);
    if (failed != 0) {
        throw std::runtime_error("the system refuses a thread with a stack of that size");
    }
    ::pthread_join(thread, nullptr);
    if (job.error) {
        std::rethrow_exception(job.error);
    }
}

inline void runOnSmallStack(const std::function<void()>& work) {
    runOnStack(smallStackSize(), work);
}

} // namespace test

#endif
