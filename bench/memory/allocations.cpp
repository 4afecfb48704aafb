#include "bench/memory/allocations.h"

#include <malloc.h>

#include <cerrno>
#include <cstdlib>

// The C library's own names of what is replaced here.
extern "C" {
void* __libc_malloc(std::size_t size) noexcept;
void* __libc_calloc(std::size_t count, std::size_t size) noexcept;
void* __libc_realloc(void* block, std::size_t size) noexcept;
void* __libc_memalign(std::size_t alignment, std::size_t size) noexcept;
void __libc_free(void* block) noexcept;
}

namespace bench::memory {

namespace {

std::size_t allocated = 0; // the program has one thread
std::size_t peak = 0;

std::size_t sizeOf(void* block) noexcept {
    constexpr std::size_t header = sizeof(std::size_t);
    return block == nullptr ? 0 : malloc_usable_size(block) + header;
}

void* count(void* block) noexcept {
    allocated += sizeOf(block);
    peak = allocated > peak ? allocated : peak;
    return block;
}

void discount(void* block) noexcept {
    allocated -= sizeOf(block);
}

} // namespace

std::size_t allocatedBytes() noexcept {
    return allocated;
}

std::size_t peakSinceLastAsked() noexcept {
    const std::size_t most = peak;
    peak = allocated;
    return most;
}

} // namespace bench::memory

extern "C" {

void* malloc(std::size_t size) noexcept {
    return bench::memory::count(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    return bench::memory::count(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) noexcept {
    const std::size_t before = bench::memory::sizeOf(block);
    void* moved = __libc_realloc(block, size);
    if (moved == nullptr && size != 0) {
        return nullptr; // the old block is still there
    }
    bench::memory::allocated -= before;
    return bench::memory::count(moved);
}

void* memalign(std::size_t alignment, std::size_t size) noexcept {
    return bench::memory::count(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    *block = memalign(alignment, size);
    return *block == nullptr ? ENOMEM : 0;
}

void free(void* block) noexcept {
    bench::memory::discount(block);
    __libc_free(block);
}
}
