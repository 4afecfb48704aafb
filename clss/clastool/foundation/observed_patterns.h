#ifndef CLASTOOL_FOUNDATION_OBSERVED_PATTERNS_H
#define CLASTOOL_FOUNDATION_OBSERVED_PATTERNS_H

#include <cstdint>

class vxFeaturePattern;

namespace detail {

/// Lets a class keep figures that it derived from patterns which it shares with others. Patterns are
/// immutable but for assignment and loading in place; who keeps figures observes the patterns, and trusts the
/// figures as long as the number of changes is the one that it was when the patterns were read.
///
/// Threads: as for the patterns: reading and observing one needs that nobody changes it.
class PatternObservation {
public:
    /// From now on a change of this pattern counts.
    static void observe(const vxFeaturePattern& pattern) noexcept;

    /// How many changes of observed patterns there were so far in this process.
    static std::uint64_t changes() noexcept;

    /// Called by the pattern when its measurements have changed.
    static void changed(const vxFeaturePattern& pattern) noexcept;
};

} // namespace detail

#endif
