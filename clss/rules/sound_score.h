#ifndef CLSS_RULES_SOUND_SCORE_H
#define CLSS_RULES_SOUND_SCORE_H

#include <vxclassifier/feature_score.h>

#include <algorithm>

namespace detail {

/// The scores of functions whose x values are known to be in order, so that nothing is checked and nothing
/// throws. For the functions themselves, and for those who know that an object is of exactly such a class and
/// need not call it.
class SoundScore {
public:
    static bool isSound(const vxClassifierFeatureScoreOneSided& function) noexcept {
        return function.isSound_;
    }
    static bool isSound(const vxClassifierFeatureScoreTwoSided& function) noexcept {
        return function.isSound_;
    }

    // The comparisons are written so that NaN takes the published way through them.
    static double of(const vxClassifierFeatureScoreOneSided& function, double x) noexcept {
        const double x0 = function.x0_;
        const double x1 = function.x1_;
        const bool rising = !(x0 > x1) && !(x1 > function.xc_);
        const bool beyondCutOff = rising ? x > function.xc_ : !(x >= function.xc_);
        if (beyondCutOff) {
            return 0.0;
        }
        const bool onPlateau = rising ? x >= x1 : x <= x1;
        if (onPlateau) {
            return function.y1_;
        }
        const bool beforeRamp = rising ? x <= x0 : x >= x0;
        if (beforeRamp) {
            return function.y0_;
        }
        // The published order of the operations; any other would round differently.
        return (x1 * function.y0_ - x0 * function.y1_ - (function.y0_ - function.y1_) * x) / (x1 - x0);
    }

    static double of(const vxClassifierFeatureScoreTwoSided& function, double x) noexcept {
        return x >= lowestOfHigh(function) ? of(function.high_, x) : of(function.low_, x);
    }

    /// The high x1 lies between the other two, so it cannot be the smallest.
    static double lowestOfHigh(const vxClassifierFeatureScoreTwoSided& function) noexcept {
        return std::min(function.high_.x0_, function.high_.xc_);
    }
};

} // namespace detail

#endif
