#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/archive.h>
#include <vxclassifier/rule.h>

#include <cmath>
#include <cstddef>

namespace {

/// Whether a score is the mark of a feature to leave out. NaN is neither less nor greater than the mark, so
/// it counts as the mark.
bool isLeftOut(double score) {
    return !(score < -1.0) && !(score > -1.0);
}

} // namespace

void vxClassifierRule::init(std::vector<vxPtrHandle<vxClsFtSc>>& scoringMethods, long label) {
    if (label < 0) {
        throw vxClassifierDefs::BadParams(L"label < 0");
    }
    if (scoringMethods.empty()) {
        throw vxClassifierDefs::BadParams(L"scoringMethods.size() == 0");
    }
    scoringMethods_ = scoringMethods;
    label_ = label;
}

double vxClassifierRule::score(const vxClassifierFeatureVector& featureVector) const {
    const std::vector<double>& values = featureVector.featureValues();
    if (values.size() != scoringMethods_.size()) {
        throw vxClassifierDefs::BadParams(L"MismatchedFeatureVectorSize");
    }
    if (values.empty()) {
        throw vxClassifierDefs::BadParams(L"featureVector.featureValues().size() == 0");
    }
    double product = 1.0;
    double used = 0.0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double score = scoringMethods_[i]->score(values[i]);
        if (!isLeftOut(score)) {
            product = product * score;
            used = used + 1.0;
        }
    }
    // A rule that uses no feature fits everything: its product is 1, and so would be 1 to the power of 1 / 0.
    if (!(product > 0.0) || used == 0.0) {
        return product;
    }
    return std::pow(product, 1.0 / used);
}

bool vxClassifierRule::operator==(const vxClassifierRule& other) const {
    if (scoringMethods_.size() != other.scoringMethods_.size()) {
        return false;
    }
    for (std::size_t i = 0; i < scoringMethods_.size(); ++i) {
        if (*scoringMethods_[i] != *other.scoringMethods_[i]) {
            return false;
        }
    }
    return label_ == other.label_;
}

vxArchive& operator||(vxArchive& archive, vxClassifierRule& rule) {
    return archive || rule.scoringMethods_ || rule.label_;
}
