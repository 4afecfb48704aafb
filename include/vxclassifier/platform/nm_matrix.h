#ifndef VXCLASSIFIER_PLATFORM_NM_MATRIX_H
#define VXCLASSIFIER_PLATFORM_NM_MATRIX_H

#include <vxclassifier/platform/export.h>

#include <cstddef>
#include <vector>

class vxArchive;

/// A matrix of doubles with `rows()` rows of `columns()` entries each, stored row by row.
///
/// Initial state: 0 x 0, or the given size filled with zeros.
///
/// Ownership: a plain value; one that was moved from is 0 x 0. Threads: as any plain value.
class VXCLASSIFIER_API vxNMMatrix {
public:
    vxNMMatrix() noexcept = default;

    /// Throws std::length_error for a negative size or one that no memory can hold, std::bad_alloc when
    /// memory is short.
    vxNMMatrix(long rows, long columns);

    vxNMMatrix(const vxNMMatrix&) = default;
    vxNMMatrix(vxNMMatrix&& other) noexcept;
    /// Copies or moves; when a copy fails for want of memory, this matrix stays as it was.
    vxNMMatrix& operator=(vxNMMatrix other) noexcept;
    ~vxNMMatrix() = default;

    long rows() const noexcept { return rows_; }
    long columns() const noexcept { return columns_; }

    /// The entry at `row`, `column`, both counted from 0. Throws std::out_of_range for an index outside the
    /// matrix.
    double& operator()(long row, long column) { return entries_[position(row, column)]; }
    double operator()(long row, long column) const { return entries_[position(row, column)]; }

    /// All entries, row by row.
    const std::vector<double>& entries() const noexcept { return entries_; }

    /// Equal when the sizes are equal and every pair of entries is equal by the ordinary `==`.
    friend bool operator==(const vxNMMatrix& a, const vxNMMatrix& b) noexcept {
        return a.rows_ == b.rows_ && a.columns_ == b.columns_ && a.entries_ == b.entries_;
    }
    friend bool operator!=(const vxNMMatrix& a, const vxNMMatrix& b) noexcept { return !(a == b); }

private:
    friend VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxNMMatrix& matrix);

    std::size_t position(long row, long column) const;

    long rows_ = 0;               // >= 0
    long columns_ = 0;            // >= 0
    std::vector<double> entries_; // rows_ * columns_ entries
};

/// Exchanges a version byte (0; any other throws vxArchive::UnknownVersion), the number of rows, the number
/// of columns, and the entries row by row. A loaded size is checked against the bytes that are there before
/// memory is taken for it (vxArchive::TooLarge); a failed load leaves the matrix as it was.
///
/// A matrix with rows but no columns, or the reverse, is refused in both directions
/// (vxArchive::NotRepresentable, vxArchive::CorruptData): it takes no bytes, so a few of them could claim any
/// number of rows.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxNMMatrix& matrix);

#endif
