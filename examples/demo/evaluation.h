#ifndef EXAMPLES_DEMO_EVALUATION_H
#define EXAMPLES_DEMO_EVALUATION_H

#include "examples/demo/labelled_split.h"

#include <vxclassifier/vxclassifier.h>

#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace demo {

/// How often each category was decided to be which.
class Evaluation {
public:
    /// Runs the tool on every pattern.
    Evaluation(const vxClassifierTool& tool, const std::vector<LabelledPattern>& patterns);

    /// What the tool said of each pattern.
    const std::vector<vxClassifierResult>& results() const { return results_; }

    /// The share of right decisions.
    double accuracy() const;

    /// What the wrong decisions cost.
    double totalCost(const vxClassifierCosts& costs) const;

    /// A table with a row for each true category and a column for each decision.
    void printConfusion(std::ostream& out) const;

private:
    std::vector<long> labels() const;

    std::vector<vxClassifierResult> results_;
    std::map<std::pair<long, long>, long> counts_; // by true and assigned label
};

/// Prints the first categories of a decision, the cheapest first.
void printResult(std::ostream& out, const vxClassifierResult& result);

} // namespace demo

#endif
