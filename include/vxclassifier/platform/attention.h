#ifndef VXCLASSIFIER_PLATFORM_ATTENTION_H
#define VXCLASSIFIER_PLATFORM_ATTENTION_H

#include <vxclassifier/platform/exception.h>
#include <vxclassifier/platform/export.h>

#include <atomic>

/// The interruption check that long loops make at each step: returns the status of the check installed for
/// this thread, or success when there is none (then it costs one thread-local read).
VXCLASSIFIER_API long vsys_attention_check();

/// The status of a cancelled operation; vfThrowExceptionOnFailure turns it into vxInterrupted.
inline constexpr long vsys_attention_cancelled = static_cast<long>(0x80000021UL);

/// A check that an application installs: gets the context given with it and returns a status (see status.h);
/// a failure ends the operation that made the check.
using vfAttentionCheck = long (*)(void* context);

/// A flag by which one thread cancels what another one does.
///
/// Initial state: not set.
///
/// Ownership: none; it must outlive the scopes that use it.
///
/// Threads: all operations may be called from any thread.
class VXCLASSIFIER_API vxCancelFlag {
public:
    void set() noexcept { flag_.store(true, std::memory_order_release); }
    void clear() noexcept { flag_.store(false, std::memory_order_release); }
    bool isSet() const noexcept { return flag_.load(std::memory_order_acquire); }

private:
    std::atomic<bool> flag_{false};
};

/// Installs a check for the current thread as long as it lives, in place of the one installed before, which
/// it puts back when it ends. Scopes nest; they must end on their own thread, in the reverse order in which
/// they began.
///
/// Initial state: installed.
///
/// Ownership: the context or the flag is borrowed and must outlive the scope.
///
/// Threads: concerns the thread that made it and no other.
class VXCLASSIFIER_API vxAttentionScope {
public:
    /// `check` must not be null; it is called with `context` at every step of a long loop on this thread.
    vxAttentionScope(vfAttentionCheck check, void* context) noexcept;

    /// A check that fails with vsys_attention_cancelled once `flag` is set.
    explicit vxAttentionScope(const vxCancelFlag& flag) noexcept;

    ~vxAttentionScope();
    vxAttentionScope(const vxAttentionScope&) = delete;
    vxAttentionScope& operator=(const vxAttentionScope&) = delete;

private:
    vfAttentionCheck previousCheck_;
    void* previousContext_;
};

/// An operation was abandoned because the interruption check reported vsys_attention_cancelled.
///
/// Initial state: a fixed message. Ownership and threads: as for vxException.
class VXCLASSIFIER_API vxInterrupted : public vxExceptionWithString {
public:
    vxInterrupted();
    vxInterrupted(const vxInterrupted&) noexcept;
    vxInterrupted& operator=(const vxInterrupted&) noexcept;
    ~vxInterrupted() override;

    long errorNumber() const override;
    void suicideAndRethrow() override;
};

#endif
