#ifndef CLSS_CLASTOOL_TREE_MEASUREMENT_INDEX_H
#define CLSS_CLASTOOL_TREE_MEASUREMENT_INDEX_H

#include <vector>

namespace detail {

/// Throws vxClassifierDefs::BadIndex for a negative index. A predicate does not know how many measurements
/// its patterns will have, so there is no upper bound to check.
void requireMeasurementIndex(long index);
void requireMeasurementIndices(const std::vector<long>& indices);

} // namespace detail

#endif
