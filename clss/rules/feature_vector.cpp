#include <vxclassifier/feature_vector.h>
#include <vxclassifier/platform/archive.h>

vxClassifierFeatureVector::vxClassifierFeatureVector(const std::vector<double>& featureValues)
    : featureValues_(featureValues) {}

vxArchive& operator||(vxArchive& archive, vxClassifierFeatureVector& vector) {
    return archive || vector.featureValues_;
}
