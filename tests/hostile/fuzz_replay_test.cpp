// What the fuzzer runs, on inputs that it found worth keeping, on its seeds, and on the golden files.

#include "fuzz/entries.h"
#include "fuzz/round_trip.h"
#include "tests/hostile/golden_files.h"
#include "tests/support/archive_bytes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <ostream>
#include <random>
#include <stdexcept>
#include <string>

namespace fuzz {

static void PrintTo(const Entry& entry, std::ostream* out) {
    *out << entry.name;
}

} // namespace fuzz

namespace {

using fuzz::Entry;
using fuzz::Mode;
using test::Bytes;

/// The inputs that are kept for an entry: a line of hexadecimal digits each.
std::vector<Bytes> corpusOf(const Entry& entry) {
    std::vector<Bytes> inputs;
    std::ifstream file(FUZZ_CORPUS + entry.name + ".txt");
    for (std::string line; std::getline(file, line);) {
        Bytes input;
        for (std::size_t i = 0; i + 1 < line.size(); i += 2) {
            input.push_back(static_cast<unsigned char>(std::stoul(line.substr(i, 2), nullptr, 16)));
        }
        inputs.push_back(input);
    }
    return inputs;
}

/// What the fuzzer would do with the bytes in this mode.
void run(const Entry& entry, Mode mode, const Bytes& bytes) {
    Bytes input{static_cast<unsigned char>(mode)};
    input.insert(input.end(), bytes.begin(), bytes.end());
    fuzz::run(entry, input.data(), input.size());
}

class FuzzReplay : public testing::TestWithParam<Entry> {};

TEST_P(FuzzReplay, TheCorpusBringsUpNoFinding) {
    const std::vector<Bytes> corpus = corpusOf(GetParam());
    EXPECT_FALSE(corpus.empty());
    for (const Bytes& input : corpus) {
        fuzz::run(GetParam(), input.data(), input.size());
    }
}

TEST_P(FuzzReplay, TheSeedsAreAccepted) {
    const std::vector<Bytes> seeds = GetParam().seeds();
    EXPECT_FALSE(seeds.empty());
    for (const Bytes& seed : seeds) {
        EXPECT_TRUE(GetParam().check(seed));
        run(GetParam(), Mode::asTheyStand, seed);
        run(GetParam(), Mode::sealed, test::payload(seed));
    }
}

TEST_P(FuzzReplay, ArbitraryChoicesBuildArchivesThatAreMostlyAccepted) {
    std::mt19937 engine(20240607); // the same choices in every run
    long accepted = 0;
    for (int i = 0; i < 40; ++i) {
        Bytes choices(static_cast<std::size_t>(20 * i));
        for (unsigned char& choice : choices) {
            choice = static_cast<unsigned char>(engine());
        }
        fuzz::ArchiveBuilder builder(choices.data(), choices.size());
        GetParam().build(builder);
        accepted += GetParam().check(builder.sealed()) ? 1 : 0;
        run(GetParam(), Mode::built, choices);
    }
    EXPECT_GT(accepted, 20);
}

INSTANTIATE_TEST_SUITE_P(Of, FuzzReplay, testing::ValuesIn(fuzz::entries()),
                         [](const auto& instance) { return instance.param.name; });

TEST(FuzzReplay, TheGoldenFilesAreAccepted) {
    EXPECT_GE(test::goldenFiles().size(), 29U);
    for (const test::GoldenFile& file : test::goldenFiles()) {
        EXPECT_TRUE(file.entry->check(file.bytes)) << file.name;
    }
}

// The harness itself: it would be worth nothing if it accepted everything.

TEST(FuzzHarness, AnArchiveThatTheLibraryOpensAndOneThatItRefusesAreNoFindings) {
    Bytes bytes = test::Payload().u32(7).sealed();
    fuzz::checkFrame(bytes);
    bytes.back() = 1;
    fuzz::checkFrame(bytes);
    fuzz::checkFrame({});
}

TEST(FuzzHarness, AnErrorThatIsNotAllowedPassesThrough) {
    fuzz::Steps steps(0);
    EXPECT_FALSE(steps.step([] { throw vxBadPointer(); }));
    EXPECT_FALSE(steps.step([] { throw std::length_error("too long"); }));
    EXPECT_THROW(steps.step([] { throw std::out_of_range("an index"); }), std::out_of_range);
    EXPECT_THROW(steps.step([] { throw vxStatusFailure(vmath_status::badArgument); }), fuzz::Finding);
}

TEST(FuzzHarness, AStepThatTakesTooMuchMemoryFails) {
    fuzz::Steps steps(0);
    EXPECT_FALSE(steps.step([] { std::vector<char> large(std::size_t{65} << 20); }));
}

TEST(FuzzHarness, LoadingThatTakesTooMuchMemoryIsAFinding) {
    const Bytes sealed = test::Payload().sealed();
    EXPECT_TRUE(fuzz::accepts(sealed, [] { std::vector<char> fits(std::size_t{1} << 20); }));
    EXPECT_THROW(fuzz::accepts(sealed, [] { std::vector<char> large(std::size_t{2} << 20); }), fuzz::Finding);
}

TEST(FuzzHarness, ACopyThatIsNotEqualIsAFinding) {
    const auto equal = [](double a, double b) { return a == b; };
    const Bytes nothing;
    fuzz::requireCopy(equal, 1.0, 1.0, nothing);
    EXPECT_THROW(fuzz::requireCopy(equal, 1.0, 2.0, nothing), fuzz::Finding);
    const double nan = std::nan("");
    EXPECT_THROW(fuzz::requireCopy(equal, nan, nan, nothing), fuzz::Finding);
    fuzz::requireCopy(equal, nan, nan, test::Payload().real(nan).bytes());
}

} // namespace
