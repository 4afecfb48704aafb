#include "clss/clastool/knn/compact_patterns.h"

#include "clss/clastool/foundation/observed_patterns.h"
#include "clss/clastool/foundation/stored_rows.h"
#include "clss/clastool/knn/cell_coder.h"
#include "clss/clastool/knn/cell_sample.h"

#include <vxclassifier/feature_pattern.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <functional>
#include <limits>
#include <typeinfo>

namespace detail {

namespace {

using Patterns = std::vector<vxPtrHandle_const<vxFeaturePattern>>;

constexpr std::size_t blockSize = CompactPatterns::blockSize;
constexpr std::size_t tileWidth = 16; // measurements that are gathered together: they fit a fast cache
constexpr double infinity = std::numeric_limits<double>::infinity();

bool areOrdinary(const std::vector<double>& measurements) noexcept {
    bool ordinary = true;
    for (const double value : measurements) {
        ordinary &= std::fabs(value) <= CompactPatterns::largest; // false for NaN
    }
    return ordinary;
}

/// Whether a search need not expect anything odd of the pattern.
bool isOrdinary(const vxFeaturePattern* pattern, std::size_t width) noexcept {
    return pattern != nullptr && pattern->numInvalid() == 0 &&
           pattern->featureMeasurements(false).size() == width;
}

std::size_t numDifferent(const Patterns& patterns, std::size_t count) {
    std::vector<const vxFeaturePattern*> sorted(count);
    std::transform(patterns.begin(), patterns.begin() + static_cast<std::ptrdiff_t>(count), sorted.begin(),
                   [](const auto& pattern) { return pattern.get(); });
    std::sort(sorted.begin(), sorted.end(), std::less<>());
    return static_cast<std::size_t>(std::unique(sorted.begin(), sorted.end()) - sorted.begin());
}

/// At most as many as there are different patterns, and hardly less: the bits that their addresses set among
/// 8 to 16 times as many.
std::size_t leastDifferent(const Patterns& patterns, std::size_t count) {
    std::size_t shift = 64 - 9;
    while ((std::size_t{1} << (64 - shift)) < 8 * count) {
        --shift;
    }
    std::vector<std::uint64_t> bits((std::size_t{1} << (64 - shift)) / 64);
    std::size_t set = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const auto address = reinterpret_cast<std::uintptr_t>(patterns[i].get());
        const std::uint64_t hash = std::uint64_t{address} * 0x9e3779b97f4a7c15U >> shift;
        std::uint64_t& word = bits[hash / 64];
        const std::uint64_t bit = std::uint64_t{1} << hash % 64;
        set += (word & bit) == 0 ? 1 : 0;
        word |= bit;
    }
    return set;
}

/// Whether at most half of the rows repeat a pattern of another row. Each row has codes of its own, so those
/// of a wide pattern that an archive names a million times would take far more memory than the archive.
bool areMostlyDifferent(const Patterns& patterns, std::size_t count) {
    return 2 * leastDifferent(patterns, count) >= count || 2 * numDifferent(patterns, count) >= count;
}

/// Lowers the ends of the cells to hold the values.
void widen(const double* values, const std::uint8_t* cells, double* lows) noexcept {
    for (std::size_t i = 0; i < blockSize; ++i) {
        lows[cells[i]] = std::min(lows[cells[i]], values[i]);
    }
}

void fetch(const void* address) noexcept {
    __builtin_prefetch(address);
}

} // namespace

std::unique_ptr<CompactPatterns> CompactPatterns::describe(const vxClassifierDataProviderMemory& store,
                                                           const CellCoder& coder) noexcept {
    try {
        std::unique_ptr<CompactPatterns> made(new CompactPatterns);
        if (made->read(store, coder)) {
            return made;
        }
    } catch (const std::exception&) {
        // Out of memory: nothing but speed is lost.
    }
    return nullptr;
}

std::unique_ptr<CompactPatterns>
CompactPatterns::describe(const vxClassifierDataProviderMemory& store) noexcept {
    return describe(store, bestCellCoder());
}

std::unique_ptr<CompactPatterns>
CompactPatterns::copyOf(const std::unique_ptr<CompactPatterns>& other) noexcept {
    try {
        return std::unique_ptr<CompactPatterns>(other == nullptr ? nullptr : new CompactPatterns(*other));
    } catch (const std::exception&) {
        return nullptr; // as above
    }
}

bool CompactPatterns::describes(const vxClassifierDataProviderMemory& store) const noexcept {
    return revision_ == StoredRows::revision(store) && changes_ == PatternObservation::changes();
}

void CompactPatterns::follow(std::unique_ptr<CompactPatterns>& compact,
                             const vxClassifierDataProviderMemory& store) noexcept {
    const auto count = static_cast<std::size_t>(store.numPatterns());
    if (count > fewPatterns && count >= 2 * compact->numWhenMade_) {
        compact = describe(store, bestCellCoder());
        return;
    }
    try {
        if (compact->append(*StoredRows::patterns(store)[count - 1])) {
            compact->revision_ = StoredRows::revision(store);
            return;
        }
    } catch (const std::exception&) {
        // Out of memory: nothing but speed is lost.
    }
    compact.reset();
}

bool CompactPatterns::suits(const std::vector<double>& measurements) const noexcept {
    return measurements.size() == width_ && areOrdinary(measurements);
}

bool CompactPatterns::read(const vxClassifierDataProviderMemory& store, const CellCoder& coder) {
    if (typeid(store) != typeid(vxClassifierDataProviderMemory) || store.numPatterns() == 0) {
        return false;
    }
    revision_ = StoredRows::revision(store);
    changes_ = PatternObservation::changes();
    const Patterns& patterns = StoredRows::patterns(store);
    numPatterns_ = static_cast<std::size_t>(store.numPatterns());
    if (patterns.front().isNull()) {
        return false;
    }
    width_ = static_cast<std::size_t>(patterns.front()->numMeasurements());
    if (width_ == 0 || width_ > widest) {
        return false;
    }
    if (numPatterns_ > fewPatterns) {
        numWhenMade_ = numPatterns_;
        if (areMostlyDifferent(patterns, numPatterns_)) {
            return areWorthTheirMemory(patterns) && makeCodes(patterns, coder);
        }
    }
    for (std::size_t i = 0; i < numPatterns_; ++i) {
        if (!observe(patterns[i].get()) || !areOrdinary(patterns[i]->featureMeasurements(false))) {
            return false;
        }
    }
    return true;
}

/// False for a pattern that cannot be described, whatever its measurements.
bool CompactPatterns::observe(const vxFeaturePattern* pattern) const noexcept {
    if (!isOrdinary(pattern, width_)) {
        return false;
    }
    PatternObservation::observe(*pattern);
    return true;
}

/// False for wide patterns of which not all are alike: an archive may name one very wide pattern where the
/// sample is taken, and narrow ones elsewhere, so that codes are only made when all are seen to be as wide.
/// For other patterns this shows on the way, since their codes take less memory than the rows themselves.
bool CompactPatterns::areWorthTheirMemory(const Patterns& patterns) const noexcept {
    return width_ <= 64 ||
           std::all_of(patterns.begin(), patterns.begin() + static_cast<std::ptrdiff_t>(numPatterns_),
                       [&](const auto& pattern) { return isOrdinary(pattern.get(), width_); });
}

bool CompactPatterns::makeCodes(const Patterns& patterns, const CellCoder& coder) {
    const std::size_t inSample = cellSampleOf(numPatterns_);
    std::array<const double*, cellSampleSize> sample;
    for (std::size_t i = 0; i < inSample; ++i) {
        const vxFeaturePattern* pattern = patterns[i * numPatterns_ / inSample].get();
        if (!observe(pattern) || !areOrdinary(pattern->featureMeasurements(false))) {
            return false;
        }
        sample[i] = pattern->featureMeasurements(false).data();
    }
    cells_.resize(width_ * cellDoubles);
    makeCells(sample.data(), inSample, width_, cells_.data());
    codes_.resize(numBlocks() * width_);
    std::vector<double> greatest(width_, -infinity);
    for (std::size_t block = 0; block < numBlocks(); ++block) {
        if (!encodeBlock(patterns, block, coder, greatest.data())) {
            return false;
        }
    }
    for (std::size_t j = 0; j < width_; ++j) {
        double* highs = cells_.data() + j * cellDoubles + numCells;
        *std::find(highs, highs + numCells, infinity) = greatest[j];
    }
    return true;
}

/// Finds the cells of a block's patterns, lowers the ends of the cells to hold them, and raises the greatest
/// value of each measurement. False if a pattern is odd.
bool CompactPatterns::encodeBlock(const Patterns& patterns, std::size_t block, const CellCoder& coder,
                                  double* greatest) {
    const std::size_t start = block * blockSize;
    const std::size_t count = std::min(blockSize, numPatterns_ - start);
    std::array<const double*, blockSize> rows;
    for (std::size_t i = 0; i < count; ++i) {
        const vxFeaturePattern* pattern = patterns[start + i].get();
        if (!observe(pattern)) {
            return false;
        }
        rows[i] = pattern->featureMeasurements(false).data();
        fetch(rows[i]);
        fetch(patterns[std::min(start + i + blockSize, numPatterns_ - 1)].get());
    }
    std::fill(rows.begin() + static_cast<std::ptrdiff_t>(count), rows.end(), rows[count - 1]);
    std::array<double, tileWidth * blockSize> columns;
    for (std::size_t first = 0; first < width_; first += tileWidth) {
        const std::size_t last = std::min(first + tileWidth, width_);
        if (!coder.gather(rows.data(), first, last, columns.data())) {
            return false;
        }
        for (std::size_t j = first; j < last; ++j) {
            const double* values = columns.data() + (j - first) * blockSize;
            encodeColumn(values, count, cells_.data() + j * cellDoubles, coder, codes_[block * width_ + j],
                         greatest[j]);
        }
    }
    return true;
}

void CompactPatterns::encodeColumn(const double* values, std::size_t count, double* ends,
                                   const CellCoder& coder, Row& row, double& greatest) {
    std::array<std::uint8_t, blockSize> cells;
    if (!coder.findCells(values, ends, cells.data(), greatest)) {
        widen(values, cells.data(), ends);
    }
    std::fill(cells.begin() + static_cast<std::ptrdiff_t>(count), cells.end(), std::uint8_t{0});
    for (std::size_t i = 0; i < rowBytes; ++i) {
        row.bytes[i] = static_cast<std::uint8_t>(cells[i] | cells[rowBytes + i] << 4U);
    }
}

bool CompactPatterns::append(const vxFeaturePattern& pattern) {
    if (pattern.numInvalid() != 0 || !suits(pattern.featureMeasurements(false))) {
        return false;
    }
    PatternObservation::observe(pattern);
    if (hasCodes()) {
        if (numPatterns_ % blockSize == 0) {
            codes_.resize(codes_.size() + width_);
        }
        encodeNext(pattern.featureMeasurements(false).data());
    }
    ++numPatterns_;
    return true;
}

/// Widens the cells to hold what lies between or beyond them.
void CompactPatterns::encodeNext(const double* measurements) {
    const std::size_t lane = numPatterns_ % blockSize;
    Row* row = codes_.data() + numPatterns_ / blockSize * width_;
    double* lows = cells_.data();
    for (std::size_t j = 0; j < width_; ++j, ++row, lows += cellDoubles) {
        const double value = measurements[j];
        std::size_t cell = cellOf(value, lows);
        cell -= lows[cell] == infinity ? 1 : 0; // beyond all: the last one is widened
        std::uint8_t& code = row->bytes[lane % rowBytes];
        code = static_cast<std::uint8_t>(code | (lane < rowBytes ? cell : cell << 4U));
        lows[cell] = std::min(lows[cell], value);
        lows[numCells + cell] = std::max(lows[numCells + cell], value);
    }
}

} // namespace detail
