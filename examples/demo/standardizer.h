#ifndef EXAMPLES_DEMO_STANDARDIZER_H
#define EXAMPLES_DEMO_STANDARDIZER_H

#include "examples/demo/labelled_split.h"

#include <vector>

namespace demo {

/// Brings measurements of different units to one scale: subtracts the mean of the training part and divides
/// by its standard deviation. Distances between patterns mean little without it.
class Standardizer {
public:
    /// The patterns must have no missing measurements.
    explicit Standardizer(const std::vector<LabelledPattern>& training);

    std::vector<LabelledPattern> apply(const std::vector<LabelledPattern>& patterns) const;

private:
    std::vector<double> means_;
    std::vector<double> deviations_; // 1 for a measurement that does not vary
};

} // namespace demo

#endif
