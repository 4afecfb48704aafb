#ifndef CLSS_CLASTOOL_KNN_NEIGHBOR_LIST_H
#define CLSS_CLASTOOL_KNN_NEIGHBOR_LIST_H

#include <cstddef>
#include <vector>

namespace detail {

/// Returns `k`. Throws vxClassifierDefs::BadParams if it is below 1.
long requireNeighborCount(long k);

/// The nearest of the patterns offered so far, at most K, by ascending distance.
///
/// Of equal distances the one offered later stands before the earlier ones, but a full list takes only what
/// is nearer than its last entry. A NaN stands behind everything else, NaNs in the order in which they were
/// offered; otherwise it counts as infinite: a full list does not take it, and anything finite drives it out.
class NeighborList {
public:
    /// `k` must be at least 1. Memory is taken for K entries, or for `candidates` entries if these are fewer.
    NeighborList(long k, long candidates);

    void offer(long index, double distance);

    /// The entries, in step.
    std::vector<long>& indices() noexcept { return indices_; }
    std::vector<double>& distances() noexcept { return distances_; }

private:
    bool isFull() const noexcept { return indices_.size() == places_; }
    std::size_t placeFor(double distance) const noexcept;

    std::size_t places_;
    std::vector<long> indices_;
    std::vector<double> distances_; // ascending, NaNs last
};

} // namespace detail

#endif
