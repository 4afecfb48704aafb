#ifndef VXCLASSIFIER_CLASSIFIER_TRAIN_PARAMS_H
#define VXCLASSIFIER_CLASSIFIER_TRAIN_PARAMS_H

#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/persistent.h>
#include <vxclassifier/platform/ptr_handle.h>
#include <vxclassifier/platform/rep_base.h>

class vx_Classifier;

/// Base of the training parameters. The class of a parameter object is the choice of the technique: it makes
/// the classifier that it belongs to. Derive from it, and from vx_Classifier, to add a technique.
///
/// Initial state: throwIfNotReady() is true, also for a copy.
///
/// Ownership: a training keeps a clone, never the caller's object.
///
/// Threads: parameters that nobody changes may be read by several threads.
class VXCLASSIFIER_API vxClassifierTrainParams : public virtual vxPersistent, public virtual vxRepBase {
public:
    /// A new copy of the most-derived object.
    virtual vxPtrHandle<vxClassifierTrainParams> clone() const = 0;

protected:
    /// Whether the other object has the same class and the same values; the base has no values and says true.
    virtual bool isEqual_(const vxClassifierTrainParams& other) const;

    /// Whether the other object belongs to the same technique, whatever its values.
    virtual bool isSameTechnique_(const vxClassifierTrainParams& other) const = 0;

    /// A new, untrained classifier of the technique; the caller owns it. Called by the tool for every
    /// training.
    virtual vx_Classifier* newClassifier_() const = 0;

public:
    vxClassifierTrainParams() noexcept;
    ~vxClassifierTrainParams() override;

    /// Assigns nothing of this class: the flag belongs to the object, not to its value.
    vxClassifierTrainParams& operator=(const vxClassifierTrainParams& other) noexcept;

    /// Whether the tool, after a training with these parameters, tries if the classifier can run, and
    /// untrains it and throws if it cannot. Takes no part in equality and is not archived.
    bool throwIfNotReady() const noexcept { return throwIfNotReady_; }
    void throwIfNotReady(bool value) noexcept { throwIfNotReady_ = value; }

protected:
    /// For clone; the copy's flag is true.
    vxClassifierTrainParams(const vxClassifierTrainParams& other) noexcept;

    void dispatchSerialize(vxArchive& archive) override;

    /// Throws vxArchive::UnknownVersion for a version other than 0.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    friend class vx_Classifier;
    friend class vxClassifierTool;

    bool throwIfNotReady_ = true;
};

#endif
