#ifndef VXCLASSIFIER_COMPARISON_PREDICATE_H
#define VXCLASSIFIER_COMPARISON_PREDICATE_H

#include <vxclassifier/predicate_function.h>

/// True for a pattern if one measurement is greater than another.
///
/// Initial state: the two given measurements; `make` compares measurement 0 with 1. Immutable but for
/// assignment.
///
/// Ownership: none.
///
/// Threads: as for vxPredicateFunction.
class VXCLASSIFIER_API vxComparisonPredicate : public vxPredicateFunction {
public:
    /// Throws, in this order, vxClassifierDefs::BadParams for equal indices and vxClassifierDefs::BadIndex
    /// for a negative one; there is no upper bound.
    vxComparisonPredicate(long measurementIndex1, long measurementIndex2);
    vxComparisonPredicate(const vxComparisonPredicate& other) noexcept;
    vxComparisonPredicate& operator=(const vxComparisonPredicate& other) noexcept;
    ~vxComparisonPredicate() override;

    static vxPersistent* make();

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    /// Whether both measurements are valid and the first is strictly greater than the second; false for NaN
    /// and for an index past the pattern's end. Throws vxClassifierDefs::BadIndex when it comes to a negative
    /// index, which only an archive can bring.
    bool outcome(const vxFeaturePattern& pattern) const override;
    vxPtrHandle<vxPredicateFunction> clone() const override;

    /// Whether the other is a comparison predicate with the same indices in the same order.
    bool isEqual(const vxPredicateFunction& other) const override;

    bool operator==(const vxPredicateFunction& other) const { return isEqual(other); }
    bool operator!=(const vxPredicateFunction& other) const { return !isEqual(other); }

    long measurementIndex1() const noexcept { return measurementIndex1_; }
    long measurementIndex2() const noexcept { return measurementIndex2_; }

protected:
    /// Throws vxArchive::UnknownVersion for a version other than 0. Loaded indices are not checked.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    vxComparisonPredicate() noexcept;

    // Different and >= 0, but for what an archive brought.
    long measurementIndex1_ = 0;
    long measurementIndex2_ = 1;

    static vx_Instantiator sExemplar;
};

#endif
