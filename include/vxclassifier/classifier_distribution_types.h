#ifndef VXCLASSIFIER_CLASSIFIER_DISTRIBUTION_TYPES_H
#define VXCLASSIFIER_CLASSIFIER_DISTRIBUTION_TYPES_H

#include <vxclassifier/platform/export.h>

#include <cstddef>
#include <cstdint>
#include <vector>

class vxArchive;

namespace detail {
class ModelLayout;
}

/// How the Bayesian technique models the measurements: a distribution for every pair of category label and
/// measurement index, and for each label the sets of measurements that depend on each other and are modelled
/// jointly.
///
/// Initial state: the given default for every pair, no overrides, no dependency sets.
///
/// Ownership: a plain value. Threads: as any plain value.
///
/// Overrides and sets are kept in the order in which they were made, and looking one up is linear in their
/// number.
class VXCLASSIFIER_API vxClassifierDistributionTypes {
public:
    /// The numbers stand in archives and never change. Any 32-bit number may be held, stored and loaded; one
    /// that is not listed is refused when a category model is built from it.
    enum DistributionType : std::int32_t {
        eMultivariateNormal = 0, ///< normal; jointly so for the measurements of a dependency set
        eBinomial = 1,           ///< a count; for single measurements only
        ePoisson = 2,            ///< not implemented
        eUniform = 3             ///< not implemented
    };

    explicit vxClassifierDistributionTypes(DistributionType defaultType) noexcept;
    vxClassifierDistributionTypes(const vxClassifierDistributionTypes&) = default;
    vxClassifierDistributionTypes(vxClassifierDistributionTypes&&) noexcept = default;
    /// If this throws for want of memory, nothing has changed.
    vxClassifierDistributionTypes& operator=(const vxClassifierDistributionTypes& other);
    vxClassifierDistributionTypes& operator=(vxClassifierDistributionTypes&&) noexcept = default;
    ~vxClassifierDistributionTypes() = default;

    DistributionType defaultDistributionType() const noexcept { return defaultDistributionType_; }

    /// Leaves overrides and dependency sets as they are.
    void defaultDistributionType(DistributionType type) noexcept { defaultDistributionType_ = type; }

    /// The distribution of one measurement of one category: its override, or the default; dependency sets
    /// play no part. Throws vxClassifierDefs::BadLabel for a negative label, then vxClassifierDefs::BadIndex
    /// for a negative index.
    DistributionType distributionType(long label, long index) const;

    /// Sets or replaces the distribution of one measurement of one category. With the type that is the
    /// default now, it does nothing at all: nothing is checked, and an override made before stays in force.
    /// Otherwise throws and changes nothing: vxClassifierDefs::BadParams for a measurement that lies in a
    /// dependency set of the label, then vxClassifierDefs::BadLabel for a negative label, then
    /// vxClassifierDefs::BadIndex for a negative index.
    void distributionTypeOverride(long label, long index, DistributionType type);

    /// Removes every override; the default and the dependency sets stay, also those whose members had a type
    /// of their own.
    void clearDistributionOverrides() noexcept;

    /// Declares measurements of one category as depending on each other; without effect for none. They join
    /// the sets of that label with which they share a measurement: the first such set keeps its place, gets
    /// the given measurements (each once) appended and then the members of the other such sets, which go. A
    /// measurement that was in one of the sets before is listed twice then, so a set grows with every call
    /// that joins it. Throws and changes nothing: vxClassifierDefs::BadLabel for a negative label,
    /// vxClassifierDefs::BadIndex for a negative index, vxClassifierDefs::BadParams for measurements of
    /// different distributions.
    void setDependent(long label, const std::vector<long>& indices);

    /// Whether all the measurements lie in one and the same dependency set of the label; false for none.
    /// Throws vxClassifierDefs::BadLabel for a negative label, and vxClassifierDefs::BadIndex for a negative
    /// index.
    bool isDependent(long label, const std::vector<long>& indices) const;

    /// Equal when the defaults are equal and the same overrides and sets were made in the same order.
    bool operator==(const vxClassifierDistributionTypes& other) const noexcept;
    bool operator!=(const vxClassifierDistributionTypes& other) const noexcept { return !(*this == other); }

protected:
    /// The place of the pair among the overrides, or -1. Throws vxClassifierDefs::BadLabel for a negative
    /// label, then vxClassifierDefs::BadIndex for a negative index.
    long distOverrideIndex_(long label, long index) const;

private:
    friend class detail::ModelLayout;
    friend VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierDistributionTypes& types);

    std::size_t overrideRows() const noexcept;
    std::size_t dependencyRows() const noexcept;
    bool dependsAlready(long label, long index) const;
    std::vector<std::size_t> rowsSharing(long label, const std::vector<long>& indices) const;
    void appendSet(long label, const std::vector<long>& set);
    void mergeSets(const std::vector<std::size_t>& rows, const std::vector<long>& set);

    DistributionType defaultDistributionType_;

    // Parallel; no pair twice. An archive can bring vectors of different lengths: only the rows that all have
    // count.
    std::vector<long> overrideLabels_;  // >= 0
    std::vector<long> overrideIndices_; // >= 0
    std::vector<DistributionType> overrideTypes_;

    // Parallel, as above. Row i: a set of measurement indices of the label i. Sets of one label are disjoint.
    std::vector<long> dependencyLabels_; // >= 0
    std::vector<std::vector<long>> dependencySets_;
};

/// Exchanges the type as a 32-bit number.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive,
                                       vxClassifierDistributionTypes::DistributionType& type);

/// Exchanges a version byte, the default, the labels, indices and types of the overrides, the labels and the
/// indices of the dependency sets. Loaded values are not checked. Throws vxArchive::UnknownVersion for a
/// version other than 0.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierDistributionTypes& types);

#endif
