#include "clss/clastool/bayes/learners.h"

#include <vxclassifier/platform/exception.h>

namespace detail {

void Learner::learn(const vxPtrHandle_const<vxFeaturePattern>& pattern) {
    if (trainer_ != nullptr) {
        trainer_->learn(*pattern);
        return;
    }
    // A model of the application's may do anything, even take the pattern out of its provider.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): for that the pattern must live on.
    const vxPtrHandle_const<vxFeaturePattern> kept = pattern;
    auto* own = dynamic_cast<vx_CategoryModelBayesian*>(model_.get());
    if (own == nullptr) {
        throw vxBadPointer();
    }
    own->adapt(*kept, nullptr, 0);
}

Learners::Learners(const std::vector<long>& labels,
                   const std::vector<vxPtrHandle<vx_CategoryModel>>& models) {
    for (std::size_t i = 0; i < labels.size(); ++i) {
        learners_.emplace_back(models[i]);
        byLabel_.emplace(labels[i], &learners_.back()); // keeps the first
    }
}

Learner* Learners::find(long label) {
    Recent& entry = recent(label);
    if (entry.learner != nullptr && entry.label == label) {
        return entry.learner;
    }
    const auto found = byLabel_.find(label);
    if (found == byLabel_.end()) {
        return nullptr;
    }
    entry = {label, found->second};
    return found->second;
}

Learner& Learners::add(long label, const vxPtrHandle<vx_CategoryModelBayesian>& model) {
    learners_.emplace_back(model);
    byLabel_.emplace(label, &learners_.back());
    return learners_.back();
}

} // namespace detail
