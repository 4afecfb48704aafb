#ifndef VXCLASSIFIER_FEATURE_VECTOR_H
#define VXCLASSIFIER_FEATURE_VECTOR_H

#include <vxclassifier/platform/export.h>

#include <vector>

class vxArchive;

/// The values that rules score: one double per feature, all of them valid.
///
/// Initial state: the given values.
///
/// Ownership: holds its own copy of the values.
///
/// Threads: as any plain value.
class VXCLASSIFIER_API vxClassifierFeatureVector {
public:
    /// Not explicit: a plain vector may stand wherever a feature vector is asked for.
    vxClassifierFeatureVector(const std::vector<double>& featureValues);

    const std::vector<double>& featureValues() const noexcept { return featureValues_; }

private:
    friend VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierFeatureVector& vector);

    std::vector<double> featureValues_;
};

/// Exchanges the values as a vector of doubles, with what that throws.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierFeatureVector& vector);

#endif
