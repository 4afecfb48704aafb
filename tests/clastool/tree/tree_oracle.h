#ifndef TESTS_CLASTOOL_TREE_TREE_ORACLE_H
#define TESTS_CLASTOOL_TREE_TREE_ORACLE_H

#include "tests/clastool/tree/trees.h"

#include <algorithm>
#include <typeinfo>
#include <vector>

namespace test {

/// A node class of a caller that leaves everything to its base.
struct PlainNode : vxDecisionTreeNode {
    using vxDecisionTreeNode::vxDecisionTreeNode;
    vxPtrHandle<vxDecisionTree> clone() const override { return Tree(new PlainNode(*this)); }
};

inline const vxDecisionTreeNode* ownNode(const vxDecisionTree& tree) {
    return typeid(tree) == typeid(vxDecisionTreeNode) || typeid(tree) == typeid(PlainNode)
               ? dynamic_cast<const vxDecisionTreeNode*>(&tree)
               : nullptr;
}

/// The labels of a tree word for word by their definition: recursive, each path walked, each label searched.
inline std::vector<long> labelsByDefinition(const vxDecisionTree& tree) {
    const vxDecisionTreeNode* node = ownNode(tree);
    if (node == nullptr) {
        return tree.categoryLabels();
    }
    std::vector<long> labels = labelsByDefinition(*node->falseTree());
    for (const long label : labelsByDefinition(*node->trueTree())) {
        if (std::find(labels.begin(), labels.end(), label) == labels.end()) {
            labels.push_back(label);
        }
    }
    return labels;
}

/// Equality word for word by its definition.
inline bool equalByDefinition(const vxDecisionTree& a, const vxDecisionTree& b) {
    const vxDecisionTreeNode* left = ownNode(a);
    if (left == nullptr) {
        return a.isEqual(b);
    }
    const auto* right = dynamic_cast<const vxDecisionTreeNode*>(&b);
    if (right == nullptr) {
        return false;
    }
    if (!left->predicateFunction()->isEqual(*right->predicateFunction())) {
        return false;
    }
    if (!equalByDefinition(*left->trueTree(), *right->trueTree())) {
        return false;
    }
    return equalByDefinition(*left->falseTree(), *right->falseTree());
}

} // namespace test

#endif
