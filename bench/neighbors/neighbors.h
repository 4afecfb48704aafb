#ifndef BENCH_NEIGHBORS_NEIGHBORS_H
#define BENCH_NEIGHBORS_NEIGHBORS_H

#include "bench/data.h"
#include "bench/harness.h"

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// The search for the five nearest of the stored rows by the Euclidean distance, one query at a time.
namespace bench::neighbors {

constexpr std::size_t numNeighbors = 5;
using Found = std::array<std::size_t, numNeighbors>; // row numbers, in any order

/// How exactly a contender computes, and so how far its neighbours may lie from the right ones.
enum class Precision {
    published, ///< the very same rows
    doubles,   ///< rows as near as the right ones, but for the rounding of doubles
    floats     ///< the same for single precision
};

struct Workload {
    Workload(std::string workloadName, Rows storedRows, Rows queryRows);

    const double* query(std::size_t turn) const noexcept { return queries.row(turn % queries.count); }

    std::string name;
    Rows stored;
    Rows queries;
    std::vector<Found> expected; // for the first queries
};

/// What can search in a workload.
class Searcher : public Runner {
public:
    /// The neighbours of one of the workload's queries.
    virtual Found find(std::size_t query) = 0;
};

struct Contender {
    Role role;
    std::string name;
    std::function<std::unique_ptr<Runner>(std::shared_ptr<const Workload>)> make;
};

/// Throws Disagreement if the searcher's answers to the first queries are not the right ones.
void requireAgreement(const Workload& workload, Searcher& searcher, Precision precision);

/// A contender whose answers are compared before it is measured.
template <class Made>
Contender searcher(Role role, const std::string& name, Precision precision) {
    return {role, name, [precision](const std::shared_ptr<const Workload>& workload) {
                auto made = std::make_unique<Made>(workload);
                requireAgreement(*workload, *made, precision);
                return made;
            }};
}

// Each of these files adds its contenders to the list.
void addOurs(std::vector<Contender>& contenders);
void addLiteral(std::vector<Contender>& contenders);
void addFloors(std::vector<Contender>& contenders);
void addOpenCV(std::vector<Contender>& contenders);
void addNanoflann(std::vector<Contender>& contenders);
void addFaiss(std::vector<Contender>& contenders);

} // namespace bench::neighbors

#endif
