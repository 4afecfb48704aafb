#include "clss/clastool/foundation/observed_patterns.h"

#include <vxclassifier/feature_pattern.h>

#include <atomic>

namespace detail {

namespace {

std::atomic<std::uint64_t> changesOfObserved{0};

} // namespace

void PatternObservation::observe(const vxFeaturePattern& pattern) noexcept {
    // Not written where it is set already: the patterns of several classifiers stay in all caches.
    if (!SpareBits::isSet(pattern, vxFeaturePattern::observedBit_)) {
        SpareBits::set(pattern, vxFeaturePattern::observedBit_);
    }
}

std::uint64_t PatternObservation::changes() noexcept {
    return changesOfObserved.load(std::memory_order_relaxed);
}

void PatternObservation::changed(const vxFeaturePattern& pattern) noexcept {
    if (SpareBits::isSet(pattern, vxFeaturePattern::observedBit_)) {
        changesOfObserved.fetch_add(1, std::memory_order_relaxed);
    }
}

} // namespace detail
