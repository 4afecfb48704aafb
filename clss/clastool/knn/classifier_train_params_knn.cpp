#include <vxclassifier/classifier_train_params_knn.h>

#include "clss/clastool/knn/neighbor_list.h"
#include "platform/archive/class_level.h"

#include <vxclassifier/classifier_knn.h>
#include <vxclassifier/pattern_distance_metric_norm.h>
#include <vxclassifier/platform/archive.h>

#include <utility>

vx_Instantiator vxClassifierTrainParamsKNN::sExemplar(typeid(vxClassifierTrainParamsKNN),
                                                      &vxClassifierTrainParamsKNN::make);

vxClassifierTrainParamsKNN::vxClassifierTrainParamsKNN(long k)
    : k_(detail::requireNeighborCount(k)), distanceMetric_(new vxPatternDistanceMetricNorm(2.0)),
      misclassificationCosts_(1.0) {}

vxClassifierTrainParamsKNN::vxClassifierTrainParamsKNN(long k, const vxPatternDistanceMetric& metric,
                                                       const vxClassifierCosts& costs)
    : k_(detail::requireNeighborCount(k)), distanceMetric_(metric.clone()), misclassificationCosts_(costs) {}

vxClassifierTrainParamsKNN::vxClassifierTrainParamsKNN(const vxClassifierTrainParamsKNN&) = default;

vxClassifierTrainParamsKNN& vxClassifierTrainParamsKNN::operator=(const vxClassifierTrainParamsKNN& other) {
    vxClassifierCosts costs = other.misclassificationCosts_; // may throw, so it comes before any change
    vxClassifierTrainParams::operator=(other);
    k_ = other.k_;
    distanceMetric_ = other.distanceMetric_;
    misclassificationCosts_ = std::move(costs);
    return *this;
}

vxClassifierTrainParamsKNN::~vxClassifierTrainParamsKNN() = default;

vxPersistent* vxClassifierTrainParamsKNN::make() {
    return new vxClassifierTrainParamsKNN(1);
}

vxPtrHandle<vxClassifierTrainParams> vxClassifierTrainParamsKNN::clone() const {
    return vxPtrHandle<vxClassifierTrainParams>(new vxClassifierTrainParamsKNN(*this));
}

void vxClassifierTrainParamsKNN::k(long k) {
    k_ = detail::requireNeighborCount(k);
}

void vxClassifierTrainParamsKNN::distanceMetric(const vxPatternDistanceMetric& metric) {
    distanceMetric_ = metric.clone();
}

void vxClassifierTrainParamsKNN::misclassificationCosts(const vxClassifierCosts& costs) {
    vxClassifierCosts copy = costs; // a failed copy changes nothing
    misclassificationCosts_ = std::move(copy);
}

bool vxClassifierTrainParamsKNN::isEqual_(const vxClassifierTrainParams& other) const {
    const auto* knn = dynamic_cast<const vxClassifierTrainParamsKNN*>(&other);
    if (knn == nullptr || k_ != knn->k_) {
        return false;
    }
    const vxPatternDistanceMetric& metric = *distanceMetric_;
    const vxPatternDistanceMetric& otherMetric = *knn->distanceMetric_;
    return metric.isEquivalent(otherMetric) && misclassificationCosts_ == knn->misclassificationCosts_;
}

bool vxClassifierTrainParamsKNN::isSameTechnique_(const vxClassifierTrainParams& other) const {
    return dynamic_cast<const vxClassifierTrainParamsKNN*>(&other) != nullptr;
}

vx_Classifier* vxClassifierTrainParamsKNN::newClassifier_() const {
    return new vx_ClassifierKNN;
}

void vxClassifierTrainParamsKNN::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vxClassifierTrainParamsKNN::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxClassifierTrainParams::dispatchSerialize(archive);
    archive || k_;
    archive || distanceMetric_;
    archive || misclassificationCosts_;
}
