#include <vxclassifier/classifier_result.h>

#include "clss/clastool/foundation/stable_merge_sort.h"
#include "platform/archive/class_level.h"

#include <vxclassifier/classifier_costs.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_frequencies.h>
#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/status.h>

#include <algorithm>
#include <cstddef>

namespace {

using CategoryResults = std::vector<vxClassifierCategoryResult>;

constexpr const char* sourceName = "clss/clastool/clastool";

// The range checks are single comparisons, which NaN passes.

void requireScore(double score) {
    if (score < 0.0 || score > 1.0) {
        throw vxClassifierDefs::BadParams(L"Scores must be >= 0.0 and <= 1.0");
    }
}

void requireCategoryResult(long label, double matchScore, double classScore, double expectedCost) {
    if (label < 0) {
        throw vxClassifierDefs::BadLabel(L"Category labels must be >= 0");
    }
    requireScore(matchScore);
    requireScore(classScore);
    if (expectedCost < 0.0) {
        throw vxClassifierDefs::BadParams(L"Costs must be >= 0.0");
    }
}

void requireUniqueLabels(const CategoryResults& results) {
    std::vector<long> labels;
    labels.reserve(results.size());
    for (const vxClassifierCategoryResult& result : results) {
        labels.push_back(result.categoryLabel());
    }
    std::sort(labels.begin(), labels.end());
    if (std::adjacent_find(labels.begin(), labels.end()) != labels.end()) {
        throw vxClassifierDefs::BadParams(L"The category labels of the match results must be unique.");
    }
}

void orderByExpectedCost(CategoryResults& results) {
    detail::stableMergeSort(results,
                            [](const vxClassifierCategoryResult& a, const vxClassifierCategoryResult& b) {
                                return a.expectedCost() < b.expectedCost();
                            });
}

std::vector<double> priorsOf(const CategoryResults& matchResults,
                             const vxClassifierFrequencies& frequencies) {
    std::vector<double> priors;
    priors.reserve(matchResults.size());
    for (const vxClassifierCategoryResult& match : matchResults) {
        priors.push_back(frequencies.categoryFrequency(match.categoryLabel()));
    }
    return priors;
}

double sumOf(const std::vector<double>& values) {
    double sum = 0.0;
    for (const double value : values) {
        sum += value;
    }
    return sum;
}

/// The posteriors but for their common factor. One interruption check for each category.
std::vector<double> weightedScores(const CategoryResults& matchResults,
                                   const vxClassifierFrequencies& frequencies) {
    std::vector<double> scores = priorsOf(matchResults, frequencies);
    const double sumPrior = sumOf(scores);
    if (matchResults.empty() || sumPrior == 0.0) {
        throw vxClassifierDefs::BadParams(L"At least one of the category frequencies must be > 0.");
    }
    for (std::size_t i = 0; i < scores.size(); ++i) {
        vfThrowExceptionOnFailure(vsys_attention_check());
        scores[i] = matchResults[i].matchScore() * scores[i] / sumPrior;
    }
    return scores;
}

/// What assigning category `assigned` costs, weighted by the posteriors but for their common factor.
double riskOf(std::size_t assigned, const CategoryResults& matchResults,
              const std::vector<double>& posteriors, const vxClassifierCosts& costs) {
    double risk = 0.0;
    for (std::size_t j = 0; j < matchResults.size(); ++j) {
        if (j != assigned) {
            risk += costs.misclassificationCost(matchResults[j].categoryLabel(),
                                                matchResults[assigned].categoryLabel()) *
                    posteriors[j];
        }
    }
    return risk;
}

} // namespace

vxClassifierCategoryResult::vxClassifierCategoryResult(long label, double matchScore, double classScore,
                                                       double expectedCost)
    : categoryLabel_(label), matchScore_(matchScore), classScore_(classScore), expectedCost_(expectedCost) {
    requireCategoryResult(label, matchScore, classScore, expectedCost);
}

bool vxClassifierCategoryResult::operator==(const vxClassifierCategoryResult& other) const noexcept {
    return categoryLabel_ == other.categoryLabel_ && matchScore_ == other.matchScore_ &&
           classScore_ == other.classScore_ && expectedCost_ == other.expectedCost_;
}

vxClassifierResult::vxClassifierResult() noexcept = default;

vxClassifierResult::vxClassifierResult(const std::vector<vxClassifierCategoryResult>& results,
                                       double matchScoreFactorLog)
    : matchScoreFactorLog_(matchScoreFactorLog) {
    requireUniqueLabels(results);
    categoryResults_ = results;
    orderByExpectedCost(categoryResults_);
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
    : matchScoreFactorLog_(matchScoreFactorLog) {
    requireUniqueLabels(matchResults);
    const std::vector<double> posteriors = weightedScores(matchResults, frequencies);
    const double sumPosterior = sumOf(posteriors);
    if (sumPosterior == 0.0) {
        throw vxClassifierDefs::BadParams(
            L"At least one of the resulting classification scores must be > 0.");
    }
    categoryResults_.reserve(matchResults.size());
    for (std::size_t i = 0; i < matchResults.size(); ++i) {
        const double risk = riskOf(i, matchResults, posteriors, costs);
        categoryResults_.emplace_back(matchResults[i].categoryLabel(), matchResults[i].matchScore(),
                                      posteriors[i] / sumPosterior, risk / sumPosterior);
    }
    orderByExpectedCost(categoryResults_);
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
