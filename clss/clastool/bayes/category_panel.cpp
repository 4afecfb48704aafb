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
    if (!add(*plan)) {
        return false;
    }
    numUsed_ = std::max(numUsed_, plan->numUsed());
    parts_.push_back({&own, own.plan_});
    return true;
}

bool CategoryPanel::add(const ScoringPlan& plan) {
    if (plan.areAllSingles() && joints_.size() == 0 && singles_.canTake(plan.singles())) {
        singles_.append(plan.singles());
        return true;
    }
    if (plan.isPlainJoint() && singles_.size() == 0) {
        plan.appendTo(joints_);
        return true;
    }
    return false;
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
    if (joints_.size() == 0) {
        return singles_.addUp(measurements, values);
    }
    if (!joints_.evaluate(measurements, values)) {
        return false;
    }
    for (std::size_t i = 0; i < parts_.size(); ++i) {
        values[i] += 0.0; // a model adds up from 0, which makes 0 of -0
    }
    return true;
}

} // namespace detail
