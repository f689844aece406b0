"""A pinhole camera over a desk: where documents land in the picture.

A View knows millimetres: the desk is the plane z = 0, its origin the document's centre, x to the
right and y down. placed() poses documents at random in a scene whose height is 1.
"""

import cv2
import numpy as np

from . import brush
from .sheet import PX_PER_MM

_FOCAL = 1.15  # focal length over the picture's longer side: a telephone's main camera
_SUPERSAMPLE = 2
_HEAPED = 0.35  # the most of a document that another may hide
_CUTS = {(1, 0): 0.2, (0, 1): 0.2, (1, 1): 0.28, (2, 0): 0.05, (0, 2): 0.05, (2, 1): 0.11, (1, 2): 0.11}


def outline(size_mm):
    """The corners of a document around the origin: 4 x 2, millimetres, its own tl, tr, br, bl."""
    x, y = size_mm[0] / 2, size_mm[1] / 2
    return np.array([[-x, -y], [x, -y], [x, y], [-x, y]])


def as_seen(quad):
    """Four corners (4 x 2 pixels) in the order tl, tr, br, bl in which the picture shows them."""
    centred = quad - quad.mean(0)
    clockwise = quad[np.argsort(np.arctan2(centred[:, 1], centred[:, 0]))]
    return np.roll(clockwise, -int(np.argmin(clockwise.sum(1))), axis=0)


class View:
    """matrix: 3 x 3, homogeneous millimetres on the desk to pixels; size: (width, height)."""

    def __init__(self, matrix, size):
        self.matrix, self.size = matrix, size

    def pixels(self, points_mm):
        """N x 2 millimetres to N x 2 pixels."""
        points = np.asarray(points_mm, float).reshape(-1, 1, 2)
        return cv2.perspectiveTransform(points, self.matrix).reshape(-1, 2)

    def scale(self):
        """Pixels a millimetre at the origin."""
        left, right, above, below = self.pixels([[-1, 0], [1, 0], [0, -1], [0, 1]])
        return float(np.linalg.norm(right - left) + np.linalg.norm(below - above)) / 4

    def desk_grid(self):
        """x and y in millimetres of every pixel's centre: two height x width arrays, float32."""
        width, height = self.size
        u, v = np.meshgrid(np.arange(width) + 0.5, np.arange(height) + 0.5)
        inverse = np.linalg.inv(self.matrix)
        x, y, w = (row[0] * u + row[1] * v + row[2] for row in inverse)
        return (x / w).astype(np.float32), (y / w).astype(np.float32)

    def project(self, texture, border=cv2.BORDER_CONSTANT):
        """A texture (height x width [x 3], uint8, PX_PER_MM, centred on the origin) as seen."""
        height, width = texture.shape[:2]
        shrink = max(1.0, PX_PER_MM / (self.scale() * _SUPERSAMPLE))
        if shrink > 1.2:  # a distant document would alias
            texture = cv2.resize(texture, None, fx=1 / shrink, fy=1 / shrink, interpolation=cv2.INTER_AREA)
        sx, sy = texture.shape[1] * PX_PER_MM / width, texture.shape[0] * PX_PER_MM / height
        # Array element i covers i..i+1, while OpenCV's warp counts from element centres.
        to_mm = np.array([[1 / sx, 0, 0.5 / sx - width / PX_PER_MM / 2],
                          [0, 1 / sy, 0.5 / sy - height / PX_PER_MM / 2], [0, 0, 1]])
        s = _SUPERSAMPLE
        to_samples = np.array([[s, 0, -0.5], [0, s, -0.5], [0, 0, 1]])
        large = cv2.warpPerspective(texture, to_samples @ self.matrix @ to_mm,
                                    (self.size[0] * s, self.size[1] * s), flags=cv2.INTER_LINEAR,
                                    borderMode=border)
        return cv2.resize(large, self.size, interpolation=cv2.INTER_AREA)


def _rotation(roll, tilt, yaw):
    a, b, c = np.radians([roll, -tilt, -yaw])
    about_z = np.array([[np.cos(a), -np.sin(a), 0], [np.sin(a), np.cos(a), 0], [0, 0, 1]])
    about_x = np.array([[1, 0, 0], [0, np.cos(b), -np.sin(b)], [0, np.sin(b), np.cos(b)]])
    about_y = np.array([[np.cos(c), 0, np.sin(c)], [0, 1, 0], [-np.sin(c), 0, np.cos(c)]])
    return about_x @ about_y @ about_z


def aimed(size_mm, size, share, roll=0.0, tilt=0.0, yaw=0.0, offset=(0.0, 0.0)):
    """A View in which the document's bounding box takes share of the picture's tighter side.

    roll turns the document clockwise; tilt lowers its far edge, yaw its right one (degrees).
    offset -1..1 moves it from the middle towards the picture's edges, as far as there is room.
    """
    rotation = _rotation(roll, tilt, yaw)
    focal = _FOCAL * max(size)
    corners = outline(size_mm)

    def matrix(distance):
        pose = np.column_stack([rotation[:, 0], rotation[:, 1], [0, 0, distance]])
        return np.diag([focal, focal, 1.0]) @ pose

    distance = 10.0 * max(size_mm)
    for _ in range(12):
        points = View(matrix(distance), size).pixels(corners)
        extent = (points.max(0) - points.min(0)) / size
        distance *= extent.max() / share
    points = View(matrix(distance), size).pixels(corners)
    lowest, highest = points.min(0), points.max(0)
    room = np.maximum((np.array(size) - (highest - lowest)) / 2, 0)
    shift = (np.array(size) - highest - lowest) / 2 + np.asarray(offset) * room
    move = np.array([[1, 0, shift[0]], [0, 1, shift[1]], [0, 0, 1]])
    return View(move @ matrix(distance), size)


def filling(size_mm, size, quarter_turns=0):
    """A View in which the document's outline is the picture's border, as on a flat-bed scanner."""
    width, height = size
    border = np.array([[0, 0], [width, 0], [width, height], [0, height]], np.float32)
    target = np.roll(border, -quarter_turns, axis=0)
    return View(cv2.getPerspectiveTransform(outline(size_mm).astype(np.float32), target), size)


def _posed(rng, shape):
    # The document's corners tl, tr, br, bl as a pinhole camera sees them, around the origin.
    corners = outline(np.array(shape[::-1]) / max(shape))
    roll = rng.uniform(-180, 180) if rng.random() < 0.45 else \
        90 * rng.choice(4, p=[0.58, 0.14, 0.14, 0.14]) + rng.normal(0, 6)
    tilt = rng.uniform(25, 50) if rng.random() < 0.18 else min(50, abs(rng.normal(0, 15)))
    axis, t = rng.uniform(0, 2 * np.pi), np.radians(tilt)
    points = brush.turned(corners, roll)
    along = points @ np.array([np.cos(axis), np.sin(axis)])
    across = points @ np.array([-np.sin(axis), np.cos(axis)])
    depth = across * np.sin(t)
    near = 1.2 * rng.uniform(1.0, 3.0) + 0.2  # focal length, times how far away
    factor = near / (near + depth)
    along, across = along * factor, across * np.cos(t) * factor
    quad = np.stack([along * np.cos(axis) - across * np.sin(axis),
                     along * np.sin(axis) + across * np.cos(axis)], 1)
    return quad - (quad.max(0) + quad.min(0)) / 2


def placed(rng, shape, aspect, others, heaped=False):
    """Corners of a document of shape (height, width) in a scene aspect wide and 1 high; None where there
    is no room beside others. heaped: it may lie over a side or a corner of theirs."""
    room = np.array([aspect, 1.0])
    for _ in range(8):
        quad = _posed(rng, shape)
        extent = quad.max(0) - quad.min(0)
        kind = rng.random()
        if heaped:
            share = rng.uniform(0.3, 0.7)
        elif others:
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
        if heaped and others:
            other = others[int(rng.integers(len(others)))]
            aside = other.mean(0) + rng.uniform(-0.8, 0.8, 2) * np.ptp(other, axis=0)
            middle = np.clip(aside, extent / 2, np.maximum(room - extent / 2, extent / 2))
        quad = quad + middle
        if all(_covered(other, quad) < (_HEAPED if heaped else 0.04) for other in others):
            # What lies wholly on another is no heap: the lower one is ground there.
            if not heaped or all(_covered(quad, other) < _HEAPED for other in others):
                return quad
    return None


def _covered(quad, by):
    common, _ = cv2.intersectConvexConvex(by.astype(np.float32), quad.astype(np.float32))
    return common / cv2.contourArea(quad.astype(np.float32))


def cut(rng, shape, aspect):
    """As placed(), but the document runs out of one, two or three sides of the scene."""
    room, border = np.array([aspect, 1.0]), outline((aspect, 1)) + [aspect / 2, 0.5]
    while True:
        quad = _posed(rng, shape)
        # How many of the scene's sides it crosses from left to right and from top to bottom.
        crossed = np.array(list(_CUTS)[int(rng.choice(len(_CUTS), p=list(_CUTS.values())))])
        beyond = np.where(crossed == 1, rng.uniform(0.06, 0.45, 2), 0)  # of its extent
        fits = room / np.ptp(quad, axis=0)
        most = (np.where(crossed == 2, 1.7, 0.98 / (1 - beyond)) * fits).min()
        least = max(0.35 * fits.min(), *np.where(crossed == 2, 1.05, 0) * fits)
        if least >= most:
            continue
        quad = quad * rng.triangular(least, most, most)  # who cuts a page holds the camera near
        spare = room - np.ptp(quad, axis=0)
        outside = beyond * np.ptp(quad, axis=0)
        start = np.where(rng.random(2) < 0.5, -outside, spare + outside)
        quad = quad - quad.min(0) + np.where(crossed == 1, start, spare * rng.uniform(0.1, 0.9, 2))
        if _covered(quad, border) > 0.35:
            return quad


def scanned(rng, shape, aspect):
    """As placed(), but the document fills the scene, now and then not quite."""
    border = outline((aspect, 1)) + [aspect / 2, 0.5]
    turn = int(rng.choice(4, p=[0.7, 0.1, 0.1, 0.1]))
    jitter = rng.uniform(-0.03, 0.02) + rng.normal(0, 0.008, (4, 2))
    inward = np.sign(np.array([aspect / 2, 0.5]) - border)
    if rng.random() < 0.35:
        jitter *= 0
    upright = (shape[1] > shape[0]) == (aspect > 1)
    return np.roll(border - inward * jitter, -turn if upright else 1 - turn, axis=0)


def clockwise(quad):
    """Four corners (4 x 2) in the order in which a clock's hand meets them."""
    d1, d2 = quad[1] - quad[0], quad[2] - quad[1]
    return quad if d1[0] * d2[1] - d1[1] * d2[0] > 0 else quad[::-1]


def ground_grid(rng, grid, shape, below, ratio):
    """u and v, 0..1 over something of shape below (height, width) on which a document of shape lies.

    grid: the document's document_grid(). ratio: the longer side of what lies below over the document's.
    """
    height, width = np.array(shape) / max(shape)
    h, w = np.array(below) / max(below) * ratio
    # Mostly square to each other, as things are put down.
    degrees = 90 * rng.integers(4) + rng.normal(0, 8) if rng.random() < 0.6 else rng.uniform(0, 360)
    x, y = (grid[0] - 0.5) * width, (grid[1] - 0.5) * height
    a = np.float32(np.radians(degrees))
    x, y = x * np.cos(a) - y * np.sin(a), x * np.sin(a) + y * np.cos(a)
    reach = np.abs(np.array([[np.cos(a), np.sin(a)], [np.sin(a), np.cos(a)]])) @ [width, height]
    free = np.maximum(np.array([w, h]) - 0.9 * reach, 0.1)  # a corner may hang over
    x, y = (part + np.float32(side * rng.uniform(-0.5, 0.5)) for part, side in zip((x, y), free))
    return x / np.float32(w) + np.float32(0.5), y / np.float32(h) + np.float32(0.5)


def document_grid(quad, size):
    """u and v, 0..1 over a document with corners quad, of every pixel's centre; float32."""
    unit = np.float32([[0, 0], [1, 0], [1, 1], [0, 1]])
    inverse = cv2.getPerspectiveTransform(quad.astype(np.float32), unit)
    # Its sign is free. Of steep documents the picture's origin may lie beyond the horizon: then w was negative on them,
    # and nothing of them was drawn.
    inverse *= np.sign(inverse[2] @ [*quad.mean(0), 1])
    x = (np.arange(size[0], dtype=np.float32) + 0.5)[None]
    y = (np.arange(size[1], dtype=np.float32) + 0.5)[:, None]
    u, v, w = (row[0] * x + row[1] * y + row[2] for row in inverse)
    w = np.where(w > 1e-6, w, 1e-6)
    return (u / w).astype(np.float32), (v / w).astype(np.float32)
