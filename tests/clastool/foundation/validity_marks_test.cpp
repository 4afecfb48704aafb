#include <vxclassifier/detail/validity_marks.h>

#include "tests/support/archives.h"
#include "tests/support/hand_written.h"

#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/platform/archive.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

namespace {

using detail::ValidityMarks;
using test::HandWritten;

/// What a pattern says of its marks when they are a plain list.
struct PlainPattern {
    std::vector<double> measurements;
    std::vector<bool> marks;

    bool isValid(std::size_t i) const { return i < measurements.size() && i < marks.size() && marks[i]; }

    std::vector<long> invalidIndices() const {
        std::vector<long> indices;
        for (std::size_t i = 0; i < measurements.size(); ++i) {
            if (!isValid(i)) {
                indices.push_back(static_cast<long>(i));
            }
        }
        return indices;
    }

    test::Bytes sealed() const {
        return HandWritten().byte(0).byte(0).reals(measurements).flags(marks).sealed();
    }
};

void expectSame(const vxFeaturePattern& pattern, const PlainPattern& plain) {
    const std::size_t size = plain.measurements.size();
    ASSERT_EQ(pattern.featureMeasurements(false), plain.measurements);
    for (std::size_t i = 0; i < size + 3; ++i) {
        ASSERT_EQ(pattern.isValid(static_cast<long>(i)), plain.isValid(i)) << i << " of " << size;
    }
    EXPECT_EQ(pattern.invalidFeatureIndices(), plain.invalidIndices());
    EXPECT_EQ(pattern.numInvalid(), static_cast<long>(plain.invalidIndices().size()));
    EXPECT_EQ(test::stored(pattern), plain.sealed());
}

/// Patterns around the sizes at which the marks change their state, with marks as many as measurements or
/// not, mostly valid or mostly not.
std::vector<PlainPattern> manyPatterns() {
    std::mt19937 random(20261120); // NOLINT(cert-msc32-c,cert-msc51-cpp): repeatable on purpose
    std::vector<PlainPattern> patterns;
    for (const std::size_t size : {0U, 1U, 2U, 3U, 31U, 61U, 62U, 63U, 64U, 65U, 66U, 127U, 128U, 200U}) {
        for (const std::size_t numMarks :
             {std::size_t{0}, size / 2, size, size, size, size, size + 1, size + 70}) {
            const unsigned invalidPerMille =
                patterns.size() % 3 == 0 ? 0 : (patterns.size() % 3 == 1 ? 20 : 500);
            PlainPattern plain{std::vector<double>(size, 1.0), {}};
            for (std::size_t i = 0; i < numMarks; ++i) {
                plain.marks.push_back(random() % 1000 >= invalidPerMille);
            }
            patterns.push_back(plain);
        }
        // Only the last measurement is invalid, only the first one behind those that are kept inline.
        PlainPattern last{std::vector<double>(size, 1.0), std::vector<bool>(size, true)};
        if (size > 0) {
            last.marks.back() = false;
            patterns.push_back(last);
        }
        if (size > ValidityMarks::inlineSize) {
            last.marks.back() = true;
            last.marks[ValidityMarks::inlineSize] = false;
            patterns.push_back(last);
        }
    }
    return patterns;
}

TEST(ValidityMarks, MakeAPatternOfAnArchiveSayWhatAPlainListWouldSay) {
    for (const PlainPattern& plain : manyPatterns()) {
        expectSame(test::loaded(plain.sealed(), vxFeaturePattern({7.0}, {0})), plain);
    }
}

TEST(ValidityMarks, MakeAConstructedPatternSayWhatAPlainListWouldSay) {
    for (PlainPattern plain : manyPatterns()) {
        plain.marks.resize(plain.measurements.size(), true);
        expectSame(vxFeaturePattern(plain.measurements, plain.invalidIndices()), plain);
    }
}

TEST(ValidityMarks, OfConstructedAndLoadedPatternsCompareAsPlainListsDo) {
    const std::vector<PlainPattern> plains = manyPatterns();
    std::vector<vxFeaturePattern> patterns;
    for (const PlainPattern& plain : plains) {
        const bool isComplete = plain.marks.size() == plain.measurements.size();
        patterns.push_back(isComplete && patterns.size() % 2 == 0
                               ? vxFeaturePattern(plain.measurements, plain.invalidIndices())
                               : test::loaded(plain.sealed(), vxFeaturePattern({}, {})));
    }
    long equal = 0;
    for (std::size_t a = 0; a < plains.size(); ++a) {
        for (std::size_t b = 0; b < plains.size(); ++b) {
            const bool same =
                plains[a].measurements == plains[b].measurements && plains[a].marks == plains[b].marks;
            EXPECT_EQ(patterns[a] == patterns[b], same) << a << ", " << b;
            equal += same ? 1 : 0;
        }
    }
    EXPECT_GT(equal, static_cast<long>(plains.size())) << "some pairs of different origin must be equal";
}

TEST(ValidityMarks, OfACopyAreItsOwn) {
    for (const PlainPattern& plain : manyPatterns()) {
        vxFeaturePattern original = test::loaded(plain.sealed(), vxFeaturePattern({}, {}));
        const vxFeaturePattern copy(original);
        vxFeaturePattern assigned(std::vector<double>(70, 2.0), {69});
        assigned = original;
        original = vxFeaturePattern({5.0}, {});
        expectSame(copy, plain);
        expectSame(assigned, plain);
    }
}

TEST(ValidityMarks, GoFromOneObjectToAnotherWhole) {
    for (const PlainPattern& plain : manyPatterns()) {
        const std::size_t size = plain.measurements.size();
        ValidityMarks original(plain.marks, size);
        ValidityMarks moved(std::move(original));
        EXPECT_EQ(moved.list(size), plain.marks);
        ValidityMarks assigned;
        assigned = std::move(moved);
        EXPECT_EQ(assigned.list(size), plain.marks);
    }
}

/// A pattern as a plain one would be left when the archive ends in the middle of it.
TEST(ValidityMarks, AfterALoadThatFailedAreTheOldOnesOrThoseReadSoFar) {
    const PlainPattern old{std::vector<double>(3, 2.0), {true, false, true}};
    for (const std::size_t size : {0U, 1U, 3U, 70U}) {
        HandWritten measurementsOnly;
        measurementsOnly.byte(0).byte(0).reals(std::vector<double>(size, 1.0)).byte(1);
        vxFeaturePattern pattern(old.measurements, old.invalidIndices());
        EXPECT_THROW(test::load(measurementsOnly.sealed(), pattern), vxArchive::UnknownVersion);
        expectSame(pattern, {std::vector<double>(size, 1.0), old.marks});

        HandWritten badMark;
        badMark.byte(0).byte(0).reals(std::vector<double>(size, 1.0)).byte(0).count(3);
        badMark.byte(0).byte(1).byte(7);
        EXPECT_THROW(test::load(badMark.sealed(), pattern), vxArchive::CorruptData);
        expectSame(pattern, {std::vector<double>(size, 1.0), {false, true}});
    }
}

/// Exchanges the same bytes as any pattern, but level by level and value by value.
class PlainWay : public vxFeaturePattern {
public:
    using vxFeaturePattern::vxFeaturePattern;

protected:
    void dispatchSerialize(vxArchive& archive) override {
        unsigned char version = 0;
        archive || version;
        serialize_(archive, version);
    }
};

struct Outcome {
    std::string error; // empty: none
    std::vector<double> measurements;
    test::Bytes stored;
};

template <class Pattern>
Outcome outcomeOf(const test::Bytes& sealed) {
    Pattern into(std::vector<double>(2, 7.0), {1});
    Outcome outcome;
    try {
        test::load(sealed, into);
    } catch (const vxArchive::Errors& error) {
        outcome.error = typeid(error).name();
    }
    outcome.measurements = into.featureMeasurements(false);
    outcome.stored = test::stored(into); // shows each mark
    return outcome;
}

void expectSameOutcome(const test::Bytes& sealed, const std::string& what) {
    const Outcome expected = outcomeOf<PlainWay>(sealed);
    const Outcome outcome = outcomeOf<vxFeaturePattern>(sealed);
    ASSERT_EQ(outcome.error, expected.error) << what;
    ASSERT_EQ(outcome.measurements, expected.measurements) << what;
    ASSERT_EQ(outcome.stored, expected.stored) << what;
}

test::Bytes sealedContent(const test::Bytes& content, std::size_t size) {
    HandWritten written;
    for (std::size_t i = 0; i < size; ++i) {
        written.byte(content[i]);
    }
    return written.sealed();
}

TEST(ValidityMarks, AndAllOfAPatternComeBackInOneStepAsTheyDoOneByOne) {
    for (const PlainPattern& plain : manyPatterns()) {
        expectSameOutcome(plain.sealed(), "whole");
        const PlainWay storedPlainly = test::loaded(plain.sealed(), PlainWay({}, {}));
        EXPECT_EQ(test::stored(storedPlainly), plain.sealed());
    }
}

TEST(ValidityMarks, AndAllOfAPatternThatIsCutShortOrDamagedAreRefusedAsTheyAreOneByOne) {
    const PlainPattern shortOne{{1.0, 2.0, 3.0}, {true, false, true}};
    const PlainPattern surplus{{1.0}, std::vector<bool>(9, true)};
    PlainPattern longOne{std::vector<double>(66, 4.0), std::vector<bool>(66, true)};
    longOne.marks[64] = false;
    for (const PlainPattern& plain : {shortOne, surplus, longOne}) {
        const test::Bytes content = test::payload(plain.sealed());
        for (std::size_t size = 0; size < content.size(); ++size) {
            expectSameOutcome(sealedContent(content, size), "cut to " + std::to_string(size));
        }
        for (std::size_t at = 0; at < content.size(); ++at) {
            for (const int change : {1, 2, 0x80, 0xff}) {
                test::Bytes damaged = content;
                damaged[at] = static_cast<unsigned char>(damaged[at] ^ change);
                expectSameOutcome(sealedContent(damaged, damaged.size()), "byte " + std::to_string(at));
            }
        }
    }
}

TEST(ValidityMarks, LeaveAPatternSmall) {
    EXPECT_EQ(sizeof(ValidityMarks), 8U);
    // What the base classes and a vector take, and not a byte for the marks.
    EXPECT_EQ(sizeof(vxFeaturePattern),
              sizeof(vxPersistent) + sizeof(vxRepBase) + sizeof(std::vector<double>));
}

} // namespace
