#include "fuzz/memory_watch.h"

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <malloc.h>
#include <new>

namespace {

// Signed: what was allocated before a watch may be freed under it.
thread_local std::int64_t inUse = 0;
thread_local std::int64_t limitInUse = std::numeric_limits<std::int64_t>::max();

void* allocateOrNull(std::size_t size) noexcept {
    // The comparison also keeps sizes beyond the signed numbers out of the sum.
    if (size > static_cast<std::uint64_t>(limitInUse) ||
        inUse > limitInUse - static_cast<std::int64_t>(size)) {
        return nullptr;
    }
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory != nullptr) {
        inUse += static_cast<std::int64_t>(malloc_usable_size(memory));
    }
    return memory;
}

void* allocate(std::size_t size) {
    void* memory = allocateOrNull(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void release(void* memory) noexcept {
    if (memory != nullptr) {
        inUse -= static_cast<std::int64_t>(malloc_usable_size(memory));
        std::free(memory);
    }
}

} // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocateOrNull(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocateOrNull(size);
}
void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete[](void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    release(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    release(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    release(memory);
}

namespace fuzz {

MemoryWatch::MemoryWatch(std::size_t limit) noexcept {
    inUse = 0;
    limitInUse = static_cast<std::int64_t>(limit);
}

MemoryWatch::~MemoryWatch() {
    limitInUse = std::numeric_limits<std::int64_t>::max();
}

} // namespace fuzz
