#include <vxclassifier/classifier_tool.h>

#include "platform/archive/class_level.h"

#include <vxclassifier/classifier.h>
#include <vxclassifier/classifier_decision_tree.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/classifier_train_params.h>
#include <vxclassifier/platform/archive.h>

#include <cxxabi.h>

namespace {

vx_ClassifierDecisionTree* asTreeClassifier(const vxPtrHandle<vx_Classifier>& classifier) {
    return dynamic_cast<vx_ClassifierDecisionTree*>(classifier.get());
}

void untrainIfTrained(const vxPtrHandle<vx_Classifier>& classifier) {
    if (classifier != nullptr && classifier->isTrained()) {
        classifier->untrain();
    }
}

/// Holds what `makeClassifier` makes; whatever it throws means that there is no such technique, and empties
/// the handle. Only the cancellation of the thread passes. It is no object of C++ but comes with a null
/// reference, which the sanitizer must not take for a mistake; inlined, it would.
template <class MakeClassifier>
__attribute__((noinline, no_sanitize("null"))) void replaceByNew(vxPtrHandle<vx_Classifier>& held,
                                                                 MakeClassifier makeClassifier) {
    try {
        held.reset(makeClassifier());
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (...) {
        held.reset();
        throw vxClassifierDefs::NotImplemented(
            L"The classification method specified by the training parameters is not implemented.");
    }
}

/// Runs a training; whatever it throws passes, and leaves the classifier untrained.
template <class Training>
void trainOrUntrain(vx_Classifier& classifier, Training training) {
    try {
        training();
    } catch (...) {
        classifier.untrain();
        throw;
    }
}

} // namespace

vxClassifierTool::vxClassifierTool() : classifier_(std::make_unique<vxPtrHandle<vx_Classifier>>()) {}

vxClassifierTool::vxClassifierTool(const vxClassifierTool& other) : vxClassifierTool() {
    *this = other;
}

vxClassifierTool& vxClassifierTool::operator=(const vxClassifierTool& other) {
    // Emptied, not replaced: that needs no memory, so whatever fails below leaves the tool empty.
    classifier_->reset();
    if (&other != this && other.isTrained()) {
        *classifier_ = (*other.classifier_)->clone();
    }
    return *this;
}

vxClassifierTool::~vxClassifierTool() {
    try {
        untrain();
    } catch (...) {
        // A technique that fails to forget is released all the same; a destructor has nobody to tell.
        classifier_.reset();
    }
}

void vxClassifierTool::train(const vxClassifierDataProvider& provider, const vxClassifierTrainParams& params,
                             vxDiagObject* diag, unsigned long flags) {
    vxPtrHandle<vx_Classifier>& held = *classifier_;
    // `params` may be what the classifier itself holds, and is needed to the end.
    const vxPtrHandle_const<vxClassifierTrainParams> previous = held == nullptr ? nullptr : held->params_;
    untrainIfTrained(held);
    replaceByNew(held, [&] { return params.newClassifier_(); });
    vx_Classifier& classifier = *held;
    trainOrUntrain(classifier, [&] { classifier.train(provider, params, diag, flags); });
    checkReady(params);
}

void vxClassifierTool::train(const vxDecisionTree& tree, vxDiagObject* diag, unsigned long flags) {
    vxPtrHandle<vx_Classifier>& held = *classifier_;
    // `tree` may be a part of what the classifier itself holds.
    const vx_ClassifierDecisionTree* previousClassifier = asTreeClassifier(held);
    const vxPtrHandle_const<vxDecisionTree> previous =
        previousClassifier == nullptr ? nullptr : previousClassifier->decisionTree();
    untrainIfTrained(held);
    const vxPtrHandle<vx_ClassifierDecisionTree> fresh(new vx_ClassifierDecisionTree);
    held = fresh;
    trainOrUntrain(*fresh, [&] { fresh->trainManual(tree, diag, flags); });
}

void vxClassifierTool::retrain(const vxClassifierTrainParams& params, vxDiagObject* diag,
                               unsigned long flags) {
    const vxPtrHandle<vx_Classifier>& held = *classifier_;
    if (held == nullptr) {
        throw vxClassifierDefs::NotTrained(L"Classifier tool must be trained before retraining.");
    }
    const vxPtrHandle_const<vxClassifierTrainParams> previous = held->params_; // as in train
    held->retrain(params, diag, flags);
    checkReady(params);
}

/// The trial after a training, if the parameters ask for it.
void vxClassifierTool::checkReady(const vxClassifierTrainParams& params) {
    if (!params.throwIfNotReady()) {
        return;
    }
    try {
        (*classifier_)->checkRunnable_();
    } catch (const vxClassifierDefs::Errors&) {
        untrain();
        throw;
    }
}

void vxClassifierTool::run(const vxFeaturePattern& pattern, vxClassifierResult& result, vxDiagObject* diag,
                           unsigned long flags) const {
    const vxPtrHandle<vx_Classifier>& held = *classifier_;
    if (held == nullptr) {
        throw vxClassifierDefs::NotTrained(L"Classifier tool must be trained before running.");
    }
    held->run(pattern, result, diag, flags);
}

void vxClassifierTool::untrain() {
    const vxPtrHandle<vx_Classifier>& held = *classifier_;
    if (held != nullptr) {
        held->untrain();
    }
}

bool vxClassifierTool::isTrained() const {
    const vxPtrHandle<vx_Classifier>& held = *classifier_;
    return held != nullptr && held->isTrained();
}

vxPtrHandle_const<vxClassifierTrainParams> vxClassifierTool::trainParams() const {
    const vxPtrHandle<vx_Classifier>& held = *classifier_;
    if (held == nullptr) {
        throw vxClassifierDefs::NotTrained(
            L"Classifier tool must be trained before requesting the training parameters.");
    }
    return held->trainParams();
}

vxPtrHandle_const<vxDecisionTree> vxClassifierTool::decisionTree() const {
    if (!isTrained()) {
        throw vxClassifierDefs::NotTrained(
            L"Classifier tool must be trained before requesting the decision tree.");
    }
    const vx_ClassifierDecisionTree* classifier = asTreeClassifier(*classifier_);
    if (classifier == nullptr) {
        throw vxClassifierDefs::BadMethod(L"Classifier tool was not trained using a decision tree.");
    }
    return classifier->decisionTree();
}

bool vxClassifierTool::operator==(const vxClassifierTool& other) const {
    const bool trained = isTrained();
    if (trained != other.isTrained()) {
        return false;
    }
    return !trained || (*classifier_)->isEquivalent(**other.classifier_);
}

vxArchive& operator||(vxArchive& archive, vxClassifierTool& tool) {
    detail::exchangeVersion(archive, "clss/clastool/clastool", 896);
    archive || *tool.classifier_;
    return archive;
}
