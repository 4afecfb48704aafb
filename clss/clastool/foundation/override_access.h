#ifndef CLSS_CLASTOOL_FOUNDATION_OVERRIDE_ACCESS_H
#define CLSS_CLASTOOL_FOUNDATION_OVERRIDE_ACCESS_H

#include <vxclassifier/classifier_costs.h>
#include <vxclassifier/classifier_frequencies.h>

#include <cstddef>
#include <vector>

namespace detail {

/// The tables of overrides for those who look many labels up at a time. Of the columns only the rows that all
/// of them have count.
class OverrideAccess {
public:
    static bool hasNone(const vxClassifierFrequencies& frequencies) noexcept {
        return frequencies.overrideLabels_.empty();
    }

    static bool hasNone(const vxClassifierCosts& costs) noexcept { return costs.overrideTrueLabels_.empty(); }
    static std::size_t rows(const vxClassifierCosts& costs) noexcept { return costs.rows(); }
    static const long* trueLabels(const vxClassifierCosts& costs) noexcept {
        return costs.overrideTrueLabels_.data();
    }
    static const long* assignedLabels(const vxClassifierCosts& costs) noexcept {
        return costs.overrideAssignedLabels_.data();
    }
    static const double* costs(const vxClassifierCosts& costs) noexcept {
        return costs.overrideCosts_.data();
    }
};

} // namespace detail

#endif
