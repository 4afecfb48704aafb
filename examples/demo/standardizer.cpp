#include "examples/demo/standardizer.h"

#include <cmath>
#include <cstddef>

namespace demo {

Standardizer::Standardizer(const std::vector<LabelledPattern>& training) {
    const std::size_t size =
        training.empty() ? 0 : training.front().pattern->featureMeasurements(true).size();
    means_.assign(size, 0.0);
    deviations_.assign(size, 0.0);
    const double count = static_cast<double>(training.size());
    for (const LabelledPattern& pattern : training) {
        const std::vector<double>& values = pattern.pattern->featureMeasurements(true);
        for (std::size_t i = 0; i < size; ++i) {
            means_[i] += values[i] / count;
        }
    }
    for (const LabelledPattern& pattern : training) {
        const std::vector<double>& values = pattern.pattern->featureMeasurements(true);
        for (std::size_t i = 0; i < size; ++i) {
            deviations_[i] += (values[i] - means_[i]) * (values[i] - means_[i]) / count;
        }
    }
    for (double& deviation : deviations_) {
        deviation = deviation > 0.0 ? std::sqrt(deviation) : 1.0;
    }
}

std::vector<LabelledPattern> Standardizer::apply(const std::vector<LabelledPattern>& patterns) const {
    std::vector<LabelledPattern> scaled;
    for (const LabelledPattern& pattern : patterns) {
        std::vector<double> values = pattern.pattern->featureMeasurements(true);
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = (values[i] - means_[i]) / deviations_[i];
        }
        scaled.push_back(
            {vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(values, {})), pattern.label});
    }
    return scaled;
}

} // namespace demo
