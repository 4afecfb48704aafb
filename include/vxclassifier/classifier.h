#ifndef VXCLASSIFIER_CLASSIFIER_H
#define VXCLASSIFIER_CLASSIFIER_H

#include <vxclassifier/classifier_train_params.h>
#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/persistent.h>
#include <vxclassifier/platform/ptr_handle.h>
#include <vxclassifier/platform/rep_base.h>

class vxClassifierDataProvider;
class vxClassifierResult;
class vxDiagObject;
class vxFeaturePattern;

/// Base of the techniques. The public operations are the protocol: they check the state, call the technique's
/// hooks in a fixed order, record, and keep the training parameters. A technique supplies the computation by
/// the hooks, whose names end in an underscore. Applications use vxClassifierTool, which holds one of these.
///
/// States: untrained and trained, as the technique's isTrained_ says; untrained at first.
///
/// Ownership: keeps a clone of the parameters of the last training or retraining. Copies share that clone,
/// which nobody changes.
///
/// Threads: a trained classifier may be run by several threads as long as none of them trains, assigns or
/// untrains it.
class VXCLASSIFIER_API vx_Classifier : public vxPersistent, public vxRepBase {
public:
    ~vx_Classifier() override;

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    /// A new copy of the most-derived object.
    virtual vxPtrHandle<vx_Classifier> clone() const = 0;

    /// Whether both are in the same state and have equal parameters or both none. A technique's override asks
    /// first for its own class, then this, and then compares what it has learnt.
    virtual bool isEquivalent(const vx_Classifier& other) const;

protected:
    // The hooks. What they throw passes through to the caller of the operation.

    /// Learns from the data; called once by train, in the untrained state. `params` may be of any class.
    virtual void train_(const vxClassifierDataProvider& provider, const vxClassifierTrainParams& params) = 0;

    /// Takes over other parameters of the same technique; called once by retrain, in the trained state.
    virtual void retrain_(const vxClassifierTrainParams& params) = 0;

    /// Prepares for incremental training; called once by trainStart, in the untrained state.
    virtual void trainStart_(const vxClassifierTrainParams& params) = 0;

    /// Learns one more pattern; called once by trainIncremental, in the trained state.
    virtual void trainIncremental_(const vxFeaturePattern& pattern, long label) = 0;

    /// Forgets what was learnt; called once by untrain, in the trained state.
    virtual void untrain_() = 0;

    /// Whether the classifier is trained; called by nearly every operation.
    virtual bool isTrained_() const = 0;

    /// Throws if the trained classifier cannot run; called by the tool after training.
    virtual void checkRunnable_() const = 0;

    /// Classifies; called once by run, in the trained state. `result` is empty, and reaches the caller only
    /// if nothing throws.
    virtual void run_(const vxFeaturePattern& pattern, vxClassifierResult& result) const = 0;

private:
    // The recording hooks. `diag` is the destination of the recording, except that recordTrainDetails_ gets
    // the caller's own object; it may be null. `flags` are those that the recording destination passes on.
    virtual void recordTrainInputs_(vxDiagObject* diag, unsigned long flags) const = 0;
    virtual void recordTrainDetails_(vxDiagObject* diag, unsigned long flags) const = 0;
    virtual void recordTrainResults_(vxDiagObject* diag, unsigned long flags) const = 0;
    virtual void recordRunInputs_(vxDiagObject* diag, unsigned long flags,
                                  const vxFeaturePattern& pattern) const = 0;
    virtual void recordRunDetails_(vxDiagObject* diag, unsigned long flags) const = 0;
    virtual void recordRunResults_(vxDiagObject* diag, unsigned long flags, const vxFeaturePattern& pattern,
                                   const vxClassifierResult& result) const = 0;

public:
    /// Untrains, then learns from the data. If that throws, there are no parameters, and what the technique
    /// built until then is up to the technique. `diag` may be null; `params` may be what trainParams() handed
    /// out.
    void train(const vxClassifierDataProvider& provider, const vxClassifierTrainParams& params,
               vxDiagObject* diag = nullptr, unsigned long flags = 0);

    /// Untrains, then prepares for incremental training. If that throws, there are no parameters.
    void trainStart(const vxClassifierTrainParams& params);

    /// Learns one more pattern. Throws vxClassifierDefs::NotTrained when untrained. `diag` and `flags` are
    /// not used.
    void trainIncremental(const vxFeaturePattern& pattern, long label, vxDiagObject* diag = nullptr,
                          unsigned long flags = 0);

    /// Replaces the parameters and keeps what was learnt. Throws vxClassifierDefs::NotTrained when untrained,
    /// and vxClassifierDefs::BadMethod for parameters of another technique, or when there were none; the old
    /// parameters stay whenever this throws. The technique takes the new ones over before they are cloned, so
    /// if cloning throws, it may run by them already (the nearest neighbours do) until it is retrained.
    /// `diag` and `flags` are not used.
    void retrain(const vxClassifierTrainParams& params, vxDiagObject* diag = nullptr,
                 unsigned long flags = 0);

    /// Classifies a pattern. Throws vxClassifierDefs::NotTrained when untrained. `result` changes only if
    /// nothing throws.
    void run(const vxFeaturePattern& pattern, vxClassifierResult& result, vxDiagObject* diag = nullptr,
             unsigned long flags = 0) const;

    /// Forgets what was learnt, and the parameters; without effect when untrained.
    void untrain();

    bool isTrained() const { return isTrained_(); }

    /// The parameters of the last training or retraining. Throws vxClassifierDefs::NotTrained when untrained,
    /// and vxClassifierDefs::BadMethod when the training had no parameters.
    vxPtrHandle_const<vxClassifierTrainParams> trainParams() const;

    /// Untrained, without parameters.
    vx_Classifier() noexcept;

    /// Shares the other's parameters.
    vx_Classifier(const vx_Classifier& other) noexcept;

    /// Shares the other's parameters, after beginAssignment_. A technique's own assignment calls this and
    /// then assigns what the technique has learnt; called by itself, it gives the parameters only.
    vx_Classifier& operator=(const vx_Classifier& other) noexcept;

protected:
    /// The parameters of the last training or retraining, for the hooks; null when untrained or trained by
    /// hand.
    const vxPtrHandle_const<vxClassifierTrainParams>& storedParams_() const noexcept { return params_; }

    /// To be called by a technique's training by hand, after untrain(), which leaves parameters that an
    /// archive brought to an untrained classifier.
    void forgetParams_() noexcept { params_.reset(); }

    /// To be called by every assignment before anything changes: tells an archive that tracks the object.
    void beginAssignment_() noexcept;

    /// Throws vxArchive::UnknownVersion for a version other than 0.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    friend class vxClassifierTool;

    vxPtrHandle_const<vxClassifierTrainParams> params_; // null when untrained or trained by hand
};

#endif
