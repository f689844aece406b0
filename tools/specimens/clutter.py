"""Things on a desk: a keyboard, pens, a mug, notes, a telephone."""

import numpy as np

from . import brush


class _Desk:
    # Paints outlines given in millimetres.
    def __init__(self, picture, view):
        self.picture, self.view = picture, view
        self.scale = view.scale()

    def mask(self, *outlines):
        return brush.mask_of(self.view.size, [self.view.pixels(o) for o in outlines])

    def lay(self, outlines, colour, height_mm=0.0):
        mask = self.mask(*outlines)
        if height_mm:
            reach = height_mm * self.scale
            brush.cast_shadow(self.picture, mask, 0.6 * reach, 0.7 * reach, 0.5)
        brush.flat(self.picture, mask, colour)

    def roll(self, outline, colour, radius_mm, gloss=0.3):
        mask = self.mask(outline)
        brush.cast_shadow(self.picture, mask, radius_mm * self.scale, radius_mm * self.scale, 0.5)
        brush.rounded(self.picture, mask, colour, radius_mm * self.scale, gloss)


def _turned(x, y, degrees):
    a = np.radians(degrees)
    return np.array([x * np.cos(a) - y * np.sin(a), x * np.sin(a) + y * np.cos(a)])


def _pen(desk, rng, at, degrees):
    colour = [(36, 58, 120), (30, 30, 34), (160, 34, 40), (214, 170, 50)][int(rng.integers(4))]
    tip, cap, end = (at + _turned(x, 0, degrees) for x in (-72, 20, 66))
    desk.roll(brush.capsule(at + _turned(-62, 0, degrees), tip, 3.0, 0.8), (200, 196, 188), 3)
    desk.roll(brush.capsule(at + _turned(-58, 0, degrees), end, 3.7, 3.7), colour, 3.7, 0.5)
    aside = _turned(0, -2.6, degrees)
    desk.roll(brush.capsule(cap + aside, end + aside, 1.0, 1.0), (206, 206, 210), 1.0, 0.6)


def _keyboard(desk, rng, at, degrees):
    dark = rng.random() < 0.5
    body, key = ((44, 46, 50), (70, 72, 78)) if dark else ((196, 198, 200), (236, 236, 234))
    desk.lay([brush.box(at, 300, 112, degrees, 6)], body, 9)
    keys, tops = [], []
    for row in range(5):
        for column in range(15):
            x, y = -133 + 19 * column, -40 + 19 * row
            if row == 4 and 3 < column < 10:
                continue
            keys.append(brush.box(at + _turned(x, y, degrees), 17, 17, degrees, 2))
            tops.append(brush.box(at + _turned(x, y - 0.8, degrees), 13.5, 13.5, degrees, 2.5))
    for outlines, width, height in ((keys, 112, 17), (tops, 109, 13.5)):
        outlines.append(brush.box(at + _turned(-10, 36, degrees), width, height, degrees, 2))
    desk.lay(keys, tuple(int(c * 0.8) for c in key), 1.5)
    desk.lay(tops, key)


def _mug(desk, rng, at, degrees):
    colour = [(228, 226, 220), (60, 92, 110), (168, 70, 56)][int(rng.integers(3))]
    desk.roll(brush.capsule(at + _turned(38, 0, degrees), at + _turned(56, 0, degrees), 7, 9),
              colour, 7)
    desk.lay([brush.circle(at, 42)], tuple(int(c * 0.86) for c in colour), 22)
    desk.roll(brush.circle(at, 42), colour, 4, 0.3)
    desk.lay([brush.circle(at, 37.5)], tuple(int(c * 0.55) for c in colour))
    desk.lay([brush.circle(at + 1.5, 35)], (58, 36, 24))
    desk.lay([brush.capsule(at + [-16, -14], at + [-6, -20], 3, 2)], (86, 58, 40))


def _note(desk, rng, at, degrees):
    colour = [(244, 226, 112), (248, 178, 190), (176, 220, 236)][int(rng.integers(3))]
    desk.lay([brush.box(at, 76, 76, degrees)], colour, 1.2)
    for line in range(4):
        length = rng.uniform(26, 54)
        desk.lay([brush.capsule(at + _turned(-30, -22 + 12 * line, degrees),
                                at + _turned(-30 + length, -22 + 12 * line, degrees), 0.35, 0.35)],
                 (70, 70, 96))


def _telephone(desk, rng, at, degrees):
    desk.lay([brush.box(at, 72, 148, degrees, 9)], (30, 32, 36), 6)
    desk.lay([brush.box(at, 67, 143, degrees, 7)], (12, 14, 18))
    gleam = ((-20, -70), (30, -70), (30, 10), (-4, 10))
    desk.lay([at + np.stack([_turned(x, y, degrees) for x, y in gleam])], (30, 34, 42))


def _paper(desk, rng, at, degrees):
    desk.lay([brush.box(at, 148, 210, degrees)], (236, 234, 226), 1.5)
    for line in range(22):
        length = rng.uniform(70, 116)
        desk.lay([brush.capsule(at + _turned(-58, -84 + 8 * line, degrees),
                                at + _turned(-58 + length, -84 + 8 * line, degrees), 0.4, 0.4)],
                 (150, 150, 156))


# Half-widths in millimetres, in the order in which things lie on each other.
_THINGS = {_paper: 84, _note: 40, _telephone: 54, _keyboard: 56, _mug: 46, _pen: 0}


def scatter(picture, rng, view, free_mm, count=4):
    """Lays things into picture (float32, in place) around a free area (width, height in mm)."""
    desk = _Desk(picture, view)
    kinds = list(_THINGS)
    directions = rng.uniform(0, 360) + rng.permutation(count) * 360 / count
    directions += rng.uniform(-20, 20, count)
    chosen = [kind for turn in range(0, count, len(kinds))
              for kind in rng.permutation(len(kinds))[:count - turn]]
    for kind, direction in zip(sorted(chosen), np.radians(directions)):
        thing = kinds[kind]
        ray = np.array([np.cos(direction), np.sin(direction)])
        edge = np.min(np.array(free_mm) / 2 / np.maximum(np.abs(ray), 1e-3))
        at = ray * (edge + 0.85 * _THINGS[thing] + rng.uniform(4, 16))
        degrees = np.degrees(direction) + 90 if thing is _keyboard else rng.uniform(-40, 40)
        thing(desk, rng, at, degrees + (180 if thing is _keyboard and np.sin(direction) > 0 else 0))
