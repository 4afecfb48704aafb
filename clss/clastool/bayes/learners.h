#ifndef CLSS_CLASTOOL_BAYES_LEARNERS_H
#define CLSS_CLASTOOL_BAYES_LEARNERS_H

#include "clss/clastool/bayes/model_trainer.h"

#include <vxclassifier/category_model.h>
#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/platform/ptr_handle.h>

#include <array>
#include <cstddef>
#include <deque>
#include <memory>
#include <unordered_map>
#include <vector>

namespace detail {

/// A model during a training.
class Learner {
public:
    /// One that was there before and may be anything.
    explicit Learner(const vxPtrHandle<vx_CategoryModel>& model) : model_(model) {}

    /// One that was made for this training.
    explicit Learner(const vxPtrHandle<vx_CategoryModelBayesian>& model)
        : model_(model), trainer_(std::make_unique<ModelTrainer>(model)) {}

    /// Throws what adapt throws, and vxBadPointer if there is no pattern, or no model, or one of another
    /// technique. The pattern need not be held by anybody but its provider.
    void learn(const vxPtrHandle_const<vxFeaturePattern>& pattern);

private:
    vxPtrHandle<vx_CategoryModel> model_;
    std::unique_ptr<ModelTrainer> trainer_;
};

/// The models of a training by their labels.
class Learners {
public:
    /// Those that are there before, in parallel vectors.
    Learners(const std::vector<long>& labels, const std::vector<vxPtrHandle<vx_CategoryModel>>& models);

    /// Null if the label is new.
    Learner* find(long label);

    Learner& add(long label, const vxPtrHandle<vx_CategoryModelBayesian>& model);

private:
    /// A label that was found lately, in the place of all labels that are equal to it in their low bits.
    struct Recent {
        long label = 0;
        Learner* learner = nullptr;
    };

    Recent& recent(long label) noexcept {
        return recent_[static_cast<unsigned long>(label) % recent_.size()];
    }

    std::deque<Learner> learners_;
    std::unordered_map<long, Learner*> byLabel_;
    std::array<Recent, 64> recent_;
};

} // namespace detail

#endif
