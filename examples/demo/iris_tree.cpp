#include "examples/demo/iris_tree.h"

#include <vector>

namespace demo {

namespace {

constexpr long petalLength = 2;
constexpr long petalWidth = 3;
constexpr long setosa = 0;
constexpr long versicolor = 1;
constexpr long virginica = 2;

struct Likelihood {
    long label;
    double score;
};

vxDecisionTreeLeaf leaf(const std::vector<Likelihood>& likelihoods, const vxClassifierCosts& costs) {
    std::vector<vxClassifierCategoryResult> scores;
    scores.reserve(likelihoods.size());
    for (const Likelihood& likelihood : likelihoods) {
        scores.emplace_back(likelihood.label, likelihood.score, 0.0, 0.0);
    }
    return vxDecisionTreeLeaf(vxClassifierResult(scores, vxClassifierFrequencies(1.0), costs, 0.0));
}

} // namespace

vxPtrHandle<vxDecisionTree> irisTree(const vxClassifierCosts& costs) {
    const vxDecisionTreeLeaf likelyVersicolor = leaf({{versicolor, 0.97}, {virginica, 0.03}}, costs);
    const vxDecisionTreeLeaf likelyVirginica = leaf({{virginica, 0.95}, {versicolor, 0.05}}, costs);
    const vxDecisionTreeNode byLength(vxRangePredicate(vxRange(2.5, 5.0), {petalLength}), likelyVersicolor,
                                      likelyVirginica);
    const vxDecisionTreeNode byWidth(vxRangePredicate(vxRange(0.0, 1.69), {petalWidth}), byLength,
                                     likelyVirginica);
    return vxDecisionTreeNode(vxRangePredicate(vxRange(0.0, 2.49), {petalLength}),
                              leaf({{setosa, 1.0}}, costs), byWidth)
        .clone();
}

} // namespace demo
