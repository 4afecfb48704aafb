#include <vxclassifier/feature_pattern.h>

#include "platform/archive/class_level.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/platform/archive.h>

vx_Instantiator vxFeaturePattern::sExemplar(typeid(vxFeaturePattern), &vxFeaturePattern::make);

namespace {

void requireNotNegative(long index) {
    if (index < 0) {
        throw vxClassifierDefs::BadIndex(L"Feature measurement indices must be >= 0");
    }
}

} // namespace

vxFeaturePattern::vxFeaturePattern() noexcept = default;

vxFeaturePattern::vxFeaturePattern(const std::vector<double>& measurements,
                                   const std::vector<long>& invalidIndices)
    : validity_(measurements.size(), true) {
    for (const long index : invalidIndices) {
        requireNotNegative(index);
        if (static_cast<std::size_t>(index) >= measurements.size()) {
            throw vxClassifierDefs::BadIndex(L"Feature measurement indices must be < number of features");
        }
        validity_[static_cast<std::size_t>(index)] = false;
    }
    measurements_ = measurements;
}

vxFeaturePattern::vxFeaturePattern(const vxFeaturePattern&) = default;
vxFeaturePattern& vxFeaturePattern::operator=(const vxFeaturePattern& other) {
    vxFeaturePattern copy(other);
    measurements_.swap(copy.measurements_);
    validity_.swap(copy.validity_);
    return *this;
}
vxFeaturePattern::~vxFeaturePattern() = default;

vxPersistent* vxFeaturePattern::make() {
    return new vxFeaturePattern;
}

long vxFeaturePattern::numInvalid() const noexcept {
    long invalid = 0;
    for (std::size_t i = 0; i < measurements_.size(); ++i) {
        invalid += isMarkedValid(i) ? 0 : 1;
    }
    return invalid;
}

bool vxFeaturePattern::isValid(long index) const {
    requireNotNegative(index);
    return index < numMeasurements() && isMarkedValid(static_cast<std::size_t>(index));
}

double vxFeaturePattern::featureMeasurement(long index, bool mustBeValid) const {
    if (mustBeValid && !isValid(index)) {
        throw vxClassifierDefs::BadFeatures(
            L"The measurement for the specified measurement index is not valid.");
    }
    requireNotNegative(index);
    return index < numMeasurements() ? measurements_[static_cast<std::size_t>(index)] : 0.0;
}

const std::vector<double>& vxFeaturePattern::featureMeasurements(bool mustBeAllValid) const {
    if (mustBeAllValid && numInvalid() != 0) {
        throw vxClassifierDefs::BadFeatures(
            L"Access to full feature vector requires that all features are valid.");
    }
    return measurements_;
}

std::vector<long> vxFeaturePattern::invalidFeatureIndices() const {
    std::vector<long> indices;
    for (std::size_t i = 0; i < measurements_.size(); ++i) {
        if (!isMarkedValid(i)) {
            indices.push_back(static_cast<long>(i));
        }
    }
    return indices;
}

bool vxFeaturePattern::operator==(const vxFeaturePattern& other) const noexcept {
    return measurements_ == other.measurements_ && validity_ == other.validity_;
}

void vxFeaturePattern::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vxFeaturePattern::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxPersistent::dispatchSerialize(archive);
    archive || measurements_;
    archive || validity_;
}
