"""What zones are printed on: security print drawn here, photographs and textures of Debian packages, plain tints."""

import cv2
import numpy as np

import backgrounds
from drawing import guilloche
from drawing.sheet import PX_PER_MM

from .glyphs import PITCH

TRAINED_ON = ("gnome-backgrounds", "mate-backgrounds", "openarena-081-textures")
HELD_OUT = ("ukui-wallpapers",)
_SIZE_MM = (125, 44)  # the lower half of a passport's page
_REDUCED = PITCH / (2.54 * PX_PER_MM)  # OCR-B stands 2.54 mm apart


def security_prints(rng, count):
    """A list of grey sheets (uint8) with waves and rosettes, a millimetre as long as in glyphs."""
    sheets = []
    for _ in range(count):
        tints = [tuple(rng.integers(150, 256, 3).tolist()) for _ in range(int(rng.integers(1, 4)))]
        inks = [tuple(rng.integers(40, 235, 3).tolist()) for _ in range(3)]
        sheet = cv2.cvtColor(guilloche.security_paper(rng, *_SIZE_MM, tints, inks), cv2.COLOR_RGB2GRAY)
        sheets.append(cv2.resize(sheet, None, fx=_REDUCED, fy=_REDUCED, interpolation=cv2.INTER_AREA))
    return sheets


def photographs(folder, packages):
    """Grey pictures (uint8) of packages below folder, which backgrounds.py filled."""
    return [cv2.cvtColor(p, cv2.COLOR_RGB2GRAY) for p in backgrounds.load(folder, packages, 640)]


class Grounds:
    """Security prints and photographs (lists of grey pictures) to cut pieces from; the latter may be none."""

    def __init__(self, prints, pictures):
        self._prints, self._photographs = prints, pictures

    def piece(self, rng, size, pitch):
        """Height x width, float32, 0..255, of paper seen at pitch pixels a character; size: (width, height)."""
        width, height = size
        tone = 105 + 150 * rng.random()
        ground = np.full((height, width), tone, np.float32)
        if rng.random() < 0.5:  # from light to dark
            ground += np.linspace(*rng.uniform(-45, 45, 2), width, dtype=np.float32)
            ground += np.linspace(*rng.uniform(-30, 30, 2), height, dtype=np.float32)[:, None]
        if rng.random() < 0.55:
            ground += _cut(rng, self._prints, size, pitch / PITCH * np.exp(rng.normal(0, 0.4))) * rng.uniform(0.2, 1.4)
        if self._photographs and rng.random() < 0.3:
            ground += _cut(rng, self._photographs, size, rng.uniform(0.3, 1.5)) * rng.uniform(0.05, 0.6)
        if rng.random() < 0.25:  # blotches
            coarse = [max(2, int(side / rng.uniform(2, 12))) for side in (height, width)]
            blotches = rng.standard_normal(coarse, np.float32)
            ground += cv2.resize(blotches, size, interpolation=cv2.INTER_CUBIC) * np.float32(rng.uniform(2, 16))
        return ground


def _cut(rng, pictures, size, enlarged):
    # A piece of one of pictures, enlarged, of mean zero.
    picture = pictures[int(rng.integers(len(pictures)))]
    wanted = [min(side, max(4, int(need / enlarged))) for need, side in zip(size, picture.shape[::-1])]
    x, y = (int(rng.integers(0, side - need + 1)) for need, side in zip(wanted, picture.shape[::-1]))
    piece = picture[y:y + wanted[1], x:x + wanted[0]]
    smaller = wanted[0] > size[0]
    piece = cv2.resize(piece, size, interpolation=cv2.INTER_AREA if smaller else cv2.INTER_LINEAR).astype(np.float32)
    return piece - piece.mean()
