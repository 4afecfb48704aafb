#ifndef FUZZ_MEMORY_WATCH_H
#define FUZZ_MEMORY_WATCH_H

#include <cstddef>

namespace fuzz {

/// Watches what this thread allocates as long as it lives, and lets `new` fail with std::bad_alloc where the
/// limit would be passed. Compile memory_watch.cpp into the program: it replaces the operators new and
/// delete for the program and the library. Watches do not nest.
class MemoryWatch {
public:
    explicit MemoryWatch(std::size_t limit) noexcept;
    ~MemoryWatch();
    MemoryWatch(const MemoryWatch&) = delete;
    MemoryWatch& operator=(const MemoryWatch&) = delete;
};

} // namespace fuzz

#endif
