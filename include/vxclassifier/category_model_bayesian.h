#ifndef VXCLASSIFIER_CATEGORY_MODEL_BAYESIAN_H
#define VXCLASSIFIER_CATEGORY_MODEL_BAYESIAN_H

#include <vxclassifier/category_model.h>
#include <vxclassifier/classifier_distribution_types.h>
#include <vxclassifier/platform/ptr_handle.h>
#include <vxclassifier/probability_density_function.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace detail {
class CategoryPanel;
class ModelTrainer;
class ScoringPlan;
} // namespace detail

/// What the Bayesian technique knows of one category: one density for each dependency set of measurements.
/// The sets are taken as independent of each other, so the log-likelihood of a pattern is the sum of their
/// log values.
///
/// Initial state: label 0 without any set, or untrained densities for the given sets.
///
/// Ownership: shares its densities with its copies, so training one trains them all.
///
/// Threads: a model that nobody changes may be asked by several threads.
class VXCLASSIFIER_API vx_CategoryModelBayesian : public vx_CategoryModel {
public:
    vx_CategoryModelBayesian() noexcept;

    /// Set i, a list of measurement indices in the order in which its density takes them, has the
    /// distribution `types[i]`. `maxMeasurementValues` holds the maxima of all measurements; a binomial set
    /// takes that of its first index, or 1 if there is none. Throws vxClassifierDefs::NotImplemented for the
    /// Poisson and the uniform distribution, vxClassifierDefs::BadParams for a type that is none of the four
    /// (or missing), and vxClassifierDefs::BadIndex for a negative index in a binomial set.
    vx_CategoryModelBayesian(long label, const std::vector<std::vector<long>>& dependencySets,
                             const std::vector<vxClassifierDistributionTypes::DistributionType>& types,
                             const vxFeaturePattern& maxMeasurementValues);
    vx_CategoryModelBayesian(const vx_CategoryModelBayesian& other);
    /// If this throws for want of memory, nothing has changed.
    vx_CategoryModelBayesian& operator=(const vx_CategoryModelBayesian& other);
    ~vx_CategoryModelBayesian() override;

    static vxPersistent* make();

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    /// The natural logarithm of the pattern's likelihood in this category; 0 for a model without sets. An
    /// index past the pattern's end counts as an invalid measurement. Throws
    /// vxClassifierDefs::InsufficientTrainData, with the density's message and the label, when a density has
    /// not learnt enough; vxBadPointer when one is missing; vxClassifierDefs::BadIndex for a negative index;
    /// and what a density throws otherwise. `diag` and `flags` are not used.
    double matchScore(const vxFeaturePattern& pattern, vxDiagObject* diag = nullptr,
                      unsigned long flags = 0) const override;

    /// Adds one training pattern to every density, set by set. When one throws, those before it have taken
    /// the pattern and those after it have not. Throws as matchScore does, but passes
    /// vxClassifierDefs::InsufficientTrainData on as it is. `diag` and `flags` are not used.
    void adapt(const vxFeaturePattern& pattern, vxDiagObject* diag = nullptr,
               unsigned long flags = 0) override;

    /// Whether labels, numbers of measurements and densities are equal; the sets are not compared. Throws
    /// vxBadPointer when a density is missing.
    bool operator==(const vx_CategoryModelBayesian& other) const;
    bool operator!=(const vx_CategoryModelBayesian& other) const { return !(*this == other); }

protected:
    /// Throws vxArchive::UnknownVersion for a version other than 0.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    friend class vx_ClassifierBayesian;
    friend class detail::CategoryPanel;
    friend class detail::ModelTrainer;

    vx_ProbabilityDensityFunction& pdf(std::size_t set) const;

    double logValue(std::size_t set, const vxFeaturePattern& pattern) const;
    double logLikelihood(const vxFeaturePattern& pattern) const;

    /// Makes scoring fast, once the densities are what they will be for a while. Lack of memory leaves it
    /// slow.
    void makePlan() noexcept;

    /// 1 + the largest measurement index that the model looks at; 0 when it looks at none.
    std::int64_t numUsed() const noexcept;

    // Parallel. An archive can bring fewer densities than sets: a missing one counts as a null handle.
    std::vector<std::vector<long>> dependencySets_;
    std::vector<vxPtrHandle<vx_ProbabilityDensityFunction>> pdfs_;

    std::shared_ptr<const detail::ScoringPlan> plan_; // null if there is none; shared with copies

    static vx_Instantiator sExemplar;
};

#endif
