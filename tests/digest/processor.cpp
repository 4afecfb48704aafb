#include "tests/digest/processor.h"

#if defined(__x86_64__) && defined(__GNUC__)

// What __builtin_cpu_supports() of this program asks: the compilers' own record of the processor. No such
// builtin may stand in this file: clang 14 takes the two declarations of the record for one, and breaks off.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {
struct ProcessorModel {
    unsigned vendor;
    unsigned type;
    unsigned subtype;
    unsigned features[1];
};
extern ProcessorModel __cpu_model;
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

namespace digest {

void hideAvx2() noexcept {
    constexpr unsigned avx2 = 1U << 10U;
    __cpu_model.features[0] &= ~avx2;
}

} // namespace digest

#else

namespace digest {

void hideAvx2() noexcept {}

} // namespace digest

#endif
