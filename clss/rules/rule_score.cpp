#include "clss/rules/rule_score.h"

#include "clss/rules/sound_score.h"

#include <cstddef>
#include <typeinfo>

namespace detail {

namespace {

enum class Kind { twoSided, oneSided, ignore, other };

/// What a function is that can be scored without calling it; anything else is `other`, and so is a function
/// that throws. Only addresses are compared: a class that is taken for another one is merely called.
Kind kindOf(const vxClsFtSc& function) noexcept {
    const std::type_info* const type = &typeid(function);
    // NOLINTBEGIN(cppcoreguidelines-pro-type-static-cast-downcast): the types are compared.
    if (type == &typeid(vxClassifierFeatureScoreTwoSided)) {
        const auto& twoSided = static_cast<const vxClassifierFeatureScoreTwoSided&>(function);
        return SoundScore::isSound(twoSided) ? Kind::twoSided : Kind::other;
    }
    if (type == &typeid(vxClassifierFeatureScoreOneSided)) {
        const auto& oneSided = static_cast<const vxClassifierFeatureScoreOneSided&>(function);
        return SoundScore::isSound(oneSided) ? Kind::oneSided : Kind::other;
    }
    // NOLINTEND(cppcoreguidelines-pro-type-static-cast-downcast)
    return type == &typeid(vxClassifierFeatureScoreIgnore) ? Kind::ignore : Kind::other;
}

double scoreOf(const vxClsFtSc& function, Kind kind, double x) {
    // NOLINTBEGIN(cppcoreguidelines-pro-type-static-cast-downcast): the kind says the type.
    switch (kind) {
    case Kind::twoSided:
        return SoundScore::of(static_cast<const vxClassifierFeatureScoreTwoSided&>(function), x);
    case Kind::oneSided:
        return SoundScore::of(static_cast<const vxClassifierFeatureScoreOneSided&>(function), x);
    case Kind::ignore:
        return -1.0;
    case Kind::other:
        break;
    }
    // NOLINTEND(cppcoreguidelines-pro-type-static-cast-downcast)
    return function.score(x);
}

} // namespace

bool isScoreAbove(const vxClassifierRule& rule, const vxClassifierFeatureVector& featureVector,
                  double threshold) {
    const std::vector<double>& values = featureVector.featureValues();
    const std::vector<vxPtrHandle<vxClsFtSc>>& functions = rule.scoringMethods();
    if (values.size() != functions.size() || values.empty()) {
        return rule.score(featureVector) > threshold; // it throws, that is
    }
    MeanScore scores;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const vxClsFtSc& function = *functions[i];
        const Kind kind = kindOf(function);
        // A product of 0 stays 0, or becomes NaN, and neither is above a threshold. The others are asked all
        // the same: they may throw, and a caller may count.
        if (scores.product() == 0.0 && kind != Kind::other) {
            continue;
        }
        scores.take(scoreOf(function, kind, values[i]));
    }
    return scores.product() > 0.0 && scores.mean() > threshold;
}

} // namespace detail
