#include "clss/clastool/knn/compact_search.h"

#include "clss/clastool/foundation/stored_rows.h"
#include "platform/system/attention_check.h"

#include <vxclassifier/classifier_data_provider_memory.h>
#include <vxclassifier/feature_pattern.h>
#include <vxclassifier/platform/attention.h>
#include <vxclassifier/platform/status.h>

#include <algorithm>
#include <array>
#include <numeric>

namespace detail {

namespace {

constexpr std::size_t blockSize = CompactPatterns::blockSize;
constexpr std::size_t batchSize = 64; // patterns that are fetched from memory together

// The first limit comes from the patterns that look nearest among the first ones.
constexpr std::size_t guessBlocks = 16;
constexpr std::size_t guessNeighbors = 32; // for more of them the limit is left to the search itself
constexpr std::size_t guessWidth = 64;     // measurements that the first look takes in
constexpr std::size_t guessSample = 4;

// The work between two looks at a cancel flag: some microseconds, and well below 100 on any machine.
constexpr std::size_t rowsPerLook = 512;
constexpr std::size_t measurementsPerLook = 8192;

constexpr std::size_t longestStretch = 8192;

// The limit falls while the search goes on; the tables follow when it has fallen by this factor.
constexpr double worthTabulating = 0.9;

void fetch(const void* address) noexcept {
    __builtin_prefetch(address);
}

std::size_t firstBit(std::uint64_t bits) noexcept {
    return static_cast<std::size_t>(__builtin_ctzll(bits));
}

void check() {
    vfThrowExceptionOnFailure(vsys_attention_check());
}

} // namespace

bool CompactSearch::isPossible(const vxFeaturePattern& query, const vxClassifierDataProviderMemory& store,
                               const CompactPatterns* compact,
                               const vxPatternDistanceMetric* metric) noexcept {
    return compact != nullptr && compact->describes(store) && cheapNorm(metric) != CheapNorm::none &&
           query.numInvalid() == 0 && compact->suits(query.featureMeasurements(false));
}

CompactSearch::CompactSearch(const vxFeaturePattern& query, const vxClassifierDataProviderMemory& store,
                             const CompactPatterns& compact, const vxPatternDistanceMetric& metric, long k,
                             const CellFilter& filter)
    : query_(query), measurements_(query.featureMeasurements(false).data()),
      patterns_(StoredRows::patterns(store).data()), compact_(compact), metric_(metric),
      norm_(cheapNorm(&metric)), filter_(filter), k_(static_cast<std::size_t>(k)),
      count_(compact.numPatterns()) {}

std::vector<long> CompactSearch::neighbors() {
    looksAtFlag_ = kindOfInstalledCheck() == InstalledCheck::cancelFlag;
    checkFlag();
    if (count_ <= k_) {
        std::vector<long> all(count_);
        std::iota(all.begin(), all.end(), 0L);
        return all;
    }
    smallest_.reserve(k_);
    candidates_.reserve(2 * k_ + batchSize);
    if (compact_.hasCodes()) {
        guessLimit();
        searchBlocks();
    } else {
        searchAll();
    }
    return settled();
}

long CompactSearch::makeCallersChecks(const vxClassifierDataProviderMemory& store) {
    long made = 0;
    if (kindOfInstalledCheck() == InstalledCheck::callers) {
        for (; made < store.numPatterns(); ++made) {
            check();
        }
    }
    return made;
}

void CompactSearch::checkFlag() const {
    if (looksAtFlag_) {
        check();
    }
}

double CompactSearch::sumOf(std::size_t index) const {
    return filter_.sum(norm_, measurements_, patterns_[index]->featureMeasurements(false).data(),
                       compact_.width());
}

/// Finds K patterns that are probably near and takes the limit from them.
void CompactSearch::guessLimit() {
    static_assert(guessNeighbors <= CompactPatterns::fewPatterns / blockSize * blockSize,
                  "whatever has codes has so many patterns in whole blocks");
    tables_.resize(compact_.width() * CellFilter::tableSize);
    const std::size_t blocks = std::min(guessBlocks, count_ / blockSize);
    if (k_ > guessNeighbors) {
        return;
    }
    double least = sumOf(0);
    for (std::size_t i = 1; i < guessSample; ++i) {
        least = std::min(least, sumOf(i * count_ / guessSample));
    }
    const std::size_t width = std::min(compact_.width(), guessWidth);
    const double part = static_cast<double>(width) / static_cast<double>(compact_.width());
    filter_.tabulate(norm_, measurements_, compact_.cells(), width, 255.0 / sumLimit(least * part, width),
                     tables_.data());
    std::array<std::uint8_t, guessBlocks * blockSize> scores;
    std::array<std::uint8_t, blockSize> best; // of the patterns that stand at each place of a block
    filter_.score(compact_.codes(0), compact_.width(), width, tables_.data(), blocks, scores.data(),
                  best.data());
    std::nth_element(best.begin(), best.begin() + static_cast<std::ptrdiff_t>(k_ - 1), best.end());
    std::array<std::uint64_t, guessBlocks> selected;
    filter_.atMost(scores.data(), best[k_ - 1], blocks, selected.data());
    std::size_t taken = 0;
    for (std::size_t b = 0; b < blocks; ++b) {
        for (std::uint64_t bits = selected[b]; bits != 0 && taken < 2 * k_; bits &= bits - 1, ++taken) {
            keepSum(sumOf(b * blockSize + firstBit(bits)));
        }
    }
    smallest_.clear();
}

void CompactSearch::searchBlocks() {
    const std::size_t blocksPerLook = std::clamp<std::size_t>(rowsPerLook / compact_.width(), 1, 64);
    const std::size_t blocks = compact_.numBlocks();
    std::array<std::uint64_t, 64> selected;
    for (std::size_t first = 0; first < blocks && !isFinished_;) {
        checkFlag();
        std::size_t some = std::min(blocksPerLook, blocks - first);
        if (limit_ == std::numeric_limits<double>::infinity()) {
            some = 1;
            selected[0] = ~std::uint64_t{0};
        } else {
            tabulate();
            filter_.select(compact_.codes(first), compact_.width(), tables_.data(),
                           CellFilter::unitsFor(compact_.width()), some, selected.data());
        }
        visitSelected(selected.data(), first, some);
        first = std::max(first + some, next_ / blockSize);
    }
}

/// Makes the tables fit the limit: a pattern for which they say as many units as there are is beyond it.
void CompactSearch::tabulate() {
    if (!(limit_ < worthTabulating * tabulatedLimit_)) {
        return;
    }
    // Slightly fewer units than the limit has, for what the products and sums lose by rounding.
    constexpr double slack = 1.0 + 0x1p-30;
    const double units = CellFilter::unitsFor(compact_.width());
    filter_.tabulate(norm_, measurements_, compact_.cells(), compact_.width(), units / (limit_ * slack),
                     tables_.data());
    tabulatedLimit_ = limit_;
}

void CompactSearch::visitSelected(const std::uint64_t* selected, std::size_t firstBlock, std::size_t blocks) {
    std::array<std::size_t, batchSize> batch;
    std::size_t inBatch = 0;
    for (std::size_t b = 0; b < blocks; ++b) {
        const std::size_t start = (firstBlock + b) * blockSize;
        if (start + blockSize <= next_) {
            continue; // measured meanwhile
        }
        for (std::uint64_t bits = selected[b]; bits != 0; bits &= bits - 1) {
            const std::size_t index = start + firstBit(bits);
            if (index >= count_) {
                break;
            }
            fetch(patterns_[index].get());
            batch[inBatch++] = index;
            if (inBatch == batchSize) {
                visit(batch.data(), inBatch);
                inBatch = 0;
            }
        }
    }
    visit(batch.data(), inBatch);
}

void CompactSearch::visit(const std::size_t* indices, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        fetch(patterns_[indices[i]]->featureMeasurements(false).data());
    }
    const std::size_t perLook = std::max<std::size_t>(measurementsPerLook / compact_.width(), 1);
    for (std::size_t i = 0; i < count && !isFinished_; ++i) {
        if (i % perLook == 0) {
            checkFlag();
        }
        consider(indices[i]);
    }
}

void CompactSearch::searchAll() {
    std::array<std::size_t, batchSize> batch;
    for (std::size_t first = 0; first < count_ && !isFinished_; first += batchSize) {
        const std::size_t some = std::min(batchSize, count_ - first);
        std::iota(batch.begin(), batch.begin() + static_cast<std::ptrdiff_t>(some), first);
        visit(batch.data(), some);
    }
}

/// Takes the sum of one more pattern into the limit.
void CompactSearch::keepSum(double sum) {
    if (smallest_.size() == k_) {
        if (!(sum < smallest_.front())) {
            return;
        }
        std::pop_heap(smallest_.begin(), smallest_.end());
        smallest_.back() = sum;
    } else {
        smallest_.push_back(sum);
    }
    std::push_heap(smallest_.begin(), smallest_.end());
    if (smallest_.size() == k_) {
        limit_ = std::min(limit_, sumLimit(smallest_.front(), compact_.width()));
    }
}

void CompactSearch::consider(std::size_t index) {
    if (index < next_) {
        return;
    }
    const double sum = sumOf(index);
    if (sum > limit_) {
        return;
    }
    if (candidates_.size() == candidates_.capacity()) {
        dropFar();
        if (2 * candidates_.size() > candidates_.capacity() + 2 * k_) {
            settle();
            measureWhileDense(index);
        }
        if (isFinished_ || index < next_) {
            return;
        }
    }
    candidates_.push_back({index, sum});
    keepSum(sum);
}

void CompactSearch::dropFar() {
    candidates_.erase(std::remove_if(candidates_.begin(), candidates_.end(),
                                     [&](const Candidate& candidate) { return candidate.sum > limit_; }),
                      candidates_.end());
}

inline void CompactSearch::offer(std::size_t index) {
    checkFlag();
    const double distance = metric_.distance(query_, *patterns_[index]);
    if (!(distance >= farthest_)) {
        take(index, distance);
    }
}

/// Offers the candidates, whose indices are all greater than those offered before, at their published
/// distances.
void CompactSearch::settle() {
    if (!list_) {
        list_.emplace(static_cast<long>(k_), static_cast<long>(count_));
    }
    for (const Candidate& candidate : candidates_) {
        offer(candidate.index);
    }
    candidates_.clear();
}

/// Where the sieves let most patterns through, as among patterns that are all equally far, they are only a
/// burden: measures the patterns from `index` on without them, for longer each time that it comes here, but
/// never more of them than went through before.
void CompactSearch::measureWhileDense(std::size_t index) {
    const bool isDense = 2 * candidates_.capacity() > index - next_;
    stretch_ = isDense ? std::min(2 * stretch_ + batchSize, longestStretch) : 0;
    const std::size_t end = std::min(index + stretch_, count_);
    for (std::size_t i = index; i < end && !isFinished_; ++i) {
        offer(i);
    }
    next_ = end;
}

void CompactSearch::take(std::size_t index, double distance) {
    list_->offer(static_cast<long>(index), distance);
    const std::vector<double>& distances = list_->distances();
    if (distances.size() == k_) {
        farthest_ = distances.back();
        // No distance is less than 0, so nothing gets into a list of zeros.
        isFinished_ = !(farthest_ > 0.0);
    }
}

std::vector<long> CompactSearch::settled() {
    dropFar();
    if (!list_ && candidates_.size() == k_) {
        std::vector<long> found(k_);
        std::transform(candidates_.begin(), candidates_.end(), found.begin(),
                       [](const Candidate& candidate) { return static_cast<long>(candidate.index); });
        return found;
    }
    settle();
    return std::move(list_->indices());
}

} // namespace detail
