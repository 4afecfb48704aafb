#ifndef CLSS_CLASTOOL_KNN_COMPACT_SEARCH_H
#define CLSS_CLASTOOL_KNN_COMPACT_SEARCH_H

#include "clss/clastool/knn/cell_filter.h"
#include "clss/clastool/knn/compact_patterns.h"
#include "clss/clastool/knn/neighbor_list.h"
#include "clss/clastool/knn/norm_sums.h"

#include <vxclassifier/pattern_distance_metric.h>
#include <vxclassifier/platform/ptr_handle.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

class vxClassifierDataProviderMemory;
class vxFeaturePattern;

namespace detail {

/// One search for the nearest neighbours that leaves out what cannot be among them. Finds the same patterns
/// as offerStoredPatterns, by three sieves, each with proof that what it drops is farther than K others: the
/// cells of the compact patterns; the norm's sum in plain arithmetic; and, only where that leaves more than
/// K, the published distance. See docs/numerics.md.
///
/// Everything it refers to must outlive it and stay as it is. Its memory depends on K only.
class CompactSearch {
public:
    /// Whether a search of this kind is possible: `compact` (may be null) describes the store, the metric
    /// (may be null) is a cheap norm, and the query suits the patterns.
    static bool isPossible(const vxFeaturePattern& query, const vxClassifierDataProviderMemory& store,
                           const CompactPatterns* compact, const vxPatternDistanceMetric* metric) noexcept;

    /// `k` must be at least 1, and the search possible.
    CompactSearch(const vxFeaturePattern& query, const vxClassifierDataProviderMemory& store,
                  const CompactPatterns& compact, const vxPatternDistanceMetric& metric, long k,
                  const CellFilter& filter = bestCellFilter());

    /// Makes the interruption check once for each stored pattern, if it is one that the application can
    /// count; gives how often that was. To be called before a search is made: the check may do anything,
    /// after which a search may no longer be possible.
    static long makeCallersChecks(const vxClassifierDataProviderMemory& store);

    /// The indices of the nearest neighbours, in no particular order. Throws what the interruption check
    /// throws: a flag is looked at often enough, any other check is not made here.
    std::vector<long> neighbors();

private:
    struct Candidate {
        std::size_t index;
        double sum;
    };

    void checkFlag() const;
    void searchAll();
    double sumOf(std::size_t index) const;

    // First sieve.
    void guessLimit();
    void searchBlocks();
    void tabulate();
    void visitSelected(const std::uint64_t* selected, std::size_t firstBlock, std::size_t blocks);
    void visit(const std::size_t* indices, std::size_t count);

    // Second sieve.
    void keepSum(double sum);
    void consider(std::size_t index);
    void dropFar();

    // Third sieve.
    void settle();
    void measureWhileDense(std::size_t index);
    void offer(std::size_t index);
    void take(std::size_t index, double distance);
    std::vector<long> settled();

    const vxFeaturePattern& query_;
    const double* measurements_;
    const vxPtrHandle_const<vxFeaturePattern>* patterns_;
    const CompactPatterns& compact_;
    const vxPatternDistanceMetric& metric_;
    const CheapNorm norm_;
    const CellFilter& filter_;
    const std::size_t k_;
    const std::size_t count_; // of stored patterns
    bool looksAtFlag_ = false;

    // A pattern whose sum is greater is farther than K others.
    double limit_ = std::numeric_limits<double>::infinity();
    std::vector<double> smallest_;      // a heap of the K smallest sums so far
    std::vector<Candidate> candidates_; // by ascending index
    std::vector<std::uint8_t> tables_;
    double tabulatedLimit_ = std::numeric_limits<double>::infinity();

    std::optional<NeighborList> list_; // of the candidates that had to be measured
    // The last distance of the list once that is full; before, none, which compares with nothing.
    double farthest_ = std::numeric_limits<double>::quiet_NaN();
    std::size_t next_ = 0;    // patterns before this one were measured
    std::size_t stretch_ = 0; // how many were last measured without the sieves
    bool isFinished_ = false; // K patterns at distance 0: nothing else can matter
};

} // namespace detail

#endif
