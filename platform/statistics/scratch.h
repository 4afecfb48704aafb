#ifndef PLATFORM_STATISTICS_SCRATCH_H
#define PLATFORM_STATISTICS_SCRATCH_H

#include <array>
#include <cstddef>
#include <vector>

namespace detail {

/// Working memory for one evaluation: on the stack for sets of the usual size, so that evaluating them
/// allocates nothing.
template <class T>
class Scratch {
public:
    explicit Scratch(std::size_t size) : large_(size > small_.size() ? size : 0) {}

    T* data() noexcept { return large_.empty() ? small_.data() : large_.data(); }
    T& operator[](std::size_t i) noexcept { return data()[i]; }

private:
    std::array<T, 64> small_;
    std::vector<T> large_;
};

} // namespace detail

#endif
