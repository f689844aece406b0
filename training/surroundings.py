"""Desks, things that are no documents, hands and fingers."""

import cv2
import numpy as np

_SHIFT = 4


def _rough(rng, size, cell):
    # Noise with features of cell (x, y) pixels, deviation about 1.
    grid = (max(2, int(size[1] / cell[1]) + 1), max(2, int(size[0] / cell[0]) + 1))
    noise = np.empty(grid, np.float32)
    cv2.setRNGSeed(int(rng.integers(2 ** 31)))
    cv2.randn(noise, 0, 1)
    return cv2.resize(noise, size, interpolation=cv2.INTER_CUBIC)


def _plain(rng, size, tone):
    base = rng.uniform(15, 245) + rng.normal(0, 18, 3) if tone is None else tone
    picture = np.full((size[1], size[0], 3), np.clip(base, 0, 255), np.float32)
    if rng.random() < 0.75:  # grain, marble or brushed metal
        for _ in range(int(rng.integers(1, 4))):
            cell = size[1] * np.exp(rng.uniform(np.log(0.006), np.log(0.4), 2))
            if rng.random() < 0.5:
                cell[1] = cell[0]
            layer = _rough(rng, size, np.maximum(cell, 1))[..., None]
            picture += layer * (rng.normal(0, 7) + rng.normal(0, 2, 3)).astype(np.float32)
    return picture


def _photo(rng, places, size, aspect):
    photo = places[int(rng.integers(len(places)))]
    h, w = photo.shape[:2]
    # A crop that the scene's height spans, turned, perhaps leaning away as a floor does.
    span = min(h, w / aspect) * rng.uniform(0.25, 1.0)
    angle = rng.uniform(-0.3, 0.3) if rng.random() < 0.7 else rng.uniform(-np.pi, np.pi)
    turn = np.array([[np.cos(angle), np.sin(angle)], [-np.sin(angle), np.cos(angle)]])
    corners = np.array([[-aspect, -1], [aspect, -1], [aspect, 1], [-aspect, 1]]) * span / 2
    if rng.random() < 0.3:
        corners *= rng.uniform(0.6, 1.4, (4, 1))
    centre = np.array([w, h]) / 2 + rng.uniform(-0.5, 0.5, 2) * np.maximum([w - span * aspect, h - span], 0)
    source = (corners @ turn + centre).astype(np.float32)
    shrink = span / size[1]
    if shrink > 1.6:
        photo = cv2.resize(photo, None, fx=1 / shrink, fy=1 / shrink, interpolation=cv2.INTER_AREA)
        source /= shrink
    target = np.float32([[0, 0], [size[0], 0], [size[0], size[1]], [0, size[1]]])
    matrix = cv2.getPerspectiveTransform(source, target)
    return cv2.warpPerspective(photo, matrix, size, flags=cv2.INTER_LINEAR,
                               borderMode=cv2.BORDER_REFLECT).astype(np.float32)


def desk(rng, places, size, aspect, tone=None):
    """What lies under everything: float32, 0..255. tone: RGB to keep near, or None."""
    if tone is not None:
        return np.clip(_plain(rng, size, tone), 0, 255)
    kind = rng.random()
    if kind < 0.2:
        return np.clip(_plain(rng, size, None), 0, 255)
    picture = _photo(rng, places, size, aspect)
    if kind < 0.28:  # two grounds that meet in a line: the edge of a table, a wall
        other = _photo(rng, places, size, aspect) if rng.random() < 0.5 else _plain(rng, size, None)
        a, width, height = rng.uniform(0, 2 * np.pi), size[0], size[1]
        y, x = np.mgrid[0:height, 0:width].astype(np.float32)
        side = ((x / width - 0.5) * np.cos(a) + (y / height - 0.5) * np.sin(a)) - rng.uniform(-0.4, 0.4)
        picture = np.where(side[..., None] > 0, other, picture)
    if rng.random() < 0.3:
        picture = picture * rng.uniform(0.4, 1) + rng.uniform(0, 80)
    return np.clip(picture, 0, 255)


def _around(picture, points, margin):
    # The part of picture around points, a view, and points in it; None where it is empty.
    height, width = picture.shape[:2]
    x0, y0 = np.maximum(np.floor(points.min(0) - margin), 0).astype(int)
    x1, y1 = np.minimum(np.ceil(points.max(0) + margin), [width, height]).astype(int)
    if x1 - x0 < 2 or y1 - y0 < 2:
        return None
    return picture[y0:y1, x0:x1], np.round((points - [x0, y0]) * (1 << _SHIFT)).astype(np.int32)


def _fill(picture, points, colour):
    part = _around(picture, points, 2)
    if part is None:
        return
    view, outline = part
    mask = np.zeros(view.shape[:2], np.uint8)
    cv2.fillPoly(mask, [outline], 255, cv2.LINE_AA, _SHIFT)
    share = mask.astype(np.float32)[..., None] / 255
    view *= 1 - share
    view += share * np.float32(colour)


def _capsule(start, end, first, second):
    angle = np.arctan2(*(end - start)[::-1])
    a = angle + np.pi / 2 + np.linspace(0, np.pi, 12)
    b = angle - np.pi / 2 + np.linspace(0, np.pi, 12)
    return np.concatenate([start + first * np.stack([np.cos(a), np.sin(a)], 1),
                           end + second * np.stack([np.cos(b), np.sin(b)], 1)])


_QUARTER = np.stack([f((np.arange(4)[:, None] + np.linspace(0, 1, 5)) * np.pi / 2)
                     for f in (np.cos, np.sin)], -1)
_SIGNS = np.array([[1, 1], [-1, 1], [-1, -1], [1, -1]])[:, None]


def _turned(points, angle):
    return points @ np.array([[np.cos(angle), np.sin(angle)], [-np.sin(angle), np.cos(angle)]])


def _rounded(centre, width, height, angle, corner):
    middle = _SIGNS * [width / 2 - corner, height / 2 - corner]
    return _turned((corner * _QUARTER + middle).reshape(-1, 2), angle) + centre


def scatter(rng, picture, aspect, quads):
    """Lays things that are no documents over picture, mostly beside the quads (in place)."""
    height, width = picture.shape[:2]
    stretch = np.array([width / aspect / height, 1.0])
    for _ in range(int(rng.integers(1, 6))):
        centre = rng.uniform(-0.05, 1.05, 2) * [width, height]
        near = any(cv2.pointPolygonTest(q.astype(np.float32), tuple(map(float, centre)), True)
                   > -0.12 * height for q in quads)
        if near and rng.random() < 0.85:
            continue
        kind, angle = rng.random(), rng.uniform(0, np.pi)
        size = rng.uniform(0.05, 0.45) * height
        dark = np.clip(rng.uniform(5, 80) + rng.normal(0, 8, 3), 0, 255)
        colour = np.clip(rng.uniform(10, 240, 3), 0, 255)

        def shaped(points):
            return (points - centre) * stretch + centre

        if kind < 0.3:  # a pen, a cable, a stick
            step = size * np.array([np.cos(angle), np.sin(angle)])
            thick = rng.uniform(0.005, 0.03) * height
            _fill(picture, shaped(_capsule(centre - step, centre + step, thick, thick)), colour)
            if rng.random() < 0.5:
                _fill(picture, shaped(_capsule(centre - step, centre + step, thick * 0.3,
                                               thick * 0.3)), np.minimum(colour + 60, 255))
        elif kind < 0.55:  # a mug, a coin, a plate
            ring = np.linspace(0, 2 * np.pi, 40, endpoint=False)
            circle = np.stack([np.cos(ring), np.sin(ring)], 1) * size * 0.4
            _fill(picture, shaped(centre + circle), colour)
            for shrink in rng.uniform(0.3, 0.95, int(rng.integers(0, 3))):
                _fill(picture, shaped(centre + circle * shrink), colour * rng.uniform(0.4, 1.1))
        elif kind < 0.75:  # a telephone, a lamp, a purse: dark, with round corners
            w, h = size * rng.uniform(0.4, 0.7), size
            _fill(picture, shaped(_rounded(centre, w, h, angle, 0.12 * w)), dark)
            _fill(picture, shaped(_rounded(centre, w * 0.92, h * 0.95, angle, 0.1 * w)),
                  np.clip(dark * 0.5 + rng.uniform(0, 25), 0, 255))
        else:  # a keyboard, a calculator
            w, h = size * rng.uniform(1, 2), size * rng.uniform(0.5, 1)
            light = rng.random() < 0.5
            body = dark if light else np.clip(dark + 140, 0, 255)
            key = np.clip(dark + 150, 0, 255) if light else dark
            _fill(picture, shaped(_rounded(centre, w, h, angle, 0.04 * w)), body)
            rows, columns = int(rng.integers(3, 7)), int(rng.integers(4, 15))
            for row in range(rows):
                for column in range(columns):
                    at = np.array([(column + 0.5) / columns - 0.5, (row + 0.5) / rows - 0.5]) * [w, h] * 0.94
                    box = _rounded(centre + _turned(at, angle), 0.78 * w / columns, 0.78 * h / rows, angle,
                                   0.05 * h / rows)
                    cv2.fillConvexPoly(picture, np.round(shaped(box)).astype(np.int32),
                                       tuple(float(c) for c in key))


def _skin(rng):
    light = rng.uniform(0.22, 1.0)
    return np.clip(np.array([228, 182, 150]) * light + rng.normal(0, 10, 3), 0, 255)


def _flesh(rng, picture, outline, skin, radius):
    # A rounded body: darker towards its rim, with its shadow.
    part = _around(picture, outline, 2 * radius + 2)
    if part is None:
        return
    view, points = part
    mask = np.zeros(view.shape[:2], np.uint8)
    cv2.fillPoly(mask, [points], 255, cv2.LINE_AA, _SHIFT)
    mask = mask.astype(np.float32) / 255
    soft = cv2.GaussianBlur(mask, (0, 0), max(0.6, radius * 0.5))
    view *= (1 - rng.uniform(0.1, 0.45) * soft * (1 - mask))[..., None]
    view *= (1 - mask)[..., None]
    view += (mask * (0.45 + 0.6 * soft ** 1.5))[..., None] * np.float32(skin)


class Hand:
    """A hand that holds the document quad from a side of the picture."""

    def __init__(self, rng, quad, size):
        self._rng, self._skin = rng, _skin(rng)
        side = int(rng.integers(4))
        a, b = quad[side], quad[(side + 1) % 4]
        self._edge = a + (b - a) * rng.uniform(0.25, 0.75)
        along = b - a
        self._length = max(float(np.linalg.norm(along)), 1.0)
        self._along = along / self._length
        self._out = np.array([self._along[1], -self._along[0]])
        if np.dot(self._out, quad.mean(0) - self._edge) > 0:
            self._out = -self._out
        self._unit = np.linalg.norm(np.ptp(quad, axis=0)) / 9  # about a finger's width

    def _at(self, out, along):
        return self._edge + self._unit * (out * self._out + along * self._along)

    def behind(self, picture):
        rng, u = self._rng, self._unit
        if rng.random() < 0.5:
            picture[:] = cv2.GaussianBlur(picture, (0, 0), picture.shape[0] * rng.uniform(0.005, 0.03))
        if rng.random() < 0.7:
            sleeve = rng.uniform(0, 200, 3)
            _flesh(rng, picture, _capsule(self._at(5, 3), self._at(14, 9), 2.6 * u, 3.2 * u), sleeve, 2 * u)
        _flesh(rng, picture, _capsule(self._at(-1, 1), self._at(4, 3), 2.0 * u, 2.2 * u), self._skin, 2 * u)
        for y in rng.uniform(-3, 2, int(rng.integers(0, 4))):
            _flesh(rng, picture, _capsule(self._at(-1, y), self._at(1.5, y + 0.5), 0.6 * u, 0.65 * u),
                   self._skin, 0.6 * u)

    def over(self, picture):
        rng, u = self._rng, self._unit
        reach = rng.uniform(0.3, 2.0)
        for place in [0.0] + list(rng.uniform(-3, 3, int(rng.integers(0, 3)))):
            _flesh(rng, picture, _capsule(self._at(2.5, place + rng.uniform(-1, 1)), self._at(-reach, place),
                                          0.75 * u, 0.6 * u), self._skin, 0.7 * u)


def fingers(rng, picture, quad):
    """One to four fingertips over the edges of quad."""
    skin = _skin(rng)
    u = np.linalg.norm(np.ptp(quad, axis=0)) / rng.uniform(8, 14)
    for _ in range(int(rng.integers(1, 5))):
        side = int(rng.integers(4))
        a, b = quad[side], quad[(side + 1) % 4]
        # Now and then a corner itself is covered.
        at = a + (b - a) * rng.uniform(-0.03, 1.03)
        inward = quad.mean(0) - at
        inward /= max(np.linalg.norm(inward), 1e-6)
        lean = rng.normal(0, 0.4)
        inward = np.array([inward[0] * np.cos(lean) - inward[1] * np.sin(lean),
                           inward[1] * np.cos(lean) + inward[0] * np.sin(lean)])
        _flesh(rng, picture, _capsule(at - inward * u * 7, at + inward * u * rng.uniform(0.2, 1.8),
                                      0.75 * u, 0.6 * u), skin, 0.7 * u)
