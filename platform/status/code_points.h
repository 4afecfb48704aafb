#ifndef PLATFORM_STATUS_CODE_POINTS_H
#define PLATFORM_STATUS_CODE_POINTS_H

#include <cstdint>
#include <string>
#include <vector>

namespace detail {

inline constexpr std::uint32_t lastCodePoint = 0x10ffff;

/// The characters of a wide text as numbers: Unicode code points, whether wide characters have two bytes or
/// four. What is no code point (half of a surrogate pair, a number beyond lastCodePoint) is passed on as it
/// is.
std::vector<std::uint32_t> codePoints(const std::wstring& text);

/// The opposite of codePoints.
std::wstring textOf(const std::vector<std::uint32_t>& points);

/// UTF-8, with U+FFFD in place of what is no character.
std::string toUtf8(const std::wstring& text);

/// A text of ASCII characters only.
std::wstring widened(const std::string& ascii);

} // namespace detail

#endif
