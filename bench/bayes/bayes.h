#ifndef BENCH_BAYES_BAYES_H
#define BENCH_BAYES_BAYES_H

#include "bench/data.h"
#include "bench/harness.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Normally distributed categories: training, and the decision on one pattern at a time.
namespace bench::bayes {

struct Workload {
    Workload(std::size_t numCategories, std::size_t size, bool isJoint, std::size_t numRows);

    const double* query(std::size_t turn) const noexcept { return queries.row(turn % queries.count); }

    std::size_t categories;
    bool joint; // otherwise independent measurements
    Rows rows;  // row i belongs to category i modulo their number
    Rows queries;
    std::vector<long> expected; // the decision on each query
};

/// What can decide on a pattern of a workload.
class Decider : public Runner {
public:
    virtual long decide(std::size_t query) = 0;
};

using SharedWorkload = std::shared_ptr<const Workload>;
using MakeDecider = std::function<std::unique_ptr<Decider>(const SharedWorkload&)>;
using MakeTrainer = std::function<std::unique_ptr<Runner>(const SharedWorkload&)>;

/// Someone who can be compared, with what he cannot do left null.
struct Contender {
    Role role;
    std::string name;
    MakeDecider joint;
    MakeDecider independent;
    MakeTrainer training;
};

// Each of these files has one contender.
Contender ours();
Contender byHand();
Contender openCV();

} // namespace bench::bayes

#endif
