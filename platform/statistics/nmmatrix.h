#ifndef PLATFORM_STATISTICS_NMMATRIX_H
#define PLATFORM_STATISTICS_NMMATRIX_H

#include <vxclassifier/platform/pdf_multivariate_normal.h>

namespace detail {

/// A matrix record that releases its entries. Gives and takes them by swapping.
class OwnedMatrix {
public:
    OwnedMatrix() = default;

    /// Filled with zeros; throws std::bad_alloc for a size that no memory can hold.
    OwnedMatrix(long numRows, long numColumns);

    /// Throws std::bad_alloc.
    explicit OwnedMatrix(const vmath_nmmatrix& source);

    ~OwnedMatrix();
    OwnedMatrix(const OwnedMatrix&) = delete;
    OwnedMatrix& operator=(const OwnedMatrix&) = delete;

    void swap(vmath_nmmatrix& other) noexcept;

private:
    vmath_nmmatrix matrix_;
};

} // namespace detail

#endif
