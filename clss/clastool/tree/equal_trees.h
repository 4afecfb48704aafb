#ifndef CLSS_CLASTOOL_TREE_EQUAL_TREES_H
#define CLSS_CLASTOOL_TREE_EQUAL_TREES_H

#include <vxclassifier/decision_tree.h>

#include <cstddef>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace detail {

/// Remembers which trees were found equal.
///
/// Trees made of the library's own classes fall into classes of equal ones: if a equals b and b equals c,
/// then a equals c, and there is no need to compare them. That matters: two trees of n nodes can be shared in
/// such ways that n * n different pairs meet, but only 2 * n of them can join two classes. A caller's own
/// predicates and trees may compare as they like, with a tolerance for instance; what depends on them is
/// remembered pair by pair.
class EqualTrees {
public:
    /// Whether the left tree is known to equal the right one. A tree that was never added equals nothing,
    /// not even itself, since it may hold a NaN.
    bool areKnown(const vxDecisionTree& left, const vxDecisionTree& right);

    /// All that was compared to find them equal is of the library's own classes.
    void addTransitive(const vxDecisionTree& left, const vxDecisionTree& right);

    void addPair(const vxDecisionTree& left, const vxDecisionTree& right);

private:
    using Pair = std::pair<const vxDecisionTree*, const vxDecisionTree*>;
    struct PairHash {
        std::size_t operator()(const Pair& pair) const noexcept;
    };

    std::size_t numberOf(const vxDecisionTree& tree);
    std::size_t classOf(std::size_t number) noexcept;

    // A forest: each tree has a number and points to another one of its class, the last one to itself.
    std::unordered_map<const vxDecisionTree*, std::size_t> numbers_;
    std::vector<std::size_t> next_;

    std::unordered_set<Pair, PairHash> pairs_;
};

} // namespace detail

#endif
