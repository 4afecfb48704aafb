#ifndef TESTS_DIGEST_PROCESSOR_H
#define TESTS_DIGEST_PROCESSOR_H

namespace digest {

/// Lets the library, as far as this program is linked with its objects, take the processor for one without
/// AVX2, once the compilers' record of the processor is filled.
void hideAvx2() noexcept;

} // namespace digest

#endif
