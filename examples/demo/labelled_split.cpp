#include "examples/demo/labelled_split.h"

#include <cstddef>
#include <map>

namespace demo {

namespace {

std::vector<LabelledPattern> complete(const std::vector<LabelledPattern>& patterns) {
    std::vector<LabelledPattern> kept;
    for (const LabelledPattern& pattern : patterns) {
        if (pattern.pattern->numInvalid() == 0) {
            kept.push_back(pattern);
        }
    }
    return kept;
}

} // namespace

LabelledSplit splitDataset(const CsvDataset& dataset) {
    LabelledSplit split;
    std::map<long, std::size_t> met; // of each category
    for (const CsvRow& row : dataset.rows) {
        const LabelledPattern pattern{
            vxPtrHandle_const<vxFeaturePattern>(new vxFeaturePattern(row.measurements, row.missing)),
            row.label};
        const bool isThird = ++met[row.label] % 3 == 0;
        (isThird ? split.testing : split.training).push_back(pattern);
    }
    return split;
}

LabelledSplit withoutMissing(const LabelledSplit& split) {
    return LabelledSplit{complete(split.training), complete(split.testing)};
}

vxClassifierDataProviderMemory providerOf(const std::vector<LabelledPattern>& patterns) {
    vxClassifierDataProviderMemory provider;
    for (const LabelledPattern& pattern : patterns) {
        provider.addData(pattern.pattern, pattern.label);
    }
    return provider;
}

} // namespace demo
