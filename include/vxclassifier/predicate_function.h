#ifndef VXCLASSIFIER_PREDICATE_FUNCTION_H
#define VXCLASSIFIER_PREDICATE_FUNCTION_H

#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/persistent.h>
#include <vxclassifier/platform/ptr_handle.h>
#include <vxclassifier/platform/rep_base.h>

class vxFeaturePattern;

/// Base of the predicates, the tests at the nodes of a decision tree. Derive from it to test a pattern in a
/// way of your own.
///
/// Initial state: none of its own.
///
/// Ownership: a node keeps a clone, never the caller's object.
///
/// Threads: a predicate that nobody assigns to may be asked by any number of threads.
class VXCLASSIFIER_API vxPredicateFunction : public vxPersistent, public vxRepBase {
public:
    vxPredicateFunction() noexcept;
    vxPredicateFunction(const vxPredicateFunction&) noexcept;
    vxPredicateFunction& operator=(const vxPredicateFunction&) noexcept;
    ~vxPredicateFunction() override;

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    /// Whether the pattern passes the test; asked once for each node that a run of a tree comes to.
    virtual bool outcome(const vxFeaturePattern& pattern) const = 0;

    /// A new copy of the most-derived object.
    virtual vxPtrHandle<vxPredicateFunction> clone() const = 0;

    /// Whether the other is a predicate of the same class with the same values; the base has no values and
    /// says true.
    virtual bool isEqual(const vxPredicateFunction& other) const;

protected:
    /// Throws vxArchive::UnknownVersion for a version other than 0.
    void serialize_(vxArchive& archive, unsigned char version);
};

#endif
