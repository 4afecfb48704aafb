#ifndef VXCLASSIFIER_DECISION_TREE_LEAF_H
#define VXCLASSIFIER_DECISION_TREE_LEAF_H

#include <vxclassifier/classifier_result.h>
#include <vxclassifier/decision_tree.h>

/// The end of a path through a decision tree: a complete classification result.
///
/// Initial state: the given result; `make` gives an empty one.
///
/// Ownership: holds its result by value.
///
/// Threads: as for vxDecisionTree.
class VXCLASSIFIER_API vxDecisionTreeLeaf : public vxDecisionTree {
public:
    explicit vxDecisionTreeLeaf(const vxClassifierResult& result);
    vxDecisionTreeLeaf(const vxDecisionTreeLeaf& other);

    /// Throws std::bad_alloc and then changes nothing.
    vxDecisionTreeLeaf& operator=(const vxDecisionTreeLeaf& other);
    ~vxDecisionTreeLeaf() override;

    static vxPersistent* make();

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    /// The label of each entry of the result, in its order; an archive can bring repeated ones, which stay.
    std::vector<long> categoryLabels() const override;
    vxPtrHandle<vxDecisionTree> clone() const override;

    /// Whether the other is a leaf with an equal result. A leaf whose result holds a NaN is unequal even to
    /// itself.
    bool isEqual(const vxDecisionTree& other) const override;

    bool operator==(const vxDecisionTree& other) const { return isEqual(other); }
    bool operator!=(const vxDecisionTree& other) const { return !isEqual(other); }

    /// Valid until the result is replaced.
    const vxClassifierResult& classifierResult() const noexcept { return classifierResult_; }

    /// Throws std::bad_alloc and then changes nothing.
    void classifierResult(const vxClassifierResult& result);

protected:
    /// Throws vxArchive::UnknownVersion for a version other than 0.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    vxClassifierResult classifierResult_;

    static vx_Instantiator sExemplar;
};

#endif
