#include <vxclassifier/decision_tree_node.h>

#include "clss/clastool/tree/observed_questions.h"
#include "clss/clastool/tree/tree_equality.h"
#include "clss/clastool/tree/tree_labels.h"
#include "platform/archive/class_level.h"

#include <vxclassifier/decision_tree_leaf.h>
#include <vxclassifier/platform/archive.h>
#include <vxclassifier/range_predicate.h>

#include <utility>

vx_Instantiator vxDecisionTreeNode::sExemplar(typeid(vxDecisionTreeNode), &vxDecisionTreeNode::make);

vxDecisionTreeNode::vxDecisionTreeNode()
    : trueTree_(new vxDecisionTreeLeaf(vxClassifierResult())), falseTree_(trueTree_),
      predicateFunction_(new vxRangePredicate) {}

vxDecisionTreeNode::vxDecisionTreeNode(const vxPredicateFunction& predicate, const vxDecisionTree& trueTree,
                                       const vxDecisionTree& falseTree) {
    // In the order of the arguments, which callers' classes can observe; the members stand in another one.
    predicateFunction_ = predicate.clone();
    trueTree_ = trueTree.clone();
    falseTree_ = falseTree.clone();
}

vxDecisionTreeNode::vxDecisionTreeNode(const vxDecisionTreeNode& other) noexcept
    : vxDecisionTree(other), trueTree_(other.trueTree_), falseTree_(other.falseTree_),
      predicateFunction_(other.predicateFunction_) {}

vxDecisionTreeNode& vxDecisionTreeNode::operator=(const vxDecisionTreeNode& other) noexcept {
    // `other` may lie below this node and go with the branch that is given up.
    vxDecisionTreeNode copy(other);
    detail::QuestionObservation::changing(*this);
    std::swap(trueTree_, copy.trueTree_);
    std::swap(falseTree_, copy.falseTree_);
    std::swap(predicateFunction_, copy.predicateFunction_);
    return *this;
}

vxDecisionTreeNode::~vxDecisionTreeNode() = default;

vxPersistent* vxDecisionTreeNode::make() {
    return new vxDecisionTreeNode;
}

std::vector<long> vxDecisionTreeNode::categoryLabels() const {
    return detail::TreeLabels().below(*this);
}

vxPtrHandle<vxDecisionTree> vxDecisionTreeNode::clone() const {
    return vxPtrHandle<vxDecisionTree>(new vxDecisionTreeNode(*this));
}

bool vxDecisionTreeNode::isEqual(const vxDecisionTree& other) const {
    return detail::TreeEquality().areEqual(*this, other);
}

void vxDecisionTreeNode::predicateFunction(const vxPredicateFunction& predicate) {
    vxPtrHandle_const<vxPredicateFunction> clone = predicate.clone();
    detail::QuestionObservation::changing(*this);
    predicateFunction_ = std::move(clone);
}

void vxDecisionTreeNode::trueTree(const vxDecisionTree& tree) {
    vxPtrHandle_const<vxDecisionTree> clone = tree.clone();
    detail::QuestionObservation::changing(*this);
    trueTree_ = std::move(clone);
}

void vxDecisionTreeNode::falseTree(const vxDecisionTree& tree) {
    vxPtrHandle_const<vxDecisionTree> clone = tree.clone();
    detail::QuestionObservation::changing(*this);
    falseTree_ = std::move(clone);
}

void vxDecisionTreeNode::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vxDecisionTreeNode::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxDecisionTree::dispatchSerialize(archive);
    if (archive.isLoading()) {
        detail::QuestionObservation::changing(*this);
    }
    archive || trueTree_;
    archive || falseTree_;
    archive || predicateFunction_;
}
