#ifndef VXCLASSIFIER_RULE_H
#define VXCLASSIFIER_RULE_H

#include <vxclassifier/feature_score.h>
#include <vxclassifier/feature_vector.h>
#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/ptr_handle.h>

#include <vector>

class vxArchive;

/// What the objects of one category look like: a score function for each feature, and the category's label.
///
/// Initial state: no functions, label 0.
///
/// Ownership: shares its functions with whoever else holds handles to them; copies of a rule share them too.
/// Nothing in the library modifies a function after it was handed over, and a caller who does so changes
/// every rule that shares it.
///
/// Threads: const operations may run on several threads while nobody modifies the rule or its functions.
class VXCLASSIFIER_API vxClassifierRule {
public:
    vxClassifierRule() noexcept = default;

    /// Takes one function for each feature, in the order of the features, and the label. Throws
    /// vxClassifierDefs::BadParams, and changes nothing, when the label is negative or when there is no
    /// function. Null handles are taken as they are; `score` then throws. The vector itself is only read.
    void init(std::vector<vxPtrHandle<vxClsFtSc>>& scoringMethods, long label);

    const std::vector<vxPtrHandle<vxClsFtSc>>& scoringMethods() const noexcept { return scoringMethods_; }
    long label() const noexcept { return label_; }

    /// The geometric mean of the features' scores, without those that are -1 (or NaN). 0 when a score is 0; 1
    /// when every feature is left out. With very many small scores their product can fall below the smallest
    /// double; the score is 0 then.
    ///
    /// Throws vxClassifierDefs::BadParams when the number of values is not that of the functions or is 0,
    /// vxBadPointer when a function is null, and what the functions throw. Linear in the number of features.
    double score(const vxClassifierFeatureVector& featureVector) const;

    /// Whether the functions are pairwise equal and the labels are. Throws vxBadPointer when it meets a null
    /// handle.
    bool operator==(const vxClassifierRule& other) const;
    bool operator!=(const vxClassifierRule& other) const { return !(*this == other); }

private:
    friend VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierRule& rule);

    // Either both are as they were initially, or there is at least one function and the label is >= 0; unless
    // they were loaded.
    std::vector<vxPtrHandle<vxClsFtSc>> scoringMethods_;
    long label_ = 0;
};

/// Exchanges the functions as a vector of handles, then the label. What is loaded is not checked; if loading
/// fails, the rule keeps what was read so far.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierRule& rule);

#endif
