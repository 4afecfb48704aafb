#ifndef TESTS_CLASTOOL_TREE_SMALL_STACK_H
#define TESTS_CLASTOOL_TREE_SMALL_STACK_H

#include <pthread.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <stdexcept>

namespace test {

/// Runs `action` on a thread with a stack of 256 KiB, and throws what it throws.
inline void onSmallStack(const std::function<void()>& action) {
    constexpr std::size_t stackSize = 256 * 1024;
    struct Call {
        const std::function<void()>& action;
        std::exception_ptr thrown;
    } call{action, nullptr};
    const auto run = [](void* argument) -> void* {
        Call& running = *static_cast<Call*>(argument);
        try {
            running.action();
        } catch (...) {
            running.thrown = std::current_exception();
        }
        return nullptr;
    };
    pthread_attr_t attributes;
    pthread_t thread;
    if (pthread_attr_init(&attributes) != 0 || pthread_attr_setstacksize(&attributes, stackSize) != 0 ||
        pthread_create(&thread, &attributes, run, &call) != 0) {
        throw std::runtime_error("cannot start a thread with a small stack");
    }
    pthread_attr_destroy(&attributes);
    pthread_join(thread, nullptr);
    if (call.thrown) {
        std::rethrow_exception(call.thrown);
    }
}

} // namespace test

#endif
