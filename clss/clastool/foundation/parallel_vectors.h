#ifndef CLASTOOL_FOUNDATION_PARALLEL_VECTORS_H
#define CLASTOOL_FOUNDATION_PARALLEL_VECTORS_H

#include <algorithm>
#include <cstddef>
#include <vector>

namespace detail {

// Some classes keep a table as one vector for each column. Their own operations keep the columns equally
// long, but an archive can bring columns of different lengths: only the rows that all of them have are the
// table, and nothing may index beyond those.

/// The number of rows of the table.
template <class... T>
std::size_t commonRows(const std::vector<T>&... columns) noexcept {
    return std::min({columns.size()...});
}

/// Reserves memory for one more entry than `rows`, and for more than that when memory has to be taken.
template <class T>
void reserveBeyond(std::vector<T>& column, std::size_t rows) {
    if (column.capacity() <= rows) {
        column.reserve(2 * rows + 1);
    }
}

/// Prepares all columns for push_back, which cannot throw afterwards (for entries that copy without
/// throwing): so there is never half a row. What stands behind the rows of the table would pair with the
/// wrong entries from now on, and is dropped. If this throws, nothing has changed.
template <class... T>
void makeRoomForRow(std::vector<T>&... columns) {
    const std::size_t rows = commonRows(columns...);
    (reserveBeyond(columns, rows), ...);
    (columns.resize(rows), ...);
}

} // namespace detail

#endif
