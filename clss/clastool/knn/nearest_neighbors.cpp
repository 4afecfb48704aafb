#include "clss/clastool/knn/nearest_neighbors.h"

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/status.h>

namespace detail {

void offerStoredPatterns(const vxFeaturePattern& pattern, const vxClassifierDataProviderMemory& store,
                         const vxPtrHandle_const<vxPatternDistanceMetric>& metric, NeighborList& list,
                         long checked) {
    for (long i = 0; i < store.numPatterns(); ++i) {
        if (i >= checked) {
            vfThrowExceptionOnFailure(vsys_attention_check());
        }
        const vxPtrHandle_const<vxFeaturePattern> stored = store.featurePattern(i);
        list.offer(i, metric->distance(pattern, *stored));
    }
}

} // namespace detail
