#include "tests/support/failing_malloc.h"

#include "tests/support/replaces_malloc.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>

namespace {

thread_local test::Countdown mallocs;
thread_local long live = 0;

} // namespace

#if REPLACES_MALLOC

// The names under which the C library keeps its own for replacements like these.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace {

template <class Allocate>
void* allocateUnlessFailing(Allocate allocate) noexcept {
    if (mallocs.strikes()) {
        errno = ENOMEM;
        return nullptr;
    }
    void* const memory = allocate();
    live += memory == nullptr ? 0 : 1;
    return memory;
}

} // namespace

extern "C" {

void* malloc(std::size_t size) noexcept {
    return allocateUnlessFailing([size] { return __libc_malloc(size); });
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    return allocateUnlessFailing([count, size] { return __libc_calloc(count, size); });
}

void* realloc(void* memory, std::size_t size) noexcept {
    void* const moved = allocateUnlessFailing([memory, size] { return __libc_realloc(memory, size); });
    live -= moved == nullptr || memory == nullptr ? 0 : 1;
    return moved;
}

// What the operator new for more than the usual alignment calls.
void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return allocateUnlessFailing([alignment, size] { return __libc_memalign(alignment, size); });
}

void free(void* memory) noexcept {
    live -= memory == nullptr ? 0 : 1;
    __libc_free(memory);
}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

#endif

namespace test {

bool canFailMalloc() noexcept {
    return REPLACES_MALLOC == 1;
}

FailingMalloc::FailingMalloc(long number, Failing failing) noexcept {
    mallocs.start(number, failing);
}

FailingMalloc::~FailingMalloc() {
    mallocs.stop();
}

bool FailingMalloc::happened() noexcept {
    return mallocs.happened();
}

long liveMallocs() noexcept {
    return live;
}

} // namespace test
