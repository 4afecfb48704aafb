#ifndef VXCLASSIFIER_CLASSIFIER_BAYESIAN_H
#define VXCLASSIFIER_CLASSIFIER_BAYESIAN_H

#include <vxclassifier/category_model.h>
#include <vxclassifier/classifier.h>
#include <vxclassifier/platform/ptr_handle.h>

#include <memory>
#include <vector>

class vxClassifierTrainParamsBayesian;
class vx_CategoryModelBayesian;

namespace detail {
class CategoryPanel;
}

/// The Bayesian technique: one model for every category met in the training data, each of which tells how
/// likely a pattern is in its category. Applications use it through vxClassifierTool.
///
/// States: untrained (no models) and trained; untrained at first. A training that throws leaves the models
/// built so far, but no parameters, and then a run throws vxBadPointer; untrain() forgets them.
///
/// Ownership: copies share the models, which no operation changes once the training is over.
///
/// Threads: as for vx_Classifier.
class VXCLASSIFIER_API vx_ClassifierBayesian : public vx_Classifier {
public:
    vx_ClassifierBayesian() noexcept;
    vx_ClassifierBayesian(const vx_ClassifierBayesian& other);
    vx_ClassifierBayesian& operator=(const vx_ClassifierBayesian& other);
    ~vx_ClassifierBayesian() override;

    static vxPersistent* make();

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    vxPtrHandle<vx_Classifier> clone() const override;

    /// Whether the other is a Bayesian classifier that is equal.
    bool isEquivalent(const vx_Classifier& other) const override;

protected:
    // All of them throw vxBadPointer for parameters of another technique, and for a category model that is
    // missing or not a vx_CategoryModelBayesian.

    /// Reads the data once and in order. A label other than -1 that was not met before gets its model: the
    /// sets of dependent measurements in the order of their first members, all other measurements by
    /// themselves. Then the model learns the pattern. Throws what building the model and learning throw (see
    /// vx_CategoryModelBayesian); the models built until then stay.
    void train_(const vxClassifierDataProvider& data, const vxClassifierTrainParams& params) override;

    /// Throws vxClassifierDefs::BadParams if the distribution types, or else the maximum measurement values,
    /// differ from those of the training. Changes nothing.
    void retrain_(const vxClassifierTrainParams& params) override;

    /// Does nothing: the technique learns by train only.
    void trainStart_(const vxClassifierTrainParams& params) override;

    /// Does nothing: the technique learns by train only.
    void trainIncremental_(const vxFeaturePattern& pattern, long label) override;

    void untrain_() override;
    bool isTrained_() const override;

    /// Throws vxClassifierDefs::InsufficientTrainData when there is no model; otherwise runs on a pattern of
    /// zeros and throws what that throws.
    void checkRunnable_() const override;

    /// The match score of a category is the likelihood of the pattern there, divided by the largest one of
    /// all categories. Makes the interruption check once for each category and once more, before those of
    /// the decision rule. Throws what vx_CategoryModelBayesian::matchScore throws, vxBadPointer when there
    /// are no parameters, and what the decision rule throws.
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
    /// Whether states, parameters and models are equal, models in the same order. Throws vxBadPointer as the
    /// hooks do.
    bool operator==(const vx_ClassifierBayesian& other) const;
    bool operator!=(const vx_ClassifierBayesian& other) const { return !(*this == other); }

protected:
    /// Throws vxArchive::UnknownVersion for a version other than 0.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    void learn(const vxClassifierDataProvider& data, const vxClassifierTrainParamsBayesian& params,
               long numPatterns, long numMeasurements);
    void dropUnmatchedRows();
    vxPtrHandle<vx_CategoryModelBayesian> addModel(long label, const vxClassifierTrainParamsBayesian& params,
                                                   long numMeasurements);
    void logLikelihoods(const vxFeaturePattern& pattern, double* values) const;

    // Parallel, in the order in which the labels were first met. An archive can bring vectors of different
    // lengths: running looks at the models only, each of which knows its label.
    std::vector<long> categoryLabels_;
    std::vector<vxPtrHandle<vx_CategoryModel>> categoryModels_;

    // Made when a training or a loading is over; null where the models are asked one by one.
    std::shared_ptr<const detail::CategoryPanel> panel_;

    static vx_Instantiator sExemplar;
};

#endif
