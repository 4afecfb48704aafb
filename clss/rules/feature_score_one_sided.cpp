#include "clss/rules/score_checks.h"
#include "clss/rules/sound_score.h"

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
    isSound_ = true;
}

void vxClassifierFeatureScoreOneSided::y0(double value) {
    requireY0(value);
    y0_ = value;
}

void vxClassifierFeatureScoreOneSided::y1(double value) {
    requireY1(value);
    y1_ = value;
}

void vxClassifierFeatureScoreOneSided::noteSoundness_() noexcept {
    isSound_ = detail::liesBetween(x0_, x1_, xc_);
}

double vxClassifierFeatureScoreOneSided::score(double x) const {
    if (!isSound_) {
        throw vxClassifierDefs::BadParams(L"x1 must lie between x0 and xc");
    }
    return detail::SoundScore::of(*this, x);
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
