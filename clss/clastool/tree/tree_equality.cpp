#include "clss/clastool/tree/tree_equality.h"

#include "clss/clastool/tree/tree_node_access.h"

#include <vxclassifier/comparison_predicate.h>
#include <vxclassifier/decision_tree_leaf.h>
#include <vxclassifier/range_predicate.h>
#include <vxclassifier/validity_predicate.h>

#include <typeinfo>

namespace detail {

namespace {

bool isOwnClass(const vxDecisionTree& tree) noexcept {
    return typeid(tree) == typeid(vxDecisionTreeNode) || typeid(tree) == typeid(vxDecisionTreeLeaf);
}

bool isOwnClass(const vxPredicateFunction& predicate) noexcept {
    return typeid(predicate) == typeid(vxRangePredicate) ||
           typeid(predicate) == typeid(vxComparisonPredicate) ||
           typeid(predicate) == typeid(vxValidityPredicate);
}

bool canMeetAgain(const vxDecisionTree& left, const vxDecisionTree& right) noexcept {
    return isShared(left) || isShared(right);
}

} // namespace

bool TreeEquality::areEqual(const vxDecisionTreeNode& left, const vxDecisionTree& right) {
    if (!begin(left, right)) {
        return false;
    }
    while (!open_.empty()) {
        if (!advance()) {
            return false;
        }
    }
    return true;
}

bool TreeEquality::begin(const vxDecisionTreeNode& left, const vxDecisionTree& right) {
    const auto* node = dynamic_cast<const vxDecisionTreeNode*>(&right);
    if (node == nullptr || !predicatesEqual(*TreeNodeAccess::predicateFunction(left),
                                            *TreeNodeAccess::predicateFunction(*node))) {
        return false;
    }
    onlyOwnClasses_ = onlyOwnClasses_ && isOwnClass(right);
    open_.push_back(Open{&left, node, Next::trueBranch});
    return true;
}

/// Takes the innermost open nodes one step further; false ends the comparison.
bool TreeEquality::advance() {
    Open& top = open_.back();
    const vxDecisionTreeNode& left = *top.left;
    const vxDecisionTreeNode& right = *top.right;
    switch (top.next) {
    case Next::trueBranch:
        top.next = Next::falseBranch;
        return meet(*TreeNodeAccess::trueTree(left), *TreeNodeAccess::trueTree(right));
    case Next::falseBranch:
        top.next = Next::nothing;
        return meet(*TreeNodeAccess::falseTree(left), *TreeNodeAccess::falseTree(right));
    case Next::nothing:
        break;
    }
    open_.pop_back();
    remember(left, right);
    return true;
}

bool TreeEquality::meet(const vxDecisionTree& left, const vxDecisionTree& right) {
    if (canMeetAgain(left, right) && equal_.areKnown(left, right)) {
        return true;
    }
    if (const vxDecisionTreeNode* node = exactNode(left)) {
        return begin(*node, right);
    }
    onlyOwnClasses_ = onlyOwnClasses_ && isOwnClass(left) && isOwnClass(right);
    if (!left.isEqual(right)) {
        return false;
    }
    remember(left, right);
    return true;
}

bool TreeEquality::predicatesEqual(const vxPredicateFunction& left, const vxPredicateFunction& right) {
    onlyOwnClasses_ = onlyOwnClasses_ && isOwnClass(left) && isOwnClass(right);
    return left.isEqual(right);
}

void TreeEquality::remember(const vxDecisionTree& left, const vxDecisionTree& right) {
    if (!canMeetAgain(left, right)) {
        return;
    }
    if (onlyOwnClasses_) {
        equal_.addTransitive(left, right);
    } else {
        equal_.addPair(left, right);
    }
}

} // namespace detail
