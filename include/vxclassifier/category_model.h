#ifndef VXCLASSIFIER_CATEGORY_MODEL_H
#define VXCLASSIFIER_CATEGORY_MODEL_H

#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/persistent.h>
#include <vxclassifier/platform/rep_base.h>

class vxDiagObject;
class vxFeaturePattern;

/// Base of what a classifier knows of one category: tells how well a pattern fits it, and learns from more
/// patterns of it.
///
/// Initial state: label 0 and no measurements.
///
/// Ownership: held by vxPtrHandle<vx_CategoryModel> in a classifier, whose copies share it.
///
/// Threads: a model that nobody changes may be asked by several threads.
class VXCLASSIFIER_API vx_CategoryModel : public vxPersistent, public vxRepBase {
public:
    ~vx_CategoryModel() override;

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    /// How well the pattern fits the category. `diag` may be null.
    virtual double matchScore(const vxFeaturePattern& pattern, vxDiagObject* diag = nullptr,
                              unsigned long flags = 0) const = 0;

    /// Learns from one more pattern of the category. `diag` may be null.
    virtual void adapt(const vxFeaturePattern& pattern, vxDiagObject* diag = nullptr,
                       unsigned long flags = 0) = 0;

    long categoryLabel() const noexcept { return categoryLabel_; }
    void categoryLabel(long label) noexcept { categoryLabel_ = label; }

    /// How many measurements the model covers.
    long numMeasurements() const noexcept { return numMeasurements_; }
    void numMeasurements(long number) noexcept { numMeasurements_ = number; }

    /// Whether labels and numbers of measurements are equal.
    bool operator==(const vx_CategoryModel& other) const noexcept;
    bool operator!=(const vx_CategoryModel& other) const noexcept { return !(*this == other); }

protected:
    vx_CategoryModel() noexcept;
    vx_CategoryModel(const vx_CategoryModel&) noexcept;
    vx_CategoryModel& operator=(const vx_CategoryModel&) noexcept;

    /// Throws vxArchive::UnknownVersion for a version other than 0.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    long categoryLabel_ = 0;
    long numMeasurements_ = 0;
};

#endif
