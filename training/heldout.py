#!/usr/bin/python3
"""Draws the pictures that the network is judged by and never sees before: heldout.py BACKGROUNDS FOLDER.

FOLDER/photos: documents of layouts, backgrounds and seeds that training leaves out, full size.
FOLDER/scenes: no documents. FOLDER/turned-1.., mirrored, grey, dark: the first photos, changed.
FOLDER/print, keys, night, covered, cut, several: one kind of scenes.KINDS each, on sheets and keyboards of
designs and colours that training leaves out. FOLDER/calibration: other photos and scenes, for the
confidences. Each with a manifest.tsv as tools/evaluate reads it; where several documents lie, the one with
the largest box is given.
"""

import sys
from pathlib import Path

import cv2
import numpy as np

import backgrounds
from drawing import light, manifest, papers, scenes, utopia
from shards import draw_below, draw_invented

PHOTOS, SCENES, CHANGED, CALIBRATION = 180, 210, 40, 210
OF_A_KIND, OF_A_KIND_KNOWN = 40, 12  # for the figures, for the calibration
_KINDS = [kind for kind in scenes.KINDS if kind != "usual"]
_SIZES = ((1280, 720), (1280, 960), (960, 1280), (720, 1280))


class _HeldOut:
    # unseen: sheets and keyboards are of designs and colours that training leaves out, not only other ones.
    def __init__(self, places, seed, unseen):
        self._places = places
        self._below = draw_below(seed + 60000, places, 1600, unseen, 0.3)
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

    def draw(self, seed, position, documents, kind="usual"):
        rng = np.random.default_rng([*np.atleast_1d(seed), position])
        size = _SIZES[int(rng.integers(len(_SIZES)))]
        pool = self._specimens if rng.random() < 0.65 else self._invented
        while True:
            scene = scenes.composed(rng, pool, self._places, size, size[0] / size[1], documents, kind,
                                    self._below.get(kind))
            if bool(scene.quads) == (documents != 0) and (kind != "several" or _one_is_larger(scene)):
                return scene

    def of_kind(self, seed, position, kind):
        """A scene with a document, or with two to four."""
        return self.draw([seed, _KINDS.index(kind)], position, 2 + position % 3 if kind == "several" else 1, kind)


def _clipped(quad, size):
    return np.clip(quad, 0, size)


def _seen(quad, size):
    # As _clipped(), but the box of what is seen where that differs: of leaning documents clipped corners tell too much.
    clipped, frame = _clipped(quad, size), np.float32([[0, 0], [size[0], 0], size, [0, size[1]]])
    seen = cv2.intersectConvexConvex(frame, quad.astype(np.float32))[1].reshape(-1, 2)
    (left, top), (right, bottom) = seen.min(0), seen.max(0)
    off = np.abs([clipped.min(0) - [left, top], clipped.max(0) - [right, bottom]])
    box = np.array([[left, top], [right, top], [right, bottom], [left, bottom]])
    return clipped if off.max() < 0.01 * max(size) else box


def _area(quad):
    return np.prod(np.ptp(quad, axis=0))


def _largest(scene, within=_clipped):
    # The document with the largest box in the picture: its corners, cut by the frame, and its kind.
    found = [(within(quad, scene.pixels.shape[1::-1]), kind) for quad, kind in zip(scene.quads, scene.kinds)]
    return max(found, key=lambda cut: _area(cut[0]), default=(None, "other-scene"))


def _one_is_larger(scene):
    # Which is the largest is no matter of chance.
    areas = sorted(_area(_clipped(quad, scene.pixels.shape[1::-1])) for quad in scene.quads)
    return len(areas) > 1 and areas[-1] > 1.25 * areas[-2]


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

    def add_scene(which, position, scene, within=_clipped):
        quad, kind = _largest(scene, within)
        add(which, position, scene.pixels, "other-several" if len(scene.quads) > 1 else kind, quad)

    held, changed = _HeldOut(backgrounds.load(source, backgrounds.HELD_OUT), 70001, True), 0
    for position in _told("photo", PHOTOS):
        several = position % 6 == 5
        scene = held.draw(70002, position, 3 if several else 1)
        add_scene("photos", position, scene)
        if changed < CHANGED and not several:
            changed += 1
            quad, kind = _largest(scene)
            for which, pixels, corners in _changed(scene.pixels, quad):
                add(which, position, pixels, kind, corners)
    for position in _told("scene", SCENES):
        add_scene("scenes", position, held.draw(70003, position, 0))
    for kind in _KINDS:
        for position in _told(kind, OF_A_KIND):
            add_scene(kind, position, held.of_kind(70004, position, kind), _seen)
    # Backgrounds that training knows, so that the held-out ones stay unseen by the calibration.
    known = _HeldOut(backgrounds.load(source, backgrounds.TRAINED_ON[:4]), 80001, False)
    for position in _told("calibration picture", CALIBRATION):
        add_scene("calibration", position, known.draw(80002, position, 0 if position % 3 == 0 else 1))
    alone = [kind for kind in _KINDS if kind != "several"]  # outlines of other documents would count as wrong
    for position in _told("calibration picture", OF_A_KIND_KNOWN * len(alone)):
        scene = known.of_kind(80003, position, alone[position % len(alone)])
        add_scene("calibration", CALIBRATION + position, scene, _seen)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2])
