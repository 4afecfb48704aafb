#include "tests/hostile/golden_files.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace test {

namespace {

/// A tool's file begins with "tool", the rule table's with "rule"; the others are named after their class, as
/// the entries are.
const fuzz::Entry& entryOf(const std::string& name) {
    std::string wanted = name;
    if (name.compare(0, 4, "tool") == 0) {
        wanted = "Tool";
    } else if (name.compare(0, 4, "rule") == 0) {
        wanted = "RuleTable";
    }
    const auto lettersOf = [](std::string text) {
        text.erase(std::remove(text.begin(), text.end(), '_'), text.end());
        return text;
    };
    for (const fuzz::Entry& entry : fuzz::entries()) {
        if (lettersOf(entry.name) == lettersOf(wanted)) {
            return entry;
        }
    }
    throw std::logic_error("no entry loads the golden file " + name);
}

} // namespace

const std::vector<GoldenFile>& goldenFiles() {
    static const std::vector<GoldenFile> all = [] {
        std::vector<GoldenFile> found;
        for (const auto& place : std::filesystem::directory_iterator(GOLDEN_FILES)) {
            std::ifstream file(place.path(), std::ios::binary);
            std::string name = place.path().stem().string();
            const fuzz::Entry& entry = entryOf(name);
            std::replace(name.begin(), name.end(), '-', '_');
            found.push_back({name, Bytes(std::istreambuf_iterator<char>(file), {}), &entry});
        }
        std::sort(found.begin(), found.end(),
                  [](const GoldenFile& a, const GoldenFile& b) { return a.name < b.name; });
        return found;
    }();
    return all;
}

} // namespace test
