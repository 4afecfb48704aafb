#include <vxclassifier/classifier_decision_tree.h>

#include "clss/clastool/tree/flat_tree.h"
#include "clss/clastool/tree/tree_walk.h"
#include "platform/archive/class_level.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/diag_object.h>

vx_Instantiator vx_ClassifierDecisionTree::sExemplar(typeid(vx_ClassifierDecisionTree),
                                                     &vx_ClassifierDecisionTree::make);

namespace {

[[noreturn]] void refuseTraining() {
    throw vxClassifierDefs::NotImplemented(L"Automatic decision tree training is not implemented.");
}

[[noreturn]] void refuseIncrementalTraining() {
    throw vxClassifierDefs::NotImplemented(L"Incremental decision tree training is not implemented.");
}

} // namespace

vx_ClassifierDecisionTree::vx_ClassifierDecisionTree() noexcept = default;
vx_ClassifierDecisionTree::vx_ClassifierDecisionTree(const vx_ClassifierDecisionTree&) noexcept = default;

vx_ClassifierDecisionTree&
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): shares are taken before others are given back.
vx_ClassifierDecisionTree::operator=(const vx_ClassifierDecisionTree& other) noexcept {
    beginAssignment_();
    vx_Classifier::operator=(other);
    tree_ = other.tree_;
    flat_ = other.flat_;
    return *this;
}

vx_ClassifierDecisionTree::~vx_ClassifierDecisionTree() = default;

vxPersistent* vx_ClassifierDecisionTree::make() {
    return new vx_ClassifierDecisionTree;
}

vxPtrHandle<vx_Classifier> vx_ClassifierDecisionTree::clone() const {
    return vxPtrHandle<vx_Classifier>(new vx_ClassifierDecisionTree(*this));
}

bool vx_ClassifierDecisionTree::isEquivalent(const vx_Classifier& other) const {
    const auto* classifier = dynamic_cast<const vx_ClassifierDecisionTree*>(&other);
    if (classifier == nullptr || !vx_Classifier::isEquivalent(other)) {
        return false;
    }
    return classifier->tree_->isEqual(*tree_);
}

bool vx_ClassifierDecisionTree::operator==(const vx_ClassifierDecisionTree& other) const {
    return other.vx_Classifier::isEquivalent(*this) && tree_->isEqual(*other.tree_);
}

void vx_ClassifierDecisionTree::train_(const vxClassifierDataProvider&, const vxClassifierTrainParams&) {
    refuseTraining();
}

void vx_ClassifierDecisionTree::retrain_(const vxClassifierTrainParams&) {
    refuseTraining();
}

void vx_ClassifierDecisionTree::trainStart_(const vxClassifierTrainParams&) {
    refuseIncrementalTraining();
}

void vx_ClassifierDecisionTree::trainIncremental_(const vxFeaturePattern&, long) {
    refuseIncrementalTraining();
}

void vx_ClassifierDecisionTree::untrain_() {
    flat_.reset();
    tree_.reset();
}

bool vx_ClassifierDecisionTree::isTrained_() const {
    return tree_ != nullptr;
}

void vx_ClassifierDecisionTree::checkRunnable_() const {}

void vx_ClassifierDecisionTree::run_(const vxFeaturePattern& pattern, vxClassifierResult& result) const {
    const vxDecisionTreeLeaf& leaf =
        flat_ != nullptr && flat_->holds() ? flat_->leafFor(pattern) : detail::leafFor(*tree_, pattern);
    result = leaf.classifierResult();
}

void vx_ClassifierDecisionTree::recordTrainInputs_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierDecisionTree::recordTrainDetails_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierDecisionTree::recordTrainResults_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierDecisionTree::recordRunInputs_(vxDiagObject*, unsigned long,
                                                 const vxFeaturePattern&) const {}
void vx_ClassifierDecisionTree::recordRunDetails_(vxDiagObject*, unsigned long) const {}
void vx_ClassifierDecisionTree::recordRunResults_(vxDiagObject*, unsigned long, const vxFeaturePattern&,
                                                  const vxClassifierResult&) const {}

void vx_ClassifierDecisionTree::trainManual(const vxDecisionTree& tree, vxDiagObject* diag,
                                            unsigned long flags) {
    // `tree` may be part of our own, which untraining would free.
    const vxPtrHandle_const<vxDecisionTree> previous = tree_;
    untrain();
    forgetParams_();
    tree_ = tree.clone();
    layOut();
    vxDiagObject* destination = vxDiagObject::getRecordingDestination(diag, flags);
    recordTrainInputs_(destination, flags);
    recordTrainDetails_(diag, flags); // the caller's own object, unlike the two others
    recordTrainResults_(destination, flags);
}

void vx_ClassifierDecisionTree::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vx_ClassifierDecisionTree::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vx_Classifier::dispatchSerialize(archive);
    if (archive.isStoring()) {
        archive || tree_;
        return;
    }
    flat_.reset(); // it borrows from the tree that goes
    archive || tree_;
    layOut();
}

void vx_ClassifierDecisionTree::layOut() noexcept {
    flat_ = tree_ == nullptr ? nullptr : detail::FlatTree::of(*tree_);
}
