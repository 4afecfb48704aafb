#include "clss/clastool/knn/compact_patterns.h"

#include "clss/clastool/foundation/observed_patterns.h"
#include "clss/clastool/foundation/stored_rows.h"

#include <vxclassifier/feature_pattern.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <functional>
#include <limits>
#include <typeinfo>

namespace detail {

namespace {

using Patterns = std::vector<vxPtrHandle_const<vxFeaturePattern>>;

constexpr std::size_t numBounds = CompactPatterns::numCells - 1;
constexpr std::size_t sampleSize = 2048;
constexpr double infinity = std::numeric_limits<double>::infinity();

bool areOrdinary(const std::vector<double>& measurements) noexcept {
    bool ordinary = true;
    for (const double value : measurements) {
        ordinary &= std::fabs(value) <= CompactPatterns::largest; // false for NaN
    }
    return ordinary;
}

/// Whether at most half of the rows repeat a pattern of another row. Each row has codes of its own, so those
/// of a wide pattern that an archive names a million times would take far more memory than the archive.
bool areMostlyDifferent(const Patterns& patterns, std::size_t count) {
    std::vector<const vxFeaturePattern*> sorted(count);
    std::transform(patterns.begin(), patterns.begin() + static_cast<std::ptrdiff_t>(count), sorted.begin(),
                   [](const auto& pattern) { return pattern.get(); });
    std::sort(sorted.begin(), sorted.end(), std::less<>());
    const auto end = std::unique(sorted.begin(), sorted.end());
    return 2 * static_cast<std::size_t>(end - sorted.begin()) >= count;
}

/// The values of one measurement in patterns that stand evenly among all, in ascending order.
void takeSample(const Patterns& patterns, std::size_t count, std::size_t measurement,
                std::vector<double>& sample) {
    const std::size_t size = std::min(count, sampleSize);
    sample.resize(size);
    for (std::size_t i = 0; i < size; ++i) {
        sample[i] = patterns[i * count / size]->featureMeasurements(false)[measurement];
    }
    std::sort(sample.begin(), sample.end());
}

/// The upper bounds of all cells but the last, ascending; infinite behind the cells that are needed. Each is
/// a value of the sample below its largest, so that no cell is empty.
void chooseBounds(std::vector<double>& sample, double* bounds) {
    const double largest = sample.back();
    const std::vector<double> all = sample;
    sample.erase(std::unique(sample.begin(), sample.end()), sample.end());
    std::size_t made = 0;
    if (sample.size() <= CompactPatterns::numCells) {
        made = sample.size() - 1;
        std::copy_n(sample.begin(), made, bounds);
    } else {
        for (std::size_t i = 1; i <= numBounds; ++i) {
            const double bound = all[i * all.size() / CompactPatterns::numCells];
            if (bound < largest && (made == 0 || bounds[made - 1] < bound)) {
                bounds[made++] = bound;
            }
        }
    }
    std::fill(bounds + made, bounds + numBounds, infinity);
}

/// How many of the bounds are less than the value.
std::size_t lowerBound(double value, const double* bounds) noexcept {
    std::size_t cell = bounds[7] < value ? 8 : 0;
    cell += bounds[cell + 3] < value ? 4 : 0;
    cell += bounds[cell + 1] < value ? 2 : 0;
    cell += bounds[cell] < value ? 1 : 0;
    return cell;
}

} // namespace

std::unique_ptr<CompactPatterns>
CompactPatterns::describe(const vxClassifierDataProviderMemory& store) noexcept {
    try {
        std::unique_ptr<CompactPatterns> made(new CompactPatterns);
        if (made->read(store)) {
            return made;
        }
    } catch (const std::exception&) {
        // Out of memory: nothing but speed is lost.
    }
    return nullptr;
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
        compact = describe(store);
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

bool CompactPatterns::read(const vxClassifierDataProviderMemory& store) {
    if (typeid(store) != typeid(vxClassifierDataProviderMemory) || store.numPatterns() == 0) {
        return false;
    }
    revision_ = StoredRows::revision(store);
    changes_ = PatternObservation::changes();
    const Patterns& patterns = StoredRows::patterns(store);
    const auto count = static_cast<std::size_t>(store.numPatterns());
    if (patterns.front().isNull()) {
        return false;
    }
    width_ = static_cast<std::size_t>(patterns.front()->numMeasurements());
    if (width_ == 0 || width_ > widest) {
        return false;
    }
    for (; numPatterns_ < count; ++numPatterns_) {
        const vxFeaturePattern* pattern = patterns[numPatterns_].get();
        if (pattern == nullptr || pattern->numInvalid() != 0 || !suits(pattern->featureMeasurements(false))) {
            return false;
        }
        PatternObservation::observe(*pattern);
    }
    if (count > fewPatterns) {
        numWhenMade_ = count;
        if (areMostlyDifferent(patterns, count)) {
            makeCodes(store);
        }
    }
    return true;
}

void CompactPatterns::makeCodes(const vxClassifierDataProviderMemory& store) {
    const Patterns& patterns = StoredRows::patterns(store);
    std::vector<double> bounds(width_ * numBounds);
    std::vector<double> sample;
    for (std::size_t j = 0; j < width_; ++j) {
        takeSample(patterns, numPatterns_, j, sample);
        chooseBounds(sample, bounds.data() + j * numBounds);
    }
    cells_.resize(width_ * cellDoubles);
    for (std::size_t j = 0; j < width_; ++j) {
        double* lows = cells_.data() + j * cellDoubles;
        std::fill_n(lows, numCells, infinity);
        std::fill_n(lows + numCells, numCells, -infinity);
    }
    codes_.resize(numBlocks() * width_);
    const auto cellOf = [&](std::size_t j, double value) {
        return lowerBound(value, bounds.data() + j * numBounds);
    };
    for (std::size_t i = 0; i < numPatterns_; ++i) {
        encode(i, patterns[i]->featureMeasurements(false).data(), cellOf);
    }
    std::replace(cells_.begin(), cells_.end(), -infinity, infinity); // cells that are not needed
}

template <class CellOf>
void CompactPatterns::encode(std::size_t index, const double* measurements, CellOf cellOf) {
    const std::size_t lane = index % blockSize;
    Row* row = codes_.data() + index / blockSize * width_;
    for (std::size_t j = 0; j < width_; ++j, ++row) {
        const std::size_t cell = cellOf(j, measurements[j]);
        std::uint8_t& code = row->bytes[lane % rowBytes];
        code = static_cast<std::uint8_t>(code | (lane < rowBytes ? cell : cell << 4U));
        double& low = cells_[j * cellDoubles + cell];
        double& high = cells_[j * cellDoubles + numCells + cell];
        low = std::min(low, measurements[j]);
        high = std::max(high, measurements[j]);
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
        encode(numPatterns_, pattern.featureMeasurements(false).data(), [&](std::size_t j, double value) {
            const double* lows = cells_.data() + j * cellDoubles;
            const std::size_t cell = lowerBound(value, lows + numCells);
            return lows[cell] == infinity ? cell - 1 : cell; // beyond all: the last one is widened
        });
    }
    ++numPatterns_;
    return true;
}

} // namespace detail
