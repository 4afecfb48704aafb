#ifndef VXCLASSIFIER_PLATFORM_PDF_MULTIVARIATE_NORMAL_H
#define VXCLASSIFIER_PLATFORM_PDF_MULTIVARIATE_NORMAL_H

#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/status.h>

#include <cstdint>

/// The multivariate normal distribution as plain records and functions. No function throws: each returns a
/// status for vfThrowExceptionOnFailure. A null pointer where a record is expected, or a negative size, is
/// vmath_status::badArgument; arguments are looked at before anything changes.
namespace vmath_status {
/// The module of the multivariate normal's own failures.
inline constexpr long pdfMultivariateNormalModule = 91;
/// The module of failures that are not about the distribution. Its converter, which this library registers
/// when it is loaded, throws std::bad_alloc for `outOfMemory`.
inline constexpr long generalModule = 90;

/// No valid data has entered the statistics, or what was loaded into them holds a number that is not finite.
inline constexpr long noData = vxStatus::failure(pdfMultivariateNormalModule, 1);
/// An update met patterns of different sizes, or of another size than those that have entered already.
inline constexpr long otherSizeOnUpdate = vxStatus::failure(pdfMultivariateNormalModule, 2);
/// An evaluated pattern has another size than those that have entered.
inline constexpr long otherSizeOnEvaluation = vxStatus::failure(pdfMultivariateNormalModule, 3);
/// The shapes of the mean and the covariance do not belong together.
inline constexpr long inconsistentStatistics = vxStatus::failure(pdfMultivariateNormalModule, 4);

inline constexpr long outOfMemory = vxStatus::failure(generalModule, 1);
inline constexpr long badArgument = vxStatus::failure(generalModule, 2);
} // namespace vmath_status

/// A matrix of doubles: `rows[i][j]` is the entry in row i and column j, both counted from 0.
///
/// Initial state: no entries. Ownership: the entries belong to the record that holds the matrix; copying the
/// structure copies pointers only. Threads: none of its own.
struct vmath_nmmatrix {
    double** rows = nullptr;
    long numRows = 0;
    long numColumns = 0;
};

/// Gives the matrix a new size and fills it with zeros; a size without entries becomes 0 x 0. A size that no
/// memory can hold is `outOfMemory` and leaves the matrix as it was.
VXCLASSIFIER_API long vmath_nmmatrix_resize(vmath_nmmatrix* matrix, long numRows, long numColumns) noexcept;

/// A feature pattern as the functions below read it: all values in order, those of invalid measurements
/// included, and the indices of the invalid measurements in any order. An index outside of the pattern says
/// nothing.
///
/// Initial state: no measurements. Ownership: none, both arrays belong to the caller. Threads: read only.
struct vmath_FeaturePattern {
    const double* values = nullptr;
    long numValues = 0;
    const std::int32_t* invalidIndices = nullptr;
    long numInvalid = 0;
};

/// A list of feature patterns. Initial state: empty. Ownership: none, the array belongs to the caller.
/// Threads: read only.
struct vmath_FeaturePatternVector {
    const vmath_FeaturePattern* patterns = nullptr;
    long numPatterns = 0;
};

/// What a record needs beyond its published statistics.
struct vmath_PDFMultivariateNormal_State;

/// Statistics of patterns, and the normal density that they describe.
///
/// States: untrained while `numSamples` is not positive; trained otherwise. The mean has one row per
/// measurement and one column; the covariance is square, symmetric and has the divisor n - 1 (all zeros for
/// one sample). `numSamples` stops growing at the largest 32-bit number; counting goes on behind it.
///
/// Ownership: a record is made by _construct or _constructCopy, owns what its members point to, and is
/// released by _destruct. Whoever changes the members directly, for example to load statistics, calls
/// _statisticsChanged before anything else.
///
/// Threads: any number of threads may evaluate or copy one record at a time while none changes it.
struct vmath_PDFMultivariateNormal {
    vmath_nmmatrix mean;
    vmath_nmmatrix covariance;
    std::int32_t numSamples = 0;
    vmath_PDFMultivariateNormal_State* state = nullptr; // never null between construction and destruction
};

/// Makes an untrained record of raw memory. After a failure there is nothing to destruct.
VXCLASSIFIER_API long vmath_PDFMultivariateNormal_construct(vmath_PDFMultivariateNormal* pdf) noexcept;

/// Makes a copy of `source` of raw memory; the copy is not between _beginUpdates and _endUpdates. After a
/// failure there is nothing to destruct.
VXCLASSIFIER_API long
vmath_PDFMultivariateNormal_constructCopy(vmath_PDFMultivariateNormal* pdf,
                                          const vmath_PDFMultivariateNormal* source) noexcept;

/// Makes `pdf` equal to `source`; a failure leaves it as it was. Whether updates are going on is not copied.
VXCLASSIFIER_API long vmath_PDFMultivariateNormal_assign(vmath_PDFMultivariateNormal* pdf,
                                                         const vmath_PDFMultivariateNormal* source) noexcept;

/// Releases what the record owns and leaves nothing in it; doing it again does no harm.
VXCLASSIFIER_API long vmath_PDFMultivariateNormal_destruct(vmath_PDFMultivariateNormal* pdf) noexcept;

/// Adds patterns, each value divided by `factor`. A pattern with an invalid measurement, or with a value that
/// is not finite after the division, does not enter.
///
/// Fails with `otherSizeOnUpdate`, `inconsistentStatistics` or `outOfMemory`, and then none of the patterns
/// has entered. Each pattern costs in proportion to the square of its size; the factor that evaluation needs
/// costs the third power of it, once per call (see _beginUpdates).
VXCLASSIFIER_API long vmath_PDFMultivariateNormal_updateWithDataNormalize(
    vmath_PDFMultivariateNormal* pdf, const vmath_FeaturePatternVector* data, double factor) noexcept;

/// Says that many updates follow: until _endUpdates no update computes the factor, and `mean`, `covariance`
/// and `numSamples` may lag behind what has come. An evaluation, a copy or a merge in between sees
/// everything, but takes as long as _endUpdates each time.
VXCLASSIFIER_API long vmath_PDFMultivariateNormal_beginUpdates(vmath_PDFMultivariateNormal* pdf) noexcept;

/// Publishes what the updates since _beginUpdates have left, and computes its factor. Without _beginUpdates
/// it does nothing.
VXCLASSIFIER_API long vmath_PDFMultivariateNormal_endUpdates(vmath_PDFMultivariateNormal* pdf) noexcept;

/// Adds the data that have entered `other`, as if they had come by updates (equal within rounding). `other`
/// may be `pdf` itself. Fails like an update, and then nothing has changed.
VXCLASSIFIER_API long vmath_PDFMultivariateNormal_merge(vmath_PDFMultivariateNormal* pdf,
                                                        const vmath_PDFMultivariateNormal* other) noexcept;

/// Takes over statistics that the caller has put into the members, and computes their factor. Any values and
/// shapes may stand there; those that make no sense are met by the failure statuses of the functions that use
/// them.
VXCLASSIFIER_API long
vmath_PDFMultivariateNormal_statisticsChanged(vmath_PDFMultivariateNormal* pdf) noexcept;

/// Puts the natural logarithm of the density at `pattern` into `result`: for a pattern with invalid
/// measurements that of the marginal density of the valid ones, and 0 if none is valid. What takes the
/// density's place where the covariance is singular is described in docs/numerics.md. The result is finite,
/// and not below -1e280, unless a valid measurement is NaN, which makes it NaN.
///
/// Fails with `noData`, then `inconsistentStatistics`, then `otherSizeOnEvaluation`, or with `outOfMemory`,
/// and then leaves `result` as it was. Without invalid measurements it takes time in proportion to the square
/// of the number of measurements, with some invalid to the third power of the number of valid ones.
VXCLASSIFIER_API long vmath_PDFMultivariateNormal_logValue(const vmath_PDFMultivariateNormal* pdf,
                                                           const vmath_FeaturePattern* pattern,
                                                           double* result) noexcept;

#endif
