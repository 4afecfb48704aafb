#include <vxclassifier/classifier_train_params_bayesian.h>

#include "platform/archive/class_level.h"

#include <vxclassifier/classifier_bayesian.h>

#include <utility>

vx_Instantiator vxClassifierTrainParamsBayesian::sExemplar(typeid(vxClassifierTrainParamsBayesian),
                                                           &vxClassifierTrainParamsBayesian::make);

vxClassifierTrainParamsBayesian::vxClassifierTrainParamsBayesian(
    const vxClassifierDistributionTypes& distributionTypes,
    const vxClassifierFrequencies& categoryFrequencies, const vxClassifierCosts& misclassificationCosts,
    const vxFeaturePattern& maxMeasurementValues)
    : distributionTypes_(distributionTypes), categoryFrequencies_(categoryFrequencies),
      misclassificationCosts_(misclassificationCosts), maxMeasurementValues_(maxMeasurementValues) {}

vxClassifierTrainParamsBayesian::vxClassifierTrainParamsBayesian(const vxClassifierTrainParamsBayesian&) =
    default;

vxClassifierTrainParamsBayesian&
vxClassifierTrainParamsBayesian::operator=(const vxClassifierTrainParamsBayesian& other) {
    vxClassifierDistributionTypes types = other.distributionTypes_;
    vxClassifierFrequencies frequencies = other.categoryFrequencies_;
    vxClassifierCosts costs = other.misclassificationCosts_;
    maxMeasurementValues_ = other.maxMeasurementValues_; // all or nothing
    // Nothing throws from here on.
    vxClassifierTrainParams::operator=(other);
    distributionTypes_ = std::move(types);
    categoryFrequencies_ = std::move(frequencies);
    misclassificationCosts_ = std::move(costs);
    return *this;
}

vxClassifierTrainParamsBayesian::~vxClassifierTrainParamsBayesian() = default;

vxPersistent* vxClassifierTrainParamsBayesian::make() {
    return new vxClassifierTrainParamsBayesian(
        vxClassifierDistributionTypes(vxClassifierDistributionTypes::eMultivariateNormal),
        vxClassifierFrequencies(1.0), vxClassifierCosts(1.0), vxFeaturePattern({}, {}));
}

vxPtrHandle<vxClassifierTrainParams> vxClassifierTrainParamsBayesian::clone() const {
    return vxPtrHandle<vxClassifierTrainParams>(new vxClassifierTrainParamsBayesian(*this));
}

bool vxClassifierTrainParamsBayesian::isEqual_(const vxClassifierTrainParams& other) const {
    const auto* bayesian = dynamic_cast<const vxClassifierTrainParamsBayesian*>(&other);
    return bayesian != nullptr && distributionTypes_ == bayesian->distributionTypes_ &&
           misclassificationCosts_ == bayesian->misclassificationCosts_ &&
           categoryFrequencies_ == bayesian->categoryFrequencies_ &&
           maxMeasurementValues_ == bayesian->maxMeasurementValues_;
}

bool vxClassifierTrainParamsBayesian::isSameTechnique_(const vxClassifierTrainParams& other) const {
    return dynamic_cast<const vxClassifierTrainParamsBayesian*>(&other) != nullptr;
}

vx_Classifier* vxClassifierTrainParamsBayesian::newClassifier_() const {
    return new vx_ClassifierBayesian;
}

void vxClassifierTrainParamsBayesian::distributionTypes(const vxClassifierDistributionTypes& types) {
    distributionTypes_ = types;
}

void vxClassifierTrainParamsBayesian::categoryFrequencies(const vxClassifierFrequencies& frequencies) {
    categoryFrequencies_ = frequencies;
}

void vxClassifierTrainParamsBayesian::misclassificationCosts(const vxClassifierCosts& costs) {
    misclassificationCosts_ = costs;
}

void vxClassifierTrainParamsBayesian::maxMeasurementValues(const vxFeaturePattern& values) {
    // The pattern is an object that an archive can know by itself, through the reference that we hand out.
    if (maxMeasurementValues_.isTracked_()) {
        maxMeasurementValues_.mutating_();
    }
    maxMeasurementValues_ = values;
}

void vxClassifierTrainParamsBayesian::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vxClassifierTrainParamsBayesian::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxClassifierTrainParams::dispatchSerialize(archive);
    // Costs come before frequencies, unlike in the object: archives have them in this order.
    archive || distributionTypes_;
    archive || misclassificationCosts_;
    archive || categoryFrequencies_;
    archive || maxMeasurementValues_;
}
