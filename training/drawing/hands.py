"""Hands that hold a document, and fingers over its edges."""

import cv2
import numpy as np

from . import brush

_SKINS = [(232, 190, 160), (208, 160, 126), (172, 122, 90), (128, 88, 64)]
_SLEEVES = [(52, 62, 84), (96, 98, 102), (112, 58, 60), (62, 86, 76)]


class _Grip:
    # A place on a document's side, from start to end; _at() counts in units of so many pixels.
    def __init__(self, quad, start, end, share, unit):
        self._edge, self._unit = start + (end - start) * share, unit
        self._along = (end - start) / max(float(np.linalg.norm(end - start)), 1.0)
        self._inward = np.array([self._along[1], -self._along[0]])
        if np.dot(self._inward, quad.mean(0) - self._edge) < 0:
            self._inward = -self._inward

    def _at(self, inward, along):
        return self._edge + self._unit * (inward * self._inward + along * self._along)


class Hand(_Grip):
    """A hand at the edge that is right in the picture; scale: pixels a millimetre."""

    def __init__(self, rng, quad, scale):
        self._skin = _SKINS[int(rng.integers(len(_SKINS)))]
        self._sleeve = _SLEEVES[int(rng.integers(len(_SLEEVES)))]
        quad = quad - 0.5  # brush counts from pixel centres
        super().__init__(quad, quad[1], quad[2], rng.uniform(0.50, 0.62), scale)
        self._reach = rng.uniform(9, 12)

    def _paint(self, picture, outlines, radius_mm, colour, shadow=0.4):
        mask, s = brush.mask_of(picture, outlines), self._unit
        brush.cast_shadow(picture, mask, (2.2 * s, 2.64 * s), 3.0 * s, shadow)
        brush.rounded(picture, mask, colour, radius_mm * s, 0.04)

    def behind(self, picture):
        """Palm and sleeve, before the document is laid over them."""
        s, at = self._unit, self._at
        self._paint(picture, [brush.capsule(at(-30, 52), at(-120, 130), 32 * s, 44 * s)], 30, self._sleeve)
        self._paint(picture, [brush.capsule(at(6, 26), at(-34, 54), 27 * s, 27 * s)], 24, self._skin)
        for y in (-26, -8, 10):
            finger = brush.capsule(at(10, y), at(-13 + 1.5 * abs(y + 8) / 9, y + 5), 8 * s, 8.5 * s)
            self._paint(picture, [finger], 8.5, self._skin, 0.25)

    def over(self, picture):
        """The thumb, over the document's edge."""
        s = self._unit
        tip, joint, root = self._at(self._reach - 7, -1), self._at(-14, 10), self._at(-30, 36)
        self._paint(picture, [brush.capsule(root, joint, 15 * s, 10.5 * s),
                              brush.capsule(joint, tip, 10.5 * s, 8.6 * s)], 10, self._skin)
        direction = (tip - joint) / np.linalg.norm(tip - joint)
        nail = brush.capsule(tip - direction * 2.4 * s, tip + direction * 3.4 * s, 4.5 * s, 4.6 * s)
        pink = tuple(min(255, int(c * 1.06 + 8)) for c in self._skin)
        mask = brush.mask_of(picture, [nail])
        brush.cast_shadow(picture, mask, (0, 0), 0.5 * s, 0.18)
        brush.rounded(picture, mask, pink, 2.2 * s, 0.16)


def _skin(rng):
    light = rng.uniform(0.22, 1.0)
    return np.clip(np.array([228, 182, 150]) * light + rng.normal(0, 10, 3), 0, 255)


def _finger(rng, picture, start, end, radii, skin, radius):
    part = brush.around(picture, brush.capsule(start, end, *radii, 12), 2 * radius + 2)
    if part:
        brush.fleshy(*part, skin, radius, rng.uniform(0.1, 0.45))


class RoughHand(_Grip):
    """A hand at any side of a document, roughly shaped and quickly drawn; _at() counts in fingers."""

    def __init__(self, rng, quad):
        self._rng, self._skin = rng, _skin(rng)
        side = int(rng.integers(4))
        finger = np.linalg.norm(np.ptp(quad, axis=0)) / 9
        super().__init__(quad, quad[side], quad[(side + 1) % 4], rng.uniform(0.25, 0.75), finger)

    def _paint(self, picture, start, end, radii, radius, colour=None):
        u = self._unit
        _finger(self._rng, picture, self._at(*start), self._at(*end), np.multiply(radii, u),
                self._skin if colour is None else colour, radius * u)

    def behind(self, picture):
        """Palm, sleeve and fingers, before the document is laid over them."""
        rng = self._rng
        if rng.random() < 0.5:
            picture[:] = cv2.GaussianBlur(picture, (0, 0), picture.shape[0] * rng.uniform(0.005, 0.03))
        if rng.random() < 0.7:
            self._paint(picture, (-5, 3), (-14, 9), (2.6, 3.2), 2, rng.uniform(0, 200, 3))
        self._paint(picture, (1, 1), (-4, 3), (2.0, 2.2), 2)
        for y in rng.uniform(-3, 2, int(rng.integers(0, 4))):
            self._paint(picture, (1, y), (-1.5, y + 0.5), (0.6, 0.65), 0.6)

    def over(self, picture):
        """A thumb and up to two fingers, over the document's edge."""
        rng = self._rng
        reach = rng.uniform(0.3, 2.0)
        for place in [0.0] + list(rng.uniform(-3, 3, int(rng.integers(0, 3)))):
            self._paint(picture, (-2.5, place + rng.uniform(-1, 1)), (reach, place), (0.75, 0.6), 0.7)


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
        inward = brush.turned(inward, np.degrees(rng.normal(0, 0.4)))
        _finger(rng, picture, at - inward * u * 7, at + inward * u * rng.uniform(0.2, 1.8),
                (0.75 * u, 0.6 * u), skin, 0.7 * u)


def _reaching(rng, picture, root, tip, radius, skin):
    # A finger that ends on the document, now and then with its nail.
    _finger(rng, picture, root, tip, (1.15 * radius, 0.95 * radius), skin, radius)
    if rng.random() < 0.6:
        back = (root - tip) / max(np.linalg.norm(root - tip), 1e-6)
        nail = brush.capsule(tip + 0.5 * radius * back, tip - 0.2 * radius * back, 0.55 * radius, 0.5 * radius, 8)
        part = brush.around(picture, nail, 1)
        if part:
            brush.flat(*part, np.minimum(skin * 1.12 + 14, 255))


def _knuckles(rng, picture, near, far, radius, skin):
    # The hand that fingers belong to, and perhaps a sleeve, from beyond the document outward.
    _finger(rng, picture, near, far, (radius, 1.2 * radius), skin, 0.6 * radius)
    if rng.random() < 0.5:
        sleeve = near + 1.1 * (far - near), near + 3 * (far - near)
        _finger(rng, picture, *sleeve, (1.3 * radius, 1.5 * radius), rng.uniform(0, 200, 3), 0.6 * radius)


def grip(rng, picture, quad):
    """One to four fingers side by side over a side of quad, half of it at most, or a thumb over a corner; now and then
    a second hand."""
    skin, sides = _skin(rng), np.roll(np.arange(4), int(rng.integers(4)))
    lengths = np.linalg.norm(np.roll(quad, -1, 0) - quad, axis=1)
    unit = min(lengths.max() * rng.uniform(0.07, 0.17), 0.4 * lengths.min())  # a finger's width
    for side in sides[:2 if rng.random() < 0.3 else 1]:
        if rng.random() < 0.25:
            inward = brush.turned(quad.mean(0) - quad[side], np.degrees(rng.normal(0, 0.35)))
            inward *= unit / max(np.linalg.norm(inward), 1e-6)
            _knuckles(rng, picture, quad[side] - 6 * inward, quad[side] - 12 * inward, 2 * unit, skin)
            tip = quad[side] + rng.uniform(0.4, 2) * inward
            _reaching(rng, picture, quad[side] - 6 * inward, tip, 0.7 * unit, skin)
            continue
        start, along = quad[side], (quad[(side + 1) % 4] - quad[side]) / lengths[side]
        inward = np.array([-along[1], along[0]])
        inward *= np.sign(np.dot(quad.mean(0) - start, inward))
        count = int(np.clip(0.45 * lengths[side] // unit, 1, rng.integers(1, 5)))
        first = rng.uniform(-0.5, lengths[side] / unit - count + 0.5)  # the outermost may reach over a corner
        lean, reach = np.tan(rng.normal(0, 0.25)), min(rng.uniform(0.3, 3.5), 0.45 * lengths[side - 1] / unit)

        def at(place, deep):
            return start + unit * (along * (first + place - lean * deep) + inward * deep)

        _knuckles(rng, picture, at(count / 2, -4.5), at(count / 2, -11), max(0.6 * count, 1.4) * unit, skin)
        for finger in range(count):
            tip = at(finger + 0.5, reach * (0.8, 1.0, 0.95, 0.7)[finger] * rng.uniform(0.85, 1.1))
            root = at(finger + 0.5 + rng.normal(0, 0.15), -5)
            _reaching(rng, picture, root, tip, 0.49 * unit, skin * rng.uniform(0.94, 1.06))
