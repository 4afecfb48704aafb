#ifndef TESTS_THREADS_TOGETHER_H
#define TESTS_THREADS_TOGETHER_H

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace test {

/// Calls `action(0)` to `action(count - 1)` on a thread each. None begins before all are there, so that they
/// meet even where each takes little time.
template <class Action>
void together(std::size_t count, Action action) {
    std::atomic<std::size_t> missing{count};
    std::vector<std::thread> threads;
    threads.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        threads.emplace_back([&missing, &action, i] {
            --missing;
            while (missing.load() != 0) {
                std::this_thread::yield();
            }
            action(i);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace test

#endif
