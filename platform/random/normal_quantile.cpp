#include "platform/random/normal_quantile.h"

#include <cmath>
#include <cstddef>

namespace detail {

namespace {

constexpr double ln2 = 0x1.62e42fefa39efp-1;
constexpr double sqrtHalf = 0x1.6a09e667f3bcdp-1;

/// A polynomial with its lowest coefficient first.
template <std::size_t Size>
double polynomial(const double (&coefficients)[Size], double x) noexcept {
    double value = coefficients[Size - 1];
    for (std::size_t i = Size - 1; i-- > 0;) {
        value = value * x + coefficients[i];
    }
    return value;
}

// The coefficients of PPND16 in Wichura's algorithm: a middle part, a near and a far tail.
constexpr double middleNumerator[] = {
    3.3871328727963666080e0, 1.3314166789178437745e2, 1.9715909503065514427e3, 1.3731693765509461125e4,
    4.5921953931549871457e4, 6.7265770927008700853e4, 3.3430575583588128105e4, 2.5090809287301226727e3};
constexpr double middleDenominator[] = {1.0,
                                        4.2313330701600911252e1,
                                        6.8718700749205790830e2,
                                        5.3941960214247511077e3,
                                        2.1213794301586595867e4,
                                        3.9307895800092710610e4,
                                        2.8729085735721942674e4,
                                        5.2264952788528545610e3};
constexpr double nearNumerator[] = {1.42343711074968357734e0,  4.63033784615654529590e0,
                                    5.76949722146069140550e0,  3.64784832476320460504e0,
                                    1.27045825245236838258e0,  2.41780725177450611770e-1,
                                    2.27238449892691845833e-2, 7.74545014278341407640e-4};
constexpr double nearDenominator[] = {1.0,
                                      2.05319162663775882187e0,
                                      1.67638483018380384940e0,
                                      6.89767334985100004550e-1,
                                      1.48103976427480074590e-1,
                                      1.51986665636164571966e-2,
                                      5.47593808499534494600e-4,
                                      1.05075007164441684324e-9};
constexpr double farNumerator[] = {6.65790464350110377720e0,  5.46378491116411436990e0,
                                   1.78482653991729133580e0,  2.96560571828504891230e-1,
                                   2.65321895265761230930e-2, 1.24266094738807843860e-3,
                                   2.71155556874348757815e-5, 2.01033439929228813265e-7};
constexpr double farDenominator[] = {1.0,
                                     5.99832206555887937690e-1,
                                     1.36929880922735805310e-1,
                                     1.48753612908506148525e-2,
                                     7.86869131145613259100e-4,
                                     1.84631831751005468180e-5,
                                     1.42151175831644588870e-7,
                                     2.04426310338993978564e-15};

constexpr double middleHalfWidth = 0.425;
constexpr double farTailStart = 5.0; // in sqrt(-log(distance from the end))

} // namespace

double portableLog(double x) noexcept {
    int exponent = 0;
    double fraction = std::frexp(x, &exponent);
    if (fraction < sqrtHalf) {
        fraction *= 2.0;
        --exponent;
    }
    // log(fraction) = 2 atanh(s); |s| < 0.172, so the series has its last term below a unit in the last
    // place.
    const double s = (fraction - 1.0) / (fraction + 1.0);
    const double square = s * s;
    double series = 0.0;
    for (int term = 23; term >= 3; term -= 2) {
        series = (series + 1.0 / term) * square;
    }
    return exponent * ln2 + 2.0 * (s + s * series);
}

double normalQuantile(double p) noexcept {
    const double q = p - 0.5;
    if (std::fabs(q) <= middleHalfWidth) {
        const double r = middleHalfWidth * middleHalfWidth - q * q;
        return q * polynomial(middleNumerator, r) / polynomial(middleDenominator, r);
    }
    const double r = std::sqrt(-portableLog(q < 0.0 ? p : 1.0 - p));
    const double size =
        r <= farTailStart
            ? polynomial(nearNumerator, r - 1.6) / polynomial(nearDenominator, r - 1.6)
            : polynomial(farNumerator, r - farTailStart) / polynomial(farDenominator, r - farTailStart);
    return q < 0.0 ? -size : size;
}

} // namespace detail
