#include "bench/trees/trees.h"

namespace bench::trees {

namespace {

// Enough that the processor cannot learn their ways by heart.
constexpr std::size_t numQueries = 4096;

void requireAgreement(const Workload& workload, Decider& decider) {
    for (std::size_t i = 0; i < workload.queries.count; ++i) {
        if (decider.decide(i) != workload.expected[i]) {
            throw Disagreement("another decision on query " + std::to_string(i));
        }
    }
}

void addDepth(const std::vector<Contender>& contenders, std::size_t numRows, std::size_t depth) {
    static LastMade<const Workload> lastMade;
    const std::string name = "trees/depth " + std::to_string(depth);
    for (const Contender& contender : contenders) {
        add(name, contender.role, contender.name, [=] {
            const SharedWorkload workload =
                lastMade.get(name, [&] { return std::make_shared<const Workload>(numRows, depth); });
            std::unique_ptr<Decider> decider = contender.make(workload);
            requireAgreement(*workload, *decider);
            return decider;
        });
    }
}

} // namespace

Workload::Workload(std::size_t numRows, std::size_t depth)
    : tree(numRows, depth), queries(GrownTree::queries(numQueries)) {
    for (std::size_t i = 0; i < queries.count; ++i) {
        expected.push_back(tree.decide(queries.row(i)));
    }
}

} // namespace bench::trees

void bench::addAll() {
    using namespace trees;
    std::vector<Contender> contenders{ours()};
#ifdef BENCH_WITH_OPENCV
    contenders.push_back(openCV());
#endif
    contenders.push_back(byHand());
    constexpr std::size_t depths[] = {6, 12, 20};
    for (const std::size_t depth : depths) {
        addDepth(contenders, isQuick() ? 5'000 : 50'000, depth);
    }
}
