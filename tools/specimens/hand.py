"""A hand that holds a document at the edge that is right in the picture."""

import numpy as np

from . import brush

_SKINS = [(232, 190, 160), (208, 160, 126), (172, 122, 90), (128, 88, 64)]
_SLEEVES = [(52, 62, 84), (96, 98, 102), (112, 58, 60), (62, 86, 76)]


class Hand:
    """quad: the document's corners as seen, 4 x 2 pixels; scale: pixels a millimetre."""

    def __init__(self, rng, quad, scale):
        self._skin = _SKINS[int(rng.integers(len(_SKINS)))]
        self._sleeve = _SLEEVES[int(rng.integers(len(_SLEEVES)))]
        upper, lower = quad[1], quad[2]
        self._edge = upper + (lower - upper) * rng.uniform(0.50, 0.62)
        self._along = (lower - upper) / np.linalg.norm(lower - upper)
        self._inward = np.array([self._along[1], -self._along[0]])
        if np.dot(self._inward, quad.mean(0) - self._edge) < 0:
            self._inward = -self._inward
        self._scale = scale
        self._reach = rng.uniform(9, 12)

    def _at(self, inward_mm, along_mm):
        return self._edge + self._scale * (inward_mm * self._inward + along_mm * self._along)

    def _paint(self, picture, outlines, radius_mm, colour=None, shadow=0.4):
        mask = brush.mask_of(picture.shape[1::-1], outlines)
        brush.cast_shadow(picture, mask, 2.2 * self._scale, 3.0 * self._scale, shadow)
        brush.rounded(picture, mask, colour or self._skin, radius_mm * self._scale, 0.04)

    def paint_behind(self, picture):
        """Palm and sleeve, before the document is laid over them (float32 picture, in place)."""
        s = self._scale
        self._paint(picture,
                    [brush.capsule(self._at(-30, 52), self._at(-120, 130), 32 * s, 44 * s)], 30,
                    self._sleeve)
        palm = [brush.capsule(self._at(6, 26), self._at(-34, 54), 27 * s, 27 * s)]
        fingers = [brush.capsule(self._at(10, y), self._at(-13 + 1.5 * abs(y + 8) / 9, y + 5),
                                 8 * s, 8.5 * s)
                   for y in (-26, -8, 10)]
        self._paint(picture, palm, 24)
        for finger in fingers:
            self._paint(picture, [finger], 8.5, shadow=0.25)

    def paint_over(self, picture):
        """The thumb, over the document's edge."""
        s = self._scale
        tip, joint, root = self._at(self._reach - 7, -1), self._at(-14, 10), self._at(-30, 36)
        thumb = [brush.capsule(root, joint, 15 * s, 10.5 * s),
                 brush.capsule(joint, tip, 10.5 * s, 8.6 * s)]
        self._paint(picture, thumb, 10)
        direction = (tip - joint) / np.linalg.norm(tip - joint)
        nail = brush.capsule(tip - direction * 2.4 * s, tip + direction * 3.4 * s, 4.5 * s, 4.6 * s)
        pink = tuple(min(255, int(c * 1.06 + 8)) for c in self._skin)
        mask = brush.mask_of(picture.shape[1::-1], [nail])
        brush.cast_shadow(picture, mask, 0, 0.5 * s, 0.18)
        brush.rounded(picture, mask, pink, 2.2 * s, 0.16)
