#include <vxclassifier/decision_tree_leaf.h>

#include "platform/archive/class_level.h"

#include <vxclassifier/platform/archive.h>

vx_Instantiator vxDecisionTreeLeaf::sExemplar(typeid(vxDecisionTreeLeaf), &vxDecisionTreeLeaf::make);

vxDecisionTreeLeaf::vxDecisionTreeLeaf(const vxClassifierResult& result) : classifierResult_(result) {}
vxDecisionTreeLeaf::vxDecisionTreeLeaf(const vxDecisionTreeLeaf&) = default;
vxDecisionTreeLeaf& vxDecisionTreeLeaf::operator=(const vxDecisionTreeLeaf&) = default;
vxDecisionTreeLeaf::~vxDecisionTreeLeaf() = default;

vxPersistent* vxDecisionTreeLeaf::make() {
    return new vxDecisionTreeLeaf(vxClassifierResult());
}

std::vector<long> vxDecisionTreeLeaf::categoryLabels() const {
    std::vector<long> labels;
    labels.reserve(classifierResult_.categoryResults().size());
    for (const vxClassifierCategoryResult& result : classifierResult_.categoryResults()) {
        labels.push_back(result.categoryLabel());
    }
    return labels;
}

vxPtrHandle<vxDecisionTree> vxDecisionTreeLeaf::clone() const {
    return vxPtrHandle<vxDecisionTree>(new vxDecisionTreeLeaf(*this));
}

bool vxDecisionTreeLeaf::isEqual(const vxDecisionTree& other) const {
    const auto* leaf = dynamic_cast<const vxDecisionTreeLeaf*>(&other);
    return leaf != nullptr && classifierResult_ == leaf->classifierResult_;
}

void vxDecisionTreeLeaf::classifierResult(const vxClassifierResult& result) {
    classifierResult_ = result;
}

void vxDecisionTreeLeaf::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vxDecisionTreeLeaf::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxDecisionTree::dispatchSerialize(archive);
    archive || classifierResult_;
}
