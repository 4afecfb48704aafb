#ifndef TESTS_FAILURES_FAULTS_H
#define TESTS_FAILURES_FAULTS_H

#include "tests/support/countdown.h"
#include "tests/support/failing_allocation.h"
#include "tests/support/failing_malloc.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

// Lets the n-th step of one kind fail within an operation, for n = 1, 2, 3, ... until the operation needs
// fewer steps than that, and looks each time at what the failure has left.
namespace failures {

using test::Failing;

/// What a caller's class throws when it is told to; not an exception that the library knows.
struct CallerFailure : std::runtime_error {
    CallerFailure() : std::runtime_error("the caller's code failed") {}
};

/// One way of failing.
struct Fault {
    const char* name;
    void (*start)(long number); // the number-th step of this kind fails from now on
    bool (*stop)();             // ends that; returns whether a step has failed
};

/// The operators new, and malloc where it can be replaced; once and for good.
const std::vector<Fault>& allocationFaults();

/// The interruption check of this thread: it reports a cancellation, a status that nobody knows, or throws.
const std::vector<Fault>& interruptionFaults();

/// Calls into the caller's classes (callers.h); once and for good.
const std::vector<Fault>& callFaults();

/// To be called by each operation of a caller's class: throws when it is the one to fail.
void callerIsCalled();

/// What the thread holds at the moment.
struct Held {
    long allocations = test::liveAllocations();
    long mallocs = test::liveMallocs();
    bool operator==(const Held& other) const {
        return allocations == other.allocations && mallocs == other.mallocs;
    }
};

/// Fails the step `number` of Scenario's operation, and returns whether there was such a step. A scenario is
/// made anew each time, and has
/// - attempt(), the operation. It keeps its outcome only if it succeeds;
/// - expectDone(), what holds after a success. Once more it is to succeed after any failure;
/// - expectFailed(), what holds after a failure.
template <class Scenario>
bool failStep(const Fault& fault, long number) {
    Scenario scenario;
    bool failed = false;
    fault.start(number);
    try {
        scenario.attempt();
    } catch (const std::exception&) {
        failed = true;
    }
    const bool happened = fault.stop();
    EXPECT_TRUE(happened || !failed) << "it failed by itself";
    if (failed) {
        scenario.expectFailed();
        scenario.attempt();
    }
    scenario.expectDone();
    return happened;
}

/// Fails each step of the scenario's operation. Returns how many there are.
template <class Scenario>
long failEachStep(const Fault& fault) {
    SCOPED_TRACE(fault.name);
    Scenario().attempt(); // what is allocated at the first use is not to fail
    for (long number = 1;; ++number) {
        SCOPED_TRACE(number);
        const Held before;
        if (!failStep<Scenario>(fault, number) || ::testing::Test::HasFailure()) {
            return number - 1;
        }
        if (!(before == Held())) {
            // What is allocated once for the whole process is no leak.
            const Held again;
            failStep<Scenario>(fault, number);
            EXPECT_TRUE(again == Held()) << "it leaks";
        }
    }
}

/// Does that for each fault; each must find a step to fail.
template <class Scenario>
void failEachStepOf(const std::vector<Fault>& faults) {
    for (const Fault& fault : faults) {
        EXPECT_GT(failEachStep<Scenario>(fault), 0) << fault.name;
    }
}

} // namespace failures

#endif
