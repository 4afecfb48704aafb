#ifndef PLATFORM_ARCHIVE_TRACKING_MARK_H
#define PLATFORM_ARCHIVE_TRACKING_MARK_H

#include "platform/handle/only_thread.h"

#include <atomic>
#include <cstdint>

namespace detail {

/// The operations on the one word in which a persistent object says which archives rely on it staying as it
/// is; below them in the same word are the bits of detail::SpareBits, which nothing here touches.
///
/// The lower half counts the ObjectTrackers that know the object and have to be told of a change. An archive
/// that keeps the object alive can do without, if it is the first one to come: it puts a number of its own, a
/// stamp, into the upper half. The object takes the stamp away when it changes, and that is all that the
/// archive has to know. So storing an object costs no lock and no search.
class TrackingMark {
public:
    using Word = std::atomic<std::uint64_t>;

    /// Puts the stamp in, which is not 0; false when there is one already.
    static bool tryStamp(Word& word, std::uint32_t stamp) noexcept {
        std::uint64_t old = word.load(std::memory_order_relaxed);
        do {
            if ((old & stamps) != 0) {
                return false;
            }
        } while (!exchange(word, old, old | std::uint64_t{stamp} << 32, std::memory_order_relaxed));
        return true;
    }

    /// The stamp, or 0.
    static std::uint32_t stampOf(const Word& word) noexcept {
        return static_cast<std::uint32_t>(word.load(std::memory_order_relaxed) >> 32);
    }

    /// Takes the stamp back, if it is still there. Whoever then finds the object untracked, and destroys it,
    /// does so after this.
    static void removeStamp(Word& word, std::uint32_t stamp) noexcept {
        std::uint64_t old = word.load(std::memory_order_relaxed);
        while (old >> 32 == stamp && !exchange(word, old, old & ~stamps, std::memory_order_release)) {
        }
    }

    /// Takes away whatever stamp there is.
    static void removeAnyStamp(Word& word) noexcept { word.fetch_and(~stamps, std::memory_order_relaxed); }

    static void addTracker(Word& word) noexcept { word.fetch_add(oneTracker, std::memory_order_relaxed); }
    static void removeTracker(Word& word) noexcept { word.fetch_sub(oneTracker, std::memory_order_release); }
    static bool hasTrackers(const Word& word) noexcept {
        return (word.load(std::memory_order_relaxed) & ~stamps) >= oneTracker;
    }

    /// What the word has more for each tracker; what is less than this are the spare bits.
    static constexpr std::uint64_t oneTracker = 4;

private:
    /// Puts `next` in if `old`, which was read before, is there still; otherwise, and sometimes then too,
    /// reads it anew and returns false.
    static bool exchange(Word& word, std::uint64_t& old, std::uint64_t next,
                         std::memory_order order) noexcept {
        if (isOnlyThread()) {
            word.store(next, std::memory_order_relaxed);
            return true;
        }
        return word.compare_exchange_weak(old, next, order, std::memory_order_relaxed);
    }

    static constexpr std::uint64_t stamps = 0xffffffff00000000U;
};

} // namespace detail

#endif
