#ifndef TESTS_SUPPORT_MEMORY_METER_H
#define TESTS_SUPPORT_MEMORY_METER_H

#include <cstdint>

namespace test {

/// Whether this build can count what malloc hands out: with the GNU C library and without a sanitizer, which
/// has a malloc of its own.
bool canMeterMemory() noexcept;

/// Counts the memory that this thread takes while it lives. Compile memory_meter.cpp into the test program:
/// it replaces malloc, and with it the operators new, for the program and all its libraries. Meters do not
/// nest.
class MemoryMeter {
public:
    MemoryMeter() noexcept;
    ~MemoryMeter();
    MemoryMeter(const MemoryMeter&) = delete;
    MemoryMeter& operator=(const MemoryMeter&) = delete;

    /// What is held now, in bytes and in blocks, beyond what was held at the start.
    std::int64_t held() const noexcept;
    std::int64_t blocks() const noexcept;
    /// The most that was held at a time, in bytes, beyond what was held at the start.
    std::int64_t peak() const noexcept;
    /// What was allocated in all, given back or not.
    std::int64_t total() const noexcept;
    std::int64_t allocations() const noexcept;
};

} // namespace test

#endif
