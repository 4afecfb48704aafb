#include "platform/archive/byte_sink.h"

#include <algorithm>

namespace detail {

void ByteSink::prepare(std::size_t size, std::size_t capacity) {
    // A vector sets new bytes to zero. A few at a time are still near the processor when they get their
    // values.
    constexpr std::size_t atOnce = std::size_t{1} << 13;
    const std::size_t used = this->size();
    const std::size_t needed = used + size;
    if (needed > bytes_.capacity()) {
        bytes_.reserve(std::max(needed, capacity));
    }
    bytes_.resize(std::max(needed, std::min(bytes_.capacity(), used + atOnce)));
    next_ = bytes_.data() + used;
    end_ = bytes_.data() + bytes_.size();
}

std::vector<unsigned char> ByteSink::take() noexcept {
    bytes_.resize(size());
    return std::move(bytes_);
}

} // namespace detail
