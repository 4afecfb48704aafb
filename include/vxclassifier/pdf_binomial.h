#ifndef VXCLASSIFIER_PDF_BINOMIAL_H
#define VXCLASSIFIER_PDF_BINOMIAL_H

#include <vxclassifier/pdf_multivariate_normal.h>
#include <vxclassifier/platform/pdf_multivariate_normal.h>
#include <vxclassifier/probability_density_function.h>

/// The binomial distribution of a single measurement that counts something, from 0 to a known maximum. The
/// number of trials and the probability of success are estimated from the mean and the variance of the values
/// divided by the maximum.
///
/// States: untrained while numTrials() is 0, which includes data without any variance; trained otherwise.
/// Untrained at first, with a theta() of 0.
///
/// Ownership: owns its statistics. An archive holds the estimates only, so training a loaded one starts anew.
///
/// Threads: as for vx_ProbabilityDensityFunction.
class VXCLASSIFIER_API vx_PDFBinomial : public vx_ProbabilityDensityFunction {
public:
    /// Measurement 0 of the pattern is the largest value that the measurement can take. Throws
    /// vxClassifierDefs::BadFeatures if it is missing or invalid.
    explicit vx_PDFBinomial(const vxFeaturePattern& maxima);
    vx_PDFBinomial(const vx_PDFBinomial& other);
    vx_PDFBinomial& operator=(const vx_PDFBinomial& other);
    ~vx_PDFBinomial() override;

    /// An untrained one with the maximum 1.
    static vxPersistent* make();

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    /// The logarithm of the probability of the count next to the value, after scaling the range of values to
    /// that of the trials; 0 for an invalid measurement. Throws, in this order:
    /// vxClassifierDefs::InsufficientTrainData when untrained, vxClassifierDefs::NotImplemented for a pattern
    /// that has not exactly one measurement, vxClassifierDefs::BadParams for a value above the maximum.
    ///
    /// Takes time in proportion to the number of trials. The interruption check is made now and then, and
    /// what it throws passes.
    double logValue(const vxFeaturePattern& pattern) const override;

    /// Whether the other is a vx_PDFBinomial that is equal.
    bool isEquivalent(const vx_ProbabilityDensityFunction& other) const override;

    /// Without effect for no patterns. Throws vxClassifierDefs::NotImplemented if the first pattern has not
    /// exactly one measurement, vxClassifierDefs::BadParams if a valid measurement exceeds the maximum or if
    /// the patterns differ in size; then none of them has entered. If the values are all equal, or nearly so,
    /// the number of trials stays as it was.
    void updateWithData(const std::vector<vxFeaturePattern>& patterns) override;

    /// theta() and the maximum keep their values.
    void clear() override;

    long numTrials() const noexcept { return numTrials_; }

    /// The probability of success of one trial.
    double theta() const noexcept { return theta_; }

    /// Whether numbers of trials, probabilities and maxima are equal. Here a NaN is equal to everything.
    bool operator==(const vx_PDFBinomial& other) const noexcept;
    bool operator!=(const vx_PDFBinomial& other) const noexcept { return !(*this == other); }

protected:
    /// Throws vxArchive::UnknownVersion for a version other than 0. Loaded values are not checked.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    friend class vx_CategoryModelBayesian;
    friend class detail::ModelTrainer;

    vx_PDFBinomial();

    /// updateWithData for one pattern.
    void update(const vmath_FeaturePattern& pattern);
    void estimate() noexcept;

    /// logValue for a pattern of `numMeasurements` measurements; `value` is null if one of them is invalid,
    /// and points to the first one otherwise.
    double logValue(long numMeasurements, const double* value) const;
    double logProbability(double value) const;

    long numTrials_ = 0; // fits into 32 bits; 0: not trained
    double theta_ = 0.0;
    double maxValue_ = 1.0;
    vx_PDFMultivariateNormal normal_; // of the values divided by maxValue_; neither compared nor archived

    static vx_Instantiator sExemplar;
};

#endif
