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

/// The decision rule of vxClassifierResult: replaces `decided`, whose memory is used again, by the categories
/// with their class scores and expected costs. Throws what that constructor throws; `decided` then holds
/// anything.
///
/// For a usual number of categories it takes no memory but that of the result. Each sum is rounded in the
/// published order.
void decide(const CategoryResults& matches, const vxClassifierFrequencies& frequencies,
            const vxClassifierCosts& costs, CategoryResults& decided);

} // namespace detail

#endif
