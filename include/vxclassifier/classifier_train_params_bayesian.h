#ifndef VXCLASSIFIER_CLASSIFIER_TRAIN_PARAMS_BAYESIAN_H
#define VXCLASSIFIER_CLASSIFIER_TRAIN_PARAMS_BAYESIAN_H

#include <vxclassifier/classifier_costs.h>
#include <vxclassifier/classifier_distribution_types.h>
#include <vxclassifier/classifier_frequencies.h>
#include <vxclassifier/classifier_train_params.h>
#include <vxclassifier/feature_pattern.h>

/// The training parameters that choose the Bayesian technique: how the measurements are distributed, how
/// frequent the categories are, and what wrong decisions cost.
///
/// Initial state: what the constructor is given; nothing is checked before the training. `make` gives normal
/// distributions, a default frequency and a default cost of 1, and no maximum measurement values.
///
/// Ownership: holds copies of what it is given.
///
/// Threads: parameters that nobody changes may be read by several threads.
class VXCLASSIFIER_API vxClassifierTrainParamsBayesian : public vxClassifierTrainParams {
public:
    vxPtrHandle<vxClassifierTrainParams> clone() const override;

protected:
    /// Whether the other object is of this class with equal distribution types, costs, frequencies and
    /// maximum values, compared in this order.
    bool isEqual_(const vxClassifierTrainParams& other) const override;
    bool isSameTechnique_(const vxClassifierTrainParams& other) const override;
    vx_Classifier* newClassifier_() const override;

public:
    /// `maxMeasurementValues` gives, at the index of each measurement with a binomial distribution, the
    /// largest value that it can take; the other entries are not looked at. A measurement whose entry is
    /// missing or invalid has the maximum 1.
    vxClassifierTrainParamsBayesian(const vxClassifierDistributionTypes& distributionTypes,
                                    const vxClassifierFrequencies& categoryFrequencies,
                                    const vxClassifierCosts& misclassificationCosts,
                                    const vxFeaturePattern& maxMeasurementValues);
    vxClassifierTrainParamsBayesian(const vxClassifierTrainParamsBayesian& other);
    /// If this throws for want of memory, nothing has changed; nor does a setter that throws change anything.
    vxClassifierTrainParamsBayesian& operator=(const vxClassifierTrainParamsBayesian& other);
    ~vxClassifierTrainParamsBayesian() override;

    static vxPersistent* make();

    const vxClassifierDistributionTypes& distributionTypes() const noexcept { return distributionTypes_; }
    void distributionTypes(const vxClassifierDistributionTypes& types);

    const vxClassifierFrequencies& categoryFrequencies() const noexcept { return categoryFrequencies_; }
    void categoryFrequencies(const vxClassifierFrequencies& frequencies);

    const vxClassifierCosts& misclassificationCosts() const noexcept { return misclassificationCosts_; }
    void misclassificationCosts(const vxClassifierCosts& costs);

    const vxFeaturePattern& maxMeasurementValues() const noexcept { return maxMeasurementValues_; }

    /// Tells an archive that knows the pattern held until now that it changes.
    void maxMeasurementValues(const vxFeaturePattern& values);

    /// As isEqual_; parameters of another technique are unequal.
    bool operator==(const vxClassifierTrainParams& other) const { return isEqual_(other); }
    bool operator!=(const vxClassifierTrainParams& other) const { return !isEqual_(other); }

protected:
    void dispatchSerialize(vxArchive& archive) override;

    /// Throws vxArchive::UnknownVersion for a version other than 0.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    vxClassifierDistributionTypes distributionTypes_;
    vxClassifierFrequencies categoryFrequencies_;
    vxClassifierCosts misclassificationCosts_;
    vxFeaturePattern maxMeasurementValues_;

    static vx_Instantiator sExemplar;
};

#endif
