#include <vxclassifier/platform/attention.h>

#include "platform/status/exception_numbers.h"
#include "platform/status/rethrow.h"
#include "platform/system/attention_check.h"

#include <vxclassifier/platform/status.h>

namespace {

constexpr long systemModule = 1;
static_assert(vsys_attention_cancelled == vxStatus::failure(systemModule, 1),
              "the published status is the module's");

// There when the thread begins: single runs ask several times, and finding one of a library that is loaded
// later takes a call of the system's linker.
[[gnu::tls_model("initial-exec")]] thread_local vfAttentionCheck installedCheck = nullptr;
[[gnu::tls_model("initial-exec")]] thread_local void* installedContext = nullptr;

long checkFlag(void* flag) {
    return static_cast<const vxCancelFlag*>(flag)->isSet() ? vsys_attention_cancelled : vxStatus::success;
}

void convertSystemStatus(long status) {
    if (status == vsys_attention_cancelled) {
        throw vxInterrupted();
    }
}

/// Runs when the library is loaded.
struct ConverterRegistration {
    ConverterRegistration() { vfRegisterExceptionConverter(systemModule, &convertSystemStatus); }
} const converterRegistration;

} // namespace

detail::InstalledCheck detail::kindOfInstalledCheck() noexcept {
    if (installedCheck == nullptr) {
        return InstalledCheck::none;
    }
    return installedCheck == &checkFlag ? InstalledCheck::cancelFlag : InstalledCheck::callers;
}

long vsys_attention_check() {
    return installedCheck == nullptr ? vxStatus::success : installedCheck(installedContext);
}

vxAttentionScope::vxAttentionScope(vfAttentionCheck check, void* context) noexcept
    : previousCheck_(installedCheck), previousContext_(installedContext) {
    installedCheck = check;
    installedContext = context;
}

vxAttentionScope::vxAttentionScope(const vxCancelFlag& flag) noexcept
    : vxAttentionScope(&checkFlag, const_cast<vxCancelFlag*>(&flag)) {} // checkFlag only reads it

vxAttentionScope::~vxAttentionScope() {
    installedCheck = previousCheck_;
    installedContext = previousContext_;
}

vxInterrupted::vxInterrupted() : vxExceptionWithString(L"The operation was interrupted.") {}
vxInterrupted::vxInterrupted(const vxInterrupted&) noexcept = default;
vxInterrupted& vxInterrupted::operator=(const vxInterrupted&) noexcept = default;
vxInterrupted::~vxInterrupted() = default;
long vxInterrupted::errorNumber() const {
    return detail::errorNumber::interrupted;
}
void vxInterrupted::suicideAndRethrow() {
    detail::deleteAndRethrow(this);
}
