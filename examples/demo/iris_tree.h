#ifndef EXAMPLES_DEMO_IRIS_TREE_H
#define EXAMPLES_DEMO_IRIS_TREE_H

#include <vxclassifier/vxclassifier.h>

namespace demo {

/// A tree for the Iris data as a botanist would put it:
/// - petals shorter than 2.5 cm: setosa;
/// - else petals narrower than 1.7 cm and not longer than 5 cm: versicolor, most likely;
/// - else virginica, most likely.
vxPtrHandle<vxDecisionTree> irisTree(const vxClassifierCosts& costs);

} // namespace demo

#endif
