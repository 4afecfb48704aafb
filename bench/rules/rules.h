#ifndef BENCH_RULES_RULES_H
#define BENCH_RULES_RULES_H

#include "bench/data.h"
#include "bench/harness.h"

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Rules of one trapezoid for each feature, tried in their order until one fits.
namespace bench::rules {

constexpr std::size_t numRules = 20;
constexpr std::size_t numFeatures = 8;
constexpr double threshold = 0.5; // of the geometric mean of a rule's scores

/// 0 up to the first corner and from the last one on, 1 between the middle ones.
using Corners = std::array<double, 4>;

struct Workload {
    Workload();

    const double* query(std::size_t turn) const noexcept { return queries.row(turn % queries.count); }

    std::array<std::array<Corners, numFeatures>, numRules> rules;
    Rows queries;
    std::vector<long> expected; // the rule that each query fits, or -1
};

class Decider : public Runner {
public:
    /// The place of the first rule that the query fits, or -1.
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
Contender fuzzylite();

/// The answer by hand, which all others are compared with.
long firstFitting(const Workload& workload, const double* query) noexcept;

} // namespace bench::rules

#endif
