#include <vxclassifier/pdf_multivariate_normal.h>

#include "clss/clastool/bayes/scoring_plan.h"
#include "platform/archive/class_level.h"
#include "platform/statistics/ready_density.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/status.h>

#include <cstdint>
#include <utility>

vx_Instantiator vx_PDFMultivariateNormal::sExemplar(typeid(vx_PDFMultivariateNormal),
                                                    &vx_PDFMultivariateNormal::make);

namespace {

void convertNormalStatus(long status) {
    if (status == vmath_status::noData) {
        throw vxClassifierDefs::InsufficientTrainData(
            L"No valid data has been used to train the distribution");
    }
    if (status == vmath_status::otherSizeOnUpdate) {
        throw vxClassifierDefs::BadParams(
            L"Must call clear before updating with feature vectors of different sizes");
    }
}

/// Runs when the library is loaded.
struct ConverterRegistration {
    ConverterRegistration() {
        vfRegisterExceptionConverter(vmath_status::pdfMultivariateNormalModule, &convertNormalStatus);
    }
} const converterRegistration;

using InvalidIndices = std::vector<std::int32_t>;

InvalidIndices invalidIndicesOf(const vxFeaturePattern& pattern) {
    InvalidIndices indices;
    for (const long index : pattern.invalidFeatureIndices()) {
        indices.push_back(static_cast<std::int32_t>(index));
    }
    return indices;
}

/// Borrows from both; values of invalid measurements are included.
vmath_FeaturePattern viewOf(const vxFeaturePattern& pattern, const InvalidIndices& invalid) {
    vmath_FeaturePattern view;
    view.values = pattern.featureMeasurements(false).data();
    view.numValues = pattern.numMeasurements();
    view.invalidIndices = invalid.data();
    view.numInvalid = static_cast<long>(invalid.size());
    return view;
}

vxNMMatrix copyOf(const vmath_nmmatrix& matrix) {
    vxNMMatrix copy(matrix.numRows, matrix.numColumns);
    for (long row = 0; row < matrix.numRows; ++row) {
        for (long column = 0; column < matrix.numColumns; ++column) {
            copy(row, column) = matrix.rows[row][column];
        }
    }
    return copy;
}

void fill(vmath_nmmatrix& matrix, const vxNMMatrix& from) {
    vfThrowExceptionOnFailure(vmath_nmmatrix_resize(&matrix, from.rows(), from.columns()));
    for (long row = 0; row < matrix.numRows; ++row) {
        for (long column = 0; column < matrix.numColumns; ++column) {
            matrix.rows[row][column] = from(row, column);
        }
    }
}

} // namespace

vx_PDFMultivariateNormal::vx_PDFMultivariateNormal() {
    vfThrowExceptionOnFailure(vmath_PDFMultivariateNormal_construct(&pdf_));
}

vx_PDFMultivariateNormal::vx_PDFMultivariateNormal(const vx_PDFMultivariateNormal& other)
    : vx_ProbabilityDensityFunction(other) {
    vfThrowExceptionOnFailure(vmath_PDFMultivariateNormal_constructCopy(&pdf_, &other.pdf_));
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the record sees to it.
vx_PDFMultivariateNormal& vx_PDFMultivariateNormal::operator=(const vx_PDFMultivariateNormal& other) {
    tellOfChange();
    vfThrowExceptionOnFailure(vmath_PDFMultivariateNormal_assign(&pdf_, &other.pdf_));
    return *this;
}

vx_PDFMultivariateNormal::~vx_PDFMultivariateNormal() {
    vmath_PDFMultivariateNormal_destruct(&pdf_);
}

vxPersistent* vx_PDFMultivariateNormal::make() {
    return new vx_PDFMultivariateNormal;
}

double vx_PDFMultivariateNormal::logValue(const vxFeaturePattern& pattern) const {
    const InvalidIndices invalid = invalidIndicesOf(pattern);
    return logValue(viewOf(pattern, invalid));
}

double vx_PDFMultivariateNormal::logValue(const vmath_FeaturePattern& pattern) const {
    double value = 0.0;
    vfThrowExceptionOnFailure(vmath_PDFMultivariateNormal_logValue(&pdf_, &pattern, &value));
    return value;
}

bool vx_PDFMultivariateNormal::isEquivalent(const vx_ProbabilityDensityFunction& other) const {
    const auto* normal = dynamic_cast<const vx_PDFMultivariateNormal*>(&other);
    return normal != nullptr && *this == *normal;
}

bool vx_PDFMultivariateNormal::operator==(const vx_PDFMultivariateNormal& other) const {
    return pdf_.numSamples == other.pdf_.numSamples && mean() == other.mean() &&
           covariance() == other.covariance();
}

void vx_PDFMultivariateNormal::updateWithData(const std::vector<vxFeaturePattern>& patterns) {
    updateWithDataNormalize(patterns, 1.0);
}

void vx_PDFMultivariateNormal::updateWithDataNormalize(const std::vector<vxFeaturePattern>& patterns,
                                                       double factor) {
    tellOfChange();
    std::vector<InvalidIndices> invalid;
    std::vector<vmath_FeaturePattern> views;
    invalid.reserve(patterns.size());
    views.reserve(patterns.size());
    for (const vxFeaturePattern& pattern : patterns) {
        invalid.push_back(invalidIndicesOf(pattern));
        views.push_back(viewOf(pattern, invalid.back()));
    }
    vmath_FeaturePatternVector data;
    data.patterns = views.data();
    data.numPatterns = static_cast<long>(views.size());
    vfThrowExceptionOnFailure(vmath_PDFMultivariateNormal_updateWithDataNormalize(&pdf_, &data, factor));
}

void vx_PDFMultivariateNormal::update(const vmath_FeaturePattern& pattern, double factor) {
    tellOfChange();
    vmath_FeaturePatternVector data;
    data.patterns = &pattern;
    data.numPatterns = 1;
    vfThrowExceptionOnFailure(vmath_PDFMultivariateNormal_updateWithDataNormalize(&pdf_, &data, factor));
}

// Neither can fail on a record that was constructed.
void vx_PDFMultivariateNormal::beginUpdates() noexcept {
    vmath_PDFMultivariateNormal_beginUpdates(&pdf_);
}

void vx_PDFMultivariateNormal::endUpdates() noexcept {
    vmath_PDFMultivariateNormal_endUpdates(&pdf_);
}

void vx_PDFMultivariateNormal::useForStatisticsOnly() noexcept {
    detail::prepareOnDemandOnly(pdf_);
}

void vx_PDFMultivariateNormal::tellChangesTo(const std::shared_ptr<detail::Freshness>& copy) noexcept {
    tellOfChange();
    copy_ = copy;
}

void vx_PDFMultivariateNormal::tellOfChange() noexcept {
    if (copy_ != nullptr) {
        copy_->isFresh = false;
        copy_.reset();
    }
}

void vx_PDFMultivariateNormal::clear() {
    *this = vx_PDFMultivariateNormal();
}

vxNMMatrix vx_PDFMultivariateNormal::mean() const {
    return copyOf(pdf_.mean);
}

vxNMMatrix vx_PDFMultivariateNormal::covariance() const {
    return copyOf(pdf_.covariance);
}

void vx_PDFMultivariateNormal::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vx_PDFMultivariateNormal::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vx_ProbabilityDensityFunction::dispatchSerialize(archive);
    vxNMMatrix exchangedMean = mean();
    vxNMMatrix exchangedCovariance = covariance();
    long numSamples = pdf_.numSamples;
    archive || exchangedMean;
    archive || exchangedCovariance;
    archive || numSamples;
    if (archive.isLoading()) {
        setStatistics(exchangedMean, exchangedCovariance, numSamples);
    }
}

void vx_PDFMultivariateNormal::setStatistics(const vxNMMatrix& newMean, const vxNMMatrix& newCovariance,
                                             long numSamples) {
    vx_PDFMultivariateNormal fresh;
    fill(fresh.pdf_.mean, newMean);
    fill(fresh.pdf_.covariance, newCovariance);
    fresh.pdf_.numSamples = static_cast<std::int32_t>(numSamples);
    vfThrowExceptionOnFailure(vmath_PDFMultivariateNormal_statisticsChanged(&fresh.pdf_));
    tellOfChange();
    std::swap(pdf_, fresh.pdf_); // the records hold pointers only
}
