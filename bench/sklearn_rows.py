#!/usr/bin/python3
"""Measures scikit-learn, one pattern at a time, and prints it in the form of Google Benchmark.

    bench/sklearn_rows.py [--quick] > sklearn.json

The nearest neighbours are searched in the same data as by the other contenders; the models are trained on other data
of the same shapes, since what takes the time of a single decision here is not the arithmetic."""

import importlib.util
import json
import statistics
import sys
import time

QUICK = "--quick" in sys.argv[1:]
REPETITIONS = 3
NEIGHBORS = 5

if importlib.util.find_spec("sklearn") is None:
    print("bench: scikit-learn (python3-sklearn) is not installed; its rows are left out", file=sys.stderr)
    print(json.dumps({"context": {}, "benchmarks": []}))
    sys.exit(0)

import numpy
import sklearn
from sklearn.discriminant_analysis import QuadraticDiscriminantAnalysis
from sklearn.naive_bayes import GaussianNB
from sklearn.neighbors import NearestNeighbors
from sklearn.tree import DecisionTreeClassifier


def draws(seed, first, count):
    """Numbers `first` to `first + count - 1` of the generator in bench/data.h."""
    with numpy.errstate(over="ignore"):
        state = numpy.uint64(seed) + numpy.arange(first, first + count, dtype=numpy.uint64) * numpy.uint64(0x9E3779B97F4A7C15)
        state = (state ^ (state >> numpy.uint64(30))) * numpy.uint64(0xBF58476D1CE4E5B9)
        state = (state ^ (state >> numpy.uint64(27))) * numpy.uint64(0x94D049BB133111EB)
        return state ^ (state >> numpy.uint64(31))


def bell_rows(count, size, seed):
    """As in bench/data.h, in pieces that spare memory."""
    values = numpy.empty(count * size)
    piece = 1 << 20
    for begin in range(0, values.size, piece):
        drawn = draws(seed, 2 * begin + 1, 2 * min(piece, values.size - begin))
        parts, fraction = drawn[0::2], (drawn[1::2] >> numpy.uint64(11)) * 2.0**-53
        total = sum((parts >> numpy.uint64(shift)) & numpy.uint64(0xFFFF) for shift in (0, 16, 32, 48))
        values[begin : begin + total.size] = (total + fraction) * 2.0**-16 - 2.0
    return values.reshape(count, size)


def seconds_of(operation, queries):
    """The median time of one call, queries in turn."""
    operation(queries[:1])
    begin = time.process_time()
    operation(queries[:1])
    calls = max(1, min(200, int(0.05 / max(time.process_time() - begin, 1e-5))))
    times = []
    for _ in range(REPETITIONS):
        begin = time.process_time()
        for i in range(calls):
            operation(queries[i % len(queries)][None, :])
        times.append((time.process_time() - begin) / calls)
    return statistics.median(times)


results = []


def record(workload, name, operation, queries):
    results.append({"run_name": f"{workload}/rival:{name}", "run_type": "aggregate", "aggregate_name": "median",
                    "cpu_time": 1e9 * seconds_of(operation, queries), "time_unit": "ns"})


def measure_neighbors(exponent, size):
    count = 10**exponent
    stored, queries = bell_rows(count, size, 1), bell_rows(64, size, 2)
    # Its tree takes long to build, and is no better than a scan in many dimensions.
    kinds = ["brute", "kd_tree"] if count * size <= 4_000_000 else ["brute"]
    for kind in kinds:
        search = NearestNeighbors(n_neighbors=NEIGHBORS, algorithm=kind).fit(stored)
        squares = ((stored - queries[0]) ** 2).sum(axis=1)
        if set(search.kneighbors(queries[:1])[1][0]) != set(numpy.argpartition(squares, NEIGHBORS)[:NEIGHBORS]):
            sys.exit(f"scikit-learn, {kind}: other neighbours than those that lie nearest")
        record(f"neighbors/n=1e{exponent},d={size}", f"scikit-learn {kind.replace('kd_tree', 'tree')}", search.kneighbors,
               queries)


def measure_models(categories, size, random):
    labels = numpy.arange(400 * categories) % categories
    means = random.standard_normal((categories, size))
    rows = random.standard_normal((labels.size, size)) + means[labels]
    for kind, model in (("joint", QuadraticDiscriminantAnalysis()), ("independent", GaussianNB())):
        record(f"bayes/{categories} categories,{kind},d={size}", "scikit-learn", model.fit(rows, labels).predict_proba, rows)


def measure_tree(depth, random):
    rows = random.standard_normal((5_000 if QUICK else 50_000, 8))
    tree = DecisionTreeClassifier(max_depth=depth).fit(rows, random.integers(0, 4, len(rows)))
    record(f"trees/depth {depth}", "scikit-learn", tree.predict_proba, rows[:64])


for exponent in (3, 4) if QUICK else (3, 4, 5, 6):
    for size in (4, 16, 64):
        measure_neighbors(exponent, size)
for categories in (2, 10):
    for size in (4, 16, 32):
        measure_models(categories, size, numpy.random.default_rng(0))
for depth in (6, 12, 20):
    measure_tree(depth, numpy.random.default_rng(0))
print(json.dumps({"context": {"scikit-learn": sklearn.__version__}, "benchmarks": results}))
