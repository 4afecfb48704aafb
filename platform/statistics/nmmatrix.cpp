#include "platform/statistics/nmmatrix.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace detail {

namespace {

std::size_t entryCount(long numRows, long numColumns) {
    const std::size_t rows = static_cast<std::size_t>(numRows);
    const std::size_t columns = static_cast<std::size_t>(numColumns);
    constexpr std::size_t most = std::numeric_limits<std::ptrdiff_t>::max() / sizeof(double);
    if (columns > most / rows) {
        throw std::bad_alloc();
    }
    return rows * columns;
}

struct Release {
    void operator()(double* entries) const noexcept { std::free(entries); }
};

} // namespace

/// The entries come from calloc, which does not touch the memory of large matrices: the covariance of a
/// single sample costs address space only.
OwnedMatrix::OwnedMatrix(long numRows, long numColumns) {
    if (numRows == 0 || numColumns == 0) {
        return;
    }
    const std::size_t count = entryCount(numRows, numColumns);
    std::unique_ptr<double, Release> entries(static_cast<double*>(std::calloc(count, sizeof(double))));
    if (entries == nullptr) {
        throw std::bad_alloc();
    }
    matrix_.rows = new double*[static_cast<std::size_t>(numRows)];
    for (long row = 0; row < numRows; ++row) {
        matrix_.rows[row] = entries.get() + row * numColumns;
    }
    matrix_.numRows = numRows;
    matrix_.numColumns = numColumns;
    static_cast<void>(entries.release()); // rows[0] holds it from now on
}

OwnedMatrix::OwnedMatrix(const vmath_nmmatrix& source) : OwnedMatrix(source.numRows, source.numColumns) {
    for (long row = 0; row < source.numRows; ++row) {
        std::copy_n(source.rows[row], source.numColumns, matrix_.rows[row]);
    }
}

OwnedMatrix::~OwnedMatrix() {
    if (matrix_.rows != nullptr) {
        std::free(matrix_.rows[0]);
        delete[] matrix_.rows;
    }
}

void OwnedMatrix::swap(vmath_nmmatrix& other) noexcept {
    std::swap(matrix_, other);
}

} // namespace detail

long vmath_nmmatrix_resize(vmath_nmmatrix* matrix, long numRows, long numColumns) noexcept {
    if (matrix == nullptr || numRows < 0 || numColumns < 0) {
        return vmath_status::badArgument;
    }
    try {
        detail::OwnedMatrix resized(numRows, numColumns);
        resized.swap(*matrix);
        return vxStatus::success;
    } catch (const std::bad_alloc&) {
        return vmath_status::outOfMemory;
    }
}
