#ifndef VXCLASSIFIER_CLASSIFIER_DECISION_TREE_H
#define VXCLASSIFIER_CLASSIFIER_DECISION_TREE_H

#include <vxclassifier/classifier.h>
#include <vxclassifier/decision_tree.h>

#include <memory>

namespace detail {
class FlatTree;
}

/// The technique that walks a decision tree built by the caller, and answers with the result in the leaf that
/// it comes to. It has no training parameters and learns nothing from data.
///
/// States: untrained at first; trained, from trainManual or an archive, while it holds a tree.
///
/// Ownership: keeps a clone of the tree. A copy of the classifier shares that clone.
///
/// Threads: as for vx_Classifier.
class VXCLASSIFIER_API vx_ClassifierDecisionTree : public vx_Classifier {
public:
    vx_ClassifierDecisionTree() noexcept;
    vx_ClassifierDecisionTree(const vx_ClassifierDecisionTree& other) noexcept;
    vx_ClassifierDecisionTree& operator=(const vx_ClassifierDecisionTree& other) noexcept;
    ~vx_ClassifierDecisionTree() override;

    static vxPersistent* make();

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    vxPtrHandle<vx_Classifier> clone() const override;

    /// Whether the other is a classifier of this class that is equivalent as the base says, with an equal
    /// tree. Throws vxBadPointer if both are untrained.
    bool isEquivalent(const vx_Classifier& other) const override;

protected:
    /// Throws vxClassifierDefs::NotImplemented.
    void train_(const vxClassifierDataProvider& provider, const vxClassifierTrainParams& params) override;
    /// Throws vxClassifierDefs::NotImplemented.
    void retrain_(const vxClassifierTrainParams& params) override;
    /// Throws vxClassifierDefs::NotImplemented.
    void trainStart_(const vxClassifierTrainParams& params) override;
    /// Throws vxClassifierDefs::NotImplemented.
    void trainIncremental_(const vxFeaturePattern& pattern, long label) override;
    void untrain_() override;
    bool isTrained_() const override;
    /// Any tree will do.
    void checkRunnable_() const override;

    /// Walks from the top of the tree to a leaf, with one interruption check at each step. Throws what that
    /// check throws, and vxBadPointer at a null tree or predicate, or a tree that is neither node nor leaf.
    void run_(const vxFeaturePattern& pattern, vxClassifierResult& result) const override;

private:
    void recordTrainInputs_(vxDiagObject* diag, unsigned long flags) const override;
    void recordTrainDetails_(vxDiagObject* diag, unsigned long flags) const override;
    void recordTrainResults_(vxDiagObject* diag, unsigned long flags) const override;
    void recordRunInputs_(vxDiagObject* diag, unsigned long flags,
                          const vxFeaturePattern& pattern) const override;
    void recordRunDetails_(vxDiagObject* diag, unsigned long flags) const override;
    void recordRunResults_(vxDiagObject* diag, unsigned long flags, const vxFeaturePattern& pattern,
                           const vxClassifierResult& result) const override;

public:
    /// Untrains, then keeps a clone of the tree, which is not checked and may be part of the tree held so
    /// far. If cloning throws, the classifier is untrained. Linear in the number of nodes.
    void trainManual(const vxDecisionTree& tree, vxDiagObject* diag = nullptr, unsigned long flags = 0);

    /// The tree, null when untrained.
    const vxPtrHandle_const<vxDecisionTree>& decisionTree() const noexcept { return tree_; }

    /// As isEquivalent, but the other classifier is asked what the base compares, and this one's tree whether
    /// it equals the other's. Throws vxBadPointer if both are untrained.
    bool operator==(const vx_ClassifierDecisionTree& other) const;
    bool operator!=(const vx_ClassifierDecisionTree& other) const { return !(*this == other); }

protected:
    /// Throws vxArchive::UnknownVersion for a version other than 0.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    void layOut() noexcept;

    vxPtrHandle_const<vxDecisionTree> tree_;       // null when untrained
    std::shared_ptr<const detail::FlatTree> flat_; // of the same tree; null if there was no memory for it

    static vx_Instantiator sExemplar;
};

#endif
