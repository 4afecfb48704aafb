#ifndef VXCLASSIFIER_CLASSIFIER_RESULT_H
#define VXCLASSIFIER_CLASSIFIER_RESULT_H

#include <vxclassifier/platform/export.h>

#include <vector>

class vxArchive;
class vxClassifierCosts;
class vxClassifierFrequencies;

namespace detail {
class ResultAccess;
}

/// What a classification says of one category.
///
/// Initial state: the four given values.
///
/// Ownership: a plain value. Threads: as any plain value.
class VXCLASSIFIER_API vxClassifierCategoryResult {
public:
    /// Throws, in this order: vxClassifierDefs::BadLabel for a negative label; vxClassifierDefs::BadParams if
    /// the match score, and then the class score, lies outside [0, 1]; vxClassifierDefs::BadParams for a
    /// negative cost. NaN passes.
    vxClassifierCategoryResult(long label, double matchScore, double classScore, double expectedCost)
        : categoryLabel_(label), matchScore_(matchScore), classScore_(classScore),
          expectedCost_(expectedCost) {
        if (label < 0 || isNoScore_(matchScore) || isNoScore_(classScore) || expectedCost < 0.0) {
            refuse_(label, matchScore, classScore);
        }
    }
    vxClassifierCategoryResult(const vxClassifierCategoryResult&) noexcept = default;
    vxClassifierCategoryResult& operator=(const vxClassifierCategoryResult&) noexcept = default;

    long categoryLabel() const noexcept { return categoryLabel_; }

    /// How well the pattern fits the category, in [0, 1].
    double matchScore() const noexcept { return matchScore_; }

    /// The posterior probability of the category, in [0, 1].
    double classScore() const noexcept { return classScore_; }

    /// What deciding for this category costs on average, >= 0.
    double expectedCost() const noexcept { return expectedCost_; }

    /// All four values by the ordinary `==`; one with a NaN is unequal even to itself.
    bool operator==(const vxClassifierCategoryResult& other) const noexcept;
    bool operator!=(const vxClassifierCategoryResult& other) const noexcept { return !(*this == other); }

private:
    friend VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierCategoryResult& result);

    static bool isNoScore_(double score) noexcept { return score < 0.0 || score > 1.0; }
    [[noreturn]] static void refuse_(long label, double matchScore, double classScore);

    long categoryLabel_;  // >= 0
    double matchScore_;   // in [0, 1]
    double classScore_;   // in [0, 1]
    double expectedCost_; // >= 0
};

/// The outcome of a classification: every category with its scores, the one that costs least first. The first
/// entry is the decision.
///
/// Initial state: no categories, or what a constructor computed. An archive can also bring entries that no
/// constructor would make; they are stored and compared as they are.
///
/// Ownership: a plain value. Threads: as any plain value.
///
/// Made for a handful to a few dozen categories: the decision rule is quadratic in their number.
class VXCLASSIFIER_API vxClassifierResult {
public:
    vxClassifierResult() noexcept;

    /// Takes class scores and expected costs from the caller: divides the class scores by their sum and
    /// orders the entries by expected cost, equal ones in the given order. Throws vxClassifierDefs::BadParams
    /// if a label occurs twice, if the class scores sum to 0, or if a score or a cost lies outside its range,
    /// and vxClassifierDefs::BadLabel for a negative label.
    vxClassifierResult(const std::vector<vxClassifierCategoryResult>& results, double matchScoreFactorLog);

    /// The decision rule. From the match scores m and the frequencies p of the categories:
    ///     class score of i:   m[i] p[i] / sum over k of m[k] p[k]     (Bayes' rule)
    ///     expected cost of i: sum over j != i of cost(true j, assigned i) * class score of j
    /// ordered by expected cost, equal ones in the given order. The class scores and costs of `matchResults`
    /// are ignored. Throws vxClassifierDefs::BadParams if a label occurs twice, if there are no entries, or
    /// if all weighted match scores are 0; vxClassifierDefs::BadLabel for a negative label; and what the
    /// interruption check throws, which is made once for each entry. Time is quadratic in the number of
    /// entries and linear in the number of cost overrides for each pair.
    vxClassifierResult(const std::vector<vxClassifierCategoryResult>& matchResults,
                       const vxClassifierFrequencies& frequencies, const vxClassifierCosts& costs,
                       double matchScoreFactorLog);

    /// The categories by ascending expected cost.
    const std::vector<vxClassifierCategoryResult>& categoryResults() const noexcept {
        return categoryResults_;
    }

    /// The natural logarithm of the factor by which the classifier multiplied its likelihoods to form the
    /// match scores; 0 for techniques that have no likelihoods.
    double matchScoreFactorLog() const noexcept { return matchScoreFactorLog_; }

    /// Equal when the same entries stand in the same order and the factors are equal, by the ordinary `==`.
    bool operator==(const vxClassifierResult& other) const noexcept;
    bool operator!=(const vxClassifierResult& other) const noexcept { return !(*this == other); }

private:
    friend VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierResult& result);
    friend class detail::ResultAccess;

    std::vector<vxClassifierCategoryResult> categoryResults_;
    double matchScoreFactorLog_ = 0.0;
};

/// Exchanges a version byte, the label, the match score, the class score and the expected cost; loaded values
/// are not checked. Throws vxArchive::UnknownVersion for a version other than 0.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierCategoryResult& result);

/// Exchanges a version byte, the entries and the factor; loaded values are not checked. Throws
/// vxArchive::UnknownVersion for a version other than 0.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierResult& result);

#endif
