#include <vxclassifier/feature_pattern.h>

#include "clss/clastool/foundation/observed_patterns.h"

#include <vxclassifier/classifier_defs.h>

vx_Instantiator vxFeaturePattern::sExemplar(typeid(vxFeaturePattern), &vxFeaturePattern::make);

vxFeaturePattern::vxFeaturePattern() noexcept = default;

vxFeaturePattern::vxFeaturePattern(const std::vector<double>& measurements,
                                   const std::vector<long>& invalidIndices) {
    bool areInline = true;
    for (const long index : invalidIndices) {
        if (index < 0) {
            throwNegativeIndex_();
        }
        const auto place = static_cast<std::size_t>(index);
        if (place >= measurements.size()) {
            throw vxClassifierDefs::BadIndex(L"Feature measurement indices must be < number of features");
        }
        if (place < detail::ValidityMarks::inlineSize) {
            validity_.invalidateInline(place);
        } else {
            areInline = false;
        }
    }
    if (!areInline) {
        std::vector<bool> marks(measurements.size(), true);
        for (const long index : invalidIndices) {
            marks[static_cast<std::size_t>(index)] = false;
        }
        validity_ = detail::ValidityMarks(marks, marks.size());
    }
    measurements_ = measurements;
}

vxFeaturePattern::vxFeaturePattern(const vxFeaturePattern& other)
    : vxPersistent(other), vxRepBase(other), measurements_(other.measurements_), validity_(other.validity_) {}

vxFeaturePattern& vxFeaturePattern::operator=(const vxFeaturePattern& other) {
    vxFeaturePattern copy(other);
    measurements_.swap(copy.measurements_);
    validity_.swap(copy.validity_);
    detail::PatternObservation::changed(*this);
    return *this;
}
vxFeaturePattern::~vxFeaturePattern() = default;

vxPersistent* vxFeaturePattern::make() {
    return new vxFeaturePattern;
}

void vxFeaturePattern::throwNegativeIndex_() {
    throw vxClassifierDefs::BadIndex(L"Feature measurement indices must be >= 0");
}

void vxFeaturePattern::throwNotAllValid_() {
    throw vxClassifierDefs::BadFeatures(
        L"Access to full feature vector requires that all features are valid.");
}

long vxFeaturePattern::countInvalid_() const noexcept {
    long invalid = 0;
    for (std::size_t i = 0; i < measurements_.size(); ++i) {
        invalid += validity_.isValid(i) ? 0 : 1;
    }
    return invalid;
}

double vxFeaturePattern::notValidMeasurement_(long index, bool mustBeValid) const {
    if (mustBeValid) {
        throw vxClassifierDefs::BadFeatures(
            L"The measurement for the specified measurement index is not valid.");
    }
    return index < numMeasurements() ? measurements_[static_cast<std::size_t>(index)] : 0.0;
}

std::vector<long> vxFeaturePattern::invalidFeatureIndices() const {
    std::vector<long> indices;
    for (std::size_t i = 0; i < measurements_.size(); ++i) {
        if (!validity_.isValid(i)) {
            indices.push_back(static_cast<long>(i));
        }
    }
    return indices;
}

bool vxFeaturePattern::operator==(const vxFeaturePattern& other) const noexcept {
    return measurements_ == other.measurements_ && validity_ == other.validity_;
}
