#include "clss/rules/score_checks.h"
#include "clss/rules/sound_score.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/feature_score.h>

#include <algorithm>
#include <typeinfo>

vxClassifierFeatureScoreTwoSided::vxClassifierFeatureScoreTwoSided() noexcept = default;
vxClassifierFeatureScoreTwoSided::vxClassifierFeatureScoreTwoSided(
    const vxClassifierFeatureScoreTwoSided&) noexcept = default;
vxClassifierFeatureScoreTwoSided&
vxClassifierFeatureScoreTwoSided::operator=(const vxClassifierFeatureScoreTwoSided&) noexcept = default;
vxClassifierFeatureScoreTwoSided::~vxClassifierFeatureScoreTwoSided() = default;

void vxClassifierFeatureScoreTwoSided::init(double x0, double x1, double xc, double x0h, double x1h,
                                            double xch, double y0, double y1, double y0h, double y1h) {
    const double lowest = std::min({x0h, x1h, xch});
    if (x0 > lowest || x1 > lowest || xc > lowest) {
        throw vxClassifierDefs::BadParams(L"x0 > lowest || x1 > lowest || xc > lowest");
    }
    // Aside, so that a failure of the high part leaves the low one as it was.
    vxClassifierFeatureScoreOneSided low;
    low.init(x0, x1, xc, y0, y1);
    high_.init(x0h, x1h, xch, y0h, y1h);
    low_ = low;
    noteSoundness_();
}

void vxClassifierFeatureScoreTwoSided::y0(double value) {
    low_.y0(value);
}

void vxClassifierFeatureScoreTwoSided::y1(double value) {
    low_.y1(value);
}

void vxClassifierFeatureScoreTwoSided::y0h(double value) {
    if (!detail::isScore(value)) {
        throw vxClassifierDefs::BadParams(L"y0h must be between 0 and 1");
    }
    high_.y0(value);
}

void vxClassifierFeatureScoreTwoSided::y1h(double value) {
    if (!detail::isScore(value)) {
        throw vxClassifierDefs::BadParams(L"y1h must be between 0 and 1");
    }
    high_.y1(value);
}

void vxClassifierFeatureScoreTwoSided::noteSoundness_() noexcept {
    const double lowest = detail::SoundScore::lowestOfHigh(*this);
    const bool reachesIntoHigh = x0() > lowest || x1() > lowest || xc() > lowest;
    isSound_ = detail::SoundScore::isSound(low_) && detail::SoundScore::isSound(high_) && !reachesIntoHigh;
}

double vxClassifierFeatureScoreTwoSided::score(double x) const {
    if (!isSound_) {
        const bool partsAreSound = detail::SoundScore::isSound(low_) && detail::SoundScore::isSound(high_);
        throw vxClassifierDefs::BadParams(partsAreSound ? L"Bad x values" : L"x1 must lie between x0 and xc");
    }
    return detail::SoundScore::of(*this, x);
}

vxClsFtSc* vxClassifierFeatureScoreTwoSided::clone() const {
    return new vxClassifierFeatureScoreTwoSided(*this);
}

bool vxClassifierFeatureScoreTwoSided::operator==(const vxClsFtSc& other) const {
    if (typeid(*this) != typeid(other)) {
        return false;
    }
    const auto& same = static_cast<const vxClassifierFeatureScoreTwoSided&>(other);
    return low_ == same.low_ && high_ == same.high_;
}
