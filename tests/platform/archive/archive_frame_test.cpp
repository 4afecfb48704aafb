#include "tests/support/archive_bytes.h"
#include "tests/support/archives.h"
#include "tests/support/expect_error.h"

#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <streambuf>

namespace {

using test::Bytes;
using test::Payload;

constexpr wchar_t tooShort[] = L"The archive ends too early.";
constexpr wchar_t tooLong[] = L"Something stands behind the end of the archive.";
constexpr wchar_t notAnArchive[] = L"This is not an archive, or it was copied in text mode.";
constexpr wchar_t headerDamaged[] = L"The header of the archive is damaged.";
constexpr wchar_t contentDamaged[] = L"The content of the archive is damaged.";

/// The CRC-32C of these nine bytes is the published check value 0xe3069283.
Bytes checkSequence() {
    return test::archiveOf([](vxArchive& archive) {
        for (unsigned char digit = '1'; digit <= '9'; ++digit) {
            archive || digit;
        }
    });
}

std::string asText(const Bytes& bytes) {
    return std::string(bytes.begin(), bytes.end());
}

void openFromMemory(const Bytes& bytes) {
    vxLoadingArchive archive(bytes);
}

void openFromStream(const Bytes& bytes) {
    std::istringstream stream(asText(bytes));
    vxLoadingArchive archive(stream);
}

void expectRefused(const Bytes& bytes, const std::string& what) {
    EXPECT_THROW(openFromMemory(bytes), vxArchive::Errors) << what;
    EXPECT_THROW(openFromStream(bytes), vxArchive::Errors) << what;
}

/// A destination that takes `room` bytes and no more.
class FullBuffer : public std::streambuf {
public:
    explicit FullBuffer(std::streamsize room) : room_(room) {}

protected:
    std::streamsize xsputn(const char*, std::streamsize count) override {
        const std::streamsize taken = std::min(count, room_);
        room_ -= taken;
        return taken;
    }
    int_type overflow(int_type) override { return traits_type::eof(); }

private:
    std::streamsize room_;
};

/// A destination whose trouble shows only when it is flushed.
class UnflushableBuffer : public std::stringbuf {
protected:
    int sync() override { return -1; }
};

TEST(ArchiveFrame, HasTheseBytes) {
    const Bytes expected = {
        0x8b, 'V',  'X',  'C',  0x0d, 0x0a, 0x1a, 0x0a,      // magic
        0x01, 0x00, 0x00, 0x00,                              // format version
        0x09, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,      // length of the content
        0x83, 0x92, 0x06, 0xe3,                              // CRC-32C of the content
        0x02, 0x93, 0x09, 0x8f,                              // CRC-32C of the 24 bytes before
        '1',  '2',  '3',  '4',  '5',  '6',  '7',  '8',  '9', // content
    };
    EXPECT_EQ(checkSequence(), expected);
}

TEST(ArchiveFrame, IsTheSameForMemoryAndForStreams) {
    std::ostringstream stream;
    vxStoringArchive archive(stream);
    for (unsigned char digit = '1'; digit <= '9'; ++digit) {
        archive || digit;
    }
    EXPECT_EQ(stream.str(), "") << "nothing is written before the archive is finished";
    archive.finish();
    EXPECT_EQ(stream.str(), asText(checkSequence()));
    EXPECT_TRUE(archive.bytes().empty());
}

TEST(ArchiveFrame, AnEmptyArchiveIsOne) {
    const Bytes bytes = test::archiveOf([](vxArchive&) {});
    EXPECT_EQ(bytes, Payload().sealed());
    vxLoadingArchive archive(bytes);
    archive.finish();
}

TEST(ArchiveFrame, AnArchiveCutShortIsRefusedWhereverItIsCut) {
    const Bytes whole = checkSequence();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_ERROR(openFromMemory(part), vxArchive::ShortData, tooShort);
        EXPECT_ERROR(openFromStream(part), vxArchive::ShortData, tooShort);
    }
}

TEST(ArchiveFrame, EveryFlippedBitIsNoticed) {
    const Bytes whole = checkSequence();
    for (std::size_t bit = 0; bit < 8 * whole.size(); ++bit) {
        Bytes damaged = whole;
        damaged[bit / 8] = static_cast<unsigned char>(damaged[bit / 8] ^ (1U << (bit % 8)));
        const wchar_t* expected = bit < 8 * 8U    ? notAnArchive
                                  : bit < 8 * 28U ? headerDamaged
                                                  : contentDamaged;
        EXPECT_ERROR(openFromMemory(damaged), vxArchive::CorruptFrame, expected);
        EXPECT_ERROR(openFromStream(damaged), vxArchive::CorruptFrame, expected);
    }
}

TEST(ArchiveFrame, EveryInsertedOrMissingByteIsNoticed) {
    const Bytes whole = checkSequence();
    for (std::size_t place = 0; place <= whole.size(); ++place) {
        Bytes longer = whole;
        longer.insert(longer.begin() + static_cast<std::ptrdiff_t>(place), 0x00);
        expectRefused(longer, "a zero inserted at " + std::to_string(place));
    }
    for (std::size_t place = 0; place < whole.size(); ++place) {
        Bytes shorter = whole;
        shorter.erase(shorter.begin() + static_cast<std::ptrdiff_t>(place));
        expectRefused(shorter, "the byte removed at " + std::to_string(place));
    }
}

TEST(ArchiveFrame, WhatStandsBehindTheEndIsRefused) {
    Bytes longer = checkSequence();
    longer.push_back(0);
    EXPECT_ERROR(openFromMemory(longer), vxArchive::CorruptFrame, tooLong);
    EXPECT_ERROR(openFromStream(longer), vxArchive::CorruptFrame, tooLong);
}

TEST(ArchiveFrame, ACopyMadeInTextModeIsRecognised) {
    Bytes copied = checkSequence();
    copied.erase(copied.begin() + 4); // the carriage return
    EXPECT_ERROR(openFromMemory(copied), vxArchive::CorruptFrame, notAnArchive);
}

TEST(ArchiveFrame, AnotherFormatVersionIsRefusedByName) {
    Payload frame;
    frame.ascii("\x8bVXC\r\n\x1a\n").u32(2).u64(0).u32(0);
    const std::uint32_t seal = test::crc32c(frame.bytes());
    frame.u32(seal);
    EXPECT_ERROR(openFromMemory(frame.bytes()), vxArchive::CorruptFrame,
                 L"The archive has a format version that this release does not know.");
}

TEST(ArchiveFrame, AHugeLengthWithAValidSealTakesNoMemory) {
    Payload frame;
    frame.ascii("\x8bVXC\r\n\x1a\n").u32(1).u64(~std::uint64_t{0}).u32(0);
    const std::uint32_t seal = test::crc32c(frame.bytes());
    frame.u32(seal).ascii("a few bytes");
    EXPECT_ERROR(openFromMemory(frame.bytes()), vxArchive::ShortData, tooShort);
    EXPECT_ERROR(openFromStream(frame.bytes()), vxArchive::ShortData, tooShort);
}

TEST(ArchiveFrame, NoMemoryAtAllIsAnArchiveCutShort) {
    EXPECT_ERROR(vxLoadingArchive(nullptr, 0), vxArchive::ShortData, tooShort);
}

TEST(ArchiveFrame, AContentOfSeveralBlocksPassesThroughAStream) {
    std::vector<double> values(400000);
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = static_cast<double>(i);
    }
    std::stringstream stream;
    vxStoringArchive storing(stream);
    storing || values;
    storing.finish();
    std::vector<double> loaded;
    vxLoadingArchive loading(stream);
    loading || loaded;
    loading.finish();
    EXPECT_EQ(loaded, values);
}

TEST(ArchiveFrame, AStreamThatTakesNotAllBytesFails) {
    for (const std::streamsize room : {0, 1, 28, 36}) {
        FullBuffer buffer(room);
        std::ostream stream(&buffer);
        vxStoringArchive archive(stream);
        for (unsigned char digit = '1'; digit <= '9'; ++digit) {
            archive || digit;
        }
        EXPECT_ERROR(archive.finish(), vxArchive::WriteFailed, L"The archive could not be written.");
        EXPECT_ERROR_CLASS(archive.finish(), vxArchive::Misuse);
    }
}

TEST(ArchiveFrame, AStreamThatCannotBeFlushedFails) {
    UnflushableBuffer buffer;
    std::ostream stream(&buffer);
    vxStoringArchive archive(stream);
    EXPECT_ERROR(archive.finish(), vxArchive::WriteFailed, L"The archive could not be written.");
}

TEST(ArchiveFrame, AStreamThatHadFailedBeforeFails) {
    std::ostringstream stream;
    stream.setstate(std::ios::badbit);
    vxStoringArchive archive(stream);
    EXPECT_ERROR(archive.finish(), vxArchive::WriteFailed, L"The archive could not be written.");
}

TEST(ArchiveFrame, AFullDeviceFails) {
    std::ofstream device("/dev/full", std::ios::binary);
    if (!device) {
        GTEST_SKIP() << "this system has no device that is always full";
    }
    vxStoringArchive archive(device);
    EXPECT_ERROR(archive.finish(), vxArchive::WriteFailed, L"The archive could not be written.");
}

TEST(ArchiveFrame, NothingIsWrittenWhenAnExceptionPassesBy) {
    std::ostringstream stream;
    try {
        vxStoringArchive archive(stream);
        double value = 1.0;
        archive || value;
        throw std::runtime_error("something else went wrong");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(stream.str(), "");
}

TEST(ArchiveFrame, FinishingTwiceIsMisuse) {
    constexpr wchar_t message[] = L"The archive is finished, or an operation on it had failed.";
    vxStoringArchive storing;
    storing.finish();
    const Bytes bytes = storing.bytes();
    EXPECT_ERROR(storing.finish(), vxArchive::Misuse, message);
    EXPECT_EQ(storing.bytes(), bytes);
    vxLoadingArchive loading(bytes);
    loading.finish();
    EXPECT_ERROR(loading.finish(), vxArchive::Misuse, message);
}

TEST(ArchiveFrame, WhatWasNotReadIsRefusedAtTheEnd) {
    const Bytes bytes = checkSequence();
    vxLoadingArchive archive(bytes);
    unsigned char first = 0;
    archive || first;
    EXPECT_ERROR(archive.finish(), vxArchive::CorruptData,
                 L"Something is left in the archive that was not read.");
}

} // namespace
