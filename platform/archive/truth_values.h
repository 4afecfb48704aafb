#ifndef PLATFORM_ARCHIVE_TRUTH_VALUES_H
#define PLATFORM_ARCHIVE_TRUTH_VALUES_H

#include <cstddef>
#include <vector>

namespace detail {

// Truth values take a bit each in a vector and a byte each in an archive, 0 or 1. Nearly all of them are
// true, and there are as many as measurements, so they are taken eight at a time.

/// Writes a byte for each of the values, which are only read, so that several threads may store the same
/// vector.
void putTruthValues(unsigned char* to, const std::vector<bool>& values) noexcept;

/// How many of the bytes there are in front of the first one that is neither 0 nor 1.
std::size_t countTruthValues(const unsigned char* from, std::size_t count) noexcept;

/// How many of the bytes there are in front of the first one that is not 1.
std::size_t countTrue(const unsigned char* from, std::size_t count) noexcept;

/// Replaces the values by those of so many bytes, each of which is 0 or 1.
void getTruthValues(std::vector<bool>& values, const unsigned char* from, std::size_t count);

} // namespace detail

#endif
