#ifndef CLSS_CLASTOOL_TREE_TREE_LABELS_H
#define CLSS_CLASTOOL_TREE_TREE_LABELS_H

#include <vxclassifier/decision_tree_node.h>

#include <unordered_set>
#include <vector>

namespace detail {

/// Lists the labels below a node: those of the false branch, followed by those of the true branch that are
/// not listed yet, and so on at each node below. So the tree at the end of all false branches gives its own
/// list, repeated labels included, and every other one only what is new.
///
/// The walk has its own stack, since a tree may be deep, and passes by what it has seen, since a subtree may
/// lie on more paths than can be walked.
class TreeLabels {
public:
    /// To be called once. Throws vxBadPointer at a null branch.
    std::vector<long> below(const vxDecisionTreeNode& top);

private:
    void descend(const vxDecisionTreeNode* node);
    const vxDecisionTreeNode* meet(const vxDecisionTree& tree);
    void take(const std::vector<long>& labels);

    std::vector<const vxDecisionTreeNode*> open_; // their true branches are still to come
    std::unordered_set<const vxDecisionTree*> met_;
    std::vector<long> labels_;
    std::unordered_set<long> listed_; // what labels_ holds
    bool isFirst_ = true;             // no tree has given its labels yet
};

} // namespace detail

#endif
