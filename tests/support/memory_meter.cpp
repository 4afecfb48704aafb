#include "tests/support/memory_meter.h"

#include "tests/support/replaces_malloc.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <malloc.h>

namespace {

// Signed: what was allocated before a meter may be given back under it.
struct Meter {
    bool on = false;
    std::int64_t held = 0;
    std::int64_t blocks = 0;
    std::int64_t peak = 0;
    std::int64_t total = 0;
    std::int64_t allocations = 0;
};

thread_local Meter meter;

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

void* taken(void* memory) noexcept {
    if (meter.on && memory != nullptr) {
        const std::int64_t size = static_cast<std::int64_t>(malloc_usable_size(memory));
        meter.held += size;
        ++meter.blocks;
        meter.total += size;
        ++meter.allocations;
        meter.peak = std::max(meter.peak, meter.held);
    }
    return memory;
}

void givenBack(void* memory) noexcept {
    if (meter.on && memory != nullptr) {
        meter.held -= static_cast<std::int64_t>(malloc_usable_size(memory));
        --meter.blocks;
    }
}

} // namespace

extern "C" {

void* malloc(std::size_t size) noexcept {
    return taken(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    return taken(__libc_calloc(count, size));
}

// Counted as if both blocks were there for a moment, as they may be.
void* realloc(void* memory, std::size_t size) noexcept {
    const std::int64_t before = memory == nullptr ? 0 : static_cast<std::int64_t>(malloc_usable_size(memory));
    void* const moved = taken(__libc_realloc(memory, size));
    if (meter.on && moved != nullptr) {
        meter.held -= before;
        meter.blocks -= memory == nullptr ? 0 : 1;
    }
    return moved;
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return taken(__libc_memalign(alignment, size));
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept {
    *memory = taken(__libc_memalign(alignment, size));
    return *memory == nullptr ? ENOMEM : 0;
}

void free(void* memory) noexcept {
    givenBack(memory);
    __libc_free(memory);
}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

#endif

namespace test {

bool canMeterMemory() noexcept {
    return REPLACES_MALLOC == 1;
}

MemoryMeter::MemoryMeter() noexcept {
    meter = Meter();
    meter.on = true;
}

MemoryMeter::~MemoryMeter() {
    meter.on = false;
}

std::int64_t MemoryMeter::held() const noexcept {
    return meter.held;
}

std::int64_t MemoryMeter::blocks() const noexcept {
    return meter.blocks;
}

std::int64_t MemoryMeter::peak() const noexcept {
    return meter.peak;
}

std::int64_t MemoryMeter::total() const noexcept {
    return meter.total;
}

std::int64_t MemoryMeter::allocations() const noexcept {
    return meter.allocations;
}

} // namespace test
