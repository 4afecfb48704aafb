#include <vxclassifier/pattern_distance_metric_norm.h>

#include "platform/archive/class_level.h"

#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/platform/archive.h>

#include <cmath>
#include <cstddef>
#include <vector>

vx_Instantiator vxPatternDistanceMetricNorm::sExemplar(typeid(vxPatternDistanceMetricNorm),
                                                       &vxPatternDistanceMetricNorm::make);

namespace {

/// Refuses NaN too.
double positive(double order) {
    if (!(order > 0.0)) {
        throw vxClassifierDefs::BadParams(L"Order of norm distance must be > 0");
    }
    return order;
}

} // namespace

vxPatternDistanceMetricNorm::vxPatternDistanceMetricNorm(double order) : order_(positive(order)) {}

vxPatternDistanceMetricNorm::vxPatternDistanceMetricNorm(const vxPatternDistanceMetricNorm&) noexcept =
    default;

vxPatternDistanceMetricNorm&
vxPatternDistanceMetricNorm::operator=(const vxPatternDistanceMetricNorm&) noexcept = default;

vxPatternDistanceMetricNorm::~vxPatternDistanceMetricNorm() = default;

vxPersistent* vxPatternDistanceMetricNorm::make() {
    return new vxPatternDistanceMetricNorm(2.0);
}

// The last bit of a distance decides ties, so it is part of the published result: no order has a formula of
// its own, and the exponents stay variables, since a compiler may turn the power of a constant 2.0 or 0.5
// into a product or a square root, which round differently.
double vxPatternDistanceMetricNorm::distance(const vxFeaturePattern& p1, const vxFeaturePattern& p2) const {
    if (p1.numMeasurements() != p2.numMeasurements()) {
        throw vxClassifierDefs::BadFeatures(
            L"Pattern distance function requires the number of measurementsin the two patterns to be equal");
    }
    const std::vector<double>& a = p1.featureMeasurements(true);
    const std::vector<double>& b = p2.featureMeasurements(true);
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sum += std::pow(std::fabs(a[i] - b[i]), order_);
    }
    return std::pow(sum, 1.0 / order_);
}

vxPtrHandle<vxPatternDistanceMetric> vxPatternDistanceMetricNorm::clone() const {
    return vxPtrHandle<vxPatternDistanceMetric>(new vxPatternDistanceMetricNorm(*this));
}

bool vxPatternDistanceMetricNorm::isEquivalent(const vxPatternDistanceMetric& other) const {
    const auto* norm = dynamic_cast<const vxPatternDistanceMetricNorm*>(&other);
    return norm != nullptr && !(order_ < norm->order_) && !(norm->order_ < order_);
}

void vxPatternDistanceMetricNorm::order(double order) {
    order_ = positive(order);
}

void vxPatternDistanceMetricNorm::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vxPatternDistanceMetricNorm::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxPatternDistanceMetric::dispatchSerialize(archive);
    archive || order_;
}
