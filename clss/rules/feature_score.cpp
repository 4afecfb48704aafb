#include <vxclassifier/feature_score.h>

#include <typeinfo>

vxClsFtSc::vxClsFtSc() noexcept = default;
vxClsFtSc::vxClsFtSc(const vxClsFtSc&) noexcept = default;
vxClsFtSc& vxClsFtSc::operator=(const vxClsFtSc&) noexcept = default;
vxClsFtSc::~vxClsFtSc() = default;

vxClassifierFeatureScoreIgnore::vxClassifierFeatureScoreIgnore() noexcept = default;
vxClassifierFeatureScoreIgnore::vxClassifierFeatureScoreIgnore(
    const vxClassifierFeatureScoreIgnore&) noexcept = default;
vxClassifierFeatureScoreIgnore&
vxClassifierFeatureScoreIgnore::operator=(const vxClassifierFeatureScoreIgnore&) noexcept = default;
vxClassifierFeatureScoreIgnore::~vxClassifierFeatureScoreIgnore() = default;

double vxClassifierFeatureScoreIgnore::score(double) const {
    return -1.0;
}

vxClsFtSc* vxClassifierFeatureScoreIgnore::clone() const {
    return new vxClassifierFeatureScoreIgnore(*this);
}

bool vxClassifierFeatureScoreIgnore::operator==(const vxClsFtSc& other) const {
    return typeid(*this) == typeid(other);
}
