// Prints one line for each part of the library, which stands for the bits of all its results, and one for all
// of them.
//
//     digest [--without-avx2] [part]
//
// With a part, prints the numbers of that part instead, each with its bits. README.md in this folder says
// what it is for.

#include "tests/digest/digest.h"
#include "tests/digest/parts.h"
#include "tests/digest/processor.h"

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>

namespace {

struct Part {
    const char* name;
    void (*add)(digest::Digest& digest);
};

constexpr Part parts[] = {
    {"decision rule", &digest::addDecisionRule},
    {"normal densities", &digest::addNormalDensities},
    {"degenerate densities", &digest::addDegenerateDensities},
    {"binomial densities", &digest::addBinomialDensities},
    {"Bayes, joint", &digest::addBayesJoint},
    {"Bayes, independent", &digest::addBayesIndependent},
    {"Bayes, mixed", &digest::addBayesMixed},
    {"Bayes, binomial", &digest::addBayesBinomial},
    {"distances", &digest::addDistances},
    {"nearest neighbours", &digest::addNeighbors},
    {"neighbours, hostile", &digest::addHostileNeighbors},
    {"decision trees", &digest::addTrees},
    {"feature scores", &digest::addFeatureScores},
    {"rule tables", &digest::addRuleTables},
    {"random numbers", &digest::addRandomNumbers},
    {"generated data", &digest::addGenerators},
    {"archives", &digest::addArchives},
};

void printDigests() {
    digest::Digest total;
    for (const Part& part : parts) {
        digest::Digest own;
        part.add(own);
        std::printf("%-22s %6ld results  %016" PRIx64 "\n", part.name, own.values(), own.value());
        total.add(static_cast<long>(own.value()));
    }
    std::printf("%-22s                 %016" PRIx64 "\n", "all", total.value());
}

void printNumbers(const char* name) {
    for (const Part& part : parts) {
        if (std::strcmp(part.name, name) == 0) {
            digest::Digest own(stdout);
            part.add(own);
            return;
        }
    }
    throw std::invalid_argument(std::string("there is no part ") + name);
}

/// Lets the library take the processor for one without AVX2.
void hideAvx2() {
#if defined(__x86_64__) && defined(__GNUC__)
    __builtin_cpu_init();
    digest::hideAvx2();
    if (__builtin_cpu_supports("avx2")) {
        throw std::runtime_error("AVX2 cannot be hidden here");
    }
#endif
}

} // namespace

int main(int argumentCount, char** arguments) {
    try {
        int next = 1;
        if (next < argumentCount && std::strcmp(arguments[next], "--without-avx2") == 0) {
            ++next;
            hideAvx2();
        }
        if (next < argumentCount) {
            printNumbers(arguments[next]);
        } else {
            printDigests();
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "digest: %s\n", error.what());
        return 1;
    }
    return 0;
}
