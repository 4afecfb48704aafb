#ifndef FUZZ_USES_H
#define FUZZ_USES_H

#include "fuzz/steps.h"

#include <vxclassifier/vxclassifier.h>

#include <cstdint>
#include <string>
#include <vector>

// Does to a loaded object what a program could do with it. The operations may refuse it, each by its own
// errors; nothing else may happen.
namespace fuzz {

void use(Steps& steps, const vxPersistent& object); // of any class of the library
void use(Steps& steps, const vxFeaturePattern& pattern);
void use(Steps& steps, const vxClassifierFrequencies& frequencies);
void use(Steps& steps, const vxClassifierCosts& costs);
void use(Steps& steps, const vxClassifierCategoryResult& result);
void use(Steps& steps, const vxClassifierResult& result);
void use(Steps& steps, const vxClassifierDistributionTypes& types);
void use(Steps& steps, const vxClassifierDistributionTypes::DistributionType& type);
void use(Steps& steps, const vxClassifierTool& tool);
void use(Steps& steps, const vxClassifierFeatureScoreIgnore& function);
void use(Steps& steps, const vxClassifierFeatureScoreOneSided& function);
void use(Steps& steps, const vxClassifierFeatureScoreTwoSided& function);
void use(Steps& steps, const vxPtrHandle<vxClsFtSc>& function);
void use(Steps& steps, const vxClassifierFeatureVector& vector);
void use(Steps& steps, const vxClassifierRule& rule);
void use(Steps& steps, const vxClassifierRuleTable& table);
void use(Steps& steps, const vxRange& range);
void use(Steps& steps, const vxNMMatrix& matrix);

/// Numbers, texts and vectors have no operations that could go wrong.
template <class T>
void use(Steps&, const std::vector<T>&) {}
inline void use(Steps&, const std::wstring&) {}
inline void use(Steps&, double) {}
inline void use(Steps&, long) {}
inline void use(Steps&, unsigned long) {}
inline void use(Steps&, unsigned char) {}

/// Uses an object in every way (Steps says what `picks` is for). Only what stands in a step may refuse; an
/// error that comes from elsewhere would leave out all that follows, so it passes through, except that memory
/// may run out anywhere.
template <class T>
void useAll(const T& object, std::uint64_t picks) {
    Steps steps(picks);
    try {
        use(steps, object);
    } catch (const std::bad_alloc&) {
    }
}

} // namespace fuzz

#endif
