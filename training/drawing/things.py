"""Things that are no documents: pens, mugs, keyboards, telephones, notes.

scatter() measures them in millimetres around one document, strew() throws simpler ones anywhere.
"""

import cv2
import numpy as np

from . import brush


class _Desk:
    # Paints outlines given in millimetres.
    def __init__(self, picture, view):
        self.picture, self.view, self.scale = picture, view, view.scale()

    def mask(self, *outlines):
        return brush.mask_of(self.picture, [self.view.pixels(o) - 0.5 for o in outlines])

    def lay(self, outlines, colour, height_mm=0.0):
        mask = self.mask(*outlines)
        if height_mm:
            reach = height_mm * self.scale
            brush.cast_shadow(self.picture, mask, (0.6 * reach, 0.72 * reach), 0.7 * reach, 0.5)
        brush.flat(self.picture, mask, np.float32(colour) / 255)

    def roll(self, outline, colour, radius_mm, gloss=0.3):
        mask, radius = self.mask(outline), radius_mm * self.scale
        brush.cast_shadow(self.picture, mask, (radius, 1.2 * radius), radius, 0.5)
        brush.rounded(self.picture, mask, colour, radius, gloss)


def _scribble(at, x, y, length, degrees, thick):
    start, end = (at + brush.turned((x + along, y), degrees) for along in (0, length))
    return brush.capsule(start, end, thick, thick)


def _pen(desk, rng, at, degrees):
    colour = [(36, 58, 120), (30, 30, 34), (160, 34, 40), (214, 170, 50)][int(rng.integers(4))]
    tip, neck, body, cap, end = (at + brush.turned((x, 0), degrees) for x in (-72, -62, -58, 20, 66))
    desk.roll(brush.capsule(neck, tip, 3.0, 0.8), (200, 196, 188), 3)
    desk.roll(brush.capsule(body, end, 3.7, 3.7), colour, 3.7, 0.5)
    aside = brush.turned((0, -2.6), degrees)
    desk.roll(brush.capsule(cap + aside, end + aside, 1.0, 1.0), (206, 206, 210), 1.0, 0.6)


def _keyboard(desk, rng, at, degrees):
    dark = rng.random() < 0.5
    body, key = ((44, 46, 50), (70, 72, 78)) if dark else ((196, 198, 200), (236, 236, 234))
    desk.lay([brush.box(at, 300, 112, degrees, 6)], body, 9)
    keys, tops = [], []
    for row in range(5):
        for column in range(15):
            x, y = -133 + 19 * column, -40 + 19 * row
            if row < 4 or not 3 < column < 10:
                keys.append(brush.box(at + brush.turned((x, y), degrees), 17, 17, degrees, 2))
                tops.append(brush.box(at + brush.turned((x, y - 0.8), degrees), 13.5, 13.5, degrees, 2.5))
    for outlines, width, height in ((keys, 112, 17), (tops, 109, 13.5)):
        outlines.append(brush.box(at + brush.turned((-10, 36), degrees), width, height, degrees, 2))
    desk.lay(keys, [int(c * 0.8) for c in key], 1.5)
    desk.lay(tops, key)


def _mug(desk, rng, at, degrees):
    colour = [(228, 226, 220), (60, 92, 110), (168, 70, 56)][int(rng.integers(3))]
    desk.roll(brush.capsule(*(at + brush.turned((x, 0), degrees) for x in (38, 56)), 7, 9), colour, 7)
    desk.lay([brush.circle(at, 42)], [int(c * 0.86) for c in colour], 22)
    desk.roll(brush.circle(at, 42), colour, 4, 0.3)
    desk.lay([brush.circle(at, 37.5)], [int(c * 0.55) for c in colour])
    desk.lay([brush.circle(at + 1.5, 35)], (58, 36, 24))
    desk.lay([brush.capsule(at + [-16, -14], at + [-6, -20], 3, 2)], (86, 58, 40))


def _note(desk, rng, at, degrees):
    colour = [(244, 226, 112), (248, 178, 190), (176, 220, 236)][int(rng.integers(3))]
    desk.lay([brush.box(at, 76, 76, degrees)], colour, 1.2)
    for line in range(4):
        desk.lay([_scribble(at, -30, -22 + 12 * line, rng.uniform(26, 54), degrees, 0.35)], (70, 70, 96))


def _telephone(desk, rng, at, degrees):
    desk.lay([brush.box(at, 72, 148, degrees, 9)], (30, 32, 36), 6)
    desk.lay([brush.box(at, 67, 143, degrees, 7)], (12, 14, 18))
    gleam = np.array([(-20, -70), (30, -70), (30, 10), (-4, 10)])
    desk.lay([at + brush.turned(gleam, degrees)], (30, 34, 42))


def _paper(desk, rng, at, degrees):
    desk.lay([brush.box(at, 148, 210, degrees)], (236, 234, 226), 1.5)
    for line in range(22):
        desk.lay([_scribble(at, -58, -84 + 8 * line, rng.uniform(70, 116), degrees, 0.4)], (150, 150, 156))


# Half-widths in millimetres, in the order in which things lie on each other.
_THINGS = {_paper: 84, _note: 40, _telephone: 54, _keyboard: 56, _mug: 46, _pen: 0}


def scatter(picture, rng, view, free_mm, count):
    """Lays count things into picture around a free area (width, height in mm)."""
    desk = _Desk(picture, view)
    kinds = list(_THINGS)
    directions = rng.uniform(0, 360) + rng.permutation(count) * 360 / count
    directions += rng.uniform(-20, 20, count)
    chosen = [kind for turn in range(0, count, len(kinds)) for kind in rng.permutation(len(kinds))[:count - turn]]
    for kind, direction in zip(sorted(chosen), np.radians(directions)):
        thing = kinds[kind]
        ray = np.array([np.cos(direction), np.sin(direction)])
        edge = np.min(np.array(free_mm) / 2 / np.maximum(np.abs(ray), 1e-3))
        at = ray * (edge + 0.85 * _THINGS[thing] + rng.uniform(4, 16))
        degrees = np.degrees(direction) + 90 if thing is _keyboard else rng.uniform(-40, 40)
        thing(desk, rng, at, degrees + (180 if thing is _keyboard and np.sin(direction) > 0 else 0))


def strew(rng, picture, aspect, quads):
    """Lays one to five things over picture, mostly beside the quads."""
    height, width = picture.shape[:2]
    stretch = np.array([width / aspect / height, 1.0])
    for _ in range(int(rng.integers(1, 6))):
        centre = rng.uniform(-0.05, 1.05, 2) * [width, height]
        near = any(cv2.pointPolygonTest(q.astype(np.float32), tuple(map(float, centre)), True)
                   > -0.12 * height for q in quads)
        if near and rng.random() < 0.85:
            continue
        kind, degrees = rng.random(), np.degrees(rng.uniform(0, np.pi))
        size = rng.uniform(0.05, 0.45) * height
        dark = np.clip(rng.uniform(5, 80) + rng.normal(0, 8, 3), 0, 255)
        colour = np.clip(rng.uniform(10, 240, 3), 0, 255)

        def fill(outline, colour):
            part = brush.around(picture, (outline - centre) * stretch + centre, 2)
            if part:
                view, mask = part
                view *= 1 - mask[..., None]
                view += mask[..., None] * np.float32(colour)

        if kind < 0.3:  # a pen, a cable, a stick
            step = size * brush.turned((1, 0), degrees)
            thick = rng.uniform(0.005, 0.03) * height
            fill(brush.capsule(centre - step, centre + step, thick, thick, 12), colour)
            if rng.random() < 0.5:
                thick *= 0.3
                fill(brush.capsule(centre - step, centre + step, thick, thick, 12), np.minimum(colour + 60, 255))
        elif kind < 0.55:  # a mug, a coin, a plate
            fill(brush.circle(centre, size * 0.4, 40), colour)
            for shrink in rng.uniform(0.3, 0.95, int(rng.integers(0, 3))):
                fill(brush.circle(centre, size * 0.4 * shrink, 40), colour * rng.uniform(0.4, 1.1))
        elif kind < 0.75:  # a telephone, a lamp, a purse: dark, with round corners
            w, h = size * rng.uniform(0.4, 0.7), size
            fill(brush.box(centre, w, h, degrees, 0.12 * w, 5), dark)
            fill(brush.box(centre, w * 0.92, h * 0.95, degrees, 0.1 * w, 5),
                 np.clip(dark * 0.5 + rng.uniform(0, 25), 0, 255))
        else:  # a keyboard, a calculator
            w, h = size * rng.uniform(1, 2), size * rng.uniform(0.5, 1)
            light = rng.random() < 0.5
            body = dark if light else np.clip(dark + 140, 0, 255)
            key = np.clip(dark + 150, 0, 255) if light else dark
            fill(brush.box(centre, w, h, degrees, 0.04 * w, 5), body)
            rows, columns = int(rng.integers(3, 7)), int(rng.integers(4, 15))
            for row, column in np.ndindex(rows, columns):
                at = np.array([(column + 0.5) / columns - 0.5, (row + 0.5) / rows - 0.5]) * [w, h] * 0.94
                top = brush.box(centre + brush.turned(at, degrees), 0.78 * w / columns, 0.78 * h / rows,
                                degrees, 0.05 * h / rows, 5)
                cv2.fillConvexPoly(picture, np.round((top - centre) * stretch + centre).astype(np.int32),
                                   key.tolist())
