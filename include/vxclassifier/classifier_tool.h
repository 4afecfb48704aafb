#ifndef VXCLASSIFIER_CLASSIFIER_TOOL_H
#define VXCLASSIFIER_CLASSIFIER_TOOL_H

#include <vxclassifier/classifier_train_params.h>
#include <vxclassifier/decision_tree.h>
#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/ptr_handle.h>

#include <memory>

class vxArchive;
class vx_Classifier;
class vxClassifierDataProvider;
class vxClassifierResult;
class vxDiagObject;
class vxFeaturePattern;

/// The library's public face: trained once, it decides for one feature pattern after the other.
///
/// States: empty (no classifier), holding an untrained classifier, trained. Empty at first, and after a
/// failed choice of technique; untrained after untrain() and after any other failed training.
///
/// Ownership: owns its classifier, which owns clones of the parameters or the tree. A copy of a tool has a
/// classifier of its own.
///
/// Threads: a trained tool may be run by several threads as long as none of them changes it. It takes no
/// locks.
///
/// The diagnostic arguments say what to record (see vxDiagObject); the techniques of this library record
/// nothing.
class VXCLASSIFIER_API vxClassifierTool {
public:
    vxClassifierTool();

    /// Copies a trained classifier; a copy of an untrained tool is empty.
    vxClassifierTool(const vxClassifierTool& other);

    /// Drops the own classifier and copies the other's, if it is trained. Assigning a tool to itself empties
    /// it. If copying throws, the tool is empty.
    vxClassifierTool& operator=(const vxClassifierTool& other);

    ~vxClassifierTool();

    /// Learns from labelled data by the technique that the class of `params` stands for. The previous
    /// training is lost in any case. Throws:
    /// - vxClassifierDefs::NotImplemented if the parameters fail to make a classifier, vxBadPointer if they
    ///   make none; the tool is empty then;
    /// - what the technique throws; the tool is untrained then;
    /// - if params.throwIfNotReady(), what the trial run throws: an error of vxClassifierDefs leaves the tool
    ///   untrained, any other (vxInterrupted, say) leaves it trained.
    void train(const vxClassifierDataProvider& provider, const vxClassifierTrainParams& params,
               vxDiagObject* diag = nullptr, unsigned long flags = 0);

    /// Takes over a copy of a tree built by hand. The previous training is lost in any case; the tool is
    /// untrained if this throws.
    void train(const vxDecisionTree& tree, vxDiagObject* diag = nullptr, unsigned long flags = 0);

    /// Replaces the parameters and keeps what was learnt. Throws vxClassifierDefs::NotTrained when untrained,
    /// vxClassifierDefs::BadMethod for parameters of another technique, and what the technique throws, all of
    /// which change nothing; what cloning the parameters throws (std::bad_alloc), after which trainParams()
    /// gives the old ones, but the nearest neighbours decide by the new ones until they are retrained; and
    /// what the trial run throws, as for train.
    void retrain(const vxClassifierTrainParams& params, vxDiagObject* diag = nullptr,
                 unsigned long flags = 0);

    /// Classifies a pattern. Throws vxClassifierDefs::NotTrained when untrained, and what the technique
    /// throws. `result` changes only if nothing throws.
    void run(const vxFeaturePattern& pattern, vxClassifierResult& result, vxDiagObject* diag = nullptr,
             unsigned long flags = 0) const;

    /// Forgets what was learnt; without effect when untrained.
    void untrain();

    bool isTrained() const;

    /// The parameters of the last training or retraining. Throws vxClassifierDefs::NotTrained when untrained,
    /// and vxClassifierDefs::BadMethod for a tool trained with a tree.
    vxPtrHandle_const<vxClassifierTrainParams> trainParams() const;

    /// The tree that the tool was trained with. Throws vxClassifierDefs::NotTrained when untrained, and
    /// vxClassifierDefs::BadMethod for a tool trained by another technique.
    vxPtrHandle_const<vxDecisionTree> decisionTree() const;

    /// Both untrained, or both trained by the same technique with equal parameters to an equal state.
    bool operator==(const vxClassifierTool& other) const;
    bool operator!=(const vxClassifierTool& other) const { return !(*this == other); }

private:
    friend VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierTool& tool);

    void checkReady(const vxClassifierTrainParams& params);

    std::unique_ptr<vxPtrHandle<vx_Classifier>>
        classifier_; // never null; the handle is null while the tool is empty
};

/// Exchanges a version byte and the classifier. Load into a fresh tool: the classifier held so far is
/// released first, and an archive that then turns out bad leaves the tool empty. Throws
/// vxArchive::UnknownVersion for a version other than 0.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierTool& tool);

#endif
