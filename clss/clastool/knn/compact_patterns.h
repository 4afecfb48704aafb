#ifndef CLSS_CLASTOOL_KNN_COMPACT_PATTERNS_H
#define CLSS_CLASTOOL_KNN_COMPACT_PATTERNS_H

#include <vxclassifier/platform/ptr_handle.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

class vxClassifierDataProviderMemory;
class vxFeaturePattern;

namespace detail {

struct CellCoder;

/// What a search needs to know of stored patterns to leave most of them alone: for each measurement of each
/// pattern, which of 16 cells the value lies in, in half a byte, and for each cell the smallest and the
/// largest value within. Each measurement has cells of its own, made so that about equally many values lie in
/// each; of at most 16 different values each gets a cell for itself.
///
/// Few patterns get no codes, since looking at the cells would cost more than looking at the patterns; nor do
/// patterns most of which stand in several rows, since the codes are made for each row.
///
/// Describes only patterns of which a search need not expect anything odd: there is at least one, all have
/// the same number of measurements, at least one, all are valid, and none is beyond `largest`.
///
/// Threads: may be read by several threads while nobody changes it.
class CompactPatterns {
public:
    static constexpr std::size_t numCells = 16;
    static constexpr std::size_t blockSize = 64;                 // patterns
    static constexpr std::size_t rowBytes = blockSize / 2;       // of one measurement of a block
    static constexpr std::size_t cellDoubles = 2 * numCells;     // of one measurement: lows, then highs
    static constexpr std::size_t fewPatterns = 192;              // up to here there are no codes
    static constexpr std::size_t widest = std::size_t{1} << 20U; // measurements of a pattern
    static constexpr double largest = 1e140;                     // size of a measurement

    /// Null where the patterns are not such as can be described, and where memory is short: then a search
    /// goes without, which is slower but no reason to fail.
    static std::unique_ptr<CompactPatterns> describe(const vxClassifierDataProviderMemory& store) noexcept;

    /// The same by this coder.
    static std::unique_ptr<CompactPatterns> describe(const vxClassifierDataProviderMemory& store,
                                                     const CellCoder& coder) noexcept;

    /// A copy; null for none, and where memory is short.
    static std::unique_ptr<CompactPatterns> copyOf(const std::unique_ptr<CompactPatterns>& other) noexcept;

    /// Whether this still holds for the store that was described, or for a copy of it.
    bool describes(const vxClassifierDataProviderMemory& store) const noexcept;

    /// To be called after a pattern was appended to a store that `compact` described until then: describes
    /// that one too, or all of them anew when they have become twice as many, or resets `compact`.
    static void follow(std::unique_ptr<CompactPatterns>& compact,
                       const vxClassifierDataProviderMemory& store) noexcept;

    /// Whether a search can take these measurements: as many as the patterns have, none odd.
    bool suits(const std::vector<double>& measurements) const noexcept;

    std::size_t numPatterns() const noexcept { return numPatterns_; }
    std::size_t width() const noexcept { return width_; }
    bool hasCodes() const noexcept { return !codes_.empty(); }
    std::size_t numBlocks() const noexcept { return (numPatterns_ + blockSize - 1) / blockSize; }

    /// The memory that codes and cells take.
    std::size_t numBytes() const noexcept {
        return codes_.capacity() * sizeof(Row) + cells_.capacity() * sizeof(double);
    }

    /// From this block on: for each measurement 32 bytes, whose low halves are the cells of the block's first
    /// 32 patterns, and whose high halves those of the others. Behind the last pattern the cells are 0.
    const std::uint8_t* codes(std::size_t block) const noexcept {
        return reinterpret_cast<const std::uint8_t*>(codes_.data() + block * width_);
    }

    /// For each measurement the smallest values of its cells, then the largest ones, both ascending; infinity
    /// where there is no further cell.
    const double* cells() const noexcept { return cells_.data(); }

private:
    /// Aligned for the instructions that load it at once.
    struct alignas(rowBytes) Row {
        std::uint8_t bytes[rowBytes] = {};
    };

    CompactPatterns() = default;
    CompactPatterns(const CompactPatterns&) = default;

    using Patterns = std::vector<vxPtrHandle_const<vxFeaturePattern>>;

    bool read(const vxClassifierDataProviderMemory& store, const CellCoder& coder);
    bool observe(const vxFeaturePattern* pattern) const noexcept;
    bool areWorthTheirMemory(const Patterns& patterns) const noexcept;
    bool makeCodes(const Patterns& patterns, const CellCoder& coder);
    bool encodeBlock(const Patterns& patterns, std::size_t block, const CellCoder& coder, double* greatest);
    static void encodeColumn(const double* values, std::size_t count, double* ends, const CellCoder& coder,
                             Row& row, double& greatest);
    bool append(const vxFeaturePattern& pattern);
    void encodeNext(const double* measurements);

    std::size_t numPatterns_ = 0;
    std::size_t width_ = 0;
    std::size_t numWhenMade_ = 0; // patterns, when it was last decided about codes
    std::uint64_t revision_ = 0;  // of the store
    std::uint64_t changes_ = 0;   // of observed patterns, up to the reading
    std::vector<Row> codes_;
    std::vector<double> cells_;
};

} // namespace detail

#endif
