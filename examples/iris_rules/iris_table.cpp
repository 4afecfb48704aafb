#include "examples/iris_rules/iris_table.h"

#include <limits>
#include <vector>

namespace {

using Function = vxPtrHandle<vxClsFtSc>;

Function ignored() {
    return Function(new vxClassifierFeatureScoreIgnore);
}

/// 1 up to `full`, less and less until `none`, 0 from there on.
Function atMost(double full, double none) {
    auto* function = new vxClassifierFeatureScoreOneSided;
    Function handle(function);
    function->init(none, full, 0.0, 0.0, 1.0);
    return handle;
}

/// 1 from `full` on, less and less down to `none`, 0 below that.
Function atLeast(double full, double none) {
    auto* function = new vxClassifierFeatureScoreOneSided;
    Function handle(function);
    function->init(none, full, std::numeric_limits<double>::infinity(), 0.0, 1.0);
    return handle;
}

/// 1 from `low` to `high`, less and less down to `none` and up to `noneHigh`. The parts meet at `high`.
Function between(double none, double low, double high, double noneHigh) {
    auto* function = new vxClassifierFeatureScoreTwoSided;
    Function handle(function);
    function->init(none, low, high, noneHigh, high, high, 0.0, 1.0, 0.0, 1.0);
    return handle;
}

/// The petals tell the species apart; the sepals overlap too much to help.
vxClassifierRule petalRule(const Function& length, const Function& width, iris::Species species) {
    std::vector<Function> functions(iris::numFeatures, ignored());
    functions[iris::petalLength] = length;
    functions[iris::petalWidth] = width;
    vxClassifierRule rule;
    rule.init(functions, species);
    return rule;
}

} // namespace

vxClassifierRuleTable iris::makeTable() {
    vxClassifierRuleTable table;
    table.train({
        petalRule(atMost(2.0, 3.0), atMost(0.6, 1.0), setosa),
        petalRule(between(2.0, 3.0, 4.7, 5.5), between(0.6, 1.0, 1.5, 1.9), versicolor),
        petalRule(atLeast(5.2, 4.5), atLeast(1.8, 1.2), virginica),
    });
    return table;
}
