#include "examples/demo/tree_grower.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <map>
#include <utility>

namespace demo {

namespace {

constexpr double smallestBranch = 5;

using Patterns = std::vector<LabelledPattern>;
using Counts = std::map<long, double>;

/// "Measurement `index` is at most `bound`"; a missing one counts as no.
struct Split {
    long index = -1; // none found
    double bound = 0.0;
    double impurity = 0.0;
};

/// The categories of one side of a split.
class Side {
public:
    explicit Side(const Counts& counts = {}) : counts_(counts) {
        for (const auto& entry : counts_) {
            total_ += entry.second;
            squares_ += entry.second * entry.second;
        }
    }

    void change(long label, double by) {
        double& count = counts_[label];
        squares_ += by * (2.0 * count + by);
        total_ += by;
        count += by;
    }

    double total() const { return total_; }

    /// The Gini impurity times the number of patterns.
    double impurity() const { return total_ > 0.0 ? total_ - squares_ / total_ : 0.0; }

private:
    Counts counts_;
    double total_ = 0.0;
    double squares_ = 0.0;
};

Counts countLabels(const Patterns& patterns) {
    Counts counts;
    for (const LabelledPattern& pattern : patterns) {
        counts[pattern.label] += 1.0;
    }
    return counts;
}

/// The values of one measurement with their labels, ascending; patterns that lack it have none.
std::vector<std::pair<double, long>> sortedValues(const Patterns& patterns, long index) {
    std::vector<std::pair<double, long>> values;
    for (const LabelledPattern& pattern : patterns) {
        if (pattern.pattern->isValid(index)) {
            values.emplace_back(pattern.pattern->featureMeasurement(index, true), pattern.label);
        }
    }
    std::sort(values.begin(), values.end());
    return values;
}

void tryMeasurement(const Patterns& patterns, const Counts& counts, long index, Split& best) {
    const std::vector<std::pair<double, long>> values = sortedValues(patterns, index);
    Side low;
    Side high(counts);
    for (std::size_t i = 0; i + 1 < values.size(); ++i) {
        const auto& [value, label] = values[i];
        low.change(label, 1.0);
        high.change(label, -1.0);
        const double next = values[i + 1].first;
        const double mixed = low.impurity() + high.impurity();
        if (value < next && low.total() >= smallestBranch && high.total() >= smallestBranch &&
            mixed < best.impurity) {
            best = Split{index, value + (next - value) / 2.0, mixed};
        }
    }
}

Split findSplit(const Patterns& patterns) {
    const Counts counts = countLabels(patterns);
    Split best;
    best.impurity = Side(counts).impurity();
    for (long index = 0; index < patterns.front().pattern->numMeasurements(); ++index) {
        tryMeasurement(patterns, counts, index, best);
    }
    return best;
}

/// The shares of the categories are both match scores and posteriors, since the training data stand for
/// themselves here.
vxDecisionTreeLeaf makeLeaf(const Patterns& patterns, const vxClassifierCosts& costs) {
    std::vector<vxClassifierCategoryResult> shares;
    for (const auto& [label, count] : countLabels(patterns)) {
        shares.emplace_back(label, count / static_cast<double>(patterns.size()), 0.0, 0.0);
    }
    return vxDecisionTreeLeaf(vxClassifierResult(shares, vxClassifierFrequencies(1.0), costs, 0.0));
}

} // namespace

// NOLINTNEXTLINE(misc-no-recursion): a level at most for each of `depth`, and each makes its part smaller.
vxPtrHandle<vxDecisionTree> growTree(const Patterns& training, const vxClassifierCosts& costs, int depth) {
    const Split split = depth > 0 ? findSplit(training) : Split{};
    if (split.index < 0) {
        return makeLeaf(training, costs).clone();
    }
    const vxRangePredicate isLow(vxRange(-std::numeric_limits<double>::infinity(), split.bound),
                                 {split.index});
    Patterns low;
    Patterns high;
    for (const LabelledPattern& pattern : training) {
        (isLow.outcome(*pattern.pattern) ? low : high).push_back(pattern);
    }
    return vxDecisionTreeNode(isLow, *growTree(low, costs, depth - 1), *growTree(high, costs, depth - 1))
        .clone();
}

} // namespace demo
