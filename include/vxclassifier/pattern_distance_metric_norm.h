#ifndef VXCLASSIFIER_PATTERN_DISTANCE_METRIC_NORM_H
#define VXCLASSIFIER_PATTERN_DISTANCE_METRIC_NORM_H

#include <vxclassifier/pattern_distance_metric.h>

/// The p-norm (Minkowski) distance: the sum of |a - b| to the power p over all measurements, to the power
/// 1/p. Order p = 1 is the Manhattan distance, p = 2 the Euclidean one.
///
/// Initial state: the given order; `make` gives order 2. An archive can bring any order, which is then used
/// as it is, by the rules of floating-point arithmetic.
///
/// Ownership: a plain value, usually shared by vxPtrHandle_const.
///
/// Threads: as for vxPatternDistanceMetric.
class VXCLASSIFIER_API vxPatternDistanceMetricNorm : public vxPatternDistanceMetric {
public:
    /// Throws vxClassifierDefs::BadParams unless the order is above 0.
    explicit vxPatternDistanceMetricNorm(double order);
    vxPatternDistanceMetricNorm(const vxPatternDistanceMetricNorm& other) noexcept;
    vxPatternDistanceMetricNorm& operator=(const vxPatternDistanceMetricNorm& other) noexcept;
    ~vxPatternDistanceMetricNorm() override;

    static vxPersistent* make();

    /// Every order is computed by the same two powers, in the order of the measurements, so that the last bit
    /// is defined. Throws vxClassifierDefs::BadFeatures if the patterns differ in their number of
    /// measurements, and then if they have any and one of them is invalid. Two patterns without measurements
    /// are 0 apart.
    double distance(const vxFeaturePattern& p1, const vxFeaturePattern& p2) const override;

    vxPtrHandle<vxPatternDistanceMetric> clone() const override;

    /// Whether the other is a norm and neither order is less than the other.
    bool isEquivalent(const vxPatternDistanceMetric& other) const override;

    double order() const noexcept { return order_; }

    /// Throws vxClassifierDefs::BadParams, and changes nothing, unless the order is above 0; NaN is refused.
    void order(double order);

    bool operator==(const vxPatternDistanceMetric& other) const { return isEquivalent(other); }
    bool operator!=(const vxPatternDistanceMetric& other) const { return !isEquivalent(other); }

protected:
    void dispatchSerialize(vxArchive& archive) override;

    /// Throws vxArchive::UnknownVersion for a version other than 0. A loaded order is not checked.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    double order_; // > 0, but for what an archive brought

    static vx_Instantiator sExemplar;
};

#endif
