#!/usr/bin/env python3
"""Writes random_tables.h, the numbers that the tests of the random generators compare with.

Nothing here uses the library. The 64-bit Mersenne twister is written out from the definition in the C++ standard and
checked against the value that the standard gives for it. The normal quantiles and the logarithms come from mpmath, with
far more digits than a double has. The first Gaussian numbers are computed with the published algorithm AS 241 in
Python's doubles, step by step as IEEE 754 prescribes, and each is checked against mpmath.

Run: python3 make_tables.py > random_tables.h && clang-format -i random_tables.h
"""

import math

from mpmath import mp, mpf

mp.dps = 60

MASK = (1 << 64) - 1


class Twister:
    """std::mt19937_64: the parameters of [rand.predef], the algorithm of [rand.eng.mers]."""

    N, M, R = 312, 156, 31
    A = 0xB5026F5AA96619E9
    LOWER = (1 << R) - 1
    UPPER = MASK ^ LOWER

    def __init__(self, seed):
        self.state = [seed & MASK]
        for i in range(1, self.N):
            last = self.state[-1]
            self.state.append((6364136223846793005 * (last ^ (last >> 62)) + i) & MASK)
        self.next_index = self.N

    def __call__(self):
        if self.next_index == self.N:
            self.twist()
        y = self.state[self.next_index]
        self.next_index += 1
        y ^= (y >> 29) & 0x5555555555555555
        y ^= (y << 17) & 0x71D67FFFEDA60000
        y ^= (y << 37) & 0xFFF7EEE000000000 & MASK
        return y ^ (y >> 43)

    def twist(self):
        for i in range(self.N):
            y = (self.state[i] & self.UPPER) | (self.state[(i + 1) % self.N] & self.LOWER)
            odd = self.A if y & 1 else 0
            self.state[i] = self.state[(i + self.M) % self.N] ^ (y >> 1) ^ odd
        self.next_index = 0


def quantile(p):
    """The p-quantile of the standard normal distribution, for an exact 0 < p <= 1/2."""
    # For small p, ncdf(-x) = erfc(x / sqrt 2) / 2 keeps its relative accuracy; Newton's method on its logarithm.
    p = mpf(p)
    if p == mpf(1) / 2:
        return mpf(0)
    log_p = mp.log(p)
    x = mp.sqrt(-2 * log_p) if p < mpf("0.1") else (mpf(1) / 2 - p) * mp.sqrt(2 * mp.pi)
    for _ in range(200):
        cdf = mp.erfc(x / mp.sqrt(2)) / 2
        step = (mp.log(cdf) - log_p) * cdf / mp.npdf(x)
        x += step
        if abs(step) <= abs(x) * mpf(10) ** -45:
            return -x
    raise ArithmeticError(f"no quantile found for {p}")


# AS 241, PPND16, as published: numerators and denominators, lowest coefficient first.
A = [3.3871328727963666080e0, 1.3314166789178437745e2, 1.9715909503065514427e3, 1.3731693765509461125e4,
     4.5921953931549871457e4, 6.7265770927008700853e4, 3.3430575583588128105e4, 2.5090809287301226727e3]
B = [1.0, 4.2313330701600911252e1, 6.8718700749205790830e2, 5.3941960214247511077e3,
     2.1213794301586595867e4, 3.9307895800092710610e4, 2.8729085735721942674e4, 5.2264952788528545610e3]
C = [1.42343711074968357734e0, 4.63033784615654529590e0, 5.76949722146069140550e0, 3.64784832476320460504e0,
     1.27045825245236838258e0, 2.41780725177450611770e-1, 2.27238449892691845833e-2, 7.74545014278341407640e-4]
D = [1.0, 2.05319162663775882187e0, 1.67638483018380384940e0, 6.89767334985100004550e-1,
     1.48103976427480074590e-1, 1.51986665636164571966e-2, 5.47593808499534494600e-4, 1.05075007164441684324e-9]
E = [6.65790464350110377720e0, 5.46378491116411436990e0, 1.78482653991729133580e0, 2.96560571828504891230e-1,
     2.65321895265761230930e-2, 1.24266094738807843860e-3, 2.71155556874348757815e-5, 2.01033439929228813265e-7]
F = [1.0, 5.99832206555887937690e-1, 1.36929880922735805310e-1, 1.48753612908506148525e-2,
     7.86869131145613259100e-4, 1.84631831751005468180e-5, 1.42151175831644588870e-7, 2.04426310338993978564e-15]


def polynomial(coefficients, x):
    value = coefficients[-1]
    for coefficient in reversed(coefficients[:-1]):
        value = value * x + coefficient
    return value


def series_log(x):
    """The logarithm as the generator defines it: a fixed series in basic operations."""
    fraction, exponent = math.frexp(x)
    if fraction < float.fromhex("0x1.6a09e667f3bcdp-1"):
        fraction *= 2.0
        exponent -= 1
    s = (fraction - 1.0) / (fraction + 1.0)
    square = s * s
    series = 0.0
    for term in range(23, 2, -2):
        series = (series + 1.0 / term) * square
    return exponent * float.fromhex("0x1.62e42fefa39efp-1") + 2.0 * (s + s * series)


def lower_quantile(p):
    """AS 241 for p <= 1/2."""
    q = p - 0.5
    if abs(q) <= 0.425:
        r = 0.425 * 0.425 - q * q
        return q * polynomial(A, r) / polynomial(B, r)
    r = math.sqrt(-series_log(p))
    if r <= 5.0:
        return -(polynomial(C, r - 1.6) / polynomial(D, r - 1.6))
    return -(polynomial(E, r - 5.0) / polynomial(F, r - 5.0))


def gaussian(part):
    """The quantile at the middle of part number `part` of 2^53 equal parts."""
    is_lower = part < 2 ** 52
    from_end = part + 0.5 if is_lower else 2.0 ** 53 - part - 0.5
    z = lower_quantile(from_end * 2.0 ** -53)
    exact = quantile(mpf(from_end) / 2 ** 53)
    if abs(z - exact) > abs(exact) * mpf("1e-15"):
        raise ArithmeticError(f"{z} is too far from {exact}")
    return z if is_lower else -z


def table(name, element, rows):
    print(f"constexpr {element} {name}[] = {{")
    for row in rows:
        print("    " + row + ",")
    print("};\n")


def quantile_points():
    points = [mpf(i) / 128 for i in range(1, 128)]
    points += [mpf(2) ** -i for i in range(8, 62, 2)] + [1 - mpf(2) ** -i for i in range(8, 54, 3)]
    points += [mpf(float(f"1e-{i}")) for i in range(3, 301, 11)]
    edges = [0.075, 0.925, math.exp(-25.0)]  # where one approximation takes over from another
    for edge in edges:
        points += [mpf(math.nextafter(edge, 0.0)), mpf(edge), mpf(math.nextafter(edge, 1.0))]
    return sorted(set(points))


def log_points():
    near_one = [math.nextafter(1.0, 0.0), math.nextafter(1.0, 2.0), 1 - 2.0 ** -20, 1 + 2.0 ** -20, 1 - 2.0 ** -8]
    near_fold = [math.sqrt(0.5), math.nextafter(math.sqrt(0.5), 0.0), math.sqrt(2.0), math.nextafter(math.sqrt(2.0), 2.0)]
    grid = [(i + 0.37) / 16 for i in range(1, 40)]
    scales = [float(f"1e{i}") for i in range(-307, 308, 41)] + [2.0 ** -1022, 2.0 ** -54, 1.7976931348623157e308]
    return sorted(set(near_one + near_fold + grid + scales))


def main():
    check = Twister(5489)
    for _ in range(9999):
        check()
    assert check() == 9981545732273789042, "not the engine of the C++ standard"

    engine = Twister(1)
    parts = [engine() >> 11 for _ in range(100)]

    print("// Written by make_tables.py, which says where the numbers come from.")
    print("#ifndef TESTS_PLATFORM_RANDOM_RANDOM_TABLES_H\n#define TESTS_PLATFORM_RANDOM_RANDOM_TABLES_H\n")
    print("namespace test {\n")
    print("struct Point {\n    double x;\n    double y;\n};\n")
    print("/// The first numbers of vxRandomUniform(1).next(0, 1).")
    table("firstUniform", "double", [(part * 2.0 ** -53).hex() for part in parts])
    print("/// The first numbers of vxRandomGaussian(1).next(0, 1).")
    table("firstGaussian", "double", [gaussian(part).hex() for part in parts])
    print("/// The standard normal quantile y at x.")
    rows = []
    for p in quantile_points():
        y = quantile(p) if p <= mpf(1) / 2 else -quantile(1 - p)
        rows.append(f"{{{float(p).hex()}, {float(y).hex()}}}")
    table("quantiles", "Point", rows)
    print("/// The natural logarithm y of x.")
    table("logarithms", "Point", [f"{{{x.hex()}, {float(mp.log(mpf(x))).hex()}}}" for x in log_points()])
    print("} // namespace test\n\n#endif")


if __name__ == "__main__":
    main()
