#ifndef TESTS_SUPPORT_FAILING_MALLOC_H
#define TESTS_SUPPORT_FAILING_MALLOC_H

#include "tests/support/countdown.h"

namespace test {

/// Whether this build can let malloc fail: with the GNU C library and without a sanitizer, which has a malloc
/// of its own.
bool canFailMalloc() noexcept;

/// Lets malloc, calloc, realloc and aligned_alloc give null on this thread as long as it lives, and so the
/// operators new and whatever takes its memory without them, thrown exceptions included. Compile
/// failing_malloc.cpp into the test program: it replaces malloc for the program and all its libraries.
class FailingMalloc {
public:
    /// The allocation that fails, counted from 1 from now on.
    FailingMalloc(long number, Failing failing) noexcept;
    ~FailingMalloc();
    FailingMalloc(const FailingMalloc&) = delete;
    FailingMalloc& operator=(const FailingMalloc&) = delete;

    /// Whether there were so many allocations.
    static bool happened() noexcept;
};

/// How many blocks this thread took from malloc and did not give back yet; 0 where malloc cannot fail.
long liveMallocs() noexcept;

} // namespace test

#endif
