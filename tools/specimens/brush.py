"""Paints shapes into a photographed desk: flat ones, rounded ones, and their shadows."""

import cv2
import numpy as np

_SHIFT = 4  # fractional bits of polygon corners
_LAMP = np.array([-0.45, -0.55, 0.70])  # towards the light: left, up and out of the desk


def mask_of(size, polygons):
    """Coverage 0..1 (height x width, float32) of polygons, each N x 2 pixels."""
    mask = np.zeros((size[1], size[0]), np.uint8)
    for polygon in polygons:
        points = np.round((np.asarray(polygon) - 0.5) * (1 << _SHIFT)).astype(np.int32)
        cv2.fillPoly(mask, [points], 255, cv2.LINE_AA, _SHIFT)
    return mask.astype(np.float32) / 255


def capsule(start, end, start_radius, end_radius):
    """The outline of a finger-like shape between two points: N x 2, in its arguments' unit."""
    start, end = np.asarray(start, float), np.asarray(end, float)
    angle = np.arctan2(*(end - start)[::-1])
    first = angle + np.pi / 2 + np.linspace(0, np.pi, 20)
    second = angle - np.pi / 2 + np.linspace(0, np.pi, 20)
    return np.concatenate([start + start_radius * np.stack([np.cos(first), np.sin(first)], 1),
                           end + end_radius * np.stack([np.cos(second), np.sin(second)], 1)])


def circle(centre, radius):
    """A circle's outline: 60 x 2."""
    angle = np.linspace(0, 2 * np.pi, 60, endpoint=False)
    return np.asarray(centre) + radius * np.stack([np.cos(angle), np.sin(angle)], 1)


def box(centre, width, height, degrees=0.0, corner=0.0):
    """A turned rectangle's outline, its corners rounded by corner: N x 2."""
    x, y = width / 2 - corner, height / 2 - corner
    points = []
    for quarter, (sx, sy) in enumerate([(1, 1), (-1, 1), (-1, -1), (1, -1)]):
        angle = (quarter + np.linspace(0, 1, 6 if corner else 1)) * np.pi / 2
        arc = corner * np.stack([np.cos(angle), np.sin(angle)], 1)
        points.append(arc + [sx * x, sy * y])
    a = np.radians(degrees)
    turn = np.array([[np.cos(a), np.sin(a)], [-np.sin(a), np.cos(a)]])
    return np.concatenate(points) @ turn + centre


def cast_shadow(picture, mask, offset, blur, strength):
    """Darkens picture (float32, in place) under mask, moved by offset pixels and blurred."""
    moved = cv2.warpAffine(mask, np.float32([[1, 0, offset], [0, 1, offset * 1.2]]),
                           mask.shape[::-1])
    picture *= (1 - strength * cv2.GaussianBlur(moved, (0, 0), max(blur, 0.5)))[..., None]


def flat(picture, mask, colour):
    """Lays colour (0..255, or height x width x 3 of 0..1) over picture where mask is, in place."""
    layer = np.asarray(colour, np.float32) / 255 if np.ndim(colour) == 1 else colour
    picture += (layer - picture) * mask[..., None]


def rounded(picture, mask, colour, radius, gloss=0.0):
    """As flat, but shaded as a body that curves down over its outermost radius pixels."""
    depth = cv2.distanceTransform((mask > 0.5).astype(np.uint8), cv2.DIST_L2, 5)
    rim = 1 - np.minimum(depth / radius, 1)
    height = cv2.GaussianBlur(radius * np.sqrt(1 - rim * rim), (0, 0), max(radius * 0.12, 0.8))
    dx, dy = cv2.Sobel(height, cv2.CV_32F, 1, 0) / 8, cv2.Sobel(height, cv2.CV_32F, 0, 1) / 8
    facing = (_LAMP[2] - dx * _LAMP[0] - dy * _LAMP[1]) / np.sqrt(dx * dx + dy * dy + 1)
    tone = 0.42 + 0.72 * np.clip(facing, 0, 1)
    shine = gloss * np.clip(facing, 0, 1) ** 30
    layer = np.clip(np.float32(colour) / 255 * tone[..., None] + shine[..., None], 0, 1)
    flat(picture, mask, layer.astype(np.float32))
