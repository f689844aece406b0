"""Paints shapes into a picture (float32, in place): flat ones, rounded ones, and their shadows."""

import cv2
import numpy as np

_SHIFT = 4  # fractional bits of polygon corners
_LAMP = np.array([-0.45, -0.55, 0.70])  # towards the light: left, up and out of the desk


def mask_of(picture, polygons):
    """Coverage 0..1 (height x width, float32) of polygons, each N x 2, counted from pixel centres."""
    mask = np.zeros(picture.shape[:2], np.uint8)
    for polygon in polygons:
        points = np.round(np.asarray(polygon) * (1 << _SHIFT)).astype(np.int32)
        cv2.fillPoly(mask, [points], 255, cv2.LINE_AA, _SHIFT)
    return mask.astype(np.float32) / 255


def turned(points, degrees):
    """Points (N x 2, or one) turned clockwise around the origin."""
    a = np.radians(degrees)
    return points @ np.array([[np.cos(a), np.sin(a)], [-np.sin(a), np.cos(a)]])


def _arc(angles):
    return np.stack([np.cos(angles), np.sin(angles)], -1)


def capsule(start, end, start_radius, end_radius, points=20):
    """The outline of a finger-like shape between two points, points of it at each end: N x 2."""
    start, end = np.asarray(start, float), np.asarray(end, float)
    side = np.arctan2(*(end - start)[::-1]) + np.pi / 2
    half = np.linspace(0, np.pi, points)
    return np.concatenate([start + start_radius * _arc(side + half), end + end_radius * _arc(side - np.pi + half)])


def circle(centre, radius, points=60):
    """A circle's outline: points x 2."""
    return np.asarray(centre) + radius * _arc(np.linspace(0, 2 * np.pi, points, endpoint=False))


def box(centre, width, height, degrees=0.0, corner=0.0, points=6):
    """A turned rectangle's outline, points of it at each corner, rounded by corner: N x 2."""
    quarters = np.arange(4)[:, None] + np.linspace(0, 1, points if corner else 1)
    signs = np.array([[1, 1], [-1, 1], [-1, -1], [1, -1]])[:, None]
    outline = corner * _arc(quarters * np.pi / 2) + signs * [width / 2 - corner, height / 2 - corner]
    return turned(outline.reshape(-1, 2), degrees) + centre


def around(picture, outline, margin):
    """The part of picture around outline, a view, and the outline's mask in it; None where it is empty."""
    height, width = picture.shape[:2]
    x0, y0 = np.maximum(np.floor(outline.min(0) - margin), 0).astype(int)
    x1, y1 = np.minimum(np.ceil(outline.max(0) + margin), [width, height]).astype(int)
    if x1 - x0 < 2 or y1 - y0 < 2:
        return None
    view = picture[y0:y1, x0:x1]
    return view, mask_of(view, [outline - [x0, y0]])


def cast_shadow(picture, mask, offset, blur, strength):
    """Darkens picture under mask, moved by offset (x, y pixels) and blurred."""
    moved = cv2.warpAffine(mask, np.float32([[1, 0, offset[0]], [0, 1, offset[1]]]), mask.shape[::-1])
    picture *= (1 - strength * cv2.GaussianBlur(moved, (0, 0), max(blur, 0.5)))[..., None]


def flat(picture, mask, colour):
    """Lays colour (three values, or height x width x 3) over picture where mask is."""
    picture += (np.float32(colour) - picture) * mask[..., None]


def rounded(picture, mask, colour, radius, gloss=0.0):
    """A body that curves down over its outermost radius pixels; colour 0..255, picture 0..1."""
    depth = cv2.distanceTransform((mask > 0.5).astype(np.uint8), cv2.DIST_L2, 5)
    rim = 1 - np.minimum(depth / radius, 1)
    height = cv2.GaussianBlur(radius * np.sqrt(1 - rim * rim), (0, 0), max(radius * 0.12, 0.8))
    dx, dy = cv2.Sobel(height, cv2.CV_32F, 1, 0) / 8, cv2.Sobel(height, cv2.CV_32F, 0, 1) / 8
    facing = (_LAMP[2] - dx * _LAMP[0] - dy * _LAMP[1]) / np.sqrt(dx * dx + dy * dy + 1)
    tone = 0.42 + 0.72 * np.clip(facing, 0, 1)
    shine = gloss * np.clip(facing, 0, 1) ** 30
    flat(picture, mask, np.clip(np.float32(colour) / 255 * tone[..., None] + shine[..., None], 0, 1))


def fleshy(picture, mask, colour, radius, shadow):
    """A softer body on a picture of 0..255: darker towards the rim of a finger, with its shadow around it."""
    soft = cv2.GaussianBlur(mask, (0, 0), max(0.6, radius * 0.5))
    picture *= (1 - shadow * soft * (1 - mask))[..., None]
    picture *= (1 - mask)[..., None]
    picture += (mask * (0.45 + 0.6 * soft ** 1.5))[..., None] * np.float32(colour)
