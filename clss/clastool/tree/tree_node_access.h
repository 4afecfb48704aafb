#ifndef CLSS_CLASTOOL_TREE_TREE_NODE_ACCESS_H
#define CLSS_CLASTOOL_TREE_TREE_NODE_ACCESS_H

#include <vxclassifier/decision_tree_node.h>

#include <typeinfo>

namespace detail {

/// The parts of a node for those who walk through a tree. The published operations hand out shares, and each
/// share costs two atomic operations.
class TreeNodeAccess {
public:
    static const vxPtrHandle_const<vxDecisionTree>& trueTree(const vxDecisionTreeNode& node) noexcept {
        return node.trueTree_;
    }
    static const vxPtrHandle_const<vxDecisionTree>& falseTree(const vxDecisionTreeNode& node) noexcept {
        return node.falseTree_;
    }
    static const vxPtrHandle_const<vxPredicateFunction>&
    predicateFunction(const vxDecisionTreeNode& node) noexcept {
        return node.predicateFunction_;
    }
};

/// The tree as a node if it is of exactly this class, else null. A derived class may behave otherwise and
/// must be called; besides, this is faster than a cast that fails.
inline const vxDecisionTreeNode* exactNode(const vxDecisionTree& tree) noexcept {
    if (typeid(tree) != typeid(vxDecisionTreeNode)) {
        return nullptr;
    }
    // The line above is the check that a dynamic cast would repeat.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-static-cast-downcast)
    return static_cast<const vxDecisionTreeNode*>(&tree);
}

/// Whether a walk can come to the tree on more than one path. One that has a single share is held by the
/// branch that leads to it and by nothing else.
inline bool isShared(const vxDecisionTree& tree) noexcept {
    return vx_PtrHandleBase_RepAccessor::count(tree) > 1;
}

} // namespace detail

#endif
