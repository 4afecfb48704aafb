#ifndef PLATFORM_SYSTEM_ATTENTION_CHECK_H
#define PLATFORM_SYSTEM_ATTENTION_CHECK_H

#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/status.h>

namespace detail {

/// Which interruption check this thread has: a loop that calls nothing of the caller's may make one that
/// nobody can observe less often.
enum class InstalledCheck {
    none,       // nothing to call
    cancelFlag, // only reads a flag, which never goes unseen for long
    callers     // the application's own function, which may count its calls
};

InstalledCheck kindOfInstalledCheck() noexcept;

inline bool isAttentionCheckInstalled() noexcept {
    return kindOfInstalledCheck() != InstalledCheck::none;
}

inline void throwIfInterrupted() {
    vfThrowExceptionOnFailure(vsys_attention_check());
}

} // namespace detail

#endif
