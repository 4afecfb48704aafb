#ifndef EXAMPLES_DEMO_TREE_GROWER_H
#define EXAMPLES_DEMO_TREE_GROWER_H

#include "examples/demo/labelled_split.h"

#include <vxclassifier/vxclassifier.h>

#include <vector>

namespace demo {

/// Builds a decision tree out of the library's nodes, predicates and leaves. The library walks trees but does
/// not grow them; this is the textbook way, for data of which nobody knows a rule: split where the categories
/// mix least (Gini impurity), until a branch is pure, small or `depth` levels deep. A leaf holds the shares
/// of the categories among its training patterns.
vxPtrHandle<vxDecisionTree> growTree(const std::vector<LabelledPattern>& training,
                                     const vxClassifierCosts& costs, int depth);

} // namespace demo

#endif
