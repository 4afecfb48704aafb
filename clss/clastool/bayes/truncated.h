#ifndef CLSS_CLASTOOL_BAYES_TRUNCATED_H
#define CLSS_CLASTOOL_BAYES_TRUNCATED_H

#include <cstdint>
#include <limits>

namespace detail {

/// The integer part of a number, cut at the largest 32-bit number of its sign; 0 for NaN. An estimate can be
/// any double, and converting one that does not fit is undefined.
inline std::int32_t truncated(double number) noexcept {
    constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();
    if (number != number) {
        return 0;
    }
    if (number >= largest) {
        return largest;
    }
    return number <= -largest ? -largest : static_cast<std::int32_t>(number);
}

} // namespace detail

#endif
