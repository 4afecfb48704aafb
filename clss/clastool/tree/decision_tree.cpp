#include <vxclassifier/decision_tree.h>

#include "platform/archive/class_level.h"

vxDecisionTree::vxDecisionTree() noexcept = default;
vxDecisionTree::vxDecisionTree(const vxDecisionTree&) noexcept = default;
vxDecisionTree& vxDecisionTree::operator=(const vxDecisionTree&) noexcept = default;
vxDecisionTree::~vxDecisionTree() = default;

bool vxDecisionTree::isEqual(const vxDecisionTree&) const {
    return true;
}

long vxDecisionTree::numCategories() const {
    return static_cast<long>(categoryLabels().size());
}

void vxDecisionTree::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vxDecisionTree::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxPersistent::dispatchSerialize(archive);
}
