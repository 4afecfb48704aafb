#ifndef CLSS_RULES_SCORE_CHECKS_H
#define CLSS_RULES_SCORE_CHECKS_H

namespace detail {

/// Whether a score lies within [0, 1]; NaN does not.
inline bool isScore(double y) noexcept {
    return y >= 0.0 && !(y > 1.0);
}

/// Whether x1 lies between x0 and xc, whichever of them is the larger; false when x1 is NaN.
inline bool liesBetween(double x0, double x1, double xc) noexcept {
    const bool aboveBoth = x1 > x0 && x1 > xc;
    const bool belowBoth = !(x1 >= x0) && !(x1 >= xc);
    return !aboveBoth && !belowBoth;
}

/// Whether neither value is less than the other; this holds when one of them is NaN.
inline bool isSame(double a, double b) noexcept {
    return !(a < b) && !(b < a);
}

} // namespace detail

#endif
