#include <vxclassifier/platform/text.h>

#include <gtest/gtest.h>

#include <limits>
#include <locale>

namespace {

/// A locale that groups digits, as many do.
class Grouping : public std::numpunct<wchar_t> {
protected:
    wchar_t do_thousands_sep() const override { return L'.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(Text, AWholeNumberIsWrittenInDecimal) {
    EXPECT_EQ(vfStr(0), L"0");
    EXPECT_EQ(vfStr(7), L"7");
    EXPECT_EQ(vfStr(-1), L"-1");
    EXPECT_EQ(vfStr(2147483647), L"2147483647");
    EXPECT_EQ(vfStr(-2147483647L - 1), L"-2147483648");
    EXPECT_EQ(vfStr(std::numeric_limits<long>::min()), std::to_wstring(std::numeric_limits<long>::min()));
}

TEST(Text, TheLocaleDoesNotMatter) {
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    const std::wstring text = vfStr(1234567);
    std::locale::global(before);
    EXPECT_EQ(text, L"1234567");
}

} // namespace
