#ifndef FUZZ_ROUND_TRIP_H
#define FUZZ_ROUND_TRIP_H

#include "fuzz/steps.h"
#include "tests/support/archives.h"

#include <cstddef>
#include <cstdint>

// What every entry has to keep, whatever it is.
namespace fuzz {

/// Calls `load()` and returns whether it accepted the bytes: it may refuse them by an error of the archive
/// only, and may take memory in proportion to the bytes only.
template <class Load>
bool accepts(const test::Bytes& sealed, Load load) {
    const MemoryWatch watch(32 * sealed.size() + (std::size_t{1} << 20));
    try {
        load();
        return true;
    } catch (const vxArchive::Errors&) {
        return false;
    } catch (const std::bad_alloc&) {
        throw Finding("loading takes too much memory");
    }
}

/// A number that differs with the bytes (FNV-1a).
inline std::uint64_t picksOf(const test::Bytes& bytes) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const unsigned char byte : bytes) {
        hash = (hash ^ byte) * 0x100000001b3U;
    }
    return hash;
}

/// Whether a NaN could stand somewhere in the bytes.
inline bool mayHoldNaN(const test::Bytes& bytes) {
    for (std::size_t i = 0; i + 8 <= bytes.size(); ++i) {
        if ((bytes[i + 7] & 0x7fU) == 0x7fU && (bytes[i + 6] & 0xf0U) == 0xf0U) {
            return true;
        }
    }
    return false;
}

enum class Answer { equal, unequal, refused };

/// What a comparison says, which a null handle within an object may refuse.
template <class Compare>
Answer answerOf(Compare compare) {
    try {
        return compare() ? Answer::equal : Answer::unequal;
    } catch (const vxBadPointer&) {
        return Answer::refused;
    }
}

/// Expects that an object compares with its copy as it does with itself, whichever is asked, and that only a
/// NaN makes it differ from itself.
template <class Equal, class T>
void requireCopy(Equal equal, const T& object, const T& copy, const test::Bytes& stored) {
    const Answer itself = answerOf([&] { return equal(object, object); });
    require(itself != Answer::unequal || mayHoldNaN(stored), "an object differs from itself");
    require(answerOf([&] { return equal(object, copy); }) == itself, "a copy is not equal");
    require(answerOf([&] { return equal(copy, object); }) == itself, "a copy is not equal, asked itself");
}

} // namespace fuzz

#endif
