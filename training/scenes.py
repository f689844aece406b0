"""Photographs of documents, made in milliseconds at the size that the network sees.

A scene's width is aspect and its height 1; size is its pixels, whatever their shape.
"""

from dataclasses import dataclass, field

import cv2
import numpy as np

import surroundings
from light import spoil

_FOCAL = 1.2  # over the longer side


@dataclass
class Scene:
    """pixels: height x width x 3, uint8, RGB. quads: corners in pixels, 4 x 2 each, clockwise
    around the document, some perhaps outside the picture; the uppermost document last."""

    pixels: np.ndarray
    quads: list = field(default_factory=list)
    kinds: list = field(default_factory=list)


class Flats:
    """Flat documents at several sizes; kinds goes with pictures."""

    def __init__(self, pictures, kinds):
        self.kinds = kinds
        self.levels = []
        for picture in pictures:
            levels = [picture]
            while max(levels[-1].shape[:2]) > 48:
                levels.append(cv2.resize(levels[-1], None, fx=0.5, fy=0.5,
                                         interpolation=cv2.INTER_AREA))
            self.levels.append(levels)

    def __len__(self):
        return len(self.levels)

    def shape(self, index):
        return self.levels[index][0].shape[:2]

    def at(self, index, longest):
        """The picture whose longer side is at least longest pixels, if there is one."""
        levels = self.levels[index]
        chosen = levels[0]
        for level in levels[1:]:
            if max(level.shape[:2]) < longest:
                break
            chosen = level
        return chosen


def _clockwise(quad):
    d1, d2 = quad[1] - quad[0], quad[2] - quad[1]
    return quad if d1[0] * d2[1] - d1[1] * d2[0] > 0 else quad[::-1]


def _posed(rng, shape):
    # The document's corners tl, tr, br, bl as a pinhole camera sees them, around the origin.
    half = np.array([shape[1], shape[0]], float) / max(shape) / 2
    corners = np.array([[-1, -1], [1, -1], [1, 1], [-1, 1]]) * half
    roll = rng.uniform(-180, 180) if rng.random() < 0.45 else \
        90 * rng.choice(4, p=[0.58, 0.14, 0.14, 0.14]) + rng.normal(0, 6)
    tilt = rng.uniform(25, 50) if rng.random() < 0.18 else min(50, abs(rng.normal(0, 15)))
    a, axis, t = np.radians(roll), rng.uniform(0, 2 * np.pi), np.radians(tilt)
    points = corners @ np.array([[np.cos(a), np.sin(a)], [-np.sin(a), np.cos(a)]])
    along = points @ np.array([np.cos(axis), np.sin(axis)])
    across = points @ np.array([-np.sin(axis), np.cos(axis)])
    depth = across * np.sin(t)
    near = _FOCAL * rng.uniform(1.0, 3.0) + 0.2
    factor = near / (near + depth)
    along, across = along * factor, across * np.cos(t) * factor
    quad = np.stack([along * np.cos(axis) - across * np.sin(axis),
                     along * np.sin(axis) + across * np.cos(axis)], 1)
    return quad - (quad.max(0) + quad.min(0)) / 2


def _placed(rng, shape, aspect, others):
    # Corners in the scene, or None where there is no room beside the others.
    room = np.array([aspect, 1.0])
    for _ in range(8):
        quad = _posed(rng, shape)
        extent = quad.max(0) - quad.min(0)
        kind = rng.random()
        if others:
            share = rng.uniform(0.22, 0.6)
        elif kind < 0.12:
            share = rng.uniform(1.0, 1.35)
        else:
            share = rng.uniform(0.3, 0.99)
        quad = quad * (share / (extent / room).max())
        extent = quad.max(0) - quad.min(0)
        spare = np.maximum(room - extent, 0)
        middle = room / 2 + rng.uniform(-0.5, 0.5, 2) * spare
        if rng.random() < 0.12:  # cut by the frame
            middle += rng.uniform(-0.3, 0.3, 2) * extent
        quad = quad + middle
        if all(_apart(quad, other) for other in others):
            return quad
    return None


def _apart(a, b):
    area, _ = cv2.intersectConvexConvex(a.astype(np.float32), b.astype(np.float32))
    return area < 0.04 * cv2.contourArea(b.astype(np.float32))


def _filling(rng, aspect):
    border = np.array([[0, 0], [aspect, 0], [aspect, 1], [0, 1]], float)
    turn = int(rng.choice(4, p=[0.7, 0.1, 0.1, 0.1]))
    jitter = rng.uniform(-0.03, 0.02) + rng.normal(0, 0.008, (4, 2))
    inward = np.sign(np.array([aspect / 2, 0.5]) - border)
    if rng.random() < 0.35:
        jitter *= 0
    return np.roll(border + inward * -jitter, -turn, axis=0)


def _maps(quad_px, size):
    # u and v (0..1 over the document) of every pixel's centre.
    unit = np.float32([[0, 0], [1, 0], [1, 1], [0, 1]])
    inverse = cv2.getPerspectiveTransform(quad_px.astype(np.float32), unit)
    x = (np.arange(size[0], dtype=np.float32) + 0.5)[None]
    y = (np.arange(size[1], dtype=np.float32) + 0.5)[:, None]
    w = inverse[2, 0] * x + inverse[2, 1] * y + inverse[2, 2]
    w = np.where(w > 1e-6, w, 1e-6)
    u = (inverse[0, 0] * x + inverse[0, 1] * y + inverse[0, 2]) / w
    v = (inverse[1, 0] * x + inverse[1, 1] * y + inverse[1, 2]) / w
    return u.astype(np.float32), v.astype(np.float32)


def _bent(rng, u, v):
    # Curled edges and a shade that goes with them; corners stay where they are.
    shade = 1.0
    if rng.random() < 0.35:
        reach = rng.normal(0, 0.018)
        along, across = (u, v) if rng.random() < 0.5 else (v, u)
        arch = np.sin(np.pi * np.clip(along, 0, 1) ** rng.uniform(0.6, 1.6)) * reach
        across += arch if rng.random() < 0.6 else arch * (1 - 2 * np.clip(across, 0, 1))
        shade = 1 + np.float32(rng.normal(0, 0.12)) * np.cos(np.pi * np.clip(along, 0, 1))
    if rng.random() < 0.18:  # folds
        along = u if rng.random() < 0.5 else v
        for place in (0.5,) if rng.random() < 0.6 else (1 / 3, 2 / 3):
            away = (along - place) / 0.02
            shade = shade * (1 - rng.uniform(-0.1, 0.25) * np.exp(-away * away))
            shade = shade * (1 + np.float32(rng.normal(0, 0.06)) * np.sign(away))
    return shade


def _lay(rng, picture, flat, quad_px, size, glued):
    # Lays flat (RGBA) over picture (float32, in place); returns its coverage.
    u, v = _maps(quad_px, size)
    shade = _bent(rng, u, v)
    h, w = flat.shape[:2]
    seen = cv2.remap(flat, u * w - 0.5, v * h - 0.5, cv2.INTER_LINEAR,
                     borderMode=cv2.BORDER_CONSTANT)
    cover = seen[..., 3:].astype(np.float32) / 255
    paper = seen[..., :3].astype(np.float32)
    if not glued and rng.random() < 0.75:
        reach = size[1] * abs(rng.normal(0, 0.012)) + 0.5
        shift = np.float32([[1, 0, rng.normal(0, 1.5) * reach], [0, 1, rng.normal(0, 1.5) * reach]])
        dark = cv2.GaussianBlur(cv2.warpAffine(cover[..., 0], shift, size), (0, 0), reach)
        picture *= (1 - rng.uniform(0.1, 0.6) * dark)[..., None]
    if rng.random() < 0.5:
        paper *= np.float32(rng.uniform(0.75, 1.1))
    paper *= shade[..., None] if isinstance(shade, np.ndarray) else shade
    # Remapping against black already weighed the colours at the rim by their coverage.
    picture *= 1 - cover
    picture += np.clip(paper, 0, 255) * np.where(cover > 0, 1.0, 0.0)
    return cover[..., 0]


def compose(rng, flats, places, size, aspect=None, documents=None):
    """A Scene of size (width, height) pixels; documents: how many are tried, None for any."""
    if aspect is None:
        aspect = float(rng.choice([16 / 9, 4 / 3, 3 / 4, 9 / 16, 1.0, 1.5, 2 / 3]))
    stretch = np.array([size[0] / aspect, size[1]])
    if documents is None:
        documents = int(rng.choice(5, p=[0.2, 0.6, 0.12, 0.05, 0.03]))
    fills = documents == 1 and rng.random() < 0.1
    chosen, quads = [], []
    for _ in range(documents):
        index = int(rng.integers(len(flats)))
        shape = flats.shape(index)
        if fills:
            upright = (shape[1] > shape[0]) == (aspect > 1)
            quad = _filling(rng, aspect)
            quad = quad if upright else np.roll(quad, 1, axis=0)
        else:
            quad = _placed(rng, shape, aspect, quads)
        if quad is not None:
            chosen.append(index)
            quads.append(quad)
    quads_px = [quad * stretch for quad in quads]

    tone = None
    if chosen and rng.random() < 0.14:  # a desk of the document's own colour
        small = flats.levels[chosen[0]][-1]
        tone = np.median(small[..., :3].reshape(-1, 3), axis=0) + rng.normal(0, 10)
    picture = surroundings.desk(rng, places, size, aspect, tone)
    if rng.random() < (0.35 if chosen else 0.6):
        surroundings.scatter(rng, picture, aspect, quads_px)
    hand = surroundings.Hand(rng, quads_px[0], size) \
        if chosen and not fills and rng.random() < 0.2 else None
    if hand:
        hand.behind(picture)
    for index, quad_px in zip(chosen, quads_px):
        longest = max(np.linalg.norm(np.roll(quad_px, -1, 0) - quad_px, axis=1))
        _lay(rng, picture, flats.at(index, longest), quad_px, size, fills or hand)
    if hand:
        hand.over(picture)
    elif chosen and rng.random() < 0.15:
        surroundings.fingers(rng, picture, quads_px[-1])
    pixels = spoil(rng, picture, aspect, quads_px)
    return Scene(pixels, [_clockwise(q) for q in quads_px], [flats.kinds[i] for i in chosen])
