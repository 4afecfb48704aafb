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

// calloc, unlike new, does not touch the memory of large matrices: the covariance of a single sample costs
// address space only.
// NOLINTBEGIN(cppcoreguidelines-no-malloc)
double* allocateZeros(std::size_t count) {
    double* const entries = static_cast<double*>(std::calloc(count, sizeof(double)));
    if (entries == nullptr) {
        throw std::bad_alloc();
    }
    return entries;
}

void release(double* entries) noexcept {
    std::free(entries);
}
// NOLINTEND(cppcoreguidelines-no-malloc)

} // namespace

OwnedMatrix::OwnedMatrix(long numRows, long numColumns) {
    if (numRows == 0 || numColumns == 0) {
        return;
    }
    std::unique_ptr<double, decltype(&release)> entries(allocateZeros(entryCount(numRows, numColumns)),
                                                        &release);
    matrix_.rows = new double*[static_cast<std::size_t>(numRows)];
    matrix_.numRows = numRows;
    matrix_.numColumns = numColumns;
    double* const first = entries.release(); // held by rows[0] from now on
    for (long row = 0; row < numRows; ++row) {
        matrix_.rows[row] = first + row * numColumns;
    }
}

OwnedMatrix::OwnedMatrix(const vmath_nmmatrix& source) : OwnedMatrix(source.numRows, source.numColumns) {
    for (long row = 0; row < source.numRows; ++row) {
        std::copy_n(source.rows[row], source.numColumns, matrix_.rows[row]);
    }
}

OwnedMatrix::~OwnedMatrix() {
    if (matrix_.rows != nullptr) {
        release(matrix_.rows[0]);
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
