#include "platform/status/code_points.h"

#include <limits>

namespace detail {

namespace {

constexpr bool wideIsUtf16 = std::numeric_limits<wchar_t>::digits <= 16;
constexpr std::uint32_t firstSupplementary = 0x10000;
constexpr std::uint32_t highSurrogate = 0xd800;
constexpr std::uint32_t lowSurrogate = 0xdc00;
constexpr std::uint32_t afterSurrogates = 0xe000;
constexpr std::uint32_t replacementCharacter = 0xfffd;

bool isHighSurrogate(std::uint32_t point) {
    return point >= highSurrogate && point < lowSurrogate;
}
bool isLowSurrogate(std::uint32_t point) {
    return point >= lowSurrogate && point < afterSurrogates;
}

void appendUtf8(std::string& to, std::uint32_t point) {
    const auto append = [&to](std::uint32_t byte) { to.push_back(static_cast<char>(byte)); };
    if (point < 0x80) {
        append(point);
    } else if (point < 0x800) {
        append(0xc0 | (point >> 6));
        append(0x80 | (point & 0x3f));
    } else if (point < firstSupplementary) {
        append(0xe0 | (point >> 12));
        append(0x80 | ((point >> 6) & 0x3f));
        append(0x80 | (point & 0x3f));
    } else {
        append(0xf0 | (point >> 18));
        append(0x80 | ((point >> 12) & 0x3f));
        append(0x80 | ((point >> 6) & 0x3f));
        append(0x80 | (point & 0x3f));
    }
}

} // namespace

std::vector<std::uint32_t> codePoints(const std::wstring& text) {
    std::vector<std::uint32_t> points;
    points.reserve(text.size());
    for (const wchar_t character : text) {
        // NOLINTNEXTLINE(bugprone-signed-char-misuse): where wchar_t is signed it has 32 bits.
        const std::uint32_t point = static_cast<std::uint32_t>(character);
        if (wideIsUtf16 && !points.empty() && isHighSurrogate(points.back()) && isLowSurrogate(point)) {
            points.back() =
                firstSupplementary + ((points.back() - highSurrogate) << 10) + (point - lowSurrogate);
        } else {
            points.push_back(point);
        }
    }
    return points;
}

std::wstring textOf(const std::vector<std::uint32_t>& points) {
    std::wstring text;
    text.reserve(points.size());
    for (const std::uint32_t point : points) {
        if (wideIsUtf16 && point >= firstSupplementary) {
            const std::uint32_t offset = point - firstSupplementary;
            text.push_back(static_cast<wchar_t>(highSurrogate + (offset >> 10)));
            text.push_back(static_cast<wchar_t>(lowSurrogate + (offset & 0x3ff)));
        } else {
            text.push_back(static_cast<wchar_t>(point));
        }
    }
    return text;
}

std::string toUtf8(const std::wstring& text) {
    std::string utf8;
    for (const std::uint32_t point : codePoints(text)) {
        const bool isCharacter = point <= lastCodePoint && !isHighSurrogate(point) && !isLowSurrogate(point);
        appendUtf8(utf8, isCharacter ? point : replacementCharacter);
    }
    return utf8;
}

std::wstring widened(const std::string& ascii) {
    return std::wstring(ascii.begin(), ascii.end());
}

} // namespace detail
