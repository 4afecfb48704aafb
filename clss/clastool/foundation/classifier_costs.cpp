#include <vxclassifier/classifier_costs.h>

#include "clss/clastool/foundation/parallel_vectors.h"
#include "platform/archive/class_level.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/archive.h>

namespace {

void requireCost(double cost) {
    if (0.0 > cost) {
        throw vxClassifierDefs::BadParams(L"Costs must be >= 0.0");
    }
}

void requireLabel(long label) {
    if (label < 0) {
        throw vxClassifierDefs::BadLabel(L"Category labels must be >= 0");
    }
}

void requireDifferent(long trueLabel, long assignedLabel) {
    if (trueLabel == assignedLabel) {
        throw vxClassifierDefs::BadLabel(L"Category labels must be different");
    }
}

} // namespace

vxClassifierCosts::vxClassifierCosts(double defaultCost) : defaultMisclassificationCost_(defaultCost) {
    requireCost(defaultCost);
}

vxClassifierCosts& vxClassifierCosts::operator=(const vxClassifierCosts& other) {
    return *this = vxClassifierCosts(other);
}

void vxClassifierCosts::defaultMisclassificationCost(double cost) {
    requireCost(cost);
    defaultMisclassificationCost_ = cost;
}

std::size_t vxClassifierCosts::rows() const noexcept {
    return detail::commonRows(overrideTrueLabels_, overrideAssignedLabels_, overrideCosts_);
}

long vxClassifierCosts::misclOverrideIndex_(long trueLabel, long assignedLabel) const {
    requireLabel(trueLabel);
    requireLabel(assignedLabel);
    const std::size_t count = rows();
    for (std::size_t k = 0; k < count; ++k) {
        if (overrideTrueLabels_[k] == trueLabel && overrideAssignedLabels_[k] == assignedLabel) {
            return static_cast<long>(k);
        }
    }
    return -1;
}

double vxClassifierCosts::misclassificationCost(long trueLabel, long assignedLabel) const {
    requireDifferent(trueLabel, assignedLabel);
    const long k = misclOverrideIndex_(trueLabel, assignedLabel);
    return k == -1 ? defaultMisclassificationCost_ : overrideCosts_[static_cast<std::size_t>(k)];
}

void vxClassifierCosts::misclassificationCostOverride(long trueLabel, long assignedLabel, double cost) {
    requireCost(cost);
    requireDifferent(trueLabel, assignedLabel);
    const long k = misclOverrideIndex_(trueLabel, assignedLabel);
    if (k != -1) {
        overrideCosts_[static_cast<std::size_t>(k)] = cost;
        return;
    }
    detail::makeRoomForRow(overrideTrueLabels_, overrideAssignedLabels_, overrideCosts_);
    overrideTrueLabels_.push_back(trueLabel);
    overrideAssignedLabels_.push_back(assignedLabel);
    overrideCosts_.push_back(cost);
}

void vxClassifierCosts::clearMisclassificationOverrides() noexcept {
    overrideTrueLabels_.clear();
    overrideAssignedLabels_.clear();
    overrideCosts_.clear();
}

bool vxClassifierCosts::operator==(const vxClassifierCosts& other) const noexcept {
    return defaultMisclassificationCost_ == other.defaultMisclassificationCost_ &&
           overrideTrueLabels_ == other.overrideTrueLabels_ &&
           overrideAssignedLabels_ == other.overrideAssignedLabels_ && overrideCosts_ == other.overrideCosts_;
}

vxArchive& operator||(vxArchive& archive, vxClassifierCosts& costs) {
    detail::exchangeVersion(archive, "clss/clastool/clastool", 435);
    archive || costs.defaultMisclassificationCost_;
    archive || costs.overrideTrueLabels_;
    archive || costs.overrideAssignedLabels_;
    archive || costs.overrideCosts_;
    return archive;
}
