"""What lines are printed on, in colour: plain tints, security print drawn here, photographs of Debian packages."""

from functools import lru_cache

import cv2
import numpy as np

import backgrounds
from drawing import guilloche
from drawing.sheet import PX_PER_MM
from zone.grounds import HELD_OUT, TRAINED_ON  # noqa: F401  the packages, for those who load photographs

_SIZE_MM = (125, 44)  # the lower half of a passport's page
_PX_PER_MM = 8  # of the kept sheets


def security_prints(rng, count):
    """Sheets (height x width x 3, uint8, BGR) with waves and rosettes."""
    sheets = []
    for _ in range(count):
        tints = [tuple(rng.integers(150, 256, 3).tolist()) for _ in range(int(rng.integers(1, 4)))]
        inks = [tuple(rng.integers(40, 235, 3).tolist()) for _ in range(3)]
        sheet, scale = guilloche.security_paper(rng, *_SIZE_MM, tints, inks), _PX_PER_MM / PX_PER_MM
        sheets.append(cv2.resize(sheet, None, fx=scale, fy=scale, interpolation=cv2.INTER_AREA))
    return sheets


def photographs(folder, packages):
    """Pictures (BGR, uint8) of packages below folder, which backgrounds.py filled."""
    return [np.ascontiguousarray(p[..., ::-1]) for p in backgrounds.load(folder, packages, 640)]


@lru_cache(maxsize=1)
def without_photographs():
    """Papers to draw on where there are no photographs; always the same."""
    return Papers(security_prints(np.random.default_rng(0), 4), [])


class Papers:
    """Security prints and photographs (lists of pictures) to cut pieces from; the latter may be none."""

    def __init__(self, prints, pictures):
        self._prints, self._photographs = prints, pictures

    def photograph(self, rng, size):
        """Height x width x 3, float32, of a photograph, or else of security print. size: (width, height)."""
        return _cut(rng, self._photographs or self._prints, size, rng.uniform(0.2, 1.5))

    def piece(self, rng, size, px_per_mm, tone, held_out=False):
        """Height x width x 3, float32, of paper about the colour tone; held_out: woven at times, never in training."""
        width, height = size
        ground = np.empty((height, width, 3), np.float32)
        ground[:] = tone
        kind = rng.random()
        if held_out and kind < 0.25:
            return ground + _woven(rng, size, px_per_mm)[..., None]
        if rng.random() < 0.5:  # from light to dark, from one tint to another
            slope = rng.uniform(-25, 25, (2, 1)) + rng.normal(0, 6, (2, 3))
            across = np.linspace(slope[0], slope[1], width, dtype=np.float32)
            ground += across
            ground += np.linspace(*rng.uniform(-15, 15, 2), height, dtype=np.float32)[:, None, None]
        if kind < 0.48:
            enlarged = px_per_mm / _PX_PER_MM * np.exp(rng.normal(0, 0.4))
            ground += _centred(_cut(rng, self._prints, size, enlarged)) * np.float32(rng.uniform(0.2, 1.2))
        elif kind < 0.66:
            ground += _centred(self.photograph(rng, size)) * np.float32(rng.uniform(0.05, 0.6))
        if rng.random() < 0.2:  # blotches
            coarse = [max(2, int(side / rng.uniform(2, 12))) for side in (height, width)]
            blotches = cv2.resize(rng.standard_normal(coarse, np.float32), size, interpolation=cv2.INTER_CUBIC)
            ground += blotches[..., None] * np.float32(rng.uniform(2, 12))
        return ground


def _woven(rng, size, px_per_mm):
    # Threads along and across.
    pitch = px_per_mm * rng.uniform(0.3, 0.8)
    threads = [np.sin(2 * np.pi / pitch * np.arange(side) + rng.uniform(0, 6)) for side in size]
    return (rng.uniform(3, 14) * np.maximum(threads[0][None], threads[1][:, None])).astype(np.float32)


def _centred(piece):
    return piece - piece.mean((0, 1))


def _cut(rng, pictures, size, enlarged):
    picture = pictures[int(rng.integers(len(pictures)))]
    wanted = [min(side, max(4, int(need / enlarged))) for need, side in zip(size, picture.shape[1::-1])]
    x, y = (int(rng.integers(0, side - need + 1)) for need, side in zip(wanted, picture.shape[1::-1]))
    piece = picture[y:y + wanted[1], x:x + wanted[0]]
    smaller = wanted[0] > size[0]
    return cv2.resize(piece, size, interpolation=cv2.INTER_AREA if smaller else cv2.INTER_LINEAR).astype(np.float32)
