#ifndef CLSS_DATAGEN_DRAWN_PLACE_H
#define CLSS_DATAGEN_DRAWN_PLACE_H

namespace detail {

/// The whole number from 0 to size - 1 that a number drawn from 0 to `size` stands for. Rounding may draw the
/// upper bound itself, and comparing this way keeps out everything else that is no place.
inline long placeOf(double drawn, long size) noexcept {
    if (!(drawn > 0.0)) {
        return 0;
    }
    return drawn < static_cast<double>(size) ? static_cast<long>(drawn) : size - 1;
}

} // namespace detail

#endif
