#ifndef CLSS_CLASTOOL_KNN_NEAREST_NEIGHBORS_H
#define CLSS_CLASTOOL_KNN_NEAREST_NEIGHBORS_H

#include "clss/clastool/knn/neighbor_list.h"

#include <vxclassifier/pattern_distance_metric.h>
#include <vxclassifier/platform/ptr_handle.h>

class vxClassifierDataProviderMemory;
class vxFeaturePattern;

namespace detail {

/// Offers every stored pattern to the list, in ascending order, at its distance from `pattern`. This plain
/// scan is what the nearest neighbours are by definition; anything faster must fill the list alike.
///
/// Makes the interruption check before it looks at a pattern, but for the first `checked` ones, for which it
/// was made already. Throws what that check throws, vxBadPointer for
/// a null pattern or metric, and what the metric throws.
void offerStoredPatterns(const vxFeaturePattern& pattern, const vxClassifierDataProviderMemory& store,
                         const vxPtrHandle_const<vxPatternDistanceMetric>& metric, NeighborList& list,
                         long checked = 0);

} // namespace detail

#endif
