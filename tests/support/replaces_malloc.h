#ifndef TESTS_SUPPORT_REPLACES_MALLOC_H
#define TESTS_SUPPORT_REPLACES_MALLOC_H

#include <cstddef> // says whether the C library is glibc

#if defined(__has_feature)
#define HAS_FEATURE(feature) __has_feature(feature)
#else
#define HAS_FEATURE(feature) 0
#endif

// Whether malloc and its family can be replaced by a test: sanitizers have replaced it already, and the
// originals have names of their own in glibc only.
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) &&                 \
    !HAS_FEATURE(address_sanitizer) && !HAS_FEATURE(thread_sanitizer) && !HAS_FEATURE(memory_sanitizer)
#define REPLACES_MALLOC 1
#else
#define REPLACES_MALLOC 0
#endif

#endif
