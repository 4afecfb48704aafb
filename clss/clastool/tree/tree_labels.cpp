#include "clss/clastool/tree/tree_labels.h"

#include "clss/clastool/tree/tree_node_access.h"

#include <utility>

namespace detail {

std::vector<long> TreeLabels::below(const vxDecisionTreeNode& top) {
    descend(&top);
    while (!open_.empty()) {
        const vxDecisionTreeNode& node = *open_.back();
        open_.pop_back();
        descend(meet(*TreeNodeAccess::trueTree(node)));
    }
    return std::move(labels_);
}

/// Follows the false branches from `node`, if any, to their end.
void TreeLabels::descend(const vxDecisionTreeNode* node) {
    while (node != nullptr) {
        open_.push_back(node);
        node = meet(*TreeNodeAccess::falseTree(*node));
    }
}

/// Takes the labels of a tree that has them at hand; returns a node, whose branches come first.
const vxDecisionTreeNode* TreeLabels::meet(const vxDecisionTree& tree) {
    if (isShared(tree) && !met_.insert(&tree).second) {
        return nullptr; // its labels are listed already, or will be before anything that follows it
    }
    if (const vxDecisionTreeNode* node = exactNode(tree)) {
        return node;
    }
    take(tree.categoryLabels());
    return nullptr;
}

void TreeLabels::take(const std::vector<long>& labels) {
    for (const long label : labels) {
        if (listed_.insert(label).second || isFirst_) {
            labels_.push_back(label);
        }
    }
    isFirst_ = false;
}

} // namespace detail
