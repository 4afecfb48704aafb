#include "tests/failures/faults.h"

#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/status.h>

#include <optional>

namespace failures {

namespace {

template <class Failure>
std::optional<Failure>& active() {
    static std::optional<Failure> failure;
    return failure;
}

template <class Failure, Failing failing>
void start(long number) {
    active<Failure>().emplace(number, failing);
}

template <class Failure>
bool stop() {
    const bool happened = Failure::happened();
    active<Failure>().reset();
    return happened;
}

template <class Failure, Failing failing>
Fault faultOf(const char* name) {
    return Fault{name, &start<Failure, failing>, &stop<Failure>};
}

test::Countdown calls;

/// The caller's classes, in the form of the other two.
class FailingCall {
public:
    FailingCall(long number, Failing failing) noexcept { calls.start(number, failing); }
    ~FailingCall() { calls.stop(); }
    FailingCall(const FailingCall&) = delete;
    FailingCall& operator=(const FailingCall&) = delete;
    static bool happened() noexcept { return calls.happened(); }
};

test::Countdown checks;

long reportCancellation() {
    return vsys_attention_cancelled;
}

long reportUnknown() {
    constexpr long nobodysModule = 4000;
    return vxStatus::failure(nobodysModule, 3);
}

long throwFromCheck() {
    throw CallerFailure();
}

using Report = long (*)();

template <Report report>
class FailingCheck {
public:
    FailingCheck(long number, Failing failing) : scope_(&check, nullptr) { checks.start(number, failing); }
    ~FailingCheck() { checks.stop(); }
    FailingCheck(const FailingCheck&) = delete;
    FailingCheck& operator=(const FailingCheck&) = delete;
    static bool happened() noexcept { return checks.happened(); }

private:
    static long check(void*) { return checks.strikes() ? report() : vxStatus::success; }

    vxAttentionScope scope_;
};

} // namespace

const std::vector<Fault>& allocationFaults() {
    static const std::vector<Fault> ofNew{
        faultOf<test::FailingAllocation, Failing::once>("one new"),
        faultOf<test::FailingAllocation, Failing::forGood>("every new from now on"),
    };
    static const std::vector<Fault> all{
        ofNew[0],
        ofNew[1],
        faultOf<test::FailingMalloc, Failing::once>("one malloc"),
        faultOf<test::FailingMalloc, Failing::forGood>("every malloc from now on"),
    };
    return test::canFailMalloc() ? all : ofNew;
}

const std::vector<Fault>& interruptionFaults() {
    static const std::vector<Fault> all{
        faultOf<FailingCheck<&reportCancellation>, Failing::forGood>("a cancellation"),
        faultOf<FailingCheck<&reportUnknown>, Failing::once>("an unknown status"),
        faultOf<FailingCheck<&throwFromCheck>, Failing::once>("a check that throws"),
    };
    return all;
}

const std::vector<Fault>& callFaults() {
    static const std::vector<Fault> all{
        faultOf<FailingCall, Failing::once>("one call of the caller's code"),
        faultOf<FailingCall, Failing::forGood>("every call of the caller's code from now on"),
    };
    return all;
}

void callerIsCalled() {
    if (calls.strikes()) {
        throw CallerFailure();
    }
}

} // namespace failures
