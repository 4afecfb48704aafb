#include "clss/clastool/bayes/model_trainer.h"

#include "clss/clastool/bayes/selection.h"
#include "platform/statistics/ready_density.h"

#include <vxclassifier/pdf_binomial.h>
#include <vxclassifier/pdf_multivariate_normal.h>

namespace detail {

ModelTrainer::ModelTrainer(const vxPtrHandle<vx_CategoryModelBayesian>& model) : model_(model) {
    const std::vector<std::vector<long>>& sets = model_->dependencySets_;
    steps_.reserve(sets.size());
    for (std::size_t set = 0; set < sets.size(); ++set) {
        vx_ProbabilityDensityFunction* const density = &model_->pdf(set);
        steps_.push_back({&sets[set], dynamic_cast<vx_PDFMultivariateNormal*>(density),
                          dynamic_cast<vx_PDFBinomial*>(density), areConsecutive(sets[set])});
        if (steps_.back().normal != nullptr) {
            steps_.back().normal->beginUpdates();
        }
    }
}

ModelTrainer::~ModelTrainer() {
    for (const Step& step : steps_) {
        if (step.normal != nullptr) {
            step.normal->endUpdates();
        }
    }
    model_->makePlan();
}

void ModelTrainer::learn(const vxFeaturePattern& pattern) {
    const std::vector<double>& values = pattern.featureMeasurements(false);
    const bool isComplete = pattern.numInvalid() == 0;
    for (const Step& step : steps_) {
        if (isComplete && step.areConsecutive && step.indices->back() < pattern.numMeasurements()) {
            learnNeighbors(step, values.data() + step.indices->front());
        } else {
            Selection selection(pattern, *step.indices);
            update(step, selection.view());
        }
    }
}

void ModelTrainer::learnNeighbors(const Step& step, const double* values) {
    const std::size_t size = step.indices->size();
    // Once patterns wait, there is nobody left who had to be told of a change.
    if (step.normal == nullptr || !joinWaitingSamples(step.normal->pdf_, values, size)) {
        update(step, {values, static_cast<long>(size), nullptr, 0});
    }
}

void ModelTrainer::update(const Step& step, const vmath_FeaturePattern& measurements) {
    if (step.normal != nullptr) {
        step.normal->update(measurements, 1.0);
    } else {
        step.binomial->update(measurements);
    }
}

} // namespace detail
