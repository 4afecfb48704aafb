#ifndef PLATFORM_SYSTEM_ATTENTION_CHECK_H
#define PLATFORM_SYSTEM_ATTENTION_CHECK_H

#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/status.h>

namespace detail {

/// Whether a check is installed for this thread. A loop that finds none, and calls nothing of the caller's,
/// need not make the check at each step: nobody can observe it.
bool isAttentionCheckInstalled() noexcept;

inline void throwIfInterrupted() {
    vfThrowExceptionOnFailure(vsys_attention_check());
}

} // namespace detail

#endif
