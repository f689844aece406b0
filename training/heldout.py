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
from drawing import light, manifest, papers, scenes, utopia
from shards import draw_invented

PHOTOS, SCENES, CHANGED, CALIBRATION = 180, 210, 40, 210
_SIZES = ((1280, 720), (1280, 960), (960, 1280), (720, 1280))


class _HeldOut:
    def __init__(self, places, seed):
        self._places = places
        layouts = [utopia.columns] * 3 + [papers.letter] * 2 + [papers.blank]
        flats, kinds = [], []
        for position in range(90):
            document = layouts[position % 6](np.random.default_rng([seed, position]))
            flats.append(document.flat(1300))
            kinds.append(document.kind)
        self._specimens = scenes.Flats(flats, kinds)
        # New prints of the invented layouts: other seeds than any shard's.
        invented = draw_invented(seed + 50000, 1300, places, 80, 20)
        self._invented = scenes.Flats(invented, ["other-document"] * len(invented))

    def draw(self, seed, position, documents):
        rng = np.random.default_rng([seed, position])
        size = _SIZES[int(rng.integers(len(_SIZES)))]
        pool = self._specimens if rng.random() < 0.65 else self._invented
        while True:
            scene = scenes.composed(rng, pool, self._places, size, size[0] / size[1], documents)
            if bool(scene.quads) == (documents != 0):
                return scene


def _largest(scene):
    # The document with the largest box in the picture: its corners, cut by the frame, and its kind.
    found = [(np.clip(quad, 0, scene.pixels.shape[1::-1]), kind) for quad, kind in zip(scene.quads, scene.kinds)]
    return max(found, key=lambda cut: np.prod(np.ptp(cut[0], axis=0)), default=(None, "other-scene"))


class _Set:
    def __init__(self, folder):
        self.folder, self.rows = folder, []
        folder.mkdir(parents=True, exist_ok=True)

    def add(self, position, pixels, kind, quad):
        name = f"{position:04d}.jpg"
        (self.folder / name).write_bytes(light.jpeg(pixels, 88))
        self.rows.append(manifest.row(name, kind, quad))
        manifest.write(self.folder, self.rows)


def _changed(pixels, quad):
    # Yields set name, pixels, corners.
    height, width = pixels.shape[:2]
    yield "plain", pixels, quad
    corners = quad
    for turns, tall in ((1, height), (2, width), (3, height)):  # clockwise
        corners = np.stack([tall - corners[:, 1], corners[:, 0]], 1)
        yield f"turned-{turns}", np.rot90(pixels, -turns), corners
    yield "mirrored", pixels[:, ::-1], quad * [-1, 1] + [width, 0]
    grey = cv2.cvtColor(pixels, cv2.COLOR_RGB2GRAY)
    yield "grey", np.dstack([grey] * 3), quad
    factor = min(1.0, 25.0 / max(pixels.mean(), 1.0))
    yield "dark", (pixels * factor + 0.5).astype(np.uint8), quad


def _told(what, count):
    # The numbers below count, with a line now and then.
    for position in range(count):
        yield position
        if (position + 1) % 30 == 0:
            print(f"{what} {position + 1} of {count}", flush=True)


def main(source, folder):
    cv2.setNumThreads(1)
    sets = {}

    def add(which, *picture):
        sets.setdefault(which, _Set(Path(folder, which))).add(*picture)

    held, changed = _HeldOut(backgrounds.load(source, backgrounds.HELD_OUT), 70001), 0
    for position in _told("photo", PHOTOS):
        several = position % 6 == 5
        scene = held.draw(70002, position, 3 if several else 1)
        quad, kind = _largest(scene)
        add("photos", position, scene.pixels, "other-several" if len(scene.quads) > 1 else kind, quad)
        if changed < CHANGED and not several:
            changed += 1
            for which, pixels, corners in _changed(scene.pixels, quad):
                add(which, position, pixels, kind, corners)
    for position in _told("scene", SCENES):
        add("scenes", position, held.draw(70003, position, 0).pixels, "other-scene", None)
    # Backgrounds that training knows, so that the held-out ones stay unseen by the calibration.
    known = _HeldOut(backgrounds.load(source, backgrounds.TRAINED_ON[:4]), 80001)
    for position in _told("calibration picture", CALIBRATION):
        scene = known.draw(80002, position, 0 if position % 3 == 0 else 1)
        quad, kind = _largest(scene)
        add("calibration", position, scene.pixels, kind, quad)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2])
