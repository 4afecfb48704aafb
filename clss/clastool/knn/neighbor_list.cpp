#include "clss/clastool/knn/neighbor_list.h"

#include <vxclassifier/classifier_defs.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace detail {

namespace {

/// A distance as it compares with others: a NaN compares with nothing, so infinity stands in for it.
double rank(double distance) noexcept {
    return std::isnan(distance) ? std::numeric_limits<double>::infinity() : distance;
}

} // namespace

long requireNeighborCount(long k) {
    if (k < 1) {
        throw vxClassifierDefs::BadParams(L"K must be >= 1");
    }
    return k;
}

NeighborList::NeighborList(long k, long candidates) : places_(static_cast<std::size_t>(k)) {
    const std::size_t expected = static_cast<std::size_t>(std::clamp(candidates, 0L, k));
    indices_.reserve(expected);
    distances_.reserve(expected);
}

void NeighborList::offer(long index, double distance) {
    if (isFull()) {
        if (!(rank(distance) < rank(distances_.back()))) {
            return;
        }
        indices_.pop_back();
        distances_.pop_back();
    }
    const auto place = static_cast<std::ptrdiff_t>(placeFor(distance));
    indices_.insert(indices_.begin() + place, index);
    distances_.insert(distances_.begin() + place, distance);
}

/// The first place whose distance is not less; for a NaN the end.
std::size_t NeighborList::placeFor(double distance) const noexcept {
    if (std::isnan(distance)) {
        return distances_.size();
    }
    const auto place = std::lower_bound(distances_.begin(), distances_.end(), distance,
                                        [](double held, double offered) { return rank(held) < offered; });
    return static_cast<std::size_t>(place - distances_.begin());
}

} // namespace detail
