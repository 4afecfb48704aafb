#include <vxclassifier/classifier.h>

#include "clss/clastool/frame/spare_result.h"
#include "platform/archive/class_level.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/diag_object.h>

#include <utility>

namespace {

[[noreturn, gnu::noinline]] void throwNotTrained(const wchar_t* message) {
    throw vxClassifierDefs::NotTrained(message);
}

inline void requireTrained(bool isTrained, const wchar_t* otherwise) {
    if (!isTrained) {
        throwNotTrained(otherwise);
    }
}

} // namespace

vx_Classifier::vx_Classifier() noexcept = default;
vx_Classifier::vx_Classifier(const vx_Classifier& other) noexcept = default;
vx_Classifier::~vx_Classifier() = default;

vx_Classifier& vx_Classifier::operator=(const vx_Classifier& other) noexcept {
    beginAssignment_();
    params_ = other.params_;
    return *this;
}

void vx_Classifier::beginAssignment_() noexcept {
    if (isTracked_()) {
        mutating_();
    }
}

bool vx_Classifier::isEquivalent(const vx_Classifier& other) const {
    if (isTrained_() != other.isTrained_()) {
        return false;
    }
    if (params_ != nullptr && other.params_ != nullptr) {
        return params_->isEqual_(*other.params_);
    }
    return params_ == nullptr && other.params_ == nullptr;
}

void vx_Classifier::untrain() {
    if (!isTrained_()) {
        return;
    }
    untrain_();
    params_.reset();
}

void vx_Classifier::train(const vxClassifierDataProvider& provider, const vxClassifierTrainParams& params,
                          vxDiagObject* diag, unsigned long flags) {
    // `params` may be our own, which untraining would free.
    const vxPtrHandle_const<vxClassifierTrainParams> previous = params_;
    untrain();
    params_.reset(); // an archive can bring parameters without a training, and untraining leaves those
    vxDiagObject* destination = vxDiagObject::getRecordingDestination(diag, flags);
    recordTrainInputs_(destination, flags);
    train_(provider, params);
    params_ = params.clone();
    recordTrainDetails_(diag, flags); // the caller's own object, unlike the two others
    recordTrainResults_(destination, flags);
}

void vx_Classifier::trainStart(const vxClassifierTrainParams& params) {
    const vxPtrHandle_const<vxClassifierTrainParams> previous = params_; // as in train
    untrain();
    params_.reset(); // as in train
    trainStart_(params);
    params_ = params.clone();
}

void vx_Classifier::trainIncremental(const vxFeaturePattern& pattern, long label, vxDiagObject*,
                                     unsigned long) {
    requireTrained(isTrained_(), L"Classifier tool must be trained before incremental training.");
    trainIncremental_(pattern, label);
}

void vx_Classifier::retrain(const vxClassifierTrainParams& params, vxDiagObject*, unsigned long) {
    requireTrained(isTrained_(), L"Classifier tool must be trained before retraining.");
    if (params_ == nullptr || !params.isSameTechnique_(*params_)) {
        throw vxClassifierDefs::BadMethod(L"Cannot retrain with a different classification technique.");
    }
    retrain_(params);
    params_ = params.clone();
}

void vx_Classifier::run(const vxFeaturePattern& pattern, vxClassifierResult& result, vxDiagObject* diag,
                        unsigned long flags) const {
    requireTrained(isTrained_(), L"Classifier tool must be trained before running.");
    vxDiagObject* const destination =
        diag == nullptr ? nullptr : vxDiagObject::getRecordingDestination(diag, flags);
    recordRunInputs_(destination, flags, pattern);
    const detail::SpareResult fresh;
    run_(pattern, *fresh);
    recordRunDetails_(destination, flags);
    recordRunResults_(destination, flags, pattern, *fresh);
    std::swap(result, *fresh);
}

vxPtrHandle_const<vxClassifierTrainParams> vx_Classifier::trainParams() const {
    requireTrained(isTrained_(),
                   L"Classifier tool must be trained before requesting the training parameters.");
    if (params_ == nullptr) {
        throw vxClassifierDefs::BadMethod(L"Classifier tool was not automatically trained.");
    }
    return params_;
}

void vx_Classifier::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vx_Classifier::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxPersistent::dispatchSerialize(archive);
    archive || params_;
}
