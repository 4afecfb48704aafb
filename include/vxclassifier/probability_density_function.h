#ifndef VXCLASSIFIER_PROBABILITY_DENSITY_FUNCTION_H
#define VXCLASSIFIER_PROBABILITY_DENSITY_FUNCTION_H

#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/persistent.h>
#include <vxclassifier/platform/rep_base.h>

#include <vector>

/// How the measurements of one dependency set are distributed within one category. Learns from patterns that
/// hold the measurements of the set and nothing else, and tells how likely another such pattern is.
///
/// States: untrained and trained; untrained at first.
///
/// Ownership: held by vxPtrHandle<vx_ProbabilityDensityFunction> in a category model, whose copies share it.
///
/// Threads: a density that nobody changes may be evaluated by several threads.
class VXCLASSIFIER_API vx_ProbabilityDensityFunction : public vxPersistent, public vxRepBase {
public:
    ~vx_ProbabilityDensityFunction() override;

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    /// The natural logarithm of the density, or of the probability, at the pattern. Throws
    /// vxClassifierDefs::InsufficientTrainData when it has not learnt enough to tell.
    virtual double logValue(const vxFeaturePattern& pattern) const = 0;

    /// Whether the other is of the same class and in the same state.
    virtual bool isEquivalent(const vx_ProbabilityDensityFunction& other) const = 0;

    /// Learns from more patterns; what was learnt before stays in force.
    virtual void updateWithData(const std::vector<vxFeaturePattern>& patterns) = 0;

    /// Forgets what was learnt.
    virtual void clear() = 0;

protected:
    vx_ProbabilityDensityFunction() noexcept;
    vx_ProbabilityDensityFunction(const vx_ProbabilityDensityFunction&) noexcept;
    vx_ProbabilityDensityFunction& operator=(const vx_ProbabilityDensityFunction&) noexcept;

    /// Throws vxArchive::UnknownVersion for a version other than 0.
    void serialize_(vxArchive& archive, unsigned char version);
};

#endif
