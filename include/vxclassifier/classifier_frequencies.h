#ifndef VXCLASSIFIER_CLASSIFIER_FREQUENCIES_H
#define VXCLASSIFIER_CLASSIFIER_FREQUENCIES_H

#include <vxclassifier/platform/export.h>

#include <cstddef>
#include <vector>

class vxArchive;

namespace detail {
class OverrideAccess;
}

/// How frequent the categories are: one frequency (prior) for every category label, and others for single
/// labels. Only their ratios matter for a decision; they need not add up to 1.
///
/// Initial state: the given default for every label, no overrides.
///
/// Ownership: a plain value. Threads: as any plain value.
///
/// Looking a label up is linear in the number of overrides, which are kept in the order in which they were
/// first made.
class VXCLASSIFIER_API vxClassifierFrequencies {
public:
    /// Throws vxClassifierDefs::BadParams if the frequency is not above 0; NaN passes.
    explicit vxClassifierFrequencies(double defaultFrequency);
    vxClassifierFrequencies(const vxClassifierFrequencies&) = default;
    vxClassifierFrequencies(vxClassifierFrequencies&&) noexcept = default;
    /// If this throws for want of memory, nothing has changed.
    vxClassifierFrequencies& operator=(const vxClassifierFrequencies& other);
    vxClassifierFrequencies& operator=(vxClassifierFrequencies&&) noexcept = default;
    ~vxClassifierFrequencies() = default;

    double defaultCategoryFrequency() const noexcept { return defaultCategoryFrequency_; }

    /// Throws vxClassifierDefs::BadParams, and changes nothing, if the frequency is not above 0; NaN passes.
    void defaultCategoryFrequency(double frequency);

    /// The frequency of a label: its override, or the default. Throws vxClassifierDefs::BadLabel for a
    /// negative label.
    double categoryFrequency(long label) const;

    /// Sets or replaces the frequency of one label. Throws and changes nothing: vxClassifierDefs::BadParams
    /// if the frequency is not above 0 (NaN passes), then vxClassifierDefs::BadLabel for a negative label.
    void categoryFrequencyOverride(long label, double frequency);

    /// Removes every override; the default stays.
    void clearFrequencyOverrides() noexcept;

    /// The place of the label among the overrides, or -1. Throws vxClassifierDefs::BadLabel for a negative
    /// label.
    long freqOverrideIndex_(long label) const;

    /// Equal when the defaults are equal and the same overrides were made in the same order, by the ordinary
    /// `==`.
    bool operator==(const vxClassifierFrequencies& other) const noexcept;
    bool operator!=(const vxClassifierFrequencies& other) const noexcept { return !(*this == other); }

private:
    friend VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierFrequencies& frequencies);
    friend class detail::OverrideAccess;

    std::size_t rows() const noexcept;

    double defaultCategoryFrequency_; // > 0
    // Parallel; no label twice. An archive can bring vectors of different lengths: only the rows that both
    // have count.
    std::vector<long> overrideLabels_;
    std::vector<double> overrideFrequencies_;
};

/// Exchanges a version byte, the default, the labels and their frequencies. Loaded values are not checked.
/// Throws vxArchive::UnknownVersion for a version other than 0.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierFrequencies& frequencies);

#endif
