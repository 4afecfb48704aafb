#ifndef VXCLASSIFIER_PDF_MULTIVARIATE_NORMAL_H
#define VXCLASSIFIER_PDF_MULTIVARIATE_NORMAL_H

#include <vxclassifier/platform/nm_matrix.h>
#include <vxclassifier/platform/pdf_multivariate_normal.h>
#include <vxclassifier/probability_density_function.h>

#include <memory>
#include <vector>

namespace detail {
struct Freshness;
class ModelTrainer;
class ScoringPlan;
} // namespace detail

/// The joint normal density of the measurements of a dependency set.
///
/// States: untrained and trained (isValid()); untrained at first, and trained once a pattern without invalid
/// measurements has entered.
///
/// Ownership: owns its statistics. Threads: as for vx_ProbabilityDensityFunction.
class VXCLASSIFIER_API vx_PDFMultivariateNormal : public vx_ProbabilityDensityFunction {
public:
    vx_PDFMultivariateNormal();
    vx_PDFMultivariateNormal(const vx_PDFMultivariateNormal& other);

    /// If this throws, nothing has changed.
    vx_PDFMultivariateNormal& operator=(const vx_PDFMultivariateNormal& other);
    ~vx_PDFMultivariateNormal() override;

    static vxPersistent* make();

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    /// Of the valid measurements alone when some are invalid; 0 when none is valid. Where the data leave the
    /// covariance singular, docs/numerics.md says what takes the density's place. Throws
    /// vxClassifierDefs::InsufficientTrainData when untrained, whatever the pattern, and vxStatusFailure for
    /// a pattern of another size than those learnt from.
    double logValue(const vxFeaturePattern& pattern) const override;

    /// Whether the other is a vx_PDFMultivariateNormal that is equal.
    bool isEquivalent(const vx_ProbabilityDensityFunction& other) const override;

    /// updateWithDataNormalize with the factor 1.
    void updateWithData(const std::vector<vxFeaturePattern>& patterns) override;

    void clear() override;

    /// Learns from patterns whose values are divided by `factor`. A pattern with an invalid measurement does
    /// not enter. Throws vxClassifierDefs::BadParams if the patterns differ in size from each other or from
    /// those learnt from before; then none of them has entered.
    void updateWithDataNormalize(const std::vector<vxFeaturePattern>& patterns, double factor);

    /// Whether anything has been learnt.
    bool isValid() const noexcept { return pdf_.numSamples > 0; }

    /// One column, one row for each measurement; a copy.
    vxNMMatrix mean() const;

    /// One row and one column for each measurement, divisor n - 1; a copy.
    vxNMMatrix covariance() const;

    /// Equal when the numbers of patterns learnt from, the means and the covariances are equal, by the
    /// ordinary `==`.
    bool operator==(const vx_PDFMultivariateNormal& other) const;
    bool operator!=(const vx_PDFMultivariateNormal& other) const { return !(*this == other); }

protected:
    /// Throws vxArchive::UnknownVersion for a version other than 0. Loaded values are not checked.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    friend class vx_CategoryModelBayesian;
    friend class vx_PDFBinomial;
    friend class detail::ModelTrainer;
    friend class detail::ScoringPlan;

    double logValue(const vmath_FeaturePattern& pattern) const;
    void update(const vmath_FeaturePattern& pattern, double factor);
    void setStatistics(const vxNMMatrix& mean, const vxNMMatrix& covariance, long numSamples);

    // Between these two, updates leave out what only evaluation needs, the mean and the covariance may lag
    // behind, and evaluation is slow.
    void beginUpdates() noexcept;
    void endUpdates() noexcept;

    /// For one that nobody evaluates: then no update prepares it for that.
    void useForStatisticsOnly() noexcept;

    // Models copy what they need often. Each change comes after telling the last one that did.
    void tellChangesTo(const std::shared_ptr<detail::Freshness>& copy) noexcept;
    void tellOfChange() noexcept;

    vmath_PDFMultivariateNormal pdf_;
    std::shared_ptr<detail::Freshness> copy_; // null if there is none; not copied with the density

    static vx_Instantiator sExemplar;
};

#endif
