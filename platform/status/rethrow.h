#ifndef PLATFORM_STATUS_RETHROW_H
#define PLATFORM_STATUS_RETHROW_H

#include <memory>

namespace detail {

/// What every suicideAndRethrow does. The copy cannot fail, so nothing leaks.
template <class X>
[[noreturn]] void deleteAndRethrow(X* exception) {
    X copy(*exception);
    std::unique_ptr<X>(exception).reset();
    // NOLINTNEXTLINE(misc-throw-by-value-catch-by-reference): the object itself is gone by now.
    throw copy;
}

} // namespace detail

#endif
