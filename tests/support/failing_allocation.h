#ifndef TESTS_SUPPORT_FAILING_ALLOCATION_H
#define TESTS_SUPPORT_FAILING_ALLOCATION_H

#include "tests/support/countdown.h"

#include <new>

namespace test {

/// Lets allocations of this thread fail as long as it lives. Compile failing_allocation.cpp into the test
/// program: it replaces all forms of the operators new and delete for the program and the library.
class FailingAllocation {
public:
    /// The allocation that fails, counted from 1 from now on.
    explicit FailingAllocation(long number, Failing failing = Failing::once) noexcept;
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// Whether there were so many allocations.
    static bool happened() noexcept;
};

/// How many allocations of this thread were made and not given back yet.
long liveAllocations() noexcept;

/// Makes the first, then the second, ... allocation of `attempt()` fail, until it needs fewer than that and
/// succeeds; calls `check()` after each failure. Returns the number of failures.
template <class Attempt, class Check>
long failEachAllocation(Attempt attempt, Check check) {
    for (long number = 1;; ++number) {
        try {
            const FailingAllocation failing(number);
            attempt();
            return number - 1;
        } catch (const std::bad_alloc&) {
        }
        check();
    }
}

} // namespace test

#endif
