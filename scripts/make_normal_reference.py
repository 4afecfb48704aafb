#!/usr/bin/env python3
"""Makes the reference values for the tests of the multivariate normal.

Writes tests/platform/statistics/normal_reference.csv. Everything is computed with mpmath at 50 decimal digits from
doubles that stand in the file, by formulas that share nothing with the library: determinants and solutions come
from a decomposition of the covariance itself. Needs python3-mpmath (Debian). Takes about a minute; the result is
the same on each run.

The file has one record per line, fields separated by commas, doubles in hexadecimal:

  density,<name>,<number of measurements>,<condition number of the correlations>
  mean,<entries>
  covariance,<lower triangle, row by row>
  point,<log density>,<number of invalid indices>,<invalid indices>,<values>

A "density" is followed by its mean, its covariance and its points. A "data" record (with the number of samples in
place of the condition number) is followed by its samples ("row"), the mean and covariance of these, and points
whose log densities follow from the samples, not from the rounded mean and covariance.
"""

import pathlib
import random

import mpmath as mp

mp.mp.dps = 50
OUTPUT = pathlib.Path(__file__).resolve().parent.parent / "tests/platform/statistics/normal_reference.csv"


def gauss(rng):
    """Near enough to normal, and from the one function whose sequence Python promises to keep."""
    return sum(rng.random() for _ in range(12)) - 6.0


def line(kind, *fields):
    return ",".join([kind, *(f.hex() if isinstance(f, float) else str(f) for f in fields)]) + "\n"


def orthogonal(rng, d):
    q, _ = mp.qr(mp.matrix(d, d) + mp.matrix([[gauss(rng) for _ in range(d)] for _ in range(d)]))
    return q


def correlation(rng, d, condition):
    """A correlation matrix whose condition number is near the given one."""
    if d == 1:
        return mp.eye(1)
    q = orthogonal(rng, d)
    eigenvalues = [mp.mpf(condition) ** (-mp.mpf(i) / (d - 1)) for i in range(d)]
    a = q * mp.diag(eigenvalues) * q.T
    return mp.matrix(d, d) + mp.matrix([[a[i, j] / mp.sqrt(a[i, i] * a[j, j]) for j in range(d)] for i in range(d)])


def condition_number(r):
    if r.rows == 1:
        return 1.0
    eigenvalues = sorted(mp.eigsy(r, eigvals_only=True))
    return float(eigenvalues[-1] / eigenvalues[0])


def standardised(cov):
    deviations = [mp.sqrt(cov[i, i]) for i in range(cov.rows)]
    return mp.matrix([[cov[i, j] / deviations[i] / deviations[j] for j in range(cov.rows)] for i in range(cov.rows)])


def log_density(mean, cov, x, invalid=()):
    keep = [i for i in range(len(x)) if i not in invalid]
    if not keep:
        return 0.0
    part = mp.matrix([[cov[i, j] for j in keep] for i in keep])
    difference = mp.matrix([mp.mpf(x[i]) - mean[i] for i in keep])
    # Scaling by exact powers of two keeps mpmath's own pivot tests from seeing 1e-300.
    scale = [mp.mpf(2) ** mp.floor(mp.log(mp.sqrt(part[i, i]), 2)) for i in range(len(keep))]
    scaled = mp.matrix([[part[i, j] / scale[i] / scale[j] for j in range(len(keep))] for i in range(len(keep))])
    right = mp.matrix([difference[i] / scale[i] for i in range(len(keep))])
    distance = (right.T * mp.lu_solve(scaled, right))[0]
    log_determinant = mp.log(mp.det(scaled)) + 2 * sum(mp.log(s) for s in scale)
    return float(-(len(keep) * mp.log(2 * mp.pi) + log_determinant + distance) / 2)


def sample(rng, mean, lower, deviations):
    d = len(mean)
    u = mp.matrix([gauss(rng) for _ in range(d)])
    z = lower * u
    return [float(mean[i] + deviations[i] * z[i]) for i in range(d)]


def points_of(rng, mean, cov, samples, out):
    d = len(mean)
    masks = [()] * len(samples)
    if d > 1:
        masks += [(0,), tuple(range(1, d)), tuple(i for i in range(d) if rng.random() < 0.3), tuple(range(d))]
    for i, mask in enumerate(masks):
        x = samples[i % len(samples)]
        out.append(line("point", log_density(mean, cov, x, mask), len(mask), *mask, *x))


def density_case(out, name, d, condition, means, deviations, rng):
    r = correlation(rng, d, condition)
    mean = [float(m) for m in means]
    cov = mp.matrix(d, d)
    for i in range(d):
        for j in range(i + 1):
            cov[i, j] = cov[j, i] = mp.mpf(float(r[i, j] * deviations[i] * deviations[j]))
    out.append(line("density", name, d, condition_number(standardised(cov))))
    out.append(line("mean", *mean))
    out.append(line("covariance", *(float(cov[i, j]) for i in range(d) for j in range(i + 1))))
    lower = mp.cholesky(standardised(cov))
    samples = [sample(rng, mean, lower, deviations) for _ in range(3)]
    samples.append([float(mean[i] + 3 * gauss(rng) * deviations[i]) for i in range(d)])
    points_of(rng, mean, cov, samples, out)


def density_cases(out):
    rng = random.Random(20240501)
    for d in (1, 2, 3, 4, 6, 8, 12, 16, 24, 32):
        means = [gauss(rng) for _ in range(d)]
        deviations = [0.5 + rng.random() for _ in range(d)]
        density_case(out, f"plain {d}", d, 30, means, deviations, rng)
    for exponent in (3, 6, 9, 12):
        for d in (2, 5, 16):
            means = [gauss(rng) for _ in range(d)]
            deviations = [0.5 + rng.random() for _ in range(d)]
            density_case(out, f"condition 1e{exponent} in {d}", d, 10.0**exponent, means, deviations, rng)
    for d in (1, 3, 8, 32):
        density_case(out, f"shifted {d}", d, 30, [1e9 * (1 + gauss(rng) / 10) for _ in range(d)], [1e-3] * d, rng)
    for scale in (1e-150, 1e150):
        for d in (1, 3, 8):
            density_case(out, f"scale {scale:g} in {d}", d, 30, [scale * gauss(rng) for _ in range(d)],
                         [scale * (0.5 + rng.random()) for _ in range(d)], rng)
    wild = [10.0 ** (-150 + 300 * i / 15) for i in range(16)]
    density_case(out, "scales from 1e-150 to 1e150", 16, 30, [w * gauss(rng) for w in wild], wild, rng)


def data_case(out, name, d, n, means, deviations, rng):
    lower = mp.cholesky(correlation(rng, d, 30))
    rows = [sample(rng, means, lower, deviations) for _ in range(n)]
    mean = [mp.fsum(mp.mpf(r[i]) for r in rows) / n for i in range(d)]
    cov = mp.matrix(d, d)
    for i in range(d):
        for j in range(i + 1):
            products = ((mp.mpf(r[i]) - mean[i]) * (mp.mpf(r[j]) - mean[j]) for r in rows)
            cov[i, j] = cov[j, i] = mp.fsum(products) / (n - 1)
    out.append(line("data", name, d, n))
    out.extend(line("row", *r) for r in rows)
    out.append(line("mean", *(float(m) for m in mean)))
    out.append(line("covariance", *(float(cov[i, j]) for i in range(d) for j in range(i + 1))))
    points_of(rng, mean, cov, [sample(rng, means, lower, deviations) for _ in range(3)], out)


def data_cases(out):
    rng = random.Random(20240502)
    for d, n in ((1, 2), (1, 200), (3, 60), (8, 100), (16, 120)):
        means = [gauss(rng) for _ in range(d)]
        data_case(out, f"plain {d} from {n}", d, n, means, [0.5 + rng.random() for _ in range(d)], rng)
    data_case(out, "mean 1e9 and deviation 1e-3", 3, 100, [1e9, -1e9, 3e9], [1e-3] * 3, rng)
    data_case(out, "1e-150", 3, 50, [1e-150] * 3, [1e-150] * 3, rng)
    data_case(out, "1e150", 3, 50, [1e150] * 3, [1e150] * 3, rng)
    data_case(out, "1e-150 and 1 and 1e150", 3, 50, [1e-150, 1.0, 1e150], [1e-150, 1.0, 1e150], rng)


def main():
    out = []
    density_cases(out)
    data_cases(out)
    OUTPUT.write_text("".join(out), encoding="ascii")
    print(f"{len(out)} lines in {OUTPUT}")


if __name__ == "__main__":
    main()
