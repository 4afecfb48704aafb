#ifndef CLSS_CLASTOOL_TREE_FLAT_TREE_H
#define CLSS_CLASTOOL_TREE_FLAT_TREE_H

#include "clss/clastool/tree/observed_questions.h"

#include <vxclassifier/decision_tree_leaf.h>
#include <vxclassifier/feature_pattern.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace detail {

/// A decision tree laid out for walking: one array instead of three objects for each question. A walk over
/// the objects waits for memory several times at each of them once a tree is larger than the caches.
///
/// Covers the nodes of exactly the library's class whose question is a range of one measurement, which is
/// what trained trees consist of. Where anything else comes, the walk goes on over the objects. So the answer
/// is always that of leafFor for the whole tree, with the same interruption checks and exceptions.
///
/// Borrows the tree, and holds as long as nothing in it changes. Takes 24 bytes for each node and leaf.
class FlatTree {
public:
    /// As many as can be numbered.
    static constexpr std::size_t mostPlaces = 0xfffffffdU;

    /// Null if memory runs out, or for a tree that takes more places than `most`, from 1 to mostPlaces.
    static std::shared_ptr<const FlatTree> of(const vxDecisionTree& top,
                                              std::size_t most = mostPlaces) noexcept;

    /// Whether nothing in the tree has changed since it was laid out, so that leafFor may be called.
    bool holds() const noexcept { return changes_ == QuestionObservation::changes(); }

    /// As leafFor(top, pattern).
    const vxDecisionTreeLeaf& leafFor(const vxFeaturePattern& pattern) const;

private:
    friend class FlatTreeBuilder;

    struct Range {
        double lower;
        double upper;
    };
    struct End {
        const vxDecisionTreeLeaf* leaf;
        const vxClassifierCategoryResult* entries; // of the leaf, to fetch both at a time
    };

    /// What stands at a place. The branch for false stands at the next place.
    struct Place {
        union {
            Range range;
            End end;
            const vxDecisionTree* other; // may be null
        };
        std::uint32_t measurement; // of a question; else one of the following
        std::uint32_t target;      // of a question: the place of the branch for true; of a jump: where to
    };
    static constexpr std::uint32_t isLeaf = 0xffffffffU;
    static constexpr std::uint32_t isOther = 0xfffffffeU;
    static constexpr std::uint32_t isJump = 0xfffffffdU; // to a branch that is shared and stands elsewhere
    static constexpr std::uint32_t firstMark = isJump;
    static_assert(mostPlaces == firstMark, "the marks are behind the numbers of all places");

    static const vxDecisionTreeLeaf& arriveAt(const Place& place, const vxFeaturePattern& pattern,
                                              bool isChecked);

    std::vector<Place> places_;                              // the top first
    std::uint64_t changes_ = QuestionObservation::changes(); // of observed parts, up to the laying out
};

} // namespace detail

#endif
