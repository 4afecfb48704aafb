#include "bench/harness.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <set>
#include <utility>

namespace bench {

namespace {

bool quick = false;

const char* nameOf(Role role) {
    switch (role) {
    case Role::ours:
        return "ours";
    case Role::rival:
        return "rival";
    case Role::literal:
        return "literal";
    case Role::floor:
        return "floor";
    }
    return "";
}

/// The runner whose turn it is. Only one is there at any time: some of them hold a gigabyte.
Runner& runnerOf(const std::string& name, const MakeRunner& make) {
    static std::string current;
    static std::unique_ptr<Runner> runner;
    if (runner == nullptr || current != name) {
        runner.reset();
        runner = make();
        current = name;
    }
    return *runner;
}

void measure(benchmark::State& state, const std::string& name, const MakeRunner& make) {
    try {
        Runner& runner = runnerOf(name, make);
        std::size_t turn = 0;
        for (auto&& step : state) {
            static_cast<void>(step);
            runner.run(turn++);
        }
    } catch (const Disagreement& error) {
        state.SkipWithError(error.what());
    }
}

/// Takes --quick from the arguments.
int takeOwnArguments(int count, char** arguments) {
    int kept = 0;
    for (int i = 0; i < count; ++i) {
        if (std::strcmp(arguments[i], "--quick") == 0) {
            quick = true;
        } else {
            arguments[kept++] = arguments[i];
        }
    }
    return kept;
}

} // namespace

void add(const std::string& workload, Role role, const std::string& who, MakeRunner make) {
    const std::string name = workload + '/' + nameOf(role) + ':' + who;
    benchmark::RegisterBenchmark(name.c_str(), [name, made = std::move(make)](benchmark::State& state) {
        measure(state, name, made);
    });
}

void nameVersion(const std::string& library, const std::string& version) {
    static std::set<std::string> named;
    if (named.insert(library).second) {
        benchmark::AddCustomContext(library, version);
    }
}

bool isQuick() {
    return quick;
}

} // namespace bench

int main(int argc, char** argv) {
    argc = bench::takeOwnArguments(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    bench::addAll();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
