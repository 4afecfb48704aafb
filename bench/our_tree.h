#ifndef BENCH_OUR_TREE_H
#define BENCH_OUR_TREE_H

#include "bench/grown_tree.h"

#include <vxclassifier/decision_tree_leaf.h>
#include <vxclassifier/decision_tree_node.h>
#include <vxclassifier/platform/range.h>
#include <vxclassifier/range_predicate.h>

#include <limits>
#include <vector>

namespace bench {

/// What a leaf says of its two most frequent categories.
inline vxClassifierResult leafResult(long label) {
    const long second = (label + 1) % GrownTree::numCategories;
    return {{{label, 0.75, 0.75, 0.25}, {second, 0.25, 0.25, 0.75}}, 0.0};
}

/// The same tree, made of this library's nodes.
inline vxPtrHandle_const<vxDecisionTree> ourTree(const GrownTree& grown) {
    const std::vector<GrownNode>& nodes = grown.nodes();
    std::vector<vxPtrHandle_const<vxDecisionTree>> made(nodes.size());
    for (std::size_t i = nodes.size(); i-- > 0;) { // children first
        const GrownNode& node = nodes[i];
        if (node.isLeaf) {
            made[i].reset(new vxDecisionTreeLeaf(leafResult(node.label)));
        } else {
            const vxRange low(-std::numeric_limits<double>::infinity(), node.threshold);
            const vxRangePredicate predicate(low, {static_cast<long>(node.measurement)});
            made[i].reset(
                new vxDecisionTreeNode(predicate, *made[node.children[0]], *made[node.children[1]]));
        }
        if (!node.isLeaf) { // the node has clones of its own
            made[node.children[0]].reset();
            made[node.children[1]].reset();
        }
    }
    return made.front();
}

} // namespace bench

#endif
