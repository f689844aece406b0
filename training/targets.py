"""What the network should answer, and how much each mistake costs."""

import cv2
import numpy as np
import torch
from torch.nn import functional

CORE = 0.7  # of a document's size: small enough that neighbours' cores never touch
_SHIFT = 4
_SIGMA = 1.1  # cells around a corner


def _polygon(quad):
    # cv2.fillPoly counts from pixel centres, and 16 bits must hold its corners.
    return np.round((np.clip(quad, -4000, 4000) - 0.5) * (1 << _SHIFT)).astype(np.int32)


def maps(quads, side):
    """3 x side/4 x side/4 float32 for corners in pixels (documents x 4 x 2, NaN: none)."""
    page = np.zeros((side, side), np.uint8)
    core = np.zeros((side, side), np.uint8)
    cells = side // 4
    corner = np.zeros((cells, cells), np.float32)
    y, x = np.mgrid[0:cells, 0:cells].astype(np.float32) + 0.5
    for quad in quads:
        if np.isnan(quad[0, 0]):
            continue
        outline = _polygon(quad)
        cv2.fillPoly(page, [outline], 255, cv2.LINE_AA, _SHIFT)
        cv2.fillPoly(core, [outline], 0, cv2.LINE_8, _SHIFT)
        inner = quad.mean(0) + (quad - quad.mean(0)) * CORE
        cv2.fillPoly(core, [_polygon(inner)], 255, cv2.LINE_AA, _SHIFT)
        for px, py in quad / 4:
            if -1 < px < cells + 1 and -1 < py < cells + 1:
                bump = np.exp(-((x - px) ** 2 + (y - py) ** 2) / (2 * _SIGMA ** 2))
                np.maximum(corner, bump, out=corner)
    small = [cv2.resize(m, (cells, cells), interpolation=cv2.INTER_AREA) / np.float32(255) for m in (page, core)]
    return np.stack([*small, corner])


def loss(logits, wanted):
    """A scalar; logits and wanted are N x 3 x cells x cells."""
    page, core, corner = (wanted[:, i:i + 1] for i in range(3))
    widest = functional.max_pool2d(page, 3, 1, 1)
    rim = widest + functional.max_pool2d(-page, 3, 1, 1)
    cross = functional.binary_cross_entropy_with_logits
    on_page = cross(logits[:, :1], page, weight=1 + 2 * rim)
    chance = torch.sigmoid(logits[:, :1])
    common = (chance * page).sum((1, 2, 3)) + 4
    dice = 1 - (2 * common / ((chance + page).sum((1, 2, 3)) + 8)).mean()
    in_core = cross(logits[:, 1:2], core)
    at_corner = cross(logits[:, 2:], corner, weight=1 + 15 * corner)
    return on_page + 0.5 * dice + 0.5 * in_core + 2.0 * at_corner
