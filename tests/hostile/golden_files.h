#ifndef TESTS_HOSTILE_GOLDEN_FILES_H
#define TESTS_HOSTILE_GOLDEN_FILES_H

#include "fuzz/entries.h"
#include "tests/support/archives.h"

#include <string>
#include <vector>

namespace test {

struct GoldenFile {
    std::string name; // fit to be a part of a test's name
    Bytes bytes;
    const fuzz::Entry* entry; // what loads it
};

/// All of them, by name.
const std::vector<GoldenFile>& goldenFiles();

} // namespace test

#endif
