#ifndef PLATFORM_STATISTICS_SCRATCH_H
#define PLATFORM_STATISTICS_SCRATCH_H

#include <array>
#include <cstddef>
#include <memory>

namespace detail {

/// Working memory for one evaluation: on the stack for sets of the usual size, so that evaluating them
/// allocates nothing.
template <class T>
class Scratch {
public:
    explicit Scratch(std::size_t size)
        : large_(size > small_.size() ? std::make_unique<T[]>(size) : nullptr),
          data_(large_ == nullptr ? small_.data() : large_.get()) {}
    ~Scratch() = default;
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    T* data() noexcept { return data_; }
    T& operator[](std::size_t i) noexcept { return data_[i]; }

private:
    std::array<T, 64> small_;
    std::unique_ptr<T[]> large_;
    T* data_;
};

} // namespace detail

#endif
