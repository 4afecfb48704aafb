#ifndef VXCLASSIFIER_CLASSIFIER_DATA_PROVIDER_MEMORY_H
#define VXCLASSIFIER_CLASSIFIER_DATA_PROVIDER_MEMORY_H

#include <vxclassifier/classifier_data_provider.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace detail {
class StoredRows;
}

/// Training data in memory.
///
/// Initial state: empty, without name and description.
///
/// Ownership: shares the patterns with whoever gave or takes them; a copy of the provider shares them too.
///
/// Threads: a provider that nobody changes may be read by several threads.
class VXCLASSIFIER_API vxClassifierDataProviderMemory : public vxClassifierDataProvider {
public:
    vxClassifierDataProviderMemory() noexcept;
    vxClassifierDataProviderMemory(const vxClassifierDataProviderMemory& other);
    /// If this throws for want of memory, nothing has changed.
    vxClassifierDataProviderMemory& operator=(const vxClassifierDataProviderMemory& other);
    ~vxClassifierDataProviderMemory() override;

    static vxPersistent* make();

protected:
    void dispatchSerialize(vxArchive& archive) override;

public:
    std::wstring name() const override;
    std::wstring description() const override;

    /// The number of measurements of the first pattern, or 0 when there is none. Throws vxBadPointer if the
    /// first handle is null.
    long numMeasurements() const override;
    long numPatterns() const override;

    /// Throws vxClassifierDefs::BadIndex for an index outside of 0 to numPatterns() - 1.
    vxPtrHandle_const<vxFeaturePattern> featurePattern(long index) const override;
    /// Throws vxClassifierDefs::BadIndex for an index outside of 0 to numPatterns() - 1.
    long categoryLabel(long index) const override;

protected:
    /// Whether the other is a provider in memory with equal patterns, name, description and labels. Throws
    /// vxBadPointer when a null handle is to be compared.
    bool isEqual_(const vxClassifierDataProvider& other) const override;

public:
    void setName(const std::wstring& name);
    void setDescription(const std::wstring& description);

    /// Appends one pair. The first pattern is taken as it is (even a null handle) and sets the number of
    /// measurements; for later ones throws vxBadPointer (null handle) or vxClassifierDefs::BadFeatures
    /// (another number of measurements). Then throws vxClassifierDefs::BadLabel for a label below -1.
    /// Throwing changes nothing.
    void addData(const vxPtrHandle_const<vxFeaturePattern>& pattern, long label);

    /// Replaces all data. Throws and changes nothing: vxClassifierDefs::BadFeatures if the numbers of
    /// patterns and labels differ; with two or more patterns, vxBadPointer for a null handle and
    /// vxClassifierDefs::BadFeatures for different numbers of measurements; then vxClassifierDefs::BadLabel
    /// for a label below -1.
    void data(const std::vector<vxPtrHandle_const<vxFeaturePattern>>& patterns,
              const std::vector<long>& labels);

    bool operator==(const vxClassifierDataProvider& other) const { return isEqual_(other); }
    bool operator!=(const vxClassifierDataProvider& other) const { return !isEqual_(other); }

protected:
    /// Throws vxArchive::UnknownVersion for a version other than 0. Loaded values are not checked.
    void serialize_(vxArchive& archive, unsigned char version);

private:
    friend class detail::StoredRows;

    std::size_t rows() const noexcept;
    bool holds(long index) const;

    std::wstring name_;
    std::wstring description_;
    // Parallel. An archive can bring vectors of different lengths: only the rows that both have count.
    std::vector<vxPtrHandle_const<vxFeaturePattern>> patterns_;
    std::vector<long> labels_;   // >= -1
    std::uint64_t revision_ = 0; // counts the changes of the two

    static vx_Instantiator sExemplar;
};

#endif
