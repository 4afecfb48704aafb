#include <vxclassifier/pdf_binomial.h>

#include "clss/clastool/bayes/log_factorials.h"
#include "clss/clastool/bayes/truncated.h"
#include "platform/archive/class_level.h"

#include <vxclassifier/classifier_defs.h>

#include <cmath>
#include <cstdint>

vx_Instantiator vx_PDFBinomial::sExemplar(typeid(vx_PDFBinomial), &vx_PDFBinomial::make);

namespace {

void requireOneMeasurement(long numMeasurements) {
    if (numMeasurements != 1) {
        throw vxClassifierDefs::NotImplemented(L"Multivariate Binomial Distributions are not implemented");
    }
}

void requireAtMost(double maxValue, double value) {
    if (value > maxValue) {
        throw vxClassifierDefs::BadParams(L"Train data measurement cannot exceed its maximum value when "
                                          L"using binomial distribution");
    }
}

void requireAtMost(double maxValue, const vxFeaturePattern& pattern) {
    for (long i = 0; i < pattern.numMeasurements(); ++i) {
        if (pattern.isValid(i)) {
            requireAtMost(maxValue, pattern.featureMeasurement(i, true));
        }
    }
}

/// Neither less nor greater; so NaN is equal to everything.
bool isEqual(double a, double b) noexcept {
    return !(a < b) && !(a > b);
}

} // namespace

vx_PDFBinomial::vx_PDFBinomial() {
    normal_.useForStatisticsOnly();
}

vx_PDFBinomial::vx_PDFBinomial(const vxFeaturePattern& maxima)
    : maxValue_(maxima.featureMeasurement(0, true)) {
    normal_.useForStatisticsOnly();
}

vx_PDFBinomial::vx_PDFBinomial(const vx_PDFBinomial&) = default;
vx_PDFBinomial::~vx_PDFBinomial() = default;

vx_PDFBinomial& vx_PDFBinomial::operator=(const vx_PDFBinomial& other) {
    normal_ = other.normal_; // the only one that can throw
    numTrials_ = other.numTrials_;
    theta_ = other.theta_;
    maxValue_ = other.maxValue_;
    return *this;
}

vxPersistent* vx_PDFBinomial::make() {
    return new vx_PDFBinomial;
}

void vx_PDFBinomial::updateWithData(const std::vector<vxFeaturePattern>& patterns) {
    if (patterns.empty()) {
        return;
    }
    requireOneMeasurement(patterns.front().numMeasurements());
    for (const vxFeaturePattern& pattern : patterns) {
        requireAtMost(maxValue_, pattern);
    }
    normal_.updateWithDataNormalize(patterns, maxValue_);
    estimate();
}

void vx_PDFBinomial::update(const vmath_FeaturePattern& pattern) {
    requireOneMeasurement(pattern.numValues);
    if (pattern.numInvalid == 0) {
        requireAtMost(maxValue_, pattern.values[0]);
    }
    normal_.update(pattern, maxValue_);
    estimate();
}

void vx_PDFBinomial::estimate() noexcept {
    if (!normal_.isValid()) {
        return;
    }
    theta_ = normal_.pdf_.mean.rows[0][0];
    const double variance = normal_.pdf_.covariance.rows[0][0];
    constexpr double leastVariance = 1e-15;
    if (!(std::fabs(variance) > leastVariance)) {
        return;
    }
    numTrials_ = detail::truncated(((1.0 - theta_) / variance) * theta_ + 0.5);
}

void vx_PDFBinomial::clear() {
    normal_.clear();
    numTrials_ = 0;
}

double vx_PDFBinomial::logValue(const vxFeaturePattern& pattern) const {
    return logValue(pattern.numMeasurements(),
                    pattern.numInvalid() != 0 ? nullptr : pattern.featureMeasurements(false).data());
}

double vx_PDFBinomial::logValue(long numMeasurements, const double* value) const {
    if (numTrials_ == 0) {
        throw vxClassifierDefs::InsufficientTrainData(
            L"Insufficient data has been used to train the distribution");
    }
    requireOneMeasurement(numMeasurements);
    return value == nullptr ? 0.0 : logProbability(*value);
}

double vx_PDFBinomial::logProbability(double value) const {
    if (value > maxValue_) {
        throw vxClassifierDefs::BadParams(L"Feature measurement must be <= specified maximum value");
    }
    const std::int64_t n = numTrials_;
    const std::int64_t k = detail::truncated(value * (static_cast<double>(n) / maxValue_) + 0.5);
    const std::int64_t m = n - k;
    const detail::LogFactorials logs = detail::logFactorials(n, k, m);
    return std::log(1.0 - theta_) * static_cast<double>(m) + std::log(theta_) * static_cast<double>(k) +
           (logs.ofN - (logs.ofM + logs.ofK));
}

bool vx_PDFBinomial::isEquivalent(const vx_ProbabilityDensityFunction& other) const {
    const auto* binomial = dynamic_cast<const vx_PDFBinomial*>(&other);
    return binomial != nullptr && *this == *binomial;
}

bool vx_PDFBinomial::operator==(const vx_PDFBinomial& other) const noexcept {
    return numTrials_ == other.numTrials_ && isEqual(theta_, other.theta_) &&
           isEqual(maxValue_, other.maxValue_);
}

void vx_PDFBinomial::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vx_PDFBinomial::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vx_ProbabilityDensityFunction::dispatchSerialize(archive);
    archive || numTrials_;
    archive || theta_;
    archive || maxValue_;
}
