// The fuzz target of every loading entry: which one, says the argument --entry=NAME. --list prints the names
// and ends, --seeds=FOLDER writes the entry's seeds there and ends. Everything else is libFuzzer's own.

#include "fuzz/entries.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>

namespace {

const fuzz::Entry* chosen = nullptr;

/// The value of an argument, or "".
std::string argument(int count, char** values, const std::string& name) {
    for (int i = 1; i < count; ++i) {
        const std::string value = values[i];
        if (value.compare(0, name.size(), name) == 0) {
            return value.substr(name.size());
        }
    }
    return "";
}

void choose(const std::string& name) {
    const auto found = std::find_if(fuzz::entries().begin(), fuzz::entries().end(),
                                    [&](const fuzz::Entry& entry) { return entry.name == name; });
    if (found == fuzz::entries().end()) {
        std::cerr << "fuzz_loading: no entry '" << name << "'; --list prints them\n";
        std::exit(2);
    }
    chosen = &*found;
}

void writeSeeds(const std::string& folder) {
    const std::vector<test::Bytes> seeds = chosen->seeds();
    for (std::size_t i = 0; i < seeds.size(); ++i) {
        for (const int mode : {0, 1}) {
            std::ofstream file(folder + "/seed-" + std::to_string(i) + (mode == 0 ? "-whole" : "-content"),
                               std::ios::binary);
            const test::Bytes bytes = mode == 0 ? seeds[i] : test::payload(seeds[i]);
            file.put(static_cast<char>(mode));
            file.write(reinterpret_cast<const char*>(bytes.data()),
                       static_cast<std::streamsize>(bytes.size()));
        }
    }
}

void printTallies() {
    static const char* const names[] = {"as they stand", "sealed", "built"};
    for (std::size_t mode = 0; mode < 3; ++mode) {
        std::fprintf(stderr, "tally: %s: %ld runs, %ld accepted\n", names[mode], fuzz::tallies[mode].runs,
                     fuzz::tallies[mode].accepted);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* count, char*** values) {
    const std::string seeds = argument(*count, *values, "--seeds=");
    if (*count == 2 && std::string((*values)[1]) == "--list") {
        for (const fuzz::Entry& entry : fuzz::entries()) {
            std::cout << entry.name << '\n';
        }
        std::exit(0);
    }
    choose(argument(*count, *values, "--entry="));
    if (!seeds.empty()) {
        writeSeeds(seeds);
        std::exit(0);
    }
    std::atexit(&printTallies);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::run(*chosen, data, size);
    return 0;
}
