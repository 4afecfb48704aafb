#include <vxclassifier/platform/nm_matrix.h>

#include "platform/archive/loading_core.h"
#include "platform/archive/persistent_access.h"
#include "platform/archive/storing_core.h"

#include <vxclassifier/platform/archive.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <utility>

namespace {

std::size_t entryCount(long rows, long columns) {
    if (rows < 0 || columns < 0) {
        throw std::length_error("a matrix cannot have a negative size");
    }
    const std::size_t wide = static_cast<std::size_t>(columns);
    if (wide != 0 && static_cast<std::size_t>(rows) > std::vector<double>().max_size() / wide) {
        throw std::length_error("a matrix of that size does not fit into memory");
    }
    return static_cast<std::size_t>(rows) * wide;
}

bool hasOneEmptySide(long rows, long columns) {
    return (rows == 0) != (columns == 0);
}

/// Checks a loaded size before memory is taken for it.
void requireLoadable(vxArchive& archive, long rows, long columns) {
    if (rows < 0 || columns < 0 || hasOneEmptySide(rows, columns)) {
        throw vxArchive::CorruptData(L"A matrix in the archive has an impossible size.");
    }
    const std::uint64_t entries = static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(columns);
    detail::ArchiveAccess::loading(archive)->requireElements(entries, sizeof(double));
}

void storeEntries(vxArchive& archive, const vxNMMatrix& matrix) {
    if (hasOneEmptySide(matrix.rows(), matrix.columns())) {
        throw vxArchive::NotRepresentable(L"An archive holds no matrix that is empty on one side only.");
    }
    detail::ArchiveAccess::storing(archive)->putDoubles(matrix.entries().data(), matrix.entries().size());
}

} // namespace

vxNMMatrix::vxNMMatrix(long rows, long columns)
    : rows_(rows), columns_(columns), entries_(entryCount(rows, columns)) {}

vxNMMatrix::vxNMMatrix(vxNMMatrix&& other) noexcept
    : rows_(std::exchange(other.rows_, 0)), columns_(std::exchange(other.columns_, 0)),
      entries_(std::exchange(other.entries_, {})) {}

vxNMMatrix& vxNMMatrix::operator=(vxNMMatrix other) noexcept {
    std::swap(rows_, other.rows_);
    std::swap(columns_, other.columns_);
    entries_.swap(other.entries_);
    return *this;
}

std::size_t vxNMMatrix::position(long row, long column) const {
    if (row < 0 || row >= rows_ || column < 0 || column >= columns_) {
        throw std::out_of_range("an index lies outside of the matrix");
    }
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) +
           static_cast<std::size_t>(column);
}

vxArchive& operator||(vxArchive& archive, vxNMMatrix& matrix) {
    unsigned char version = 0;
    archive || version;
    if (version != 0) {
        throw vxArchive::UnknownVersion(nullptr, 0);
    }
    long rows = matrix.rows_;
    long columns = matrix.columns_;
    archive || rows;
    archive || columns;
    detail::guarded(archive, [&] {
        if (archive.isStoring()) {
            storeEntries(archive, matrix);
            return;
        }
        requireLoadable(archive, rows, columns);
        vxNMMatrix loaded(rows, columns);
        detail::ArchiveAccess::loading(archive)->getDoubles(loaded.entries_.data(), loaded.entries_.size());
        matrix = std::move(loaded);
    });
    return archive;
}
