#ifndef CLSS_CLASTOOL_BAYES_MODEL_LAYOUT_H
#define CLSS_CLASTOOL_BAYES_MODEL_LAYOUT_H

#include <vxclassifier/classifier_distribution_types.h>

#include <cstddef>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace detail {

/// How a category model divides the measurements: which of them it models jointly, and how each group is
/// distributed.
class ModelLayout {
public:
    /// The layout for one label and the measurements 0 to numMeasurements - 1 (none for a number below 1).
    /// A dependency set takes the place of its smallest member below that number. It is taken as a whole,
    /// members beyond that number and repeats included. Throws vxClassifierDefs::BadLabel for a negative
    /// label if there is a measurement. Linear in the number of measurements and in the size of the sets,
    /// times the number of overrides.
    ModelLayout(const vxClassifierDistributionTypes& types, long label, long numMeasurements);

    const std::vector<std::vector<long>>& sets() const noexcept { return sets_; }

    /// One for each set.
    const std::vector<vxClassifierDistributionTypes::DistributionType>& types() const noexcept {
        return types_;
    }

private:
    using Rows = std::unordered_map<long, std::size_t>; // measurement index to the row of its first set

    static Rows rowsOf(const vxClassifierDistributionTypes& types, long label);

    std::vector<std::vector<long>> sets_;
    std::vector<vxClassifierDistributionTypes::DistributionType> types_;
};

} // namespace detail

#endif
