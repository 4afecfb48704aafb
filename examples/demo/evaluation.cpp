#include "examples/demo/evaluation.h"

#include <algorithm>
#include <iomanip>
#include <set>

namespace demo {

Evaluation::Evaluation(const vxClassifierTool& tool, const std::vector<LabelledPattern>& patterns) {
    vxClassifierResult result;
    for (const LabelledPattern& pattern : patterns) {
        tool.run(*pattern.pattern, result);
        results_.push_back(result);
        ++counts_[{pattern.label, result.categoryResults().front().categoryLabel()}];
    }
}

double Evaluation::accuracy() const {
    long right = 0;
    for (const auto& [labels, count] : counts_) {
        right += labels.first == labels.second ? count : 0;
    }
    return results_.empty() ? 0.0 : static_cast<double>(right) / static_cast<double>(results_.size());
}

double Evaluation::totalCost(const vxClassifierCosts& costs) const {
    double sum = 0.0;
    for (const auto& [labels, count] : counts_) {
        if (labels.first != labels.second) {
            sum += static_cast<double>(count) * costs.misclassificationCost(labels.first, labels.second);
        }
    }
    return sum;
}

std::vector<long> Evaluation::labels() const {
    std::set<long> all;
    for (const auto& entry : counts_) {
        all.insert({entry.first.first, entry.first.second});
    }
    return std::vector<long>(all.begin(), all.end());
}

void Evaluation::printConfusion(std::ostream& out) const {
    const std::vector<long> all = labels();
    out << "    true \\ decided";
    for (const long assigned : all) {
        out << std::setw(6) << assigned;
    }
    out << '\n';
    for (const long truth : all) {
        out << std::setw(18) << truth;
        for (const long assigned : all) {
            const auto found = counts_.find({truth, assigned});
            out << std::setw(6) << (found == counts_.end() ? 0 : found->second);
        }
        out << '\n';
    }
}

void printResult(std::ostream& out, const vxClassifierResult& result) {
    constexpr std::size_t most = 4;
    out << "      category  match score  class score  expected cost\n" << std::fixed << std::setprecision(4);
    const std::vector<vxClassifierCategoryResult>& categories = result.categoryResults();
    for (std::size_t i = 0; i < categories.size() && i < most; ++i) {
        out << std::setw(14) << categories[i].categoryLabel() << std::setw(13) << categories[i].matchScore()
            << std::setw(13) << categories[i].classScore() << std::setw(15) << categories[i].expectedCost()
            << '\n';
    }
    if (categories.size() > most) {
        out << "      ... and " << categories.size() - most << " more\n";
    }
}

} // namespace demo
