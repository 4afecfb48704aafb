#ifndef CLASTOOL_FOUNDATION_STABLE_MERGE_SORT_H
#define CLASTOOL_FOUNDATION_STABLE_MERGE_SORT_H

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace detail {

/// Sorts values[first, last) by insertion.
template <class T, class Less>
void insertionSort(std::vector<T>& values, std::size_t first, std::size_t last, Less less) {
    for (std::size_t i = first + 1; i < last; ++i) {
        const T value = values[i];
        std::size_t place = i;
        while (place > first && less(value, values[place - 1])) {
            values[place] = values[place - 1];
            --place;
        }
        values[place] = value;
    }
}

/// Merges the neighbouring runs [first, middle) and [middle, last) of `from` into the same place of `to`.
template <class T, class Less>
void mergeRuns(const std::vector<T>& from, std::size_t first, std::size_t middle, std::size_t last,
               std::vector<T>& to, Less less) {
    std::size_t left = first;
    std::size_t right = middle;
    for (std::size_t place = first; place < last; ++place) {
        const bool takeRight = left == middle || (right != last && less(from[right], from[left]));
        to[place] = takeRight ? from[right++] : from[left++];
    }
}

/// A stable sort that stays within the vector and ends whatever `less` says. The standard sorts promise
/// neither for a comparison that is no strict weak ordering, and comparing doubles is none as soon as a NaN
/// is among them.
template <class T, class Less>
void stableMergeSort(std::vector<T>& values, Less less) {
    constexpr std::size_t runLength = 32;
    const std::size_t size = values.size();
    for (std::size_t first = 0; first < size; first += runLength) {
        insertionSort(values, first, std::min(first + runLength, size), less);
    }
    if (size <= runLength) {
        return;
    }
    std::vector<T> merged(values);
    for (std::size_t width = runLength; width < size; width *= 2) {
        for (std::size_t first = 0; first < size; first += 2 * width) {
            mergeRuns(values, first, std::min(first + width, size), std::min(first + 2 * width, size), merged,
                      less);
        }
        std::swap(values, merged);
    }
}

} // namespace detail

#endif
