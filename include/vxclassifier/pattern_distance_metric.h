#ifndef VXCLASSIFIER_PATTERN_DISTANCE_METRIC_H
#define VXCLASSIFIER_PATTERN_DISTANCE_METRIC_H

#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/persistent.h>
#include <vxclassifier/platform/ptr_handle.h>
#include <vxclassifier/platform/rep_base.h>

class vxFeaturePattern;

/// How far apart two feature patterns are. Derive from it to give the nearest neighbours a distance of your
/// own; register the class with a vx_Instantiator if trained classifiers are to be stored.
///
/// Initial state: none of its own.
///
/// Ownership: whoever takes a metric keeps a clone of it. Usually shared by vxPtrHandle_const.
///
/// Threads: a metric that nobody changes is asked by all threads that run a classifier, at the same time.
class VXCLASSIFIER_API vxPatternDistanceMetric : public virtual vxPersistent, public virtual vxRepBase {
public:
    /// The distance from `p1` to `p2`. Called for each stored pattern of each run, with the pattern to be
    /// classified first. Need not be symmetric, finite or >= 0; a NaN counts as farther than anything.
    virtual double distance(const vxFeaturePattern& p1, const vxFeaturePattern& p2) const = 0;

    /// A new copy of the most-derived object.
    virtual vxPtrHandle<vxPatternDistanceMetric> clone() const = 0;

    /// Whether the other metric measures alike. The base has no values to compare and says true for any
    /// other.
    virtual bool isEquivalent(const vxPatternDistanceMetric& other) const;

    vxPatternDistanceMetric() noexcept;
    vxPatternDistanceMetric(const vxPatternDistanceMetric& other) noexcept;
    vxPatternDistanceMetric& operator=(const vxPatternDistanceMetric& other) noexcept;
    ~vxPatternDistanceMetric() override;

protected:
    void dispatchSerialize(vxArchive& archive) override;

    /// Throws vxArchive::UnknownVersion for a version other than 0.
    void serialize_(vxArchive& archive, unsigned char version);
};

#endif
