#include "clss/rules/rule_score.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/archive.h>
#include <vxclassifier/rule.h>

#include <cstddef>

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
    detail::MeanScore scores;
    for (std::size_t i = 0; i < values.size(); ++i) {
        scores.take(scoringMethods_[i]->score(values[i]));
    }
    return scores.mean();
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
