#ifndef CLASTOOL_FOUNDATION_STORED_ROWS_H
#define CLASTOOL_FOUNDATION_STORED_ROWS_H

#include <vxclassifier/classifier_data_provider_memory.h>

#include <cstdint>
#include <vector>

namespace detail {

/// Direct access to the patterns of a provider in memory, without taking a share of each. To be used for
/// objects of exactly that class only: a derived one may count otherwise.
class StoredRows {
public:
    /// All patterns; those from numPatterns() on are not rows.
    static const std::vector<vxPtrHandle_const<vxFeaturePattern>>&
    patterns(const vxClassifierDataProviderMemory& store) noexcept {
        return store.patterns_;
    }

    /// All labels; those from numPatterns() on are not rows.
    static const std::vector<long>& labels(const vxClassifierDataProviderMemory& store) noexcept {
        return store.labels_;
    }

    /// Another number after each change of the patterns or labels.
    static std::uint64_t revision(const vxClassifierDataProviderMemory& store) noexcept {
        return store.revision_;
    }
};

} // namespace detail

#endif
