#ifndef PLATFORM_ARCHIVE_STAMPS_H
#define PLATFORM_ARCHIVE_STAMPS_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace detail {

/// The stamps of one archive, one for each of its places, which are counted from 0. No two archives give the
/// same one, until all 2^32 have been given; an archive would have to outlive that to take a changed object
/// for an unchanged one.
class Stamps {
public:
    static constexpr std::uint32_t none = 0xffffffffU;

    /// The stamp of a place, which is never 0. The places are asked for in ascending order, though not each
    /// one.
    std::uint32_t at(std::uint32_t place) {
        while (place - newest().firstPlace >= newest().size) {
            addBlock();
        }
        return newest().firstStamp + (place - newest().firstPlace);
    }

    /// The place of a stamp, or `none` for that of another archive.
    std::uint32_t placeOf(std::uint32_t stamp) const noexcept {
        for (std::size_t i = blocks_; i > 0; --i) {
            const Block& block = all_[i];
            if (stamp - block.firstStamp < block.size) {
                return block.firstPlace + (stamp - block.firstStamp);
            }
        }
        return none;
    }

private:
    struct Block {
        std::uint32_t firstPlace = 0;
        std::uint32_t firstStamp = 0;
        std::uint32_t size = 0;
    };

    const Block& newest() const noexcept { return all_[blocks_]; }
    void addBlock() noexcept;

    // Each block but the largest is twice as large as the one before it; together they have more than 2^32
    // places.
    static constexpr std::uint32_t leastSize = std::uint32_t{1} << 4;
    static constexpr std::uint32_t mostSize = std::uint32_t{1} << 30;
    std::array<Block, 32> all_; // the first one is empty
    std::size_t blocks_ = 0;    // how many there are behind it
};

} // namespace detail

#endif
