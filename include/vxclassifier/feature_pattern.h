#ifndef VXCLASSIFIER_FEATURE_PATTERN_H
#define VXCLASSIFIER_FEATURE_PATTERN_H

#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/persistent.h>
#include <vxclassifier/platform/rep_base.h>
#include <vxclassifier/validity_marks.h>

#include <atomic>
#include <cstddef>
#include <vector>

namespace detail {
class LoadingCore;
class PatternObservation;
class PatternRecord;
class StoringCore;
} // namespace detail

/// The measurements of one object: a fixed number of doubles, each of which may be marked invalid (missing,
/// not measured).
///
/// Initial state: what the constructor is given; immutable but for assignment. `make` gives a pattern without
/// measurements.
///
/// Ownership: usually held by vxPtrHandle_const<vxFeaturePattern> and shared.
///
/// Threads: a pattern that nobody assigns to may be read by any number of threads.
///
/// Memory: 72 bytes and one block for the measurements; another block only for an invalid measurement behind
/// the first 63.
class VXCLASSIFIER_API vxFeaturePattern : public vxPersistent, public vxRepBase {
public:
    /// `invalidIndices` lists the positions, counted from 0, of the invalid measurements, in any order,
    /// repeats allowed. Their values are kept but not interpreted. Throws vxClassifierDefs::BadIndex at the
    /// first index that is negative or not below the number of measurements.
    vxFeaturePattern(const std::vector<double>& measurements, const std::vector<long>& invalidIndices);
    vxFeaturePattern(const vxFeaturePattern& other);
    /// If this throws for want of memory, nothing has changed. Assigning to a pattern that a trained
    /// classifier shares makes the nearest-neighbour searches of the process slow until they are trained or
    /// loaded again.
    vxFeaturePattern& operator=(const vxFeaturePattern& other);
    ~vxFeaturePattern() override;

    static vxPersistent* make();

    long numMeasurements() const noexcept { return static_cast<long>(measurements_.size()); }

    /// How many measurements are invalid; linear in their number unless there is none.
    long numInvalid() const noexcept { return validity_.areAllValid() ? 0 : countInvalid_(); }

    /// False for an invalid measurement and for an index past the end. Throws vxClassifierDefs::BadIndex for
    /// a negative index.
    bool isValid(long index) const {
        if (index < 0) {
            throwNegativeIndex_();
        }
        return index < numMeasurements() && validity_.isValid(static_cast<std::size_t>(index));
    }

    /// A valid measurement's value. For an invalid measurement or an index past the end: throws
    /// vxClassifierDefs::BadFeatures if `mustBeValid`, otherwise gives the stored value, or 0.0 past the end.
    /// Throws vxClassifierDefs::BadIndex for a negative index.
    double featureMeasurement(long index, bool mustBeValid) const {
        return isValid(index) ? measurements_[static_cast<std::size_t>(index)]
                              : notValidMeasurement_(index, mustBeValid);
    }

    /// All stored values, those of invalid measurements included; the reference lives as long as the pattern.
    /// Throws vxClassifierDefs::BadFeatures if `mustBeAllValid` and a measurement is invalid.
    const std::vector<double>& featureMeasurements(bool mustBeAllValid) const {
        if (mustBeAllValid && numInvalid() != 0) {
            throwNotAllValid_();
        }
        return measurements_;
    }

    /// The positions of the invalid measurements in ascending order.
    std::vector<long> invalidFeatureIndices() const;

    /// Equal when all values (by the ordinary `==`, those of invalid measurements included) and all validity
    /// marks are equal. A pattern that holds a NaN is unequal even to itself.
    bool operator==(const vxFeaturePattern& other) const noexcept;
    bool operator!=(const vxFeaturePattern& other) const noexcept { return !(*this == other); }

protected:
    void dispatchSerialize(vxArchive& archive) override;

    /// Throws vxArchive::UnknownVersion for a version other than 0.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    friend class detail::PatternObservation;
    friend class detail::PatternRecord;

    vxFeaturePattern() noexcept;

    long countInvalid_() const noexcept;
    double notValidMeasurement_(long index, bool mustBeValid) const;
    [[noreturn]] static void throwNegativeIndex_();
    [[noreturn]] static void throwNotAllValid_();
    bool exchangeWhole_(vxArchive& archive);
    bool storeWhole_(detail::StoringCore& core) const;
    bool loadWhole_(detail::LoadingCore& core);
    void store_(vxArchive& archive);
    void load_(vxArchive& archive);

    std::vector<double> measurements_;
    // One for each measurement, but for what an archive brought: a missing mark means invalid, a surplus one
    // takes part in comparing and storing only.
    detail::ValidityMarks validity_;

    // Whether somebody keeps figures derived from the measurements, who is to learn of a change.
    mutable std::atomic<bool> isObserved_{false};

    static vx_Instantiator sExemplar;
};

#endif
