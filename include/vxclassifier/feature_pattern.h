#ifndef VXCLASSIFIER_FEATURE_PATTERN_H
#define VXCLASSIFIER_FEATURE_PATTERN_H

#include <vxclassifier/detail/pattern_content.h>
#include <vxclassifier/platform/detail/spare_bits.h>
#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/persistent.h>
#include <vxclassifier/platform/rep_base.h>

#include <cstddef>
#include <vector>

namespace detail {
class PatternObservation;
class PatternRecord;
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
/// Memory, where a pointer has 8 bytes: 56 bytes and one block for the measurements; 24 bytes more for a
/// pattern with an invalid measurement, and 40 bytes and a bit for each measurement for one with an invalid
/// measurement behind the first 63. Each block has the allocator's share besides.
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

    /// A new pattern without measurements, which belongs to the caller.
    static vxPersistent* make();

    long numMeasurements() const noexcept { return static_cast<long>(measurements_().size()); }

    /// How many measurements are invalid; at once if none is, otherwise linear in the number of measurements.
    long numInvalid() const noexcept { return isMarked_() ? countInvalid_() : 0; }

    /// False for an invalid measurement and for an index past the end. Throws vxClassifierDefs::BadIndex for
    /// a negative index.
    bool isValid(long index) const {
        if (index < 0) {
            throwNegativeIndex_();
        }
        const auto place = static_cast<std::size_t>(index);
        return isMarked_() ? content_.marked().isValid(place) : place < content_.plain().size();
    }

    /// A valid measurement's value. For an invalid measurement or an index past the end: throws
    /// vxClassifierDefs::BadFeatures if `mustBeValid`, otherwise gives the stored value, or 0.0 past the end.
    /// Throws vxClassifierDefs::BadIndex for a negative index.
    double featureMeasurement(long index, bool mustBeValid) const {
        const auto place = static_cast<std::size_t>(index); // a negative one is past any end
        return !isMarked_() && place < content_.plain().size() ? content_.plain()[place]
                                                               : oddMeasurement_(index, mustBeValid);
    }

    /// All stored values, those of invalid measurements included; the reference is good until the pattern
    /// goes, is assigned to or is loaded again. Throws vxClassifierDefs::BadFeatures if `mustBeAllValid` and
    /// a measurement is invalid.
    const std::vector<double>& featureMeasurements(bool mustBeAllValid) const {
        if (mustBeAllValid && numInvalid() != 0) {
            throwNotAllValid_();
        }
        return measurements_();
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

    bool isMarked_() const noexcept { return detail::SpareBits::isSet(*this, markedBit_); }
    const std::vector<double>& measurements_() const noexcept {
        return isMarked_() ? *content_.marked().measurements : content_.plain();
    }
    detail::ValidityMarks validity_() const;
    std::size_t numMarks_() const noexcept;
    void putMarks_(unsigned char* to) const noexcept;
    void replace_(std::vector<double> measurements, detail::ValidityMarks validity);
    void fill_(std::vector<double> measurements, detail::ValidityMarks validity);
    void takeOver_(vxFeaturePattern& other) noexcept;
    void mark_(detail::MarkedMeasurements&& marked) noexcept;
    long countInvalid_() const noexcept;
    double oddMeasurement_(long index, bool mustBeValid) const;
    [[noreturn]] static void throwNegativeIndex_();
    [[noreturn]] static void throwNotAllValid_();
    void store_(vxArchive& archive);
    void load_(vxArchive& archive);

    detail::PatternContent content_;

    // Whether that is marked.
    static constexpr detail::SpareBits::Bit markedBit_ = detail::SpareBits::Bit::first;
    // Whether somebody keeps figures derived from the measurements, who is to learn of a change.
    static constexpr detail::SpareBits::Bit observedBit_ = detail::SpareBits::Bit::second;

    static vx_Instantiator sExemplar;
};

#endif
