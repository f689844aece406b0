#!/usr/bin/python3
"""Draws the pictures that the network is judged by and never sees before: heldout.py BACKGROUNDS FOLDER.

FOLDER/photos: documents of layouts, backgrounds and seeds that training leaves out, full size.
FOLDER/scenes: no documents. FOLDER/turned-1.., mirrored, grey, dark: the first photos, changed.
FOLDER/calibration: other photos and scenes, for the confidences. Each with a manifest.tsv as
tools/evaluate reads it; where several documents lie, the one with the largest box is given.
"""

import sys
from pathlib import Path

import cv2
import numpy as np

import backgrounds
import flats
import scenes
from shards import draw_flats

PHOTOS, SCENES, CHANGED, CALIBRATION = 180, 210, 40, 210
_SIZES = ((1280, 720), (1280, 960), (960, 1280), (720, 1280))
_KINDS = {"columns": "passport-drawn", "letter": "other-document", "blank": "other-document"}


class _HeldOut:
    def __init__(self, places, seed):
        self.places = places
        pictures, kinds = [], []
        for position in range(90):
            layout = flats.SPECIMENS[True][(0, 0, 0, 1, 1, 2)[position % 6]]
            rng = np.random.default_rng([seed, position])
            document = layout(rng)
            pixels = np.dstack([document.pixels, document.coverage()])
            shrink = 1300 / max(pixels.shape[:2])
            pictures.append(cv2.resize(pixels, None, fx=shrink, fy=shrink,
                                       interpolation=cv2.INTER_AREA))
            kinds.append(_KINDS[layout.__name__])
        self.specimens = scenes.Flats(pictures, kinds)
        # New prints of the invented layouts: other seeds than any shard's.
        self.invented = draw_flats(seed + 50000, True, 1300, places,
                                   {"invented": 80, "printed": 20})
        self.invented.kinds = ["other-document"] * len(self.invented)

    def draw(self, seed, position, documents):
        rng = np.random.default_rng([seed, position])
        size = _SIZES[int(rng.integers(len(_SIZES)))]
        pool = self.specimens if rng.random() < 0.65 else self.invented
        while True:
            scene = scenes.compose(rng, pool, self.places, size, size[0] / size[1], documents)
            if bool(scene.quads) == (documents != 0):
                return scene


def _largest(scene):
    # The document with the largest box in the picture: its kind, its corners cut by the frame.
    best = None
    for quad, kind in zip(scene.quads, scene.kinds):
        cut = np.clip(quad, 0, scene.pixels.shape[1::-1])
        area = np.prod(cut.max(0) - cut.min(0))
        if best is None or area > best[0]:
            best = area, cut, kind
    return best


class _Set:
    def __init__(self, folder):
        self.folder, self.rows = Path(folder), ["file\tkind\tquad_tl_tr_br_bl"]
        self.folder.mkdir(parents=True, exist_ok=True)

    def add(self, name, pixels, kind, quad):
        cv2.imwrite(str(self.folder / name), np.ascontiguousarray(pixels[..., ::-1]),
                    [cv2.IMWRITE_JPEG_QUALITY, 88])
        corners = "-" if quad is None else ";".join(f"{x:.2f},{y:.2f}" for x, y in quad)
        self.rows.append(f"{name}\t{kind}\t{corners}")
        (self.folder / "manifest.tsv").write_text("\n".join(self.rows) + "\n", encoding="utf-8")


def _changed(pixels, quad):
    # Yields set name, pixels, corners.
    height, width = pixels.shape[:2]
    for turns in (1, 2, 3):
        corners = quad.copy()
        size = np.array([width, height], float)
        for _ in range(turns):  # clockwise
            corners = np.stack([size[1] - corners[:, 1], corners[:, 0]], 1)
            size = size[::-1]
        yield f"turned-{turns}", np.rot90(pixels, -turns), corners
    yield "mirrored", pixels[:, ::-1], quad * [-1, 1] + [width, 0]
    grey = cv2.cvtColor(np.ascontiguousarray(pixels), cv2.COLOR_RGB2GRAY)
    yield "grey", np.dstack([grey] * 3), quad
    factor = min(1.0, 25.0 / max(pixels.mean(), 1.0))
    yield "dark", (pixels * factor + 0.5).astype(np.uint8), quad


def _tell(what, position, count):
    if (position + 1) % 30 == 0:
        print(f"{what} {position + 1} of {count}", flush=True)


def main(source, folder):
    cv2.setNumThreads(1)
    folder = Path(folder)
    held = _HeldOut(backgrounds.load(source, backgrounds.HELD_OUT), 70001)
    photos, empty, changed = _Set(folder / "photos"), _Set(folder / "scenes"), {}
    for position in range(PHOTOS):
        several = position % 6 == 5
        scene = held.draw(70002, position, 3 if several else 1)
        _, quad, kind = _largest(scene)
        name = f"{position:04d}.jpg"
        photos.add(name, scene.pixels, "other-several" if len(scene.quads) > 1 else kind, quad)
        _tell("photo", position, PHOTOS)
        if len(changed.setdefault("plain", _Set(folder / "plain")).rows) <= CHANGED \
                and not several:
            changed["plain"].add(name, scene.pixels, kind, quad)
            for which, pixels, corners in _changed(scene.pixels, quad):
                changed.setdefault(which, _Set(folder / which)).add(name, pixels, kind, corners)
    for position in range(SCENES):
        scene = held.draw(70003, position, 0)
        empty.add(f"{position:04d}.jpg", scene.pixels, "other-scene", None)
        _tell("scene", position, SCENES)
    # Backgrounds that training knows, so that the held-out ones stay unseen by the calibration.
    known = _HeldOut(backgrounds.load(source, backgrounds.TRAINED_ON[:4]), 80001)
    calibration = _Set(folder / "calibration")
    for position in range(CALIBRATION):
        scene = known.draw(80002, position, 0 if position % 3 == 0 else 1)
        _, quad, kind = _largest(scene) if scene.quads else (0, None, "other-scene")
        calibration.add(f"{position:04d}.jpg", scene.pixels, kind, quad)
        _tell("calibration picture", position, CALIBRATION)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2])
