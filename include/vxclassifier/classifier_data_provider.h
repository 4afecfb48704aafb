#ifndef VXCLASSIFIER_CLASSIFIER_DATA_PROVIDER_H
#define VXCLASSIFIER_CLASSIFIER_DATA_PROVIDER_H

#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/persistent.h>
#include <vxclassifier/platform/ptr_handle.h>
#include <vxclassifier/platform/rep_base.h>

#include <string>

/// Labelled training data as a classifier reads them: an indexed sequence of feature patterns, each with a
/// category label. A label is not negative, except for -1, which marks a pattern whose category is not known.
/// Derive from this class to train from data that lie elsewhere; the archive operations are needed only if
/// the provider itself is to be stored.
///
/// Initial state: none of its own.
///
/// Ownership: a training reads the provider and keeps shares of its patterns, not the provider.
///
/// Threads: a training calls the operations from its own thread only.
class VXCLASSIFIER_API vxClassifierDataProvider : public vxPersistent, public vxRepBase {
public:
    vxClassifierDataProvider() noexcept;
    vxClassifierDataProvider(const vxClassifierDataProvider&) noexcept;
    vxClassifierDataProvider& operator=(const vxClassifierDataProvider&) noexcept;
    ~vxClassifierDataProvider() override;

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    virtual std::wstring name() const = 0;
    virtual std::wstring description() const = 0;

    /// The number of measurements of every pattern; asked for at the beginning of a training.
    virtual long numMeasurements() const = 0;

    /// The number of patterns; one below 1 means that there are none.
    virtual long numPatterns() const = 0;

    /// The pattern at `index`, from 0 to numPatterns() - 1; a training asks for them in ascending order.
    virtual vxPtrHandle_const<vxFeaturePattern> featurePattern(long index) const = 0;

    /// The label of that pattern, >= 0, or -1 for unknown.
    virtual long categoryLabel(long index) const = 0;

protected:
    /// Whether the other provider holds the same; the base has nothing to compare and says true.
    virtual bool isEqual_(const vxClassifierDataProvider& other) const;

    /// Throws vxArchive::UnknownVersion for a version other than 0.
    void serialize_(vxArchive& archive, unsigned char version);
};

#endif
