#ifndef CLSS_CLASTOOL_TREE_OBSERVED_QUESTIONS_H
#define CLSS_CLASTOOL_TREE_OBSERVED_QUESTIONS_H

#include <cstdint>

class vxDecisionTreeNode;
class vxRangePredicate;

namespace detail {

/// Lets a class lay out the questions of a tree in a form of its own. The classifier's own tree is held by
/// constant handles, but an archive, or a caller's clone(), can leave handles to its parts that are not; so
/// who lays out a tree observes its parts, and trusts the form as long as the number of changes is the one
/// that it was when the parts were read.
///
/// Threads: as for the parts: reading and observing one needs that nobody changes it.
class QuestionObservation {
public:
    /// From now on a change of this part counts.
    static void observe(const vxDecisionTreeNode& node) noexcept;
    static void observe(const vxRangePredicate& predicate) noexcept;

    /// How many changes of observed parts there were so far in this process.
    static std::uint64_t changes() noexcept;

    /// Called by the part when it is about to change.
    static void changing(const vxDecisionTreeNode& node) noexcept;
    static void changing(const vxRangePredicate& predicate) noexcept;
};

} // namespace detail

#endif
