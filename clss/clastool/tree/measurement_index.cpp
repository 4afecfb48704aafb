#include "clss/clastool/tree/measurement_index.h"

#include <vxclassifier/classifier_defs.h>

namespace detail {

void requireMeasurementIndex(long index) {
    if (index < 0) {
        throw vxClassifierDefs::BadIndex(L"Measurement index must be >= 0 and < number of measurements.");
    }
}

void requireMeasurementIndices(const std::vector<long>& indices) {
    for (const long index : indices) {
        requireMeasurementIndex(index);
    }
}

} // namespace detail
