"""What light, lens and sensor do to a scene."""

import cv2
import numpy as np


def _field(rng, shape):
    # A smooth field of light, mean about 1.
    coarse = rng.uniform(0, 1, (int(rng.integers(2, 5)), int(rng.integers(2, 5))))
    smooth = cv2.resize(coarse.astype(np.float32), shape[1::-1], interpolation=cv2.INTER_CUBIC)
    return 1 + rng.uniform(0.1, 0.7) * (smooth - 0.5)


def _shadow(rng, shape):
    height, width = shape[:2]
    points = rng.uniform(-0.3, 1.3, (int(rng.integers(3, 6)), 2)) * [width, height]
    mask = np.zeros((height, width), np.float32)
    cv2.fillPoly(mask, [cv2.convexHull(points.astype(np.int32))], 1.0)
    blur = max(0.6, abs(rng.normal(0, 0.03)) * height)
    return 1 - rng.uniform(0.15, 0.6) * cv2.GaussianBlur(mask, (0, 0), blur)


def _glare(rng, picture, quads):
    height, width = picture.shape[:2]
    centre = quads[-1].mean(0) if quads and rng.random() < 0.8 else rng.uniform(0, 1, 2) * [width, height]
    spread = np.ptp(quads[-1], axis=0) / 2 if quads else np.array([width, height]) / 3
    x0, y0 = centre + rng.uniform(-1, 1, 2) * spread
    y, x = np.mgrid[0:height, 0:width].astype(np.float32)
    a, reach = rng.uniform(0, np.pi), rng.uniform(0.03, 0.2) * height
    long = ((x - x0) * np.cos(a) + (y - y0) * np.sin(a)) / reach
    short = ((y - y0) * np.cos(a) - (x - x0) * np.sin(a)) / (reach * rng.uniform(0.15, 1))
    picture += (rng.uniform(60, 260) * np.exp(-(long ** 2 + short ** 2)))[..., None]


def _motion(rng, picture, reach):
    size = int(np.ceil(reach)) | 1
    kernel = np.zeros((size, size), np.float32)
    a, c = rng.uniform(0, np.pi), size // 2
    step = np.array([np.cos(a), np.sin(a)]) * reach / 2
    ends = [tuple(int(round(c + s * d)) for d in step) for s in (-1, 1)]
    cv2.line(kernel, ends[0], ends[1], 1.0, 1, cv2.LINE_AA)
    return cv2.filter2D(picture, -1, kernel / max(kernel.sum(), 1e-6),
                        borderType=cv2.BORDER_REFLECT)


def spoil(rng, picture, aspect, quads):
    """uint8 pixels of a picture (float32, 0..255, changed in place) as a poor camera saves it."""
    unit = picture.shape[0] / 256
    if rng.random() < 0.7:
        picture *= _field(rng, picture.shape)[..., None]
    if rng.random() < 0.3:
        picture *= _shadow(rng, picture.shape)[..., None]
    picture *= np.float32(1 + np.clip(rng.normal(0, 0.09, 3), -0.3, 0.3))
    if rng.random() < 0.18:
        _glare(rng, picture, quads)
    if rng.random() < 0.25:
        gamma = np.exp(rng.normal(0, 0.35))
        picture = 255 * (np.clip(picture, 0, 255) / 255) ** np.float32(gamma)
    exposure = rng.random()
    if exposure < 0.13:
        picture *= np.float32(rng.uniform(0.06, 0.3))
    elif exposure < 0.6:
        picture *= np.float32(rng.uniform(0.45, 1.25))
    if rng.random() < 0.45:
        picture = cv2.GaussianBlur(picture, (0, 0), unit * abs(rng.normal(0, 0.8)) + 0.25)
    if rng.random() < 0.1:
        picture = _motion(rng, picture, unit * rng.uniform(1.5, 7))
    if rng.random() < 0.7:
        deviation = abs(rng.normal(0, 5)) * (1 if exposure >= 0.13 else 0.6)
        grain = np.empty(picture.shape, np.float32)
        cv2.setRNGSeed(int(rng.integers(2 ** 31)))
        cv2.randn(grain, 0, float(deviation))
        picture = picture + grain
    if rng.random() < 0.1:
        picture = np.repeat(picture.mean(2, keepdims=True), 3, 2)
    pixels = np.clip(picture + 0.5, 0, 255).astype(np.uint8)
    if rng.random() < 0.2:
        _, data = cv2.imencode(".jpg", pixels, [cv2.IMWRITE_JPEG_QUALITY, int(rng.integers(25, 85))])
        pixels = cv2.imdecode(data, cv2.IMREAD_COLOR)
    return pixels
