#ifndef FUZZ_ENTRIES_H
#define FUZZ_ENTRIES_H

#include "fuzz/archive_builder.h"
#include "tests/support/archives.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace fuzz {

/// Something that programs load from archives.
struct Entry {
    std::string name;
    /// Loads it from the bytes; if they are accepted, uses it in every way, and expects that it is stored,
    /// comes back equal and is stored again as the same bytes. Returns whether the bytes were accepted.
    std::function<bool(const test::Bytes& sealed)> check;
    std::function<void(ArchiveBuilder& builder)> build;
    /// Archives that hold it, to begin with.
    std::function<std::vector<test::Bytes>()> seeds;
};

const std::vector<Entry>& entries();

/// The parts of the table, each in a file of its own.
void addObjectEntries(std::vector<Entry>& all);
void addValueEntries(std::vector<Entry>& all);
void addMixedEntry(std::vector<Entry>& all);

/// How the bytes behind the first one are understood; the first one, modulo 3, says it.
enum class Mode : unsigned char {
    asTheyStand, // a whole archive, whose seal a mutation breaks
    sealed,      // the content of an archive, which is sealed before it is opened
    built        // decisions of an ArchiveBuilder
};

/// What the runs of this program came to.
struct Tally {
    long runs = 0;
    long accepted = 0;
};
extern Tally tallies[3]; // by mode

/// One run.
void run(const Entry& entry, const unsigned char* data, std::size_t size);

/// Expects that the bytes can be opened exactly if their frame is right.
void checkFrame(const test::Bytes& bytes);

} // namespace fuzz

#endif
