#include "examples/iris_rules/rule_words.h"

#include "examples/iris_rules/iris_table.h"

#include <cmath>
#include <sstream>

namespace {

std::string centimetres(double length) {
    std::ostringstream out;
    out << length << " cm";
    return out.str();
}

// The functions of this example all run between 0 and 1, and cut off nothing that a flower can have.
std::string inWords(const vxClassifierFeatureScoreOneSided& function) {
    const bool rising = function.x0() <= function.x1();
    return (rising ? "at least " : "at most ") + centimetres(function.x1()) + " (not at all " +
           (rising ? "below " : "above ") + centimetres(function.x0()) + ")";
}

std::string inWords(const vxClassifierFeatureScoreTwoSided& function) {
    return "between " + centimetres(function.x1()) + " and " + centimetres(function.x1h()) +
           " (not at all below " + centimetres(function.x0()) + " or above " + centimetres(function.x0h()) +
           ")";
}

/// What a function asks for; empty when it ignores its feature.
std::string inWords(const vxClsFtSc& function) {
    if (const auto* oneSided = dynamic_cast<const vxClassifierFeatureScoreOneSided*>(&function)) {
        return inWords(*oneSided);
    }
    if (const auto* twoSided = dynamic_cast<const vxClassifierFeatureScoreTwoSided*>(&function)) {
        return inWords(*twoSided);
    }
    return {};
}

} // namespace

std::string iris::inWords(const vxClassifierRule& rule) {
    std::string conditions;
    for (std::size_t feature = 0; feature < rule.scoringMethods().size(); ++feature) {
        const std::string words = ::inWords(*rule.scoringMethods()[feature]);
        if (!words.empty()) {
            conditions += (conditions.empty() ? "" : "\n    and its ") + std::string(featureNames[feature]) +
                          " is " + words;
        }
    }
    return std::string("It is a ") + speciesNames[rule.label()] + " if its " + conditions + ".";
}
