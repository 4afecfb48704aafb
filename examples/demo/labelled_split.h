#ifndef EXAMPLES_DEMO_LABELLED_SPLIT_H
#define EXAMPLES_DEMO_LABELLED_SPLIT_H

#include "examples/demo/csv_dataset.h"

#include <vxclassifier/vxclassifier.h>

#include <vector>

namespace demo {

/// One object to decide: its pattern and what it really is.
struct LabelledPattern {
    vxPtrHandle_const<vxFeaturePattern> pattern;
    long label;
};

/// A data set in two parts: one to train with, one to decide. Which is which depends on the place in the file
/// only.
struct LabelledSplit {
    std::vector<LabelledPattern> training;
    std::vector<LabelledPattern> testing;
};

/// Every third pattern of each category is kept for testing.
LabelledSplit splitDataset(const CsvDataset& dataset);

/// Only the patterns without missing measurements.
LabelledSplit withoutMissing(const LabelledSplit& split);

/// The patterns as the library's training data.
vxClassifierDataProviderMemory providerOf(const std::vector<LabelledPattern>& patterns);

} // namespace demo

#endif
