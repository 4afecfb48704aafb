#ifndef VXCLASSIFIER_DECISION_TREE_NODE_H
#define VXCLASSIFIER_DECISION_TREE_NODE_H

#include <vxclassifier/decision_tree.h>
#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/ptr_handle.h>
#include <vxclassifier/predicate_function.h>

#include <atomic>

namespace detail {
class QuestionObservation;
class TreeNodeAccess;
} // namespace detail

/// A question within a decision tree: a predicate, and the subtree for each of its outcomes.
///
/// Initial state: the given parts. A node made without any has a default vxRangePredicate and one empty leaf
/// for both outcomes.
///
/// Ownership: stores clones of what it is given, and hands out shares of what it stores. A copy of a node
/// shares its parts.
///
/// Threads: as for vxDecisionTree.
class VXCLASSIFIER_API vxDecisionTreeNode : public vxDecisionTree {
public:
    vxDecisionTreeNode();
    vxDecisionTreeNode(const vxPredicateFunction& predicate, const vxDecisionTree& trueTree,
                       const vxDecisionTree& falseTree);
    vxDecisionTreeNode(const vxDecisionTreeNode& other) noexcept;

    /// `other` may be part of this tree.
    vxDecisionTreeNode& operator=(const vxDecisionTreeNode& other) noexcept;
    ~vxDecisionTreeNode() override;

    static vxPersistent* make();

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    /// The labels below the false branch, then those below the true branch that are not listed yet, each in
    /// its own order. Linear in the number of nodes and labels. Throws vxBadPointer when it comes to a null
    /// branch.
    std::vector<long> categoryLabels() const override;
    vxPtrHandle<vxDecisionTree> clone() const override;

    /// Whether the other is a node with an equal predicate, an equal true and an equal false branch, compared
    /// in this order up to the first that differs. Each of them is asked whether it equals its counterpart.
    /// Throws vxBadPointer when it comes to a null predicate or branch of either node. Nearly linear in the
    /// number of nodes, however they are shared; a caller's own predicates and trees may compare as they
    /// like, so from the first of them on it is linear in the number of pairs that meet.
    bool isEqual(const vxDecisionTree& other) const override;

    bool operator==(const vxDecisionTree& other) const { return isEqual(other); }
    bool operator!=(const vxDecisionTree& other) const { return !isEqual(other); }

    /// The parts; null only when an archive brought nothing for them, or a clone was null.
    vxPtrHandle_const<vxPredicateFunction> predicateFunction() const noexcept { return predicateFunction_; }
    vxPtrHandle_const<vxDecisionTree> trueTree() const noexcept { return trueTree_; }
    vxPtrHandle_const<vxDecisionTree> falseTree() const noexcept { return falseTree_; }

    /// Replace a part by a clone of the argument, which may be part of this tree. If cloning throws, nothing
    /// changes.
    void predicateFunction(const vxPredicateFunction& predicate);
    void trueTree(const vxDecisionTree& tree);
    void falseTree(const vxDecisionTree& tree);

protected:
    /// Throws vxArchive::UnknownVersion for a version other than 0. An object of a class that does not fit
    /// leaves a null handle.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    friend class detail::QuestionObservation;
    friend class detail::TreeNodeAccess;

    // Never null, but for what an archive or a caller's clone() brought.
    vxPtrHandle_const<vxDecisionTree> trueTree_;
    vxPtrHandle_const<vxDecisionTree> falseTree_;
    vxPtrHandle_const<vxPredicateFunction> predicateFunction_;

    // Whether somebody keeps a form of his own of this node, who is to learn of a change.
    mutable std::atomic<bool> isObserved_{false};

    static vx_Instantiator sExemplar;
};

#endif
