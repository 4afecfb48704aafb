#ifndef VXCLASSIFIER_CLASSIFIER_TRAIN_PARAMS_KNN_H
#define VXCLASSIFIER_CLASSIFIER_TRAIN_PARAMS_KNN_H

#include <vxclassifier/classifier_costs.h>
#include <vxclassifier/classifier_train_params.h>
#include <vxclassifier/pattern_distance_metric.h>

/// Training with these parameters makes a classifier of the K nearest neighbours.
///
/// Initial state: the given values; where they are not given, the Euclidean distance and a cost of 1 for
/// every wrong decision. `make` gives K = 1. An archive can bring any K, and a null metric.
///
/// Ownership: keeps a clone of the metric that it is given. Copies share that clone, which nobody changes.
///
/// Threads: as for vxClassifierTrainParams.
class VXCLASSIFIER_API vxClassifierTrainParamsKNN : public vxClassifierTrainParams {
public:
    /// Throws vxClassifierDefs::BadParams if `k` is below 1.
    explicit vxClassifierTrainParamsKNN(long k);

    /// Throws vxClassifierDefs::BadParams if `k` is below 1, before the metric is cloned.
    vxClassifierTrainParamsKNN(long k, const vxPatternDistanceMetric& metric, const vxClassifierCosts& costs);

    vxClassifierTrainParamsKNN(const vxClassifierTrainParamsKNN& other);
    vxClassifierTrainParamsKNN& operator=(const vxClassifierTrainParamsKNN& other);
    ~vxClassifierTrainParamsKNN() override;

    static vxPersistent* make();

    vxPtrHandle<vxClassifierTrainParams> clone() const override;

    /// How many neighbours vote.
    long k() const noexcept { return k_; }

    /// Throws vxClassifierDefs::BadParams, and changes nothing, if `k` is below 1.
    void k(long k);

    vxPtrHandle_const<vxPatternDistanceMetric> distanceMetric() const { return distanceMetric_; }

    /// Keeps a clone of the metric, which may be the one that is held already.
    void distanceMetric(const vxPatternDistanceMetric& metric);

    const vxClassifierCosts& misclassificationCosts() const noexcept { return misclassificationCosts_; }
    void misclassificationCosts(const vxClassifierCosts& costs);

    /// Whether the other are parameters of the nearest neighbours with the same K, a metric that this
    /// object's metric takes for equivalent, and equal costs. Throws vxBadPointer if K is the same and a
    /// metric is null.
    bool operator==(const vxClassifierTrainParams& other) const { return isEqual_(other); }
    bool operator!=(const vxClassifierTrainParams& other) const { return !isEqual_(other); }

protected:
    bool isEqual_(const vxClassifierTrainParams& other) const override;
    bool isSameTechnique_(const vxClassifierTrainParams& other) const override;
    vx_Classifier* newClassifier_() const override;

    void dispatchSerialize(vxArchive& archive) override;

    /// Throws vxArchive::UnknownVersion for a version other than 0. Loaded values are not checked.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    // K >= 1 and the metric not null, but for what an archive brought.
    long k_;
    vxPtrHandle_const<vxPatternDistanceMetric> distanceMetric_;
    vxClassifierCosts misclassificationCosts_;

    static vx_Instantiator sExemplar;
};

#endif
