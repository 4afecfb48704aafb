#include "clss/rules/score_checks.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/feature_score.h>

#include <typeinfo>

namespace {

void requireY0(double y0) {
    if (!detail::isScore(y0)) {
        throw vxClassifierDefs::BadParams(L"y0 must be between 0 and 1");
    }
}

void requireY1(double y1) {
    if (!detail::isScore(y1)) {
        throw vxClassifierDefs::BadParams(L"y1 must be between 0 and 1");
    }
}

} // namespace

vxClassifierFeatureScoreOneSided::vxClassifierFeatureScoreOneSided() noexcept = default;
vxClassifierFeatureScoreOneSided::vxClassifierFeatureScoreOneSided(
    const vxClassifierFeatureScoreOneSided&) noexcept = default;
vxClassifierFeatureScoreOneSided&
vxClassifierFeatureScoreOneSided::operator=(const vxClassifierFeatureScoreOneSided&) noexcept = default;
vxClassifierFeatureScoreOneSided::~vxClassifierFeatureScoreOneSided() = default;

void vxClassifierFeatureScoreOneSided::init(double x0, double x1, double xc, double y0, double y1) {
    requireY0(y0);
    requireY1(y1);
    // The stray word is part of the published message; score() words it without.
    if (!detail::liesBetween(x0, x1, xc)) {
        throw vxClassifierDefs::BadParams(L"x1 must be lie between x0 and xc");
    }
    x0_ = x0;
    x1_ = x1;
    xc_ = xc;
    y0_ = y0;
    y1_ = y1;
}

void vxClassifierFeatureScoreOneSided::y0(double value) {
    requireY0(value);
    y0_ = value;
}

void vxClassifierFeatureScoreOneSided::y1(double value) {
    requireY1(value);
    y1_ = value;
}

// The comparisons are written so that NaN takes the published way through them.
double vxClassifierFeatureScoreOneSided::score(double x) const {
    if (!detail::liesBetween(x0_, x1_, xc_)) {
        throw vxClassifierDefs::BadParams(L"x1 must lie between x0 and xc");
    }
    const bool rising = !(x0_ > x1_) && !(x1_ > xc_);
    const bool beyondCutOff = rising ? x > xc_ : !(x >= xc_);
    if (beyondCutOff) {
        return 0.0;
    }
    const bool onPlateau = rising ? x >= x1_ : x <= x1_;
    if (onPlateau) {
        return y1_;
    }
    const bool beforeRamp = rising ? x <= x0_ : x >= x0_;
    if (beforeRamp) {
        return y0_;
    }
    // The published order of the operations; any other would round differently.
    return (x1_ * y0_ - x0_ * y1_ - (y0_ - y1_) * x) / (x1_ - x0_);
}

vxClsFtSc* vxClassifierFeatureScoreOneSided::clone() const {
    return new vxClassifierFeatureScoreOneSided(*this);
}

bool vxClassifierFeatureScoreOneSided::operator==(const vxClsFtSc& other) const {
    if (typeid(*this) != typeid(other)) {
        return false;
    }
    const auto& same = static_cast<const vxClassifierFeatureScoreOneSided&>(other);
    return detail::isSame(x0_, same.x0_) && detail::isSame(x1_, same.x1_) && detail::isSame(xc_, same.xc_) &&
           detail::isSame(y0_, same.y0_) && detail::isSame(y1_, same.y1_);
}
