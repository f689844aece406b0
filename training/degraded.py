#!/usr/bin/python3
"""Spoils labelled pictures in the ways in which zones become hard to read: degraded.py MANIFEST FOLDER [SEED].

Every picture of the list whose zone is known is written to FOLDER once for each way, with a manifest.tsv as
tools/evaluate reads it: kind is the way, the zone's lines are those of the original, also where they are hidden now.
"""

import csv
import sys
from pathlib import Path

import cv2
import numpy as np

from drawing import light, manifest


def _smaller(rng, pixels):
    factor = rng.uniform(0.25, 0.7)
    return cv2.resize(pixels, None, fx=factor, fy=factor, interpolation=cv2.INTER_AREA)


def _blurred(rng, pixels):
    return cv2.GaussianBlur(pixels, (0, 0), rng.uniform(0.5, 3.0) * _unit(pixels))


def _moved(rng, pixels):
    return light.motion(pixels, rng, rng.uniform(2, 12) * _unit(pixels))


def _noisy(rng, pixels):
    return light.sensed(pixels.astype(np.float32) / 255, rng, rng.uniform(10, 40))


def _packed(rng, pixels):
    return cv2.imdecode(np.frombuffer(light.jpeg(pixels, int(rng.integers(6, 30))), np.uint8), cv2.IMREAD_COLOR)[..., ::-1]


def _tilted(rng, pixels):
    height, width = pixels.shape[:2]
    angle = rng.uniform(4, 30) * rng.choice([-1, 1])
    turn = cv2.getRotationMatrix2D((width / 2, height / 2), angle, 1.0)
    reach = np.abs(turn[:, :2]) @ [width, height]
    turn[:, 2] += (reach - [width, height]) / 2
    return cv2.warpAffine(pixels, turn, tuple(int(side) for side in reach), flags=cv2.INTER_AREA, borderValue=(90, 90, 90))


def _glaring(rng, pixels):
    picture = pixels.astype(np.float32)
    for _ in range(int(rng.integers(1, 4))):
        where = rng.uniform([0.1, 0.5], [0.9, 1.0]) * pixels.shape[1::-1]
        reach = rng.uniform(0.02, 0.12) * pixels.shape[1]
        light.glare(picture, where, rng.uniform(0, np.pi), reach, reach * rng.uniform(0.2, 1), rng.uniform(120, 400))
    return np.clip(picture, 0, 255).astype(np.uint8)


def _barred(rng, pixels):
    picture = pixels.copy()
    height, width = pixels.shape[:2]
    for _ in range(int(rng.integers(1, 6))):
        x, y = rng.uniform([0.0, 0.55], [0.9, 0.98]) * [width, height]
        long, tall = rng.uniform([0.01, 0.01], [0.25, 0.05]) * [width, height]
        grey = int(rng.choice([0, 0, 30, 255]))
        cv2.rectangle(picture, (int(x), int(y)), (int(x + long), int(y + tall)), (grey,) * 3, -1)
    return picture


def _unit(pixels):
    # What a pixel is in a picture of 1280.
    return max(pixels.shape[:2]) / 1280


_WAYS = {"smaller": _smaller, "blurred": _blurred, "moved": _moved, "noisy": _noisy, "packed": _packed,
         "tilted": _tilted, "glaring": _glaring, "barred": _barred}


def main(source, folder, seed=1):
    cv2.setNumThreads(1)
    source, folder, rows = Path(source), Path(folder), []
    folder.mkdir(parents=True, exist_ok=True)
    with source.open(encoding="utf-8", newline="") as file:
        pictures = [row for row in csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE) if len(row.get("mrz1") or "") > 1]
    for number, row in enumerate(pictures):
        pixels = cv2.imread(str(source.parent / row["file"]), cv2.IMREAD_COLOR)
        if pixels is None:
            sys.exit(f"degraded.py: {source.parent / row['file']}: cannot be read")
        for place, (way, spoil) in enumerate(_WAYS.items()):
            rng = np.random.default_rng([int(seed), number, place])
            name = f"{number:04d}-{way}.jpg"
            (folder / name).write_bytes(light.jpeg(spoil(rng, pixels[..., ::-1]), 90))
            rows.append((*manifest.row(name, way, None), row["mrz1"], row["mrz2"], row.get("mrz3") or "-"))
    manifest.write(folder, rows)


if __name__ == "__main__":
    if not 3 <= len(sys.argv) <= 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
