#ifndef CLASTOOL_FOUNDATION_ROW_READER_H
#define CLASTOOL_FOUNDATION_ROW_READER_H

#include "clss/clastool/foundation/stored_rows.h"

#include <vxclassifier/classifier_data_provider_memory.h>

#include <cstddef>
#include <typeinfo>

namespace detail {

/// The rows of a provider, one after the other. Those of a provider that is exactly the one in memory are
/// read where they lie; any other one is asked.
class RowReader {
public:
    /// The provider has to live as long.
    explicit RowReader(const vxClassifierDataProvider& provider)
        : provider_(provider), store_(typeid(provider) == typeid(vxClassifierDataProviderMemory)
                                          ? static_cast<const vxClassifierDataProviderMemory*>(&provider)
                                          : nullptr) {}

    /// Throws what the provider's featurePattern throws. Good until the next call, and as long as the
    /// provider does not change: whoever calls the application's code takes a share first.
    const vxPtrHandle_const<vxFeaturePattern>& pattern(long index) {
        if (isStored(index)) {
            return StoredRows::patterns(*store_)[static_cast<std::size_t>(index)];
        }
        asked_ = provider_.featurePattern(index);
        return asked_;
    }

    /// Throws what the provider's categoryLabel throws.
    long label(long index) const {
        return isStored(index) ? StoredRows::labels(*store_)[static_cast<std::size_t>(index)]
                               : provider_.categoryLabel(index);
    }

private:
    /// Looked up each time: the provider may change between two rows.
    bool isStored(long index) const noexcept {
        return store_ != nullptr && index >= 0 &&
               static_cast<std::size_t>(index) < StoredRows::patterns(*store_).size() &&
               static_cast<std::size_t>(index) < StoredRows::labels(*store_).size();
    }

    const vxClassifierDataProvider& provider_;
    const vxClassifierDataProviderMemory* store_; // null for a provider that is to be asked
    vxPtrHandle_const<vxFeaturePattern> asked_;
};

} // namespace detail

#endif
