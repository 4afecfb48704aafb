#ifndef VXCLASSIFIER_CLASSIFIER_KNN_H
#define VXCLASSIFIER_CLASSIFIER_KNN_H

#include <vxclassifier/classifier.h>
#include <vxclassifier/classifier_train_params_knn.h>

#include <memory>
#include <vector>

namespace detail {
class CompactPatterns;
}

class vxClassifierCategoryResult;
class vxClassifierDataProviderMemory;

/// Decides by the labels of the K training patterns that lie nearest. Keeps the training patterns.
///
/// States: untrained, or trained, when it has a store of patterns; a store may be empty, and then it cannot
/// run. Untrained at first, with working parameters of K = 1, the Euclidean distance and costs of 1. The
/// working parameters are not archived: a loaded classifier goes on with those that it has until it is
/// trained or retrained.
///
/// Ownership: shares the training patterns with the provider that they came from; has a store of its own, so
/// that training a copy further does not show in the original. Beside the patterns it keeps a digest of
/// them, which makes running fast, of at most 0.3 times the size of their measurements; where memory is too
/// short for that it goes without.
///
/// Threads: as for vx_Classifier.
class VXCLASSIFIER_API vx_ClassifierKNN : public vx_Classifier {
public:
    vx_ClassifierKNN();
    vx_ClassifierKNN(const vx_ClassifierKNN& other);
    vx_ClassifierKNN& operator=(const vx_ClassifierKNN& other);
    ~vx_ClassifierKNN() override;

    static vxPersistent* make();

    vxPtrHandle<vx_Classifier> clone() const override;
    bool isEquivalent(const vx_Classifier& other) const override;

    /// Whether both are untrained, or both trained with equal parameters on equal data (name and description
    /// of the data included). The working parameters are not compared.
    bool operator==(const vx_ClassifierKNN& other) const;
    bool operator!=(const vx_ClassifierKNN& other) const { return !(*this == other); }

protected:
    void dispatchSerialize(vxArchive& archive) override;

    /// Takes over all patterns but those of unknown category. Throws vxBadPointer for parameters of another
    /// technique, which changes nothing. After that the new parameters hold and the store is a new one, which
    /// stays empty if this throws: vxBadPointer for a null pattern, vxClassifierDefs::BadFeatures for one
    /// with an invalid measurement, and what the store's data() throws.
    void train_(const vxClassifierDataProvider& provider, const vxClassifierTrainParams& params) override;

    /// Throws vxBadPointer, and changes nothing, if the frame has no parameters or these belong to another
    /// technique.
    void retrain_(const vxClassifierTrainParams& params) override;

    /// Does nothing.
    void trainStart_(const vxClassifierTrainParams& params) override;

    /// Stores a copy of the pattern, which may have invalid measurements: running then throws. Throws and
    /// changes nothing: vxBadPointer when untrained, and what the store's addData() throws.
    void trainIncremental_(const vxFeaturePattern& pattern, long label) override;

    void untrain_() override;
    bool isTrained_() const override;

    /// Throws vxBadPointer when untrained and vxClassifierDefs::InsufficientTrainData when no pattern is
    /// stored.
    void checkRunnable_() const override;

    /// The match score of a category is its share of the votes of the neighbours; categories without a vote
    /// have no entry. Throws what checkRunnable_ throws; vxClassifierDefs::BadFeatures for a pattern with an
    /// invalid measurement or with another number of measurements than the stored ones;
    /// vxClassifierDefs::BadParams if an archive brought a K below 1; vxBadPointer for a null pattern or
    /// metric; what the metric, the interruption check and vxClassifierResult throw. A check of the caller's
    /// own is made once for each stored pattern and once for each category; a vxCancelFlag is looked at
    /// more than once in 100 microseconds. Time is linear in the number of stored patterns, and least for
    /// vxPatternDistanceMetricNorm itself with order 1 or 2, which most patterns need not be measured by;
    /// memory depends on K only.
    void run_(const vxFeaturePattern& pattern, vxClassifierResult& result) const override;

    /// Throws vxArchive::UnknownVersion for a version other than 0.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    // Nothing is recorded.
    void recordTrainInputs_(vxDiagObject* diag, unsigned long flags) const override;
    void recordTrainDetails_(vxDiagObject* diag, unsigned long flags) const override;
    void recordTrainResults_(vxDiagObject* diag, unsigned long flags) const override;
    void recordRunInputs_(vxDiagObject* diag, unsigned long flags,
                          const vxFeaturePattern& pattern) const override;
    void recordRunDetails_(vxDiagObject* diag, unsigned long flags) const override;
    void recordRunResults_(vxDiagObject* diag, unsigned long flags, const vxFeaturePattern& pattern,
                           const vxClassifierResult& result) const override;

    std::vector<long> voters(const vxFeaturePattern& pattern) const;
    /// Fills both vectors, in step, with the nearest stored patterns by ascending distance: `k` of them, or
    /// all there are.
    void findNearestNeighbors_(const vxFeaturePattern& pattern, long k, std::vector<long>& indices,
                               std::vector<double>& distances) const;

    /// Turns the neighbours' votes into match scores, by ascending label.
    void fillMatchResults_(const std::vector<long>& indices,
                           std::vector<vxClassifierCategoryResult>& results) const;

    vxPtrHandle<vxClassifierDataProviderMemory> store_; // null: untrained; shared with no other classifier
    vxClassifierTrainParamsKNN workingParams_;          // what a run uses

    // What makes the search fast: neither stored nor compared; null where the patterns are not such as it can
    // describe, or memory was short.
    std::unique_ptr<detail::CompactPatterns> compact_;

    static vx_Instantiator sExemplar;
};

#endif
