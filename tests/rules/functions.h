#ifndef TESTS_RULES_FUNCTIONS_H
#define TESTS_RULES_FUNCTIONS_H

#include <vxclassifier/feature_score.h>
#include <vxclassifier/rule.h>

#include <vector>

namespace test {

using Function = vxPtrHandle<vxClsFtSc>;

inline vxClassifierFeatureScoreOneSided oneSided(double x0, double x1, double xc, double y0, double y1) {
    vxClassifierFeatureScoreOneSided function;
    function.init(x0, x1, xc, y0, y1);
    return function;
}

/// Low (0, 1, 2) and high (5, 4, 3), with four different scores.
inline vxClassifierFeatureScoreTwoSided trapezoid() {
    vxClassifierFeatureScoreTwoSided function;
    function.init(0, 1, 2, 5, 4, 3, 0.125, 0.75, 0.25, 0.875);
    return function;
}

/// A handle to a copy.
inline Function handleTo(const vxClsFtSc& function) {
    return Function(function.clone());
}

inline Function ignore() {
    return Function(new vxClassifierFeatureScoreIgnore);
}

/// A caller's own function: the same score for every value. It counts its evaluations.
class ConstantScore : public vxClsFtSc {
public:
    explicit ConstantScore(double score) : score_(score) {}
    double score(double) const override {
        ++calls;
        return score_;
    }
    vxClsFtSc* clone() const override { return new ConstantScore(*this); }
    bool operator==(const vxClsFtSc& other) const override {
        const auto* same = dynamic_cast<const ConstantScore*>(&other);
        return same != nullptr && same->score_ == score_;
    }

    mutable int calls = 0;

private:
    double score_;
};

inline Function constant(double score) {
    return Function(new ConstantScore(score));
}

inline vxClassifierRule rule(std::vector<Function> functions, long label) {
    vxClassifierRule made;
    made.init(functions, label);
    return made;
}

/// A rule whose functions give these scores, whatever the values.
inline vxClassifierRule ruleScoring(const std::vector<double>& scores, long label) {
    std::vector<Function> functions;
    for (const double score : scores) {
        functions.push_back(constant(score));
    }
    return rule(functions, label);
}

} // namespace test

#endif
