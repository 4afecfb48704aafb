#ifndef CLSS_CLASTOOL_TREE_TREE_EQUALITY_H
#define CLSS_CLASTOOL_TREE_TREE_EQUALITY_H

#include "clss/clastool/tree/equal_trees.h"

#include <vxclassifier/decision_tree_node.h>

#include <vector>

namespace detail {

/// Compares two trees node by node: predicate, true branch, false branch, up to the first difference.
///
/// The walk has its own stack, since trees may be deep, and does not compare again what it found equal, since
/// a subtree may lie on more paths than can be walked. Being the same object is no proof of equality.
class TreeEquality {
public:
    /// To be called once. Throws vxBadPointer at a null predicate or branch on either side.
    bool areEqual(const vxDecisionTreeNode& left, const vxDecisionTree& right);

private:
    enum class Next { trueBranch, falseBranch, nothing };

    /// Two nodes whose predicates are equal.
    struct Open {
        const vxDecisionTreeNode* left;
        const vxDecisionTreeNode* right;
        Next next;
    };

    bool begin(const vxDecisionTreeNode& left, const vxDecisionTree& right);
    bool advance();
    bool meet(const vxDecisionTree& left, const vxDecisionTree& right);
    bool predicatesEqual(const vxPredicateFunction& left, const vxPredicateFunction& right);
    void remember(const vxDecisionTree& left, const vxDecisionTree& right);

    std::vector<Open> open_;
    EqualTrees equal_;
    bool onlyOwnClasses_ = true; // among what was compared so far
};

} // namespace detail

#endif
