#ifndef TESTS_DIGEST_PROCESSOR_H
#define TESTS_DIGEST_PROCESSOR_H

namespace digest {

/// Lets the library, as far as this program is linked with its objects, take the processor for one without
/// AVX2. Returns false if that could not be done.
bool hideAvx2() noexcept;

} // namespace digest

#endif
