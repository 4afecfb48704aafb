#ifndef CLSS_CLASTOOL_TREE_RANGE_TEST_H
#define CLSS_CLASTOOL_TREE_RANGE_TEST_H

#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/range_predicate.h>

#include <algorithm>
#include <vector>

namespace detail {

/// The outcome of a range predicate, for those who know that an object is of exactly this class and need not
/// call it.
class RangeTest {
public:
    static bool outcome(const vxRangePredicate& predicate, const vxFeaturePattern& pattern) {
        const vxRange& range = predicate.measurementRange_;
        return std::all_of(
            predicate.measurementIndices_.begin(), predicate.measurementIndices_.end(), [&](long index) {
                return pattern.isValid(index) && range.isWithin(pattern.featureMeasurement(index, true));
            });
    }

    static const std::vector<long>& indices(const vxRangePredicate& predicate) noexcept {
        return predicate.measurementIndices_;
    }
};

} // namespace detail

#endif
