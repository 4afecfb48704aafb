#ifndef VXCLASSIFIER_RANGE_PREDICATE_H
#define VXCLASSIFIER_RANGE_PREDICATE_H

#include <vxclassifier/platform/range.h>
#include <vxclassifier/predicate_function.h>

#include <atomic>
#include <vector>

namespace detail {
class QuestionObservation;
class RangeTest;
} // namespace detail

/// True for a pattern if all of certain measurements are valid and lie within a range.
///
/// Initial state: the full range for measurement 0, or what the constructor is given; immutable but for
/// assignment.
///
/// Ownership: none.
///
/// Threads: as for vxPredicateFunction.
class VXCLASSIFIER_API vxRangePredicate : public vxPredicateFunction {
public:
    vxRangePredicate();

    /// `indices` lists the measurements in the order in which they are tested; none at all makes the
    /// predicate true for every pattern. Throws vxClassifierDefs::BadIndex for a negative index; there is no
    /// upper bound.
    vxRangePredicate(const vxRange& range, const std::vector<long>& indices);
    vxRangePredicate(const vxRangePredicate& other);

    /// Throws std::bad_alloc and then changes nothing.
    vxRangePredicate& operator=(const vxRangePredicate& other);
    ~vxRangePredicate() override;

    static vxPersistent* make();

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    /// False if a measurement is invalid, lies past the pattern's end, is NaN or lies outside of the range.
    /// Throws vxClassifierDefs::BadIndex when it comes to a negative index, which only an archive can bring.
    bool outcome(const vxFeaturePattern& pattern) const override;
    vxPtrHandle<vxPredicateFunction> clone() const override;

    /// Whether the other is a range predicate with an equal range and the same indices in the same order.
    bool isEqual(const vxPredicateFunction& other) const override;

    bool operator==(const vxPredicateFunction& other) const { return isEqual(other); }
    bool operator!=(const vxPredicateFunction& other) const { return !isEqual(other); }

    vxRange measurementRange() const noexcept { return measurementRange_; }
    std::vector<long> measurementIndices() const { return measurementIndices_; }

protected:
    /// Throws vxArchive::UnknownVersion for a version other than 0. Loaded indices are not checked.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    friend class detail::QuestionObservation;
    friend class detail::RangeTest;

    vxRange measurementRange_;
    std::vector<long> measurementIndices_; // >= 0, but for what an archive brought

    // Whether somebody keeps a form of his own of this predicate, who is to learn of a change.
    mutable std::atomic<bool> isObserved_{false};

    static vx_Instantiator sExemplar;
};

#endif
