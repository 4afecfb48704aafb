#ifndef TESTS_CLASTOOL_FOUNDATION_RESULTS_H
#define TESTS_CLASTOOL_FOUNDATION_RESULTS_H

#include "tests/support/hand_written.h"

#include <vxclassifier/classifier_costs.h>
#include <vxclassifier/classifier_frequencies.h>
#include <vxclassifier/classifier_result.h>

#include <vector>

namespace test {

using CategoryResults = std::vector<vxClassifierCategoryResult>;

/// A category result as an archive brings it, whether or not a constructor would make it.
inline vxClassifierCategoryResult forgedCategory(long label, double matchScore, double classScore,
                                                 double expectedCost) {
    return loaded(
        HandWritten().byte(0).number(label).real(matchScore).real(classScore).real(expectedCost).sealed(),
        vxClassifierCategoryResult(0, 0.0, 0.0, 0.0));
}

/// What a classifier hands to the decision rule for a category.
inline vxClassifierCategoryResult match(long label, double matchScore) {
    return vxClassifierCategoryResult(label, matchScore, 0.0, 0.0);
}

inline std::vector<long> labelsOf(const vxClassifierResult& result) {
    std::vector<long> labels;
    for (const vxClassifierCategoryResult& category : result.categoryResults()) {
        labels.push_back(category.categoryLabel());
    }
    return labels;
}

inline vxClassifierFrequencies forgedFrequencies(double defaultFrequency,
                                                 const std::vector<long>& labels = {},
                                                 const std::vector<double>& frequencies = {}) {
    return loaded(HandWritten().byte(0).real(defaultFrequency).numbers(labels).reals(frequencies).sealed(),
                  vxClassifierFrequencies(1.0));
}

inline vxClassifierCosts forgedCosts(double defaultCost) {
    return loaded(HandWritten().byte(0).real(defaultCost).numbers({}).numbers({}).reals({}).sealed(),
                  vxClassifierCosts(1.0));
}

} // namespace test

#endif
