#ifndef CLSS_CLASTOOL_BAYES_MODEL_TRAINER_H
#define CLSS_CLASTOOL_BAYES_MODEL_TRAINER_H

#include <vxclassifier/category_model_bayesian.h>
#include <vxclassifier/platform/pdf_multivariate_normal.h>
#include <vxclassifier/platform/ptr_handle.h>

#include <vector>

class vx_PDFBinomial;
class vx_PDFMultivariateNormal;

namespace detail {

/// Trains a new model with many patterns. It does what adapt does, but leaves what only scoring needs to the
/// end, and makes no patterns of the sets' measurements. When it goes, the model is fast to score with.
class ModelTrainer {
public:
    /// Nobody else has trained the model or uses it.
    explicit ModelTrainer(const vxPtrHandle<vx_CategoryModelBayesian>& model);
    ~ModelTrainer();
    ModelTrainer(const ModelTrainer&) = delete;
    ModelTrainer& operator=(const ModelTrainer&) = delete;

    /// Throws what vx_CategoryModelBayesian::adapt throws.
    void learn(const vxFeaturePattern& pattern);

private:
    /// A set and its density, which is one of the two.
    struct Step {
        const std::vector<long>* indices;
        vx_PDFMultivariateNormal* normal;
        vx_PDFBinomial* binomial;
        bool areConsecutive; // the indices are not negative and follow each other
    };

    static void learnNeighbors(const Step& step, const double* values);
    static void update(const Step& step, const vmath_FeaturePattern& measurements);

    vxPtrHandle<vx_CategoryModelBayesian> model_;
    std::vector<Step> steps_;
};

} // namespace detail

#endif
