#ifndef CLSS_CLASTOOL_TREE_TREE_WALK_H
#define CLSS_CLASTOOL_TREE_TREE_WALK_H

#include <vxclassifier/decision_tree_leaf.h>
#include <vxclassifier/feature_pattern.h>

namespace detail {

/// The leaf that the pattern comes to from the top of a tree.
///
/// Takes no share and no memory. An interruption check that is installed is made at each step. Throws what
/// that check and callers' predicates throw, and vxBadPointer at a null tree or predicate, or a tree that is
/// neither node nor leaf.
const vxDecisionTreeLeaf& leafFor(const vxDecisionTree& top, const vxFeaturePattern& pattern);

} // namespace detail

#endif
