#ifndef VXCLASSIFIER_CLASSIFIER_COSTS_H
#define VXCLASSIFIER_CLASSIFIER_COSTS_H

#include <vxclassifier/platform/export.h>

#include <cstddef>
#include <vector>

class vxArchive;

namespace detail {
class OverrideAccess;
}

/// What a wrong decision costs: one cost for every ordered pair of different labels (the true one, the
/// assigned one), and others for single pairs. A right decision costs nothing and has no entry.
///
/// Initial state: the given default for every pair, no overrides.
///
/// Ownership: a plain value. Threads: as any plain value.
///
/// Looking a pair up is linear in the number of overrides, which are kept in the order in which they were
/// first made.
class VXCLASSIFIER_API vxClassifierCosts {
public:
    /// Throws vxClassifierDefs::BadParams for a negative cost; NaN passes.
    explicit vxClassifierCosts(double defaultCost);
    vxClassifierCosts(const vxClassifierCosts&) = default;
    vxClassifierCosts(vxClassifierCosts&&) noexcept = default;
    /// If this throws for want of memory, nothing has changed.
    vxClassifierCosts& operator=(const vxClassifierCosts& other);
    vxClassifierCosts& operator=(vxClassifierCosts&&) noexcept = default;
    ~vxClassifierCosts() = default;

    double defaultMisclassificationCost() const noexcept { return defaultMisclassificationCost_; }

    /// Throws vxClassifierDefs::BadParams, and changes nothing, for a negative cost; NaN passes.
    void defaultMisclassificationCost(double cost);

    /// The cost of assigning `assignedLabel` when `trueLabel` is right. Throws vxClassifierDefs::BadLabel for
    /// equal labels, and then for a negative one.
    double misclassificationCost(long trueLabel, long assignedLabel) const;

    /// Sets or replaces the cost of one pair. Throws and changes nothing: vxClassifierDefs::BadParams for a
    /// negative cost (NaN passes), then vxClassifierDefs::BadLabel for equal labels, and then for a negative
    /// one.
    void misclassificationCostOverride(long trueLabel, long assignedLabel, double cost);

    /// Removes every override; the default stays.
    void clearMisclassificationOverrides() noexcept;

    /// The place of the pair among the overrides, or -1. Throws vxClassifierDefs::BadLabel for a negative
    /// label.
    long misclOverrideIndex_(long trueLabel, long assignedLabel) const;

    /// Equal when the defaults are equal and the same overrides were made in the same order, by the ordinary
    /// `==`.
    bool operator==(const vxClassifierCosts& other) const noexcept;
    bool operator!=(const vxClassifierCosts& other) const noexcept { return !(*this == other); }

private:
    friend VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierCosts& costs);
    friend class detail::OverrideAccess;

    std::size_t rows() const noexcept;

    double defaultMisclassificationCost_; // >= 0
    // Parallel; no pair twice, none of equal labels. An archive can bring vectors of different lengths: only
    // the rows that all have count.
    std::vector<long> overrideTrueLabels_;
    std::vector<long> overrideAssignedLabels_;
    std::vector<double> overrideCosts_;
};

/// Exchanges a version byte, the default, the true labels, the assigned labels and the costs. Loaded values
/// are not checked. Throws vxArchive::UnknownVersion for a version other than 0.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierCosts& costs);

#endif
