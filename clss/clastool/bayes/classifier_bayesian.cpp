#include <vxclassifier/classifier_bayesian.h>

#include "clss/clastool/bayes/category_panel.h"
#include "clss/clastool/bayes/learners.h"
#include "clss/clastool/bayes/model_layout.h"
#include "clss/clastool/foundation/parallel_vectors.h"
#include "clss/clastool/foundation/result_access.h"
#include "clss/clastool/foundation/row_reader.h"
#include "platform/archive/class_level.h"
#include "platform/statistics/lanes.h"
#include "platform/statistics/scratch.h"
#include "platform/system/attention_check.h"

#include <vxclassifier/category_model_bayesian.h>
#include <vxclassifier/classifier_data_provider.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/classifier_train_params_bayesian.h>
#include <vxclassifier/platform/exception.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <typeinfo>

vx_Instantiator vx_ClassifierBayesian::sExemplar(typeid(vx_ClassifierBayesian), &vx_ClassifierBayesian::make);

namespace {

/// An object as what it has to be. Nearly always it is of exactly that class, and there is one description of
/// that, which is seen at once.
template <class Own, class Base>
Own& castTo(Base* object) {
    if (object != nullptr && &typeid(*object) == &typeid(Own)) {
        return static_cast<Own&>(*object);
    }
    if (auto* own = dynamic_cast<Own*>(object)) {
        return *own;
    }
    throw vxBadPointer();
}

const vxClassifierTrainParamsBayesian& bayesian(const vxClassifierTrainParams& params) {
    return castTo<const vxClassifierTrainParamsBayesian>(&params);
}

vx_CategoryModelBayesian& bayesian(const vxPtrHandle<vx_CategoryModel>& model) {
    return castTo<vx_CategoryModelBayesian>(model.get());
}

/// The largest log-likelihood; of two zeros, either. NaN gives way to whatever follows it. In this form, it
/// is one instruction and no branch, which would depend on the data.
double largest(const double* logLikelihoods, std::size_t number) noexcept {
    double best = -std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < number; ++i) {
        best = best > logLikelihoods[i] ? best : logLikelihoods[i];
    }
    return best;
}

} // namespace

vx_ClassifierBayesian::vx_ClassifierBayesian() noexcept = default;
vx_ClassifierBayesian::vx_ClassifierBayesian(const vx_ClassifierBayesian&) = default;
vx_ClassifierBayesian::~vx_ClassifierBayesian() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): all is copied before anything is replaced.
vx_ClassifierBayesian& vx_ClassifierBayesian::operator=(const vx_ClassifierBayesian& other) {
    beginAssignment_();
    std::vector<long> labels = other.categoryLabels_;
    std::vector<vxPtrHandle<vx_CategoryModel>> models = other.categoryModels_;
    // Nothing throws from here on.
    vx_Classifier::operator=(other);
    categoryLabels_.swap(labels);
    categoryModels_.swap(models);
    panel_ = other.panel_;
    return *this;
}

vxPersistent* vx_ClassifierBayesian::make() {
    return new vx_ClassifierBayesian;
}

vxPtrHandle<vx_Classifier> vx_ClassifierBayesian::clone() const {
    return vxPtrHandle<vx_Classifier>(new vx_ClassifierBayesian(*this));
}

bool vx_ClassifierBayesian::isEquivalent(const vx_Classifier& other) const {
    const auto* own = dynamic_cast<const vx_ClassifierBayesian*>(&other);
    return own != nullptr && *this == *own;
}

bool vx_ClassifierBayesian::operator==(const vx_ClassifierBayesian& other) const {
    return vx_Classifier::isEquivalent(other) &&
           std::equal(categoryModels_.begin(), categoryModels_.end(), other.categoryModels_.begin(),
                      other.categoryModels_.end(),
                      [](const auto& a, const auto& b) { return bayesian(a) == bayesian(b); });
}

void vx_ClassifierBayesian::train_(const vxClassifierDataProvider& data,
                                   const vxClassifierTrainParams& params) {
    const vxClassifierTrainParamsBayesian& own = bayesian(params);
    const long numPatterns = data.numPatterns();
    const long numMeasurements = data.numMeasurements();
    if (numPatterns < 1) {
        return;
    }
    panel_.reset();
    learn(data, own, numPatterns, numMeasurements);
    panel_ = detail::CategoryPanel::of(categoryModels_);
}

void vx_ClassifierBayesian::learn(const vxClassifierDataProvider& data,
                                  const vxClassifierTrainParamsBayesian& params, long numPatterns,
                                  long numMeasurements) {
    dropUnmatchedRows();
    detail::Learners learners(categoryLabels_, categoryModels_);
    detail::RowReader rows(data);
    constexpr long unknownLabel = -1;
    for (long i = 0; i < numPatterns; ++i) {
        const vxPtrHandle_const<vxFeaturePattern>& pattern = rows.pattern(i);
        const long label = rows.label(i);
        if (label == unknownLabel) {
            continue;
        }
        detail::Learner* learner = learners.find(label);
        if (learner == nullptr) {
            learner = &learners.add(label, addModel(label, params, numMeasurements));
        }
        learner->learn(pattern);
    }
}

/// Labels without models can only come out of an archive; their models are built anew.
void vx_ClassifierBayesian::dropUnmatchedRows() {
    const std::size_t rows = detail::commonRows(categoryLabels_, categoryModels_);
    categoryLabels_.resize(rows);
    categoryModels_.resize(rows);
}

vxPtrHandle<vx_CategoryModelBayesian>
vx_ClassifierBayesian::addModel(long label, const vxClassifierTrainParamsBayesian& params,
                                long numMeasurements) {
    const detail::ModelLayout layout(params.distributionTypes(), label, numMeasurements);
    vxPtrHandle<vx_CategoryModelBayesian> model(
        new vx_CategoryModelBayesian(label, layout.sets(), layout.types(), params.maxMeasurementValues()));
    detail::makeRoomForRow(categoryLabels_, categoryModels_);
    categoryLabels_.push_back(label);
    categoryModels_.emplace_back(model);
    return model;
}

void vx_ClassifierBayesian::retrain_(const vxClassifierTrainParams& params) {
    const vxClassifierTrainParamsBayesian& fresh = bayesian(params);
    const vxClassifierTrainParamsBayesian& current = bayesian(*storedParams_());
    if (fresh.distributionTypes() != current.distributionTypes()) {
        throw vxClassifierDefs::BadParams(
            L"Cannot retrain a Bayesian classifier with different distribution types.");
    }
    if (fresh.maxMeasurementValues() != current.maxMeasurementValues()) {
        throw vxClassifierDefs::BadParams(
            L"Cannot retrain a Bayesian classifier with different maximum measurements values.");
    }
}

void vx_ClassifierBayesian::trainStart_(const vxClassifierTrainParams&) {}
void vx_ClassifierBayesian::trainIncremental_(const vxFeaturePattern&, long) {}

void vx_ClassifierBayesian::untrain_() {
    panel_.reset();
    categoryModels_.clear();
    categoryLabels_.clear();
}

bool vx_ClassifierBayesian::isTrained_() const {
    return !categoryModels_.empty();
}

void vx_ClassifierBayesian::checkRunnable_() const {
    if (categoryModels_.empty()) {
        throw vxClassifierDefs::InsufficientTrainData(L"No valid data was provided for training.");
    }
    // The trial pattern has as many zeros as the first model has measurements, but those that no model looks
    // at can be left out. A model that cannot be asked is met by the run, in its turn.
    std::int64_t used = 0;
    for (const vxPtrHandle<vx_CategoryModel>& model : categoryModels_) {
        if (const auto* own = dynamic_cast<const vx_CategoryModelBayesian*>(model.get())) {
            used = std::max(used, own->numUsed());
        }
    }
    const std::int64_t covered = categoryModels_.front()->numMeasurements();
    const std::int64_t numZeros = std::max(std::int64_t{0}, std::min(used, covered));
    vxClassifierResult discarded;
    run_(vxFeaturePattern(std::vector<double>(static_cast<std::size_t>(numZeros), 0.0), {}), discarded);
}

void vx_ClassifierBayesian::logLikelihoods(const vxFeaturePattern& pattern, double* values) const {
    const bool isChecked = detail::isAttentionCheckInstalled();
    // Nothing throws or calls back in the panel, so the order shows in checks only.
    if (!isChecked && panel_ != nullptr && panel_->logLikelihoods(pattern, values)) {
        return;
    }
    for (std::size_t i = 0; i < categoryModels_.size(); ++i) {
        if (isChecked) {
            detail::throwIfInterrupted();
        }
        values[i] = bayesian(categoryModels_[i]).matchScore(pattern, nullptr, 0);
    }
    if (isChecked) {
        detail::throwIfInterrupted();
    }
}

void vx_ClassifierBayesian::run_(const vxFeaturePattern& pattern, vxClassifierResult& result) const {
    const std::size_t number = categoryModels_.size();
    detail::Scratch<double> scores(detail::paddedToLanes(number));
    logLikelihoods(pattern, scores.data());
    const vxClassifierTrainParamsBayesian& params = bayesian(*storedParams_());
    // Scaled so that the best category has 1: the likelihoods themselves soon underflow.
    const double factorLog = 0.0 - largest(scores.data(), number);
    std::vector<vxClassifierCategoryResult>& matches = detail::ResultAccess::entries(result);
    matches.clear();
    matches.reserve(number);
    for (std::size_t i = 0; i < number; ++i) {
        matches.emplace_back(categoryModels_[i]->categoryLabel(), std::exp(factorLog + scores[i]), 0.0, 0.0);
    }
    detail::ResultAccess::decide(params.categoryFrequencies(), params.misclassificationCosts(), factorLog,
                                 result);
}

void vx_ClassifierBayesian::recordTrainInputs_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierBayesian::recordTrainDetails_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierBayesian::recordTrainResults_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierBayesian::recordRunInputs_(vxDiagObject*, unsigned long, const vxFeaturePattern&) const {}
void vx_ClassifierBayesian::recordRunDetails_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierBayesian::recordRunResults_(vxDiagObject*, unsigned long, const vxFeaturePattern&,
                                              const vxClassifierResult&) const {}

void vx_ClassifierBayesian::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vx_ClassifierBayesian::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vx_Classifier::dispatchSerialize(archive);
    if (archive.isLoading()) {
        panel_.reset();
    }
    archive || categoryLabels_;
    archive || categoryModels_;
    if (archive.isLoading()) {
        panel_ = detail::CategoryPanel::of(categoryModels_);
    }
}
