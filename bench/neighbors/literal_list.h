#ifndef BENCH_NEIGHBORS_LITERAL_LIST_H
#define BENCH_NEIGHBORS_LITERAL_LIST_H

#include "bench/neighbors/neighbors.h"

#include <array>
#include <cstddef>
#include <limits>

namespace bench::neighbors {

/// The nearest rows offered so far. Of equal distances the later one stands first, but once the list is full
/// only what is nearer than its last entry comes in.
class LiteralList {
public:
    LiteralList() { distances_.fill(std::numeric_limits<double>::infinity()); }

    void offer(std::size_t row, double distance) noexcept {
        if (count_ == numNeighbors) {
            if (!(distance < distances_.back())) {
                return;
            }
        } else {
            ++count_;
        }
        std::size_t place = count_ - 1;
        for (; place > 0 && !(distances_[place - 1] < distance); --place) {
            distances_[place] = distances_[place - 1];
            rows_[place] = rows_[place - 1];
        }
        distances_[place] = distance;
        rows_[place] = row;
    }

    const Found& rows() const noexcept { return rows_; }
    const std::array<double, numNeighbors>& distances() const noexcept { return distances_; }

private:
    std::size_t count_ = 0;
    Found rows_{};
    std::array<double, numNeighbors> distances_{}; // ascending
};

} // namespace bench::neighbors

#endif
