#include "tests/support/archive_bytes.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/nm_matrix.h>

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <utility>

namespace {

using test::Payload;

constexpr wchar_t tooLarge[] = L"A size in the archive is larger than what is left of it.";
constexpr wchar_t impossible[] = L"A matrix in the archive has an impossible size.";

/// 2 x 3: 1 2 3 / 4 5 6
vxNMMatrix sample() {
    vxNMMatrix matrix(2, 3);
    double next = 1.0;
    for (long row = 0; row < 2; ++row) {
        for (long column = 0; column < 3; ++column) {
            matrix(row, column) = next++;
        }
    }
    return matrix;
}

void expectEmpty(const vxNMMatrix& matrix) {
    EXPECT_EQ(matrix.rows(), 0);
    EXPECT_EQ(matrix.columns(), 0);
    EXPECT_TRUE(matrix.entries().empty());
    EXPECT_THROW(matrix(0, 0), std::out_of_range);
}

void expectRefused(const Payload& head, const wchar_t* message, bool isTooLarge) {
    vxNMMatrix matrix = sample();
    const test::Bytes bytes = Payload(head).real(1.0).real(2.0).sealed();
    if (isTooLarge) {
        EXPECT_ERROR(test::load(bytes, matrix), vxArchive::TooLarge, message);
    } else {
        EXPECT_ERROR(test::load(bytes, matrix), vxArchive::CorruptData, message);
    }
    EXPECT_EQ(matrix, sample()) << "a failed load leaves the matrix as it was";
}

TEST(NMMatrix, IsEmptyAtFirst) {
    expectEmpty(vxNMMatrix());
}

TEST(NMMatrix, IsFilledWithZeros) {
    const vxNMMatrix matrix(2, 3);
    EXPECT_EQ(matrix.rows(), 2);
    EXPECT_EQ(matrix.columns(), 3);
    EXPECT_EQ(matrix.entries(), std::vector<double>(6, 0.0));
}

TEST(NMMatrix, KeepsItsEntriesRowByRow) {
    const vxNMMatrix matrix = sample();
    EXPECT_EQ(matrix.entries(), (std::vector<double>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(matrix(0, 2), 3.0);
    EXPECT_EQ(matrix(1, 0), 4.0);
}

TEST(NMMatrix, RefusesAnIndexOutside) {
    vxNMMatrix matrix = sample();
    const vxNMMatrix& constant = matrix;
    for (const auto& [row, column] : {std::pair{-1L, 0L}, {2L, 0L}, {0L, -1L}, {0L, 3L}, {2L, 3L}}) {
        EXPECT_THROW(matrix(row, column), std::out_of_range);
        EXPECT_THROW(constant(row, column), std::out_of_range);
    }
}

TEST(NMMatrix, RefusesAnImpossibleSize) {
    constexpr long most = std::numeric_limits<long>::max();
    EXPECT_THROW(vxNMMatrix(-1, 2), std::length_error);
    EXPECT_THROW(vxNMMatrix(2, -1), std::length_error);
    EXPECT_THROW(vxNMMatrix(most, most), std::length_error);
    EXPECT_THROW(vxNMMatrix(1L << 30, 1L << 30 << (sizeof(long) > 4 ? 20 : 0)), std::length_error);
}

TEST(NMMatrix, EqualMeansEqualSizesAndEntries) {
    EXPECT_TRUE(sample() == sample());
    vxNMMatrix other = sample();
    other(1, 1) = 0.0;
    EXPECT_TRUE(sample() != other);
    EXPECT_TRUE(vxNMMatrix(2, 3) != vxNMMatrix(3, 2));
    EXPECT_TRUE(vxNMMatrix(2, 3) != vxNMMatrix(2, 4));
    EXPECT_TRUE(vxNMMatrix(2, 3) != vxNMMatrix(1, 6));
    vxNMMatrix strange(1, 1);
    strange(0, 0) = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(strange != strange);
}

TEST(NMMatrix, CopiesAndMovesKeepSizeAndEntriesTogether) {
    vxNMMatrix original = sample();
    vxNMMatrix copy(original);
    EXPECT_EQ(copy, original);
    vxNMMatrix moved(std::move(original));
    EXPECT_EQ(moved, copy);
    expectEmpty(original); // NOLINT(bugprone-use-after-move): what a move leaves is what is tested
    vxNMMatrix assigned(5, 5);
    assigned = copy;
    EXPECT_EQ(assigned, copy);
    assigned = std::move(copy);
    EXPECT_EQ(assigned, moved);
    expectEmpty(copy); // NOLINT(bugprone-use-after-move)
    const vxNMMatrix& same = assigned;
    assigned = same;
    EXPECT_EQ(assigned, moved);
}

TEST(NMMatrix, IsArchivedAsAVersionItsSizeAndItsRows) {
    const Payload expected = Payload().byte(0).u32(2).u32(3).real(1).real(2).real(3).real(4).real(5).real(6);
    EXPECT_EQ(test::payload(test::stored(sample())), expected.bytes());
    EXPECT_EQ(test::payload(test::stored(vxNMMatrix())), Payload().byte(0).u32(0).u32(0).bytes());
    vxNMMatrix loaded(1, 1);
    test::load(test::stored(sample()), loaded);
    EXPECT_EQ(loaded, sample());
    test::load(test::stored(vxNMMatrix()), loaded);
    expectEmpty(loaded);
}

TEST(NMMatrix, AnotherVersionIsRefused) {
    vxNMMatrix matrix = sample();
    EXPECT_ERROR(test::load(Payload().byte(1).u32(0).u32(0).sealed(), matrix), vxArchive::UnknownVersion,
                 L"The archive has a version that this release does not know.");
    EXPECT_EQ(matrix, sample());
}

TEST(NMMatrix, ALoadedSizeForWhichThereAreTooFewBytesIsRefused) {
    expectRefused(Payload().byte(0).u32(1).u32(3), tooLarge, true);
    expectRefused(Payload().byte(0).u32(0x7fffffff).u32(0x7fffffff), tooLarge, true);
    expectRefused(Payload().byte(0).u32(0x10000).u32(0x10000), tooLarge, true); // 2^32 entries: no overflow
    expectRefused(Payload().byte(0).u32(0x20000000).u32(1), tooLarge, true);    // 2^32 bytes
}

TEST(NMMatrix, ALoadedSizeThatIsNegativeOrEmptyOnOneSideIsRefused) {
    expectRefused(Payload().byte(0).u32(0xffffffff).u32(0xffffffff), impossible, false);
    expectRefused(Payload().byte(0).u32(0x80000000).u32(1), impossible, false);
    expectRefused(Payload().byte(0).u32(1).u32(0xffffffff), impossible, false);
    expectRefused(Payload().byte(0).u32(0x7fffffff).u32(0), impossible, false);
    expectRefused(Payload().byte(0).u32(0).u32(1), impossible, false);
}

TEST(NMMatrix, WhatCouldNotBeLoadedIsNotStored) {
    constexpr wchar_t message[] = L"An archive holds no matrix that is empty on one side only.";
    EXPECT_ERROR(test::stored(vxNMMatrix(3, 0)), vxArchive::NotRepresentable, message);
    EXPECT_ERROR(test::stored(vxNMMatrix(0, 3)), vxArchive::NotRepresentable, message);
}

} // namespace
