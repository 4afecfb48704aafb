#ifndef PLATFORM_STATISTICS_READY_DENSITY_H
#define PLATFORM_STATISTICS_READY_DENSITY_H

#include "platform/statistics/normal_density.h"

#include <vxclassifier/platform/pdf_multivariate_normal.h>

#include <cstddef>

namespace detail {

/// The density of a record, for evaluations without the questions of vmath_PDFMultivariateNormal_logValue.
/// Null if that function would fail for patterns of this size, or would have to compute the factor first. It
/// lives until the record changes.
const NormalDensity* readyDensity(const vmath_PDFMultivariateNormal& pdf, long numValues) noexcept;

/// From now on no update computes the factor; an evaluation computes it for itself. For records of which only
/// the statistics are asked for. Assigning to the record does not change this.
void prepareOnDemandOnly(vmath_PDFMultivariateNormal& pdf) noexcept;

/// Enters a complete pattern by the short way: as _updateWithDataNormalize with the factor 1, if updates are
/// going on and the record waits for more samples of this size. False, with nothing changed, if not.
bool joinWaitingSamples(vmath_PDFMultivariateNormal& pdf, const double* values, std::size_t size) noexcept;

} // namespace detail

#endif
