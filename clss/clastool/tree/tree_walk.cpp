#include "clss/clastool/tree/tree_walk.h"

#include "clss/clastool/tree/range_test.h"
#include "clss/clastool/tree/tree_node_access.h"
#include "platform/system/attention_check.h"

#include <vxclassifier/platform/exception.h>

namespace detail {

namespace {

/// Whether the object is of exactly this class. The class may still be this one when the answer is no, so
/// that there must be a slower way that does without; but no names are compared.
template <class Class, class Base>
bool isSurely(const Base& object) noexcept {
    return &typeid(object) == &typeid(Class);
}

/// Null for a tree that is a leaf.
const vxDecisionTreeNode* asNode(const vxDecisionTree& tree) {
    if (isSurely<vxDecisionTreeNode>(tree)) { // most of what a walk meets
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-static-cast-downcast): the line above is the check.
        return static_cast<const vxDecisionTreeNode*>(&tree);
    }
    if (isSurely<vxDecisionTreeLeaf>(tree) || dynamic_cast<const vxDecisionTreeLeaf*>(&tree) != nullptr) {
        return nullptr;
    }
    const auto* node = dynamic_cast<const vxDecisionTreeNode*>(&tree);
    if (node == nullptr) {
        throw vxBadPointer();
    }
    return node;
}

/// What the predicate says; `isChecked` becomes whether an interruption check is installed afterwards, which
/// only a caller's predicate can change.
bool ask(const vxPredicateFunction& predicate, const vxFeaturePattern& pattern, bool& isChecked) {
    if (isSurely<vxRangePredicate>(predicate)) {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-static-cast-downcast): the line above is the check.
        return RangeTest::outcome(static_cast<const vxRangePredicate&>(predicate), pattern);
    }
    const bool outcome = predicate.outcome(pattern);
    isChecked = isAttentionCheckInstalled();
    return outcome;
}

} // namespace

const vxDecisionTreeLeaf& leafFor(const vxDecisionTree& top, const vxFeaturePattern& pattern) {
    const vxDecisionTree* tree = &top;
    bool isChecked = isAttentionCheckInstalled();
    for (;;) {
        if (isChecked) {
            throwIfInterrupted();
        }
        const vxDecisionTreeNode* node = asNode(*tree);
        if (node == nullptr) {
            return static_cast<const vxDecisionTreeLeaf&>(*tree);
        }
        const bool outcome = ask(*TreeNodeAccess::predicateFunction(*node), pattern, isChecked);
        tree = &*(outcome ? TreeNodeAccess::trueTree(*node) : TreeNodeAccess::falseTree(*node));
    }
}

} // namespace detail
