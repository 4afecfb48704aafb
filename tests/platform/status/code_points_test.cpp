#include "platform/status/code_points.h"

#include <gtest/gtest.h>

namespace {

using Points = std::vector<std::uint32_t>;

std::wstring wide(std::initializer_list<std::uint32_t> units) {
    std::wstring text;
    for (const std::uint32_t unit : units) {
        text.push_back(static_cast<wchar_t>(unit));
    }
    return text;
}

TEST(CodePoints, AreTheCharactersOfAText) {
    EXPECT_EQ(detail::codePoints(L""), Points());
    EXPECT_EQ(detail::codePoints(L"a\u00e4\u20ac\U0001f600"), (Points{0x61, 0xe4, 0x20ac, 0x1f600}));
    EXPECT_EQ(detail::codePoints(L"\U00010000\U0010ffff"), (Points{0x10000, 0x10ffff}));
}

TEST(CodePoints, HalvesOfPairsStandForThemselves) {
    EXPECT_EQ(detail::codePoints(wide({0xd800})), (Points{0xd800}));
    EXPECT_EQ(detail::codePoints(wide({0xdc00, 0xd800})), (Points{0xdc00, 0xd800}));
}

TEST(CodePoints, GiveTheTextBack) {
    for (const Points& points : {Points{}, Points{0x61, 0xe4}, Points{0x10000, 0x10ffff}, Points{0xdfff}}) {
        EXPECT_EQ(detail::codePoints(detail::textOf(points)), points);
    }
}

TEST(CodePoints, BecomeUtf8) {
    EXPECT_EQ(detail::toUtf8(L""), "");
    EXPECT_EQ(detail::toUtf8(wide({0x00, 0x7f})), std::string("\0\x7f", 2));
    EXPECT_EQ(detail::toUtf8(wide({0x80, 0x7ff})), "\xc2\x80\xdf\xbf");
    EXPECT_EQ(detail::toUtf8(wide({0x800, 0xd7ff, 0xe000, 0xffff})),
              "\xe0\xa0\x80\xed\x9f\xbf\xee\x80\x80\xef\xbf\xbf");
    EXPECT_EQ(detail::toUtf8(L"\U00010000\U0010ffff"), "\xf0\x90\x80\x80\xf4\x8f\xbf\xbf");
}

TEST(CodePoints, WhatIsNoCharacterBecomesTheReplacementCharacter) {
    EXPECT_EQ(detail::toUtf8(wide({0xd800})), "\xef\xbf\xbd");
    EXPECT_EQ(detail::toUtf8(wide({0xdfff})), "\xef\xbf\xbd");
    if (sizeof(wchar_t) >= 4) {
        EXPECT_EQ(detail::toUtf8(wide({0x110000})), "\xef\xbf\xbd");
        EXPECT_EQ(detail::toUtf8(wide({0xffffffff})), "\xef\xbf\xbd");
    }
}

TEST(CodePoints, AsciiIsWidened) {
    EXPECT_EQ(detail::widened("vx::Name"), L"vx::Name");
}

} // namespace
