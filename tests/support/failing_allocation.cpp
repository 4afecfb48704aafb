#include "tests/support/failing_allocation.h"

#include <cstdlib>

namespace {

thread_local test::Countdown allocations;
thread_local long live = 0;

void* allocate(std::size_t size) {
    if (allocations.strikes()) {
        throw std::bad_alloc();
    }
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    ++live;
    return memory;
}

void release(void* memory) noexcept {
    live -= memory == nullptr ? 0 : 1;
    std::free(memory);
}

} // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
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
