#ifndef BENCH_MEMORY_ALLOCATIONS_H
#define BENCH_MEMORY_ALLOCATIONS_H

#include <cstddef>

/// What the program holds in allocated memory, the allocator's own bytes for each block included. The
/// allocation functions of the C library are replaced for this, for everything in the process.
namespace bench::memory {

std::size_t allocatedBytes() noexcept;

/// The most that was held since the last call of this function.
std::size_t peakSinceLastAsked() noexcept;

} // namespace bench::memory

#endif
