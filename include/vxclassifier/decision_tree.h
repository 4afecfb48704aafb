#ifndef VXCLASSIFIER_DECISION_TREE_H
#define VXCLASSIFIER_DECISION_TREE_H

#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/persistent.h>
#include <vxclassifier/platform/ptr_handle.h>
#include <vxclassifier/platform/rep_base.h>

#include <vector>

/// Base of the parts of a decision tree: vxDecisionTreeNode, which asks a question, and vxDecisionTreeLeaf,
/// which has the answer. A tree is the node or leaf at its top. A class derived from neither can be part of a
/// tree, but has no way to decide: a run that comes to it throws vxBadPointer.
///
/// Initial state: none of its own.
///
/// Ownership: nodes and classifiers keep clones of the trees that they are given, and share subtrees, which
/// nobody changes once they are attached.
///
/// Threads: a tree that nobody changes may be read by any number of threads.
///
/// Trees may be millions of nodes deep, and a subtree may be reached on any number of paths: clones,
/// comparisons, lists of labels, archives and releases take stack that does not grow with the depth, and time
/// that grows with the number of different nodes, not with that of the paths. A class derived from
/// vxDecisionTreeNode is reached by virtual calls, which nest as deep as such nodes do.
class VXCLASSIFIER_API vxDecisionTree : public vxPersistent, public vxRepBase {
public:
    vxDecisionTree() noexcept;
    vxDecisionTree(const vxDecisionTree&) noexcept;
    vxDecisionTree& operator=(const vxDecisionTree&) noexcept;
    ~vxDecisionTree() override;

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    /// The labels that the tree can produce. A comparison, or a list of labels, asks a tree of a caller's
    /// class that it reaches on several paths only once.
    virtual std::vector<long> categoryLabels() const = 0;

    /// A new copy of the most-derived object, which may share its subtrees.
    virtual vxPtrHandle<vxDecisionTree> clone() const = 0;

    /// Whether the other tree is of the same kind, shape and content; the base has no content and says true.
    virtual bool isEqual(const vxDecisionTree& other) const;

    /// How many entries categoryLabels() has; lists them to count them, and throws what that throws.
    long numCategories() const;

protected:
    /// Throws vxArchive::UnknownVersion for a version other than 0.
    void serialize_(vxArchive& archive, unsigned char version);
};

#endif
