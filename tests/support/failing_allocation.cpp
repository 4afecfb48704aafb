#include "tests/support/failing_allocation.h"

#include <cstdlib>

namespace {

thread_local long allocationsUntilFailure = 0; // 0: none fails

void* allocate(std::size_t size) {
    if (allocationsUntilFailure > 0 && --allocationsUntilFailure == 0) {
        throw std::bad_alloc();
    }
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

} // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace test {

FailingAllocation::FailingAllocation(long number) noexcept {
    allocationsUntilFailure = number;
}

FailingAllocation::~FailingAllocation() {
    allocationsUntilFailure = 0;
}

} // namespace test
