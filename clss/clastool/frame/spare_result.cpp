#include "clss/clastool/frame/spare_result.h"

#include "clss/clastool/foundation/result_access.h"

#include <cstddef>
#include <utility>

namespace detail {

namespace {

// What a thread keeps from a result with more categories than this would be more than it is worth.
constexpr std::size_t mostKept = 256;

/// What is left over from the last run of this thread. It has no destructor, so that it can be asked at any
/// time, also by the destructors that run at the end of the thread. And it is there when the thread begins:
/// each run asks for it, and finding one of a library that is loaded later takes a call of the system's
/// linker.
struct LeftOver {
    vxClassifierResult* result; // owned; may be null
    enum { unused, open, closed } state;
};

[[gnu::tls_model("initial-exec")]] thread_local LeftOver leftOver{nullptr, LeftOver::unused};

struct Closer {
    Closer() noexcept { leftOver.state = LeftOver::open; }
    ~Closer() {
        delete leftOver.result;
        leftOver = {nullptr, LeftOver::closed};
    }
    Closer(const Closer&) = delete;
    Closer& operator=(const Closer&) = delete;
};

void openForThisThread() {
    thread_local const Closer closer;
    static_cast<void>(closer);
}

} // namespace

SpareResult::SpareResult() : result_(std::exchange(leftOver.result, nullptr)) {
    if (result_ == nullptr) {
        result_ = std::make_unique<vxClassifierResult>();
    }
}

SpareResult::~SpareResult() {
    LeftOver& kept = leftOver;
    if (kept.result != nullptr || ResultAccess::capacity(*result_) > mostKept) {
        return;
    }
    if (kept.state == LeftOver::unused) {
        openForThisThread();
    }
    if (kept.state == LeftOver::open) {
        ResultAccess::clear(*result_);
        kept.result = result_.release();
    }
}

} // namespace detail
