#!/usr/bin/python3
"""Writes the labelled data sets of this folder, as they come with Debian's python3-sklearn, in the form that README.md
describes. Run it in this folder; the files do not change from one run to the next."""

import csv
import re

from sklearn import datasets


def plain(name):
    """A measurement's name as one word."""
    name = name.replace("(cm)", "cm").replace("od280/od315_of_diluted_wines", "od280_od315")
    return re.sub(r"[^a-z0-9]+", "_", name.lower()).strip("_")


def text(value):
    """The shortest decimal that gives the same double."""
    return repr(float(value)).removesuffix(".0")


def export(file, dataset):
    with open(file, "w", newline="") as out:
        writer = csv.writer(out, lineterminator="\n")
        writer.writerow([plain(name) for name in dataset.feature_names] + ["label"])
        for measurements, label in zip(dataset.data, dataset.target):
            writer.writerow([text(value) for value in measurements] + [int(label)])


export("iris.csv", datasets.load_iris())
export("wine.csv", datasets.load_wine())
export("breast_cancer.csv", datasets.load_breast_cancer())
export("digits.csv", datasets.load_digits())
