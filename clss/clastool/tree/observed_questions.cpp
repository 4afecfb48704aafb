#include "clss/clastool/tree/observed_questions.h"

#include <vxclassifier/decision_tree_node.h>
#include <vxclassifier/range_predicate.h>

#include <atomic>

namespace detail {

namespace {

std::atomic<std::uint64_t> changesOfObserved{0};

/// Not written where it is set already: parts that several classifiers share stay in all caches.
void set(std::atomic<bool>& isObserved) noexcept {
    if (!isObserved.load(std::memory_order_relaxed)) {
        isObserved.store(true, std::memory_order_relaxed);
    }
}

void countIf(const std::atomic<bool>& isObserved) noexcept {
    if (isObserved.load(std::memory_order_relaxed)) {
        changesOfObserved.fetch_add(1, std::memory_order_relaxed);
    }
}

} // namespace

void QuestionObservation::observe(const vxDecisionTreeNode& node) noexcept {
    set(node.isObserved_);
}

void QuestionObservation::observe(const vxRangePredicate& predicate) noexcept {
    set(predicate.isObserved_);
}

std::uint64_t QuestionObservation::changes() noexcept {
    return changesOfObserved.load(std::memory_order_relaxed);
}

void QuestionObservation::changing(const vxDecisionTreeNode& node) noexcept {
    countIf(node.isObserved_);
}

void QuestionObservation::changing(const vxRangePredicate& predicate) noexcept {
    countIf(predicate.isObserved_);
}

} // namespace detail
