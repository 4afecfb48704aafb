#include "clss/clastool/bayes/category_panel.h"

#include <algorithm>
#include <new>
#include <typeinfo>

namespace detail {

std::shared_ptr<const CategoryPanel> CategoryPanel::of(const Models& models) noexcept {
    try {
        const auto panel = std::make_shared<CategoryPanel>();
        const bool areAlike = std::all_of(models.begin(), models.end(),
                                          [&](const auto& model) { return panel->add(model.get()); });
        return areAlike ? panel : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

/// Models of exactly our class only: one that is derived from it may answer otherwise.
bool CategoryPanel::add(const vx_CategoryModel* model) {
    if (model == nullptr || typeid(*model) != typeid(vx_CategoryModelBayesian)) {
        return false;
    }
    const auto& own = static_cast<const vx_CategoryModelBayesian&>(*model);
    const ScoringPlan* const plan = own.plan_.get();
    if (plan == nullptr) {
        return false;
    }
    const bool ofSingles = plan->areAllSingles();
    const bool isSameKind = parts_.empty() || ofSingles == (singles_.size() != 0);
    if (!isSameKind || (ofSingles ? !singles_.canTake(plan->singles()) : !plan->isOneJoint())) {
        return false;
    }
    if (ofSingles) {
        singles_.append(plan->singles());
    }
    numUsed_ = std::max(numUsed_, plan->numUsed());
    parts_.push_back({&own, own.plan_});
    return true;
}

bool CategoryPanel::isOutOfUse() const noexcept {
    return std::any_of(parts_.begin(), parts_.end(), [](const Part& part) {
        return part.model->plan_.get() != part.plan.get() || !part.plan->isFresh();
    });
}

bool CategoryPanel::logLikelihoods(const vxFeaturePattern& pattern, double* values) const {
    if (pattern.numMeasurements() < numUsed_ || pattern.numInvalid() != 0 || isOutOfUse()) {
        return false;
    }
    const double* const measurements = pattern.featureMeasurements(false).data();
    if (singles_.size() != 0) {
        return singles_.addUp(measurements, values);
    }
    for (const Part& part : parts_) {
        *values++ = part.plan->logLikelihoodOfOnlySet(measurements);
    }
    return true;
}

} // namespace detail
