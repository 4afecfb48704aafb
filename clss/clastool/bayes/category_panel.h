#ifndef CLSS_CLASTOOL_BAYES_CATEGORY_PANEL_H
#define CLSS_CLASTOOL_BAYES_CATEGORY_PANEL_H

#include "clss/clastool/bayes/scoring_plan.h"
#include "platform/statistics/stacked_normals.h"

#include <vxclassifier/category_model_bayesian.h>
#include <vxclassifier/platform/ptr_handle.h>

#include <memory>
#include <vector>

namespace detail {

/// How a classifier scores complete patterns for all of its categories together, where their models are
/// alike: either all have the same measurements as sets of their own, whose densities are then evaluated side
/// by side, or each has a single set of several.
///
/// It is made of the models' scoring plans, and out of use as soon as one of those is.
class CategoryPanel {
public:
    using Models = std::vector<vxPtrHandle<vx_CategoryModel>>;

    /// Null for models that are not alike, without scoring plans or of other classes, and for want of memory.
    /// Whoever uses the panel keeps the models.
    static std::shared_ptr<const CategoryPanel> of(const Models& models) noexcept;

    /// The log-likelihoods of the categories, as the models give them, into `values`, which has room for
    /// paddedToLanes(number of models). False, with anything in `values`, where the models have to be asked.
    bool logLikelihoods(const vxFeaturePattern& pattern, double* values) const;

private:
    struct Part {
        const vx_CategoryModelBayesian* model;
        std::shared_ptr<const ScoringPlan> plan;
    };

    bool add(const vx_CategoryModel* model);
    bool add(const ScoringPlan& plan);
    bool isOutOfUse() const noexcept;

    std::vector<Part> parts_;
    StackedNormals singles_; // one of these two is empty
    JointNormals joints_;
    long numUsed_ = 0; // 1 + the largest index that is read
};

} // namespace detail

#endif
