#include <vxclassifier/classifier_result.h>

#include "clss/clastool/foundation/decision_rule.h"
#include "platform/archive/class_level.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/archive.h>

#include <cstddef>

namespace {

using CategoryResults = std::vector<vxClassifierCategoryResult>;

constexpr const char* sourceName = "clss/clastool/clastool";

} // namespace

// The range checks are single comparisons, which NaN passes.
void vxClassifierCategoryResult::refuse_(long label, double matchScore, double classScore) {
    if (label < 0) {
        throw vxClassifierDefs::BadLabel(L"Category labels must be >= 0");
    }
    if (isNoScore_(matchScore) || isNoScore_(classScore)) {
        throw vxClassifierDefs::BadParams(L"Scores must be >= 0.0 and <= 1.0");
    }
    throw vxClassifierDefs::BadParams(L"Costs must be >= 0.0");
}

bool vxClassifierCategoryResult::operator==(const vxClassifierCategoryResult& other) const noexcept {
    return categoryLabel_ == other.categoryLabel_ && matchScore_ == other.matchScore_ &&
           classScore_ == other.classScore_ && expectedCost_ == other.expectedCost_;
}

vxClassifierResult::vxClassifierResult() noexcept = default;

vxClassifierResult::vxClassifierResult(const std::vector<vxClassifierCategoryResult>& results,
                                       double matchScoreFactorLog)
    : matchScoreFactorLog_(matchScoreFactorLog) {
    detail::requireUniqueLabels(results);
    categoryResults_ = results;
    detail::orderByExpectedCost(categoryResults_);
    double sum = 0.0;
    for (const vxClassifierCategoryResult& result : categoryResults_) {
        sum += result.classScore();
    }
    if (categoryResults_.empty() || sum == 0.0) {
        throw vxClassifierDefs::BadParams(L"At least one of the classification scores must be > 0.");
    }
    for (vxClassifierCategoryResult& result : categoryResults_) {
        result = vxClassifierCategoryResult(result.categoryLabel(), result.matchScore(),
                                            result.classScore() / sum, result.expectedCost());
    }
}

vxClassifierResult::vxClassifierResult(const std::vector<vxClassifierCategoryResult>& matchResults,
                                       const vxClassifierFrequencies& frequencies,
                                       const vxClassifierCosts& costs, double matchScoreFactorLog)
    : categoryResults_(matchResults), matchScoreFactorLog_(matchScoreFactorLog) {
    detail::decide(frequencies, costs, categoryResults_);
}

bool vxClassifierResult::operator==(const vxClassifierResult& other) const noexcept {
    return categoryResults_ == other.categoryResults_ && matchScoreFactorLog_ == other.matchScoreFactorLog_;
}

vxArchive& operator||(vxArchive& archive, vxClassifierCategoryResult& result) {
    detail::exchangeVersion(archive, sourceName, 346);
    archive || result.categoryLabel_;
    archive || result.matchScore_;
    archive || result.classScore_;
    archive || result.expectedCost_;
    return archive;
}

namespace {

/// A category result has no default state, which the general operator for vectors asks for.
void exchangeCategoryResults(vxArchive& archive, CategoryResults& results) {
    constexpr std::size_t elementSize = 1 + 4 + 3 * 8;
    const unsigned long count = detail::exchangeVectorHead(archive, results.size(), elementSize);
    results.resize(count, vxClassifierCategoryResult(0, 0.0, 0.0, 0.0));
    for (vxClassifierCategoryResult& result : results) {
        archive || result;
    }
}

} // namespace

vxArchive& operator||(vxArchive& archive, vxClassifierResult& result) {
    detail::exchangeVersion(archive, sourceName, 670);
    exchangeCategoryResults(archive, result.categoryResults_);
    archive || result.matchScoreFactorLog_;
    return archive;
}
