#include <vxclassifier/platform/nm_matrix.h>

#include "platform/archive/loading_core.h"
#include "platform/archive/persistent_access.h"
#include "platform/archive/storing_core.h"

#include <vxclassifier/platform/archive.h>

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

/// Checks a loaded size before memory is taken for it. A matrix of many empty rows is refused too: it has no
/// bytes, and no storing archive writes one.
void requireLoadable(vxArchive& archive, long rows, long columns) {
    if (rows == 0 && columns == 0) {
        return;
    }
    if (rows <= 0 || columns <= 0) {
        throw vxArchive::CorruptData(L"A matrix in the archive has an impossible size.");
    }
    const std::uint64_t entries = static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(columns);
    detail::ArchiveAccess::loading(archive)->requireElements(entries, sizeof(double));
}

} // namespace

vxNMMatrix::vxNMMatrix(long rows, long columns)
    : rows_(rows), columns_(columns), entries_(entryCount(rows, columns)) {}

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
    if (detail::StoringCore* core = detail::ArchiveAccess::storing(archive)) {
        core->putDoubles(matrix.entries_.data(), matrix.entries_.size());
        return archive;
    }
    requireLoadable(archive, rows, columns);
    vxNMMatrix loaded(rows, columns);
    detail::ArchiveAccess::loading(archive)->getDoubles(loaded.entries_.data(), loaded.entries_.size());
    matrix = std::move(loaded);
    return archive;
}
