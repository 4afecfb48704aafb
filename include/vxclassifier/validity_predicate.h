#ifndef VXCLASSIFIER_VALIDITY_PREDICATE_H
#define VXCLASSIFIER_VALIDITY_PREDICATE_H

#include <vxclassifier/predicate_function.h>

#include <vector>

/// True for a pattern if all of certain measurements are valid.
///
/// Initial state: measurement 0, or what the constructor is given; immutable but for assignment.
///
/// Ownership: none.
///
/// Threads: as for vxPredicateFunction.
class VXCLASSIFIER_API vxValidityPredicate : public vxPredicateFunction {
public:
    vxValidityPredicate();

    /// `indices` lists the measurements in the order in which they are tested; none at all makes the
    /// predicate true for every pattern. Throws vxClassifierDefs::BadIndex for a negative index; there is no
    /// upper bound.
    explicit vxValidityPredicate(const std::vector<long>& indices);
    vxValidityPredicate(const vxValidityPredicate& other);

    /// Throws std::bad_alloc and then changes nothing.
    vxValidityPredicate& operator=(const vxValidityPredicate& other);
    ~vxValidityPredicate() override;

    static vxPersistent* make();

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    /// False if a measurement is invalid or lies past the pattern's end. Throws vxClassifierDefs::BadIndex
    /// when it comes to a negative index, which only an archive can bring.
    bool outcome(const vxFeaturePattern& pattern) const override;
    vxPtrHandle<vxPredicateFunction> clone() const override;

    /// Whether the other is a validity predicate with the same indices in the same order.
    bool isEqual(const vxPredicateFunction& other) const override;

    bool operator==(const vxPredicateFunction& other) const { return isEqual(other); }
    bool operator!=(const vxPredicateFunction& other) const { return !isEqual(other); }

    std::vector<long> measurementIndices() const { return measurementIndices_; }

protected:
    /// Throws vxArchive::UnknownVersion for a version other than 0. Loaded indices are not checked.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    std::vector<long> measurementIndices_; // >= 0, but for what an archive brought

    static vx_Instantiator sExemplar;
};

#endif
