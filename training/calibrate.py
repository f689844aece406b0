#!/usr/bin/python3
"""Fits the confidence of outlines to their measures: calibrate.py FEATURES.tsv.

FEATURES.tsv is what outline_features prints for the calibration pictures. Confidence is the chance
that an outline overlaps a document by 0.8 or more; prints the numbers for OutlineConfidence.cpp and
how often outlines of each confidence do.
"""

import sys

import numpy as np

_GOOD = 0.8
_LARGE = 0.02  # of the picture; smaller outlines matter to nobody
_SHRINK = 0.02  # keeps weights small where measures say the same


def fitted(measures, good):
    """Weights, the constant last, of a logistic regression by Newton's method."""
    inputs = np.column_stack([measures, np.ones(len(measures))])
    weights = np.zeros(inputs.shape[1])
    penalty = np.diag([_SHRINK] * measures.shape[1] + [0])
    for _ in range(50):
        chance = 1 / (1 + np.exp(-inputs @ weights))
        slope = inputs.T @ (good - chance) - penalty @ weights
        bend = (inputs * (chance * (1 - chance))[:, None]).T @ inputs + penalty
        weights += np.linalg.solve(bend + 1e-6 * np.eye(len(weights)), slope)
    return weights


def main(path):
    try:
        rows = [line.split("\t") for line in open(path, encoding="utf-8").read().splitlines()[1:]]
    except OSError as error:
        sys.exit(f"{path}: {error.strerror}")
    if not rows:
        sys.exit(f"{path}: no outlines in it")
    table = np.array([[float(value) for value in row[1:]] for row in rows])
    table = table[table[:, 3] >= _LARGE]
    good = (table[:, 4] >= _GOOD).astype(float)
    weights = fitted(table[:, :3], good)
    print("inside {:.2f}, fill {:.2f}, corners {:.2f}, constant {:.2f}".format(*weights))
    chance = 1 / (1 + np.exp(-(table[:, :3] @ weights[:3] + weights[3])))
    for low, high in ((0, 0.1), (0.1, 0.4), (0.4, 0.7), (0.7, 0.9), (0.9, 1.01)):
        inside = (chance >= low) & (chance < high)
        if inside.any():
            print(f"{low:.1f} to {min(high, 1):.1f}: {int(good[inside].sum())} of {inside.sum()} good")


if __name__ == "__main__":
    if len(sys.argv) != 2 or sys.argv[1].startswith("-"):
        sys.exit(__doc__)
    main(sys.argv[1])
