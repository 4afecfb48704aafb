#ifndef TESTS_SUPPORT_SLOW_NEIGHBORS_H
#define TESTS_SUPPORT_SLOW_NEIGHBORS_H

#include <cmath>
#include <cstddef>
#include <vector>

namespace test {

/// The p-norm distance, one measurement after the other. The order is volatile so that no compiler knows it:
/// a known one could be computed by something other than `pow`, which rounds differently.
inline double slowNorm(const std::vector<double>& a, const std::vector<double>& b, double order) {
    const volatile double p = order;
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sum = sum + std::pow(std::fabs(a[i] - b[i]), p);
    }
    return std::pow(sum, 1.0 / p);
}

struct SlowNeighbors {
    std::vector<long> indices;
    std::vector<double> distances;
};

/// The nearest neighbours among patterns that lie at the given distances: a sorted list of k places, all of
/// them there from the start and infinitely far away, in which each pattern in turn takes the first place
/// that is not nearer than itself and pushes the later ones back. A full list takes only what is strictly
/// nearer than its last place. A NaN counts as infinite but takes the first free place.
inline SlowNeighbors slowNeighbors(const std::vector<double>& distances, long k) {
    struct Place {
        long index = 0;
        double distance = HUGE_VAL;
        double compared = HUGE_VAL;
    };
    const std::size_t places = static_cast<std::size_t>(k);
    std::vector<Place> list(places);
    std::size_t filled = 0;
    for (std::size_t i = 0; i < distances.size(); ++i) {
        const bool isNumber = distances[i] == distances[i];
        Place fresh;
        fresh.index = static_cast<long>(i);
        fresh.distance = distances[i];
        fresh.compared = isNumber ? distances[i] : HUGE_VAL;
        if (filled == places && !(fresh.compared < list[places - 1].compared)) {
            continue;
        }
        std::size_t j = isNumber ? 0 : filled;
        while (!(fresh.compared <= list[j].compared)) {
            ++j;
        }
        if (filled < places) {
            ++filled;
        }
        for (std::size_t to = filled - 1; to > j; --to) {
            list[to] = list[to - 1];
        }
        list[j] = fresh;
    }
    SlowNeighbors found;
    for (std::size_t i = 0; i < filled; ++i) {
        found.indices.push_back(list[i].index);
        found.distances.push_back(list[i].distance);
    }
    return found;
}

} // namespace test

#endif
