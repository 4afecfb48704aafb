#include "tests/digest/processor.h"

#if defined(__x86_64__) && defined(__GNUC__)

// What __builtin_cpu_supports() of this program asks: the compilers' own record of the processor.
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

bool hideAvx2() noexcept {
    __builtin_cpu_init();
    constexpr unsigned avx2 = 1U << 10U;
    __cpu_model.features[0] &= ~avx2;
    return __builtin_cpu_supports("avx2") == 0;
}

} // namespace digest

#else

namespace digest {

bool hideAvx2() noexcept {
    return true;
}

} // namespace digest

#endif
