#include "bench/memory/allocations.h"
#include "bench/tool_runner.h"

#include <vxclassifier/classifier_train_params_knn.h>

#include <cstdio>
#include <memory>
#include <string>

// What stored patterns, and what a run with them, take of memory. Prints one JSON object for each figure.

namespace {

using namespace bench;

void print(const std::string& what, double bytes, double limit) {
    static bool isFirst = true;
    std::printf("%s  {\"name\": \"%s\", \"bytes\": %.1f, \"limit\": %.1f}", isFirst ? "" : ",\n",
                what.c_str(), bytes, limit);
    isFirst = false;
}

/// What one pattern takes in a trained tool: all in, with the store's handle and label, and what is kept
/// beside it.
void printPattern(std::size_t d) {
    constexpr std::size_t n = 50'000;
    const std::size_t before = memory::allocatedBytes();
    vxClassifierTool tool;
    std::size_t training = 0;
    {
        const vxClassifierDataProviderMemory provider = ourProvider(ourPatterns(bellRows(n, d, 21)), 10);
        const std::size_t beforeTraining = memory::allocatedBytes();
        tool.train(provider, vxClassifierTrainParamsKNN(5));
        training = memory::allocatedBytes() - beforeTraining;
    }
    const double count = static_cast<double>(n);
    const double measurements = static_cast<double>(d * sizeof(double));
    const double all = static_cast<double>(memory::allocatedBytes() - before) / count;
    const double store = sizeof(void*) + sizeof(long);
    const double beside = static_cast<double>(training) / count - store;
    const std::string suffix = " pattern of " + std::to_string(d) + " measurements";
    print("a stored" + suffix + ", all in", all - beside, measurements + 96.0);
    print("beside a stored" + suffix + ", for speed", beside, 0.3 * measurements);
}

/// The most that a run holds at a time, beyond what was there before.
std::size_t memoryOfRun(std::size_t n) {
    const Rows queries = bellRows(1, 16, 22);
    ToolRunner runner(ourProvider(ourPatterns(bellRows(n, 16, 21)), 10), vxClassifierTrainParamsKNN(5),
                      queries);
    runner.run(0); // makes the result's room
    const std::size_t before = memory::allocatedBytes();
    memory::peakSinceLastAsked();
    runner.run(0);
    return memory::peakSinceLastAsked() - before;
}

void printRuns() {
    const double smallest = static_cast<double>(memoryOfRun(1'000));
    print("a run with 1000 stored patterns", smallest, smallest);
    for (const std::size_t n : {10'000UL, 100'000UL}) {
        print("a run with " + std::to_string(n) + " stored patterns", static_cast<double>(memoryOfRun(n)),
              smallest);
    }
}

} // namespace

int main() {
    std::printf("[\n");
    printRuns();
    printPattern(4);
    printPattern(16);
    printPattern(64);
    std::printf("\n]\n");
}
