#include "tests/support/archive_bytes.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>

namespace {

using test::Bytes;
using test::load;
using test::payload;
using test::Payload;
using test::stored;

constexpr wchar_t misuse[] = L"The archive is finished, or an operation on it had failed.";

template <class T>
T roundTrip(const T& value) {
    T loaded{};
    load(stored(value), loaded);
    return loaded;
}

double fromBits(std::uint64_t bits) {
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

std::uint64_t bitsOf(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

template <class T>
void loadPayload(const Payload& content, T& into) {
    load(content.sealed(), into);
}

TEST(Archive, KnowsItsDirection) {
    vxStoringArchive storing;
    EXPECT_TRUE(storing.isStoring());
    EXPECT_FALSE(storing.isLoading());
    storing.finish();
    vxLoadingArchive loading(storing.bytes());
    EXPECT_FALSE(loading.isStoring());
    EXPECT_TRUE(loading.isLoading());
}

TEST(Archive, StoresAByteAsItself) {
    EXPECT_EQ(payload(stored<unsigned char>(0xfe)), (Bytes{0xfe}));
    EXPECT_EQ(roundTrip<unsigned char>(0xfe), 0xfe);
}

TEST(Archive, StoresASignedNumberIn32BitsLittleEndian) {
    EXPECT_EQ(payload(stored(0x01020304L)), (Bytes{0x04, 0x03, 0x02, 0x01}));
    EXPECT_EQ(payload(stored(-2L)), (Bytes{0xfe, 0xff, 0xff, 0xff}));
    EXPECT_EQ(payload(stored(-2147483647L - 1)), (Bytes{0x00, 0x00, 0x00, 0x80}));
    for (const long value : {0L, 1L, -1L, 2147483647L, -2147483647L - 1}) {
        EXPECT_EQ(roundTrip(value), value);
    }
}

TEST(Archive, StoresAnUnsignedNumberIn32BitsLittleEndian) {
    EXPECT_EQ(payload(stored(0xfffefdfcUL)), (Bytes{0xfc, 0xfd, 0xfe, 0xff}));
    for (const unsigned long value : {0UL, 1UL, 0x80000000UL, 0xffffffffUL}) {
        EXPECT_EQ(roundTrip(value), value);
    }
}

TEST(Archive, RefusesToStoreANumberOfMoreThan32Bits) {
    if (std::numeric_limits<long>::digits < 32) {
        GTEST_SKIP() << "a long has 32 bits here";
    }
    constexpr wchar_t message[] = L"An archive holds whole numbers of 32 bits only.";
    const auto wide = [](auto one, int shift) { return static_cast<decltype(one)>(one << shift); };
    EXPECT_ERROR(stored(wide(1L, 31)), vxArchive::NotRepresentable, message);
    EXPECT_ERROR(stored(-wide(1L, 31) - 1), vxArchive::NotRepresentable, message);
    EXPECT_ERROR(stored(wide(1L, 40)), vxArchive::NotRepresentable, message);
    EXPECT_ERROR(stored(wide(1UL, 32)), vxArchive::NotRepresentable, message);
}

TEST(Archive, StoresADoubleAsItsBits) {
    EXPECT_EQ(payload(stored(1.0)), (Bytes{0, 0, 0, 0, 0, 0, 0xf0, 0x3f}));
    EXPECT_EQ(payload(stored(-0.0)), (Bytes{0, 0, 0, 0, 0, 0, 0, 0x80}));
}

TEST(Archive, BringsEveryDoubleBackBitForBit) {
    const std::uint64_t patterns[] = {
        0x0000000000000000, 0x8000000000000000, // zeros
        0x0000000000000001, 0x800fffffffffffff, // subnormal
        0x7ff0000000000000, 0xfff0000000000000, // infinite
        0x7ff8000000000000, 0xfff8000000000123, // quiet NaN, with a payload
        0x7ff0000000000001, 0x7ff7ffffffffffff, // signalling NaN
        0x7fefffffffffffff, 0x0010000000000000, // largest and smallest normal
    };
    for (const std::uint64_t pattern : patterns) {
        EXPECT_EQ(bitsOf(roundTrip(fromBits(pattern))), pattern);
    }
}

TEST(Archive, StoresATextAsACountAndItsCodePoints) {
    EXPECT_EQ(payload(stored(std::wstring())), Payload().u32(0).bytes());
    EXPECT_EQ(payload(stored(std::wstring(L"aé"))), Payload().u32(2).u32(0x61).u32(0xe9).bytes());
    EXPECT_EQ(payload(stored(std::wstring(L"\u20ac\U0001f600"))),
              Payload().u32(2).u32(0x20ac).u32(0x1f600).bytes());
}

TEST(Archive, BringsEveryTextBack) {
    const std::wstring texts[] = {L"",
                                  L"plain",
                                  L"\u00e4\u00f6\u00fc\u00df",
                                  std::wstring(L"with\0zero", 9),
                                  L"\U0010ffff\U00010000",
                                  std::wstring(1, static_cast<wchar_t>(0xd800)),
                                  std::wstring(1, static_cast<wchar_t>(0xdfff))};
    for (const std::wstring& text : texts) {
        EXPECT_EQ(roundTrip(text), text);
    }
}

TEST(Archive, RefusesACharacterThatIsNoCodePointInBothDirections) {
    if (sizeof(wchar_t) < 4) {
        GTEST_SKIP() << "a wide character cannot be that large here";
    }
    constexpr wchar_t refusal[] = L"A text holds a character that is no Unicode code point.";
    EXPECT_ERROR(stored(std::wstring(1, static_cast<wchar_t>(0x110000))), vxArchive::NotRepresentable,
                 refusal);
    EXPECT_ERROR(stored(std::wstring(1, static_cast<wchar_t>(-1))), vxArchive::NotRepresentable, refusal);
    std::wstring text = L"before";
    EXPECT_ERROR(loadPayload(Payload().u32(1).u32(0x110000), text), vxArchive::CorruptData,
                 L"A text in the archive holds a character that is no Unicode code point.");
    EXPECT_EQ(text, L"before");
}

TEST(Archive, RefusesATextThatIsLongerThanTheArchiveBeforeItTakesMemory) {
    std::wstring text;
    for (const std::uint32_t count : {2U, 0x40000000U, 0xffffffffU}) {
        EXPECT_ERROR(loadPayload(Payload().u32(count).u32('a').byte(0), text), vxArchive::TooLarge,
                     L"A size in the archive is larger than what is left of it.");
    }
}

TEST(Archive, AValueOfWhichAByteIsMissingIsShortData) {
    constexpr wchar_t message[] = L"The archive holds fewer bytes than are to be read.";
    unsigned char byte = 0;
    long number = 0;
    unsigned long count = 0;
    double real = 0.0;
    std::wstring text;
    EXPECT_ERROR(loadPayload(Payload(), byte), vxArchive::ShortData, message);
    EXPECT_ERROR(loadPayload(Payload().byte(0).byte(0).byte(0), number), vxArchive::ShortData, message);
    EXPECT_ERROR(loadPayload(Payload().byte(0).byte(0).byte(0), count), vxArchive::ShortData, message);
    EXPECT_ERROR(loadPayload(Payload().u32(0).byte(0).byte(0).byte(0), real), vxArchive::ShortData, message);
    EXPECT_ERROR(loadPayload(Payload().byte(0).byte(0).byte(0), text), vxArchive::ShortData, message);
}

TEST(Archive, AStoringArchiveIsUselessAfterAFailedOperation) {
    vxStoringArchive archive;
    std::wstring bad(1, static_cast<wchar_t>(-1));
    double good = 1.0;
    EXPECT_ERROR_CLASS(archive || bad, vxArchive::NotRepresentable);
    EXPECT_ERROR(archive || good, vxArchive::Misuse, misuse);
    EXPECT_ERROR(archive.finish(), vxArchive::Misuse, misuse);
    EXPECT_TRUE(archive.bytes().empty());
}

TEST(Archive, ALoadingArchiveIsUselessAfterAFailedOperation) {
    const Bytes bytes = Payload().u32(7).sealed();
    vxLoadingArchive archive(bytes);
    double real = 0.0;
    long number = 0;
    EXPECT_ERROR_CLASS(archive || real, vxArchive::ShortData);
    EXPECT_ERROR(archive || number, vxArchive::Misuse, misuse);
    EXPECT_ERROR(archive.finish(), vxArchive::Misuse, misuse);
}

TEST(Archive, NothingCanBeExchangedAfterTheEnd) {
    vxStoringArchive storing;
    long number = 1;
    storing || number;
    storing.finish();
    unsigned char byte = 0;
    std::wstring text;
    std::vector<double> values;
    EXPECT_ERROR(storing || number, vxArchive::Misuse, misuse);
    EXPECT_ERROR(storing || byte, vxArchive::Misuse, misuse);
    EXPECT_ERROR(storing || text, vxArchive::Misuse, misuse);
    EXPECT_ERROR(storing || values, vxArchive::Misuse, misuse);
    vxLoadingArchive loading(storing.bytes());
    loading || number;
    loading.finish();
    EXPECT_ERROR(loading || number, vxArchive::Misuse, misuse);
    EXPECT_ERROR(loading || values, vxArchive::Misuse, misuse);
}

} // namespace
