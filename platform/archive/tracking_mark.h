#ifndef PLATFORM_ARCHIVE_TRACKING_MARK_H
#define PLATFORM_ARCHIVE_TRACKING_MARK_H

#include <atomic>
#include <cstdint>

namespace detail {

/// The operations on the one word in which a persistent object says who relies on it staying as it is.
///
/// An archive that keeps an object alive needs no notice when the object changes. It counts itself in as a
/// mark and remembers the number of changes; the object counts a change and thereby takes all marks away. So
/// storing objects costs no lock, and threads that store the same ones do not wait for each other.
///
/// An archive that does not keep the object alive is told by way of its ObjectTracker, which is counted
/// apart.
///
/// Bits of the word: 0 to 26 the trackers; 27 to 32 the marks; 33 to 63 the changes. Each tracker belongs to
/// an archive of more than a kilobyte, so they do not overflow. An archive would have to sleep through two
/// thousand million changes under the marks of others to take a changed object for an unchanged one.
class TrackingMark {
public:
    using Word = std::atomic<std::uint64_t>;

    /// Adds a mark and tells the number of changes; false when the word holds as many marks as it can.
    static bool tryAdd(Word& word, std::uint32_t& changes) noexcept {
        std::uint64_t old = word.load(std::memory_order_relaxed);
        do {
            if ((old & marks) == marks) {
                return false;
            }
        } while (!word.compare_exchange_weak(old, old + oneMark, std::memory_order_relaxed));
        changes = changesOf(old);
        return true;
    }

    /// Takes the mark back that was added at that number of changes, unless a change took it. Whoever then
    /// finds the object untracked, and destroys it, does so after this.
    static void remove(Word& word, std::uint32_t changes) noexcept {
        std::uint64_t old = word.load(std::memory_order_relaxed);
        while (changesOf(old) == changes &&
               !word.compare_exchange_weak(old, old - oneMark, std::memory_order_release,
                                           std::memory_order_relaxed)) {
        }
    }

    /// Whether a mark that was added at that number of changes is still there.
    static bool isValid(const Word& word, std::uint32_t changes) noexcept {
        return changesOf(word.load(std::memory_order_relaxed)) == changes;
    }

    /// Counts a change if there are marks, and takes them away.
    static void change(Word& word) noexcept {
        std::uint64_t old = word.load(std::memory_order_relaxed);
        while ((old & marks) != 0 &&
               !word.compare_exchange_weak(old, (old & ~marks) + oneChange, std::memory_order_relaxed)) {
        }
    }

    static void addTracker(Word& word) noexcept { word.fetch_add(1, std::memory_order_relaxed); }
    static void removeTracker(Word& word) noexcept { word.fetch_sub(1, std::memory_order_release); }
    static bool hasTrackers(const Word& word) noexcept {
        return (word.load(std::memory_order_relaxed) & trackers) != 0;
    }

private:
    static constexpr std::uint64_t trackers = (std::uint64_t{1} << 27) - 1;
    static constexpr std::uint64_t oneMark = std::uint64_t{1} << 27;
    static constexpr std::uint64_t oneChange = std::uint64_t{1} << 33;
    static constexpr std::uint64_t marks = oneChange - oneMark;

    static std::uint32_t changesOf(std::uint64_t word) noexcept {
        return static_cast<std::uint32_t>(word / oneChange);
    }
};

} // namespace detail

#endif
