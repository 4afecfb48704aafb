#include "tests/support/failing_allocation.h"

#include <cstddef>
#include <cstdlib>

namespace {

thread_local test::Countdown allocations;
thread_local long live = 0;

void* allocateOrNull(std::size_t size) noexcept {
    if (allocations.strikes()) {
        return nullptr;
    }
    void* const memory = std::malloc(size == 0 ? 1 : size);
    live += memory == nullptr ? 0 : 1;
    return memory;
}

void* allocateOrNull(std::size_t size, std::align_val_t alignment) noexcept {
    if (allocations.strikes()) {
        return nullptr;
    }
    const auto unit = static_cast<std::size_t>(alignment);
    // Whole units; a size that runs over becomes 0, which is too few for any.
    const std::size_t rounded = size == 0 ? unit : (size + unit - 1) / unit * unit;
    void* const memory = rounded < size ? nullptr : std::aligned_alloc(unit, rounded);
    live += memory == nullptr ? 0 : 1;
    return memory;
}

void* orThrow(void* memory) {
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void release(void* memory) noexcept {
    live -= memory == nullptr ? 0 : 1;
    std::free(memory);
}

} // namespace

void* operator new(std::size_t size) {
    return orThrow(allocateOrNull(size));
}
void* operator new[](std::size_t size) {
    return orThrow(allocateOrNull(size));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocateOrNull(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocateOrNull(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return orThrow(allocateOrNull(size, alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return orThrow(allocateOrNull(size, alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return allocateOrNull(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return allocateOrNull(size, alignment);
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
void operator delete(void* memory, std::align_val_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    release(memory);
}
void operator delete(void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
    release(memory);
}

namespace test {

FailingAllocation::FailingAllocation(long number, Failing failing) noexcept {
    allocations.start(number, failing);
}

FailingAllocation::~FailingAllocation() {
    allocations.stop();
}

bool FailingAllocation::happened() noexcept {
    return allocations.happened();
}

long liveAllocations() noexcept {
    return live;
}

} // namespace test
