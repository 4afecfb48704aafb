// Damage by accident - a bit that flips, a file cut short, a byte too many or too few - is always found when
// an archive is opened. Where the seal is made to fit, what is left is refused by the loader or is a valid
// object.

#include "tests/hostile/golden_files.h"
#include "tests/support/archive_bytes.h"

#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <ostream>

namespace test {

static void PrintTo(const GoldenFile& file, std::ostream* out) {
    *out << file.name;
}

} // namespace test

namespace {

using test::Bytes;

/// Calls `look(damaged, what)` for everything that a single damage makes of the bytes.
template <class Look>
void eachDamage(const Bytes& bytes, Look look) {
    for (std::size_t place = 0; place < bytes.size(); ++place) {
        const std::string at = " at " + std::to_string(place);
        for (unsigned bit = 0; bit < 8; ++bit) {
            Bytes damaged = bytes;
            damaged[place] = static_cast<unsigned char>(damaged[place] ^ (1U << bit));
            look(damaged, "a flip of bit " + std::to_string(bit) + at);
        }
        look(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(place)), "a cut" + at);
        Bytes shorter = bytes;
        shorter.erase(shorter.begin() + static_cast<std::ptrdiff_t>(place));
        look(shorter, "a deletion" + at);
    }
}

/// Calls `look` for the bytes with one more byte of each of these values at each place, the end included.
template <class Look>
void eachInsertion(const Bytes& bytes, const std::vector<unsigned>& values, Look look) {
    for (std::size_t place = 0; place <= bytes.size(); ++place) {
        for (const unsigned value : values) {
            Bytes longer = bytes;
            longer.insert(longer.begin() + static_cast<std::ptrdiff_t>(place),
                          static_cast<unsigned char>(value));
            look(longer, std::to_string(value) + " inserted at " + std::to_string(place));
        }
    }
}

/// All values of a byte, or every seventeenth where VXCLASSIFIER_FEW_BYTES is set: a sanitizer finds nothing
/// more in the others, and takes its time.
std::vector<unsigned> insertedBytes() {
    const unsigned step = std::getenv("VXCLASSIFIER_FEW_BYTES") != nullptr ? 17 : 1;
    std::vector<unsigned> bytes;
    for (unsigned value = 0; value < 256; value += step) {
        bytes.push_back(value);
    }
    return bytes;
}

class Damage : public testing::TestWithParam<test::GoldenFile> {};

TEST_P(Damage, IsRefusedWhenTheArchiveIsOpened) {
    long refused = 0;
    long expected = 0;
    const auto look = [&](const Bytes& damaged, const std::string& what) {
        ++expected;
        try {
            const vxLoadingArchive archive(damaged);
            ADD_FAILURE() << what << " was not noticed";
        } catch (const vxArchive::CorruptFrame&) {
            ++refused;
        } catch (const vxArchive::ShortData&) {
            ++refused;
        }
    };
    eachDamage(GetParam().bytes, look);
    const std::vector<unsigned> inserted = insertedBytes();
    eachInsertion(GetParam().bytes, inserted, look);
    const long size = static_cast<long>(GetParam().bytes.size());
    EXPECT_EQ(expected, 10 * size + static_cast<long>(inserted.size()) * (size + 1));
    EXPECT_EQ(refused, expected);
}

/// Every damage of a small file; of a large one every seventh, which meets each kind of damage at other
/// places, unless the environment variable VXCLASSIFIER_EVERY_DAMAGE asks for all.
long stepFor(const Bytes& content) {
    return content.size() <= 120 || std::getenv("VXCLASSIFIER_EVERY_DAMAGE") != nullptr ? 1 : 7;
}

TEST_P(Damage, BehindAMendedSealIsRefusedOrGivesAValidObject) {
    ASSERT_TRUE(GetParam().entry->check(GetParam().bytes)) << "the undamaged file";
    const Bytes content = test::payload(GetParam().bytes);
    const long step = stepFor(content);
    long met = 0;
    long refused = 0;
    const auto look = [&](const Bytes& damaged, const std::string& what) {
        if (met++ % step != 0) {
            return;
        }
        try {
            refused += GetParam().entry->check(test::Payload().append(damaged).sealed()) ? 0 : 1;
        } catch (const std::exception& error) {
            ADD_FAILURE() << what << ": " << error.what();
        }
    };
    eachDamage(content, look);
    eachInsertion(content, {0, 1, 255}, look);
    EXPECT_GT(refused, static_cast<long>(content.size()) / step) << "each cut, to begin with";
}

INSTANTIATE_TEST_SUITE_P(Of, Damage, testing::ValuesIn(test::goldenFiles()),
                         [](const auto& instance) { return instance.param.name; });

} // namespace
