#include "clss/clastool/knn/cell_coder.h"

#include <algorithm>
#include <cmath>

namespace detail {

namespace {

constexpr std::size_t blockSize = CompactPatterns::blockSize;

bool gather(const double* const* rows, std::size_t first, std::size_t last, double* columns) {
    for (std::size_t i = 0; i < blockSize; ++i) {
        double* place = columns + i;
        for (std::size_t j = first; j < last; ++j, place += blockSize) {
            const double value = rows[i][j];
            if (!(std::fabs(value) <= CompactPatterns::largest)) { // NaN too
                return false;
            }
            *place = value;
        }
    }
    return true;
}

bool findCells(const double* values, const double* ends, std::uint8_t* cells, double& greatest) {
    bool areWithin = true;
    double most = greatest;
    for (std::size_t i = 0; i < blockSize; ++i) {
        const std::size_t cell = cellOf(values[i], ends);
        cells[i] = static_cast<std::uint8_t>(cell);
        areWithin &= ends[cell] <= values[i];
        most = std::max(most, values[i]);
    }
    greatest = most;
    return areWithin;
}

constexpr CellCoder portable{&gather, &findCells};

} // namespace

const CellCoder& portableCellCoder() noexcept {
    return portable;
}

const CellCoder& bestCellCoder() noexcept {
    static const CellCoder& best = []() -> const CellCoder& {
        for (const CellCoder* coder : {avx512CellCoder(), avx2CellCoder()}) {
            if (coder != nullptr) {
                return *coder;
            }
        }
        return portable;
    }();
    return best;
}

} // namespace detail
