#ifndef CLSS_CLASTOOL_FOUNDATION_DECISION_RULE_H
#define CLSS_CLASTOOL_FOUNDATION_DECISION_RULE_H

#include <vxclassifier/classifier_result.h>

#include <vector>

class vxClassifierCosts;
class vxClassifierFrequencies;

namespace detail {

using CategoryResults = std::vector<vxClassifierCategoryResult>;

/// Throws vxClassifierDefs::BadParams if a label occurs twice.
void requireUniqueLabels(const CategoryResults& results);

/// Sorts by ascending expected cost; equal ones keep their order, and NaN loses no entry.
void orderByExpectedCost(CategoryResults& results);

/// The decision rule of vxClassifierResult, in place: `categories` have labels and match scores, and get
/// their class scores, expected costs and order. Throws what that constructor throws; they then hold
/// anything.
///
/// For a usual number of categories it takes no memory. Each sum is rounded in the published order.
void decide(const vxClassifierFrequencies& frequencies, const vxClassifierCosts& costs,
            CategoryResults& categories);

} // namespace detail

#endif
