#ifndef BENCH_TREES_TREES_H
#define BENCH_TREES_TREES_H

#include "bench/grown_tree.h"
#include "bench/harness.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// The way of one pattern at a time through a decision tree.
namespace bench::trees {

struct Workload {
    explicit Workload(std::size_t numRows, std::size_t depth);

    const double* query(std::size_t turn) const noexcept { return queries.row(turn % queries.count); }

    GrownTree tree;
    Rows queries;
    std::vector<long> expected; // the decision on each query
};

class Decider : public Runner {
public:
    virtual long decide(std::size_t query) = 0;
};

using SharedWorkload = std::shared_ptr<const Workload>;

struct Contender {
    Role role;
    std::string name;
    std::function<std::unique_ptr<Decider>(const SharedWorkload&)> make;
};

// Each of these files has one contender.
Contender ours();
Contender byHand();
Contender openCV();

} // namespace bench::trees

#endif
