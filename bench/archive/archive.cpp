#include "bench/archive/archive.h"

namespace bench::archive {

namespace {

void addWorkload(const std::vector<Contender>& contenders, const std::string& name, Make Contender::*make) {
    static LastMade<const Source> lastMade; // all workloads share it
    const std::size_t size = isQuick() ? 10'000 : 100'000;
    for (const Contender& contender : contenders) {
        add("archive/" + name, contender.role, contender.name, [=] {
            return (contender.*
                    make)(lastMade.get("source", [&] { return std::make_shared<const Source>(size, size); }));
        });
    }
}

} // namespace

} // namespace bench::archive

void bench::addAll() {
    using namespace archive;
    std::vector<Contender> contenders{ours()};
#ifdef BENCH_WITH_CEREAL
    contenders.push_back(cereal());
#endif
#ifdef BENCH_WITH_BOOST
    contenders.push_back(boost());
#endif
    contenders.push_back(byHand());
    const std::string count = isQuick() ? "1e4" : "1e5";
    addWorkload(contenders, "storing " + count + " x 16 patterns", &Contender::storingPatterns);
    addWorkload(contenders, "loading " + count + " x 16 patterns", &Contender::loadingPatterns);
    addWorkload(contenders, "storing a tree of " + count + " nodes", &Contender::storingTree);
    addWorkload(contenders, "loading a tree of " + count + " nodes", &Contender::loadingTree);
}
