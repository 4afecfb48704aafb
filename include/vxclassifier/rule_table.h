#ifndef VXCLASSIFIER_RULE_TABLE_H
#define VXCLASSIFIER_RULE_TABLE_H

#include <vxclassifier/feature_vector.h>
#include <vxclassifier/platform/export.h>
#include <vxclassifier/rule.h>

#include <vector>

class vxArchive;

/// Sorts feature vectors by rules that a person wrote; nothing is learnt from data. The order of the rules is
/// their priority: the first one that fits well enough decides, even if a later one would fit better.
///
/// Initial state: no rules, which counts as untrained.
///
/// Ownership: holds copies of its rules; the copies share the rules' functions.
///
/// Threads: const operations may run on several threads while nobody modifies the table or the functions.
class VXCLASSIFIER_API vxClassifierRuleTable {
public:
    vxClassifierRuleTable() noexcept;
    vxClassifierRuleTable(const vxClassifierRuleTable& other);
    vxClassifierRuleTable(vxClassifierRuleTable&& other) noexcept;
    /// An assignment that runs out of memory changes nothing: half of one table on top of half of another
    /// would still classify.
    vxClassifierRuleTable& operator=(const vxClassifierRuleTable& other);
    vxClassifierRuleTable& operator=(vxClassifierRuleTable&& other) noexcept;
    ~vxClassifierRuleTable();

    /// Replaces the rules. Throws vxClassifierDefs::BadParams, and keeps the old ones, when there is no rule
    /// or when the rules do not all have the same number of functions.
    void train(const std::vector<vxClassifierRule>& rules);

    const std::vector<vxClassifierRule>& rules() const noexcept { return rules_; }

    /// The label of the first rule whose score is greater than the threshold, or -1 when there is none. A
    /// score equal to the threshold is not enough.
    ///
    /// Throws vxClassifierDefs::BadParams when the threshold is not within [0, 1],
    /// vxClassifierDefs::NotTrained when there are no rules, BadParams again when the number of values is 0
    /// or is not that of the first rule's functions, and what vxClassifierRule::score throws. Rules after
    /// the first fitting one are not evaluated.
    long classifyHardThreshold(const vxClassifierFeatureVector& featureVector, double hardThreshold) const;

    /// Whether there are as many rules and they are pairwise equal, in order. Throws vxBadPointer when it
    /// meets a null function.
    bool operator==(const vxClassifierRuleTable& other) const;
    bool operator!=(const vxClassifierRuleTable& other) const { return !(*this == other); }

private:
    friend VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierRuleTable& table);

    // All rules have the same number of functions, unless they were loaded.
    std::vector<vxClassifierRule> rules_;
};

/// Exchanges the rules as a vector. What is loaded is not checked; if loading fails, the table keeps the
/// rules read so far.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierRuleTable& table);

#endif
