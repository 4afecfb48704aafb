#ifndef VXCLASSIFIER_PLATFORM_RANGE_H
#define VXCLASSIFIER_PLATFORM_RANGE_H

#include <vxclassifier/platform/export.h>

#include <limits>

class vxArchive;

/// A closed interval of doubles.
///
/// Initial state: the full range, or the two given bounds, which are kept as they are. A range whose lower
/// bound lies above its upper one, or with a NaN for a bound, holds nothing.
///
/// Ownership: a plain value. Threads: as any plain value.
class VXCLASSIFIER_API vxRange {
public:
    constexpr vxRange() noexcept = default;
    constexpr vxRange(double lower, double upper) noexcept : lower_(lower), upper_(upper) {}

    /// The range that holds every double except NaN, the infinities included.
    static vxRange FullRange() noexcept;

    constexpr double lower() const noexcept { return lower_; }
    constexpr double upper() const noexcept { return upper_; }

    /// Whether `value` lies between the bounds; both bounds belong to the range. False for NaN.
    constexpr bool isWithin(double value) const noexcept { return lower_ <= value && value <= upper_; }

    /// Bounds are compared with the ordinary `==`, so a range with a NaN bound is unequal even to itself.
    friend constexpr bool operator==(const vxRange& a, const vxRange& b) noexcept {
        return a.lower_ == b.lower_ && a.upper_ == b.upper_;
    }
    friend constexpr bool operator!=(const vxRange& a, const vxRange& b) noexcept { return !(a == b); }

private:
    friend VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxRange& range);

    double lower_ = -std::numeric_limits<double>::infinity();
    double upper_ = std::numeric_limits<double>::infinity();
};

/// Exchanges a version byte (0; any other throws vxArchive::UnknownVersion), the lower and the upper bound.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxRange& range);

#endif
