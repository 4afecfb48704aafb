#include "tests/platform/archive/test_objects.h"
#include "tests/support/archive_bytes.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/nm_matrix.h>
#include <vxclassifier/platform/range.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using test::load;
using test::Node;
using test::payload;
using test::Payload;
using test::stored;

constexpr wchar_t tooLarge[] = L"A size in the archive is larger than what is left of it.";

template <class T>
std::vector<T> roundTrip(const std::vector<T>& values) {
    std::vector<T> loaded(2); // what was there before goes
    load(stored(values), loaded);
    return loaded;
}

template <class T>
void expectVersionRefused() {
    std::vector<T> values(3);
    const auto sealed = Payload().byte(1).u32(0).sealed();
    try {
        load(sealed, values);
        ADD_FAILURE() << "the version was accepted";
    } catch (const vxArchive::UnknownVersion& error) {
        EXPECT_EQ(error.sourceName(), nullptr);
        EXPECT_EQ(error.line(), 0);
    }
    EXPECT_EQ(values.size(), 3U);
}

template <class T>
void expectCountRefused(std::size_t elementSize) {
    std::vector<T> values(3);
    Payload twoElements = Payload().byte(0).u32(3);
    for (std::size_t i = 0; i < 3 * elementSize - 1; ++i) {
        twoElements.byte(0);
    }
    EXPECT_ERROR(load(twoElements.sealed(), values), vxArchive::TooLarge, tooLarge);
    EXPECT_ERROR(load(Payload().byte(0).u32(0xffffffff).u64(0).sealed(), values), vxArchive::TooLarge,
                 tooLarge);
    EXPECT_EQ(values.size(), 3U) << "refused before memory is taken";
}

TEST(ArchiveVector, AnEmptyOneIsAVersionAndACountOfZero) {
    const test::Bytes expected = {0, 0, 0, 0, 0};
    EXPECT_EQ(payload(stored(std::vector<double>())), expected);
    EXPECT_EQ(payload(stored(std::vector<long>())), expected);
    EXPECT_EQ(payload(stored(std::vector<bool>())), expected);
    EXPECT_EQ(payload(stored(std::vector<std::vector<long>>())), expected);
    EXPECT_EQ(payload(stored(std::vector<vxPtrHandle<Node>>())), expected);
}

TEST(ArchiveVector, ElementsFollowTheCountInTheirOwnForm) {
    EXPECT_EQ(payload(stored(std::vector<double>{1.5, -0.0})),
              Payload().byte(0).u32(2).real(1.5).real(-0.0).bytes());
    EXPECT_EQ(payload(stored(std::vector<long>{-1, 7})),
              Payload().byte(0).u32(2).u32(0xffffffff).u32(7).bytes());
    EXPECT_EQ(payload(stored(std::vector<bool>{true, false, true})),
              Payload().byte(0).u32(3).byte(1).byte(0).byte(1).bytes());
    EXPECT_EQ(payload(stored(std::vector<unsigned long>{0xfffffffeUL})),
              Payload().byte(0).u32(1).u32(0xfffffffe).bytes());
    EXPECT_EQ(payload(stored(std::vector<std::wstring>{L"a"})),
              Payload().byte(0).u32(1).u32(1).u32('a').bytes());
    EXPECT_EQ(payload(stored(std::vector<std::vector<long>>{{1}, {}})),
              Payload().byte(0).u32(2).byte(0).u32(1).u32(1).byte(0).u32(0).bytes());
    EXPECT_EQ(payload(stored(std::vector<vxRange>{vxRange(0.5, 2.0)})),
              Payload().byte(0).u32(1).byte(0).real(0.5).real(2.0).bytes());
}

TEST(ArchiveVector, EveryKindComesBack) {
    EXPECT_EQ(roundTrip(std::vector<double>{1.0, 1e300, -7.25}), (std::vector<double>{1.0, 1e300, -7.25}));
    EXPECT_EQ(roundTrip(std::vector<long>{3, -2147483647L}), (std::vector<long>{3, -2147483647L}));
    EXPECT_EQ(roundTrip(std::vector<bool>(75, true)), std::vector<bool>(75, true));
    EXPECT_EQ(roundTrip(std::vector<unsigned char>{0, 255}), (std::vector<unsigned char>{0, 255}));
    EXPECT_EQ(roundTrip(std::vector<std::wstring>{L"", L"\u00e4"}),
              (std::vector<std::wstring>{L"", L"\u00e4"}));
    const std::vector<std::vector<vxRange>> ranges = {{}, {vxRange(), vxRange(1.0, 2.0)}};
    EXPECT_EQ(roundTrip(ranges), ranges);
    const std::vector<std::vector<std::vector<bool>>> nested = {{{true}, {}}, {}, {{false, true}}};
    EXPECT_EQ(roundTrip(nested), nested);
    const std::vector<vxNMMatrix> matrices = {vxNMMatrix(2, 3), vxNMMatrix()};
    EXPECT_EQ(roundTrip(matrices), matrices);
}

TEST(ArchiveVector, HandlesOfOneObjectComeBackAsHandlesOfOneObject) {
    const vxPtrHandle<Node> shared(new Node(5));
    const std::vector<vxPtrHandle<Node>> handles = {shared, {}, shared, vxPtrHandle<Node>(new Node(6))};
    const std::vector<vxPtrHandle<Node>> loaded = roundTrip(handles);
    ASSERT_EQ(loaded.size(), 4U);
    EXPECT_EQ(loaded[0]->value, 5);
    EXPECT_TRUE(loaded[1].isNull());
    EXPECT_EQ(loaded[2], loaded[0]);
    EXPECT_EQ(loaded[3]->value, 6);
    EXPECT_EQ(vx_PtrHandleBase_RepAccessor::count(*loaded[0]), 2);
}

TEST(ArchiveVector, ConstHandlesAreElementsToo) {
    const std::vector<vxPtrHandle_const<Node>> handles = {vxPtrHandle_const<Node>(new Node(5))};
    EXPECT_EQ(roundTrip(handles).at(0)->value, 5);
}

TEST(ArchiveVector, AnotherVersionIsRefusedAndLeavesTheElements) {
    expectVersionRefused<double>();
    expectVersionRefused<long>();
    expectVersionRefused<bool>();
    expectVersionRefused<std::vector<double>>();
    expectVersionRefused<vxPtrHandle<Node>>();
}

template <class T>
void expectUselessAfterAnotherVersion() {
    const auto sealed = Payload().byte(1).byte(0).u32(0).sealed();
    vxLoadingArchive archive(sealed);
    std::vector<T> values;
    EXPECT_ERROR_CLASS(archive || values, vxArchive::UnknownVersion);
    EXPECT_ERROR_CLASS(archive || values, vxArchive::Misuse);
}

TEST(ArchiveVector, AfterAnotherVersionTheArchiveIsUseless) {
    expectUselessAfterAnotherVersion<double>();
    expectUselessAfterAnotherVersion<long>();
    expectUselessAfterAnotherVersion<bool>();
    expectUselessAfterAnotherVersion<std::wstring>();
    expectUselessAfterAnotherVersion<std::vector<double>>();
}

TEST(ArchiveVector, ACountLargerThanTheBytesLeftIsRefusedAndLeavesTheElements) {
    expectCountRefused<double>(8);
    expectCountRefused<long>(4);
    expectCountRefused<bool>(1);
    expectCountRefused<std::vector<double>>(1);
    expectCountRefused<vxPtrHandle<Node>>(1);
}

TEST(ArchiveVector, ATruthValueIsZeroOrOneAndNothingElse) {
    for (const unsigned byte : {2U, 0x80U, 0xffU}) {
        std::vector<bool> values;
        EXPECT_ERROR(load(Payload().byte(0).u32(2).byte(1).byte(byte).sealed(), values),
                     vxArchive::CorruptData, L"A truth value in the archive is neither 0 nor 1.");
        EXPECT_EQ(values, (std::vector<bool>{true}));
    }
}

TEST(ArchiveVector, ABadTruthValueLeavesThoseBeforeIt) {
    const std::vector<bool> before = {true, false, true, true, true, true, true, true, true, false};
    Payload content = Payload().byte(0).u32(20);
    for (const bool value : before) {
        content.byte(value ? 1 : 0);
    }
    content.append(std::vector<unsigned char>(10, 2));
    std::vector<bool> values(3);
    EXPECT_ERROR_CLASS(load(content.sealed(), values), vxArchive::CorruptData);
    EXPECT_EQ(values, before);
}

TEST(ArchiveVector, AFailingElementLeavesThoseBeforeIt) {
    std::vector<std::wstring> texts = {L"old"};
    const Payload content = Payload().byte(0).u32(3).u32(1).u32('a').u32(99).u32(0);
    EXPECT_ERROR(load(content.sealed(), texts), vxArchive::TooLarge, tooLarge);
    EXPECT_EQ(texts, (std::vector<std::wstring>{L"a"}));
}

TEST(ArchiveVector, OfMoreElementsThan32BitsCountIsNotStored) {
    if (std::numeric_limits<std::size_t>::digits <= 32) {
        GTEST_SKIP() << "no vector has that many elements here";
    }
    // Of all vectors this one takes the least memory, half a gigabyte.
    std::vector<bool> many(static_cast<std::size_t>(std::numeric_limits<std::uint32_t>::max()) + 1);
    EXPECT_ERROR(test::archiveOf([&many](vxArchive& archive) { archive || many; }), vxArchive::TooLarge,
                 L"An archive counts the elements of a vector with 32 bits only.");
}

TEST(ArchiveVector, MoreElementsThan32BitsCountAreRefused) {
    if (std::numeric_limits<std::size_t>::digits <= 32) {
        GTEST_SKIP() << "no vector has that many elements here";
    }
    EXPECT_ERROR(test::archiveOf([](vxArchive& archive) {
                     detail::exchangeVectorHead(archive, std::numeric_limits<std::size_t>::max(), 1);
                 }),
                 vxArchive::TooLarge, L"An archive counts the elements of a vector with 32 bits only.");
}

} // namespace
