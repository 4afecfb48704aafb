#include <vxclassifier/category_model_bayesian.h>

#include "clss/clastool/bayes/scoring_plan.h"
#include "clss/clastool/bayes/selection.h"
#include "platform/archive/class_level.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/pdf_binomial.h>
#include <vxclassifier/pdf_multivariate_normal.h>
#include <vxclassifier/platform/text.h>

#include <algorithm>
#include <limits>
#include <new>
#include <typeinfo>

vx_Instantiator vx_CategoryModelBayesian::sExemplar(typeid(vx_CategoryModelBayesian),
                                                    &vx_CategoryModelBayesian::make);

namespace {

using Types = vxClassifierDistributionTypes;
using PdfHandle = vxPtrHandle<vx_ProbabilityDensityFunction>;

vxFeaturePattern selectMeasurements(const vxFeaturePattern& pattern, const std::vector<long>& indices) {
    return detail::Selection(pattern, indices).pattern();
}

PdfHandle newBinomial(const std::vector<long>& set, const vxFeaturePattern& maxMeasurementValues) {
    constexpr double defaultMaximum = 1.0;
    const vxFeaturePattern maxima = selectMeasurements(maxMeasurementValues, set);
    return PdfHandle(new vx_PDFBinomial(maxima.isValid(0) ? maxima : vxFeaturePattern({defaultMaximum}, {})));
}

PdfHandle newPdf(Types::DistributionType type, const std::vector<long>& set,
                 const vxFeaturePattern& maxMeasurementValues) {
    switch (type) {
    case Types::eMultivariateNormal:
        return PdfHandle(new vx_PDFMultivariateNormal);
    case Types::eBinomial:
        return newBinomial(set, maxMeasurementValues);
    case Types::ePoisson:
        throw vxClassifierDefs::NotImplemented(L"Poisson distribution is not implemented");
    case Types::eUniform:
        throw vxClassifierDefs::NotImplemented(L"Uniform distribution is not implemented");
    }
    throw vxClassifierDefs::BadParams(L"Unknown distribution type");
}

} // namespace

vx_CategoryModelBayesian::vx_CategoryModelBayesian() noexcept = default;

vx_CategoryModelBayesian::vx_CategoryModelBayesian(long label,
                                                   const std::vector<std::vector<long>>& dependencySets,
                                                   const std::vector<Types::DistributionType>& types,
                                                   const vxFeaturePattern& maxMeasurementValues)
    : dependencySets_(dependencySets), pdfs_(types.size()) {
    categoryLabel(label);
    for (std::size_t i = 0; i < dependencySets_.size(); ++i) {
        if (i >= types.size()) {
            throw vxClassifierDefs::BadParams(L"Unknown distribution type");
        }
        numMeasurements(numMeasurements() + static_cast<long>(dependencySets_[i].size()));
        pdfs_[i] = newPdf(types[i], dependencySets_[i], maxMeasurementValues);
    }
}

vx_CategoryModelBayesian::vx_CategoryModelBayesian(const vx_CategoryModelBayesian&) = default;
vx_CategoryModelBayesian::~vx_CategoryModelBayesian() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): all is copied before anything is replaced.
vx_CategoryModelBayesian& vx_CategoryModelBayesian::operator=(const vx_CategoryModelBayesian& other) {
    std::vector<std::vector<long>> sets = other.dependencySets_;
    std::vector<PdfHandle> pdfs = other.pdfs_;
    // Nothing throws from here on.
    vx_CategoryModel::operator=(other);
    dependencySets_.swap(sets);
    pdfs_.swap(pdfs);
    plan_ = other.plan_;
    return *this;
}

vxPersistent* vx_CategoryModelBayesian::make() {
    return new vx_CategoryModelBayesian;
}

vx_ProbabilityDensityFunction& vx_CategoryModelBayesian::pdf(std::size_t set) const {
    return set < pdfs_.size() ? *pdfs_[set] : *PdfHandle();
}

/// The two densities of this library are asked without making a pattern, which would cost more than the
/// density itself.
double vx_CategoryModelBayesian::logValue(std::size_t set, const vxFeaturePattern& pattern) const {
    detail::Selection selection(pattern, dependencySets_[set]);
    const vx_ProbabilityDensityFunction& density = pdf(set);
    if (typeid(density) == typeid(vx_PDFMultivariateNormal)) {
        return static_cast<const vx_PDFMultivariateNormal&>(density).logValue(selection.view());
    }
    if (typeid(density) == typeid(vx_PDFBinomial)) {
        return static_cast<const vx_PDFBinomial&>(density).logValue(selection.size(),
                                                                    selection.valuesIfValid());
    }
    return density.logValue(selection.pattern());
}

double vx_CategoryModelBayesian::logLikelihood(const vxFeaturePattern& pattern) const {
    if (plan_ != nullptr && plan_->covers(pattern)) {
        return plan_->logLikelihood(pattern.featureMeasurements(false).data(),
                                    [&](std::size_t set) { return logValue(set, pattern); });
    }
    double sum = 0.0;
    for (std::size_t i = 0; i < dependencySets_.size(); ++i) {
        sum += logValue(i, pattern);
    }
    return sum;
}

void vx_CategoryModelBayesian::makePlan() noexcept {
    plan_.reset();
    try {
        plan_ = std::make_shared<const detail::ScoringPlan>(dependencySets_, pdfs_);
    } catch (const std::bad_alloc&) {
        return;
    }
}

double vx_CategoryModelBayesian::matchScore(const vxFeaturePattern& pattern, vxDiagObject*,
                                            unsigned long) const {
    try {
        return logLikelihood(pattern);
    } catch (const vxClassifierDefs::InsufficientTrainData& error) {
        throw vxClassifierDefs::InsufficientTrainData(error.message() + L" for category " +
                                                      vfStr(categoryLabel()));
    }
}

void vx_CategoryModelBayesian::adapt(const vxFeaturePattern& pattern, vxDiagObject*, unsigned long) {
    for (std::size_t i = 0; i < dependencySets_.size(); ++i) {
        const std::vector<vxFeaturePattern> selection{selectMeasurements(pattern, dependencySets_[i])};
        pdf(i).updateWithData(selection);
    }
    makePlan();
}

std::int64_t vx_CategoryModelBayesian::numUsed() const noexcept {
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    std::int64_t used = 0;
    for (const std::vector<long>& set : dependencySets_) {
        for (const std::int64_t index : set) {
            // No pattern has a measurement at the largest index, and none is one more than it.
            used = std::max(used, index < largest ? index + 1 : largest);
        }
    }
    return used;
}

bool vx_CategoryModelBayesian::operator==(const vx_CategoryModelBayesian& other) const {
    if (vx_CategoryModel::operator!=(other) || pdfs_.size() != other.pdfs_.size()) {
        return false;
    }
    for (std::size_t i = 0; i < pdfs_.size(); ++i) {
        if (!pdfs_[i]->isEquivalent(*other.pdfs_[i])) {
            return false;
        }
    }
    return true;
}

void vx_CategoryModelBayesian::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vx_CategoryModelBayesian::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vx_CategoryModel::dispatchSerialize(archive);
    if (archive.isLoading()) {
        plan_.reset();
    }
    archive || dependencySets_;
    archive || pdfs_;
    if (archive.isLoading()) {
        makePlan();
    }
}
