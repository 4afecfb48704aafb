#include "clss/clastool/bayes/model_layout.h"

namespace detail {

ModelLayout::Rows ModelLayout::rowsOf(const vxClassifierDistributionTypes& types, long label) {
    Rows rows;
    for (std::size_t row = 0; row < types.dependencyRows(); ++row) {
        if (types.dependencyLabels_[row] == label) {
            for (const long index : types.dependencySets_[row]) {
                rows.emplace(index, row); // keeps the first row
            }
        }
    }
    return rows;
}

ModelLayout::ModelLayout(const vxClassifierDistributionTypes& types, long label, long numMeasurements) {
    const Rows rows = rowsOf(types, label);
    std::unordered_set<long> covered;
    for (long m = 0; m < numMeasurements; ++m) {
        if (covered.count(m) != 0) {
            continue;
        }
        const auto row = rows.find(m);
        if (row == rows.end()) {
            sets_.push_back({m});
        } else {
            sets_.push_back(types.dependencySets_[row->second]);
            covered.insert(sets_.back().begin(), sets_.back().end());
        }
        types_.push_back(types.distributionType(label, m));
    }
}

} // namespace detail
