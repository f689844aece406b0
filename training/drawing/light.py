"""From what lies there to what the sensor saves: lamp, shadow, blur, noise, JPEG.

Until sensed() or spoilt() give its pixels a picture is float32, 0..1 for the one and 0..255 for the other.
"""

import cv2
import numpy as np

DARK = 25  # of 255: under this mean a picture counts as taken in the dark


def _grid(size):
    return np.meshgrid(*(np.linspace(-1, 1, side, dtype=np.float32) for side in size))


def lamp(picture, rng, exposure, warmth, falloff):
    """Lights picture (in place) from one side; warmth -1..1 tints blue to orange."""
    u, v = _grid(picture.shape[1::-1])
    angle = rng.uniform(0, 2 * np.pi)
    x, y = 0.9 * np.cos(angle), 0.9 * np.sin(angle)
    pool = np.exp(-((u - x) ** 2 + (v - y) ** 2) / 3.2)
    tint = np.float32([1 + 0.10 * warmth, 1 + 0.01 * warmth, 1 - 0.14 * warmth])
    picture *= (exposure * (1 - falloff + falloff * 1.18 * pool))[..., None] * tint


def soft_shadow(picture, rng, strength):
    """The shadow of somebody near: one soft edge across a corner of picture (in place)."""
    u, v = _grid(picture.shape[1::-1])
    angle = rng.uniform(0, 2 * np.pi)
    across = u * np.cos(angle) + v * np.sin(angle) + 0.12 * np.sin(2.2 * (v - u) + angle)
    shade = 1 / (1 + np.exp(-(across - rng.uniform(0.25, 0.6)) / 0.07))
    picture *= (1 - strength * shade)[..., None]


def glare(picture, where, angle, long, short, strength):
    """A reflection around where (x, y pixels), long and short pixels wide (in place)."""
    y, x = np.mgrid[:picture.shape[0], :picture.shape[1]].astype(np.float32)
    dx, dy = x - where[0], y - where[1]
    along = (dx * np.cos(angle) + dy * np.sin(angle)) / long
    across = (dy * np.cos(angle) - dx * np.sin(angle)) / short
    picture += (strength * np.exp(-(along ** 2 + across ** 2)))[..., None]


def motion(picture, rng, length):
    """Blurs along a random direction over length pixels."""
    reach = int(np.ceil(length)) | 1
    kernel = np.zeros((reach, reach), np.float32)
    angle, centre = rng.uniform(0, np.pi), reach // 2
    step = np.array([np.cos(angle), np.sin(angle)]) * length / 2
    ends = [tuple(int(round(centre + sign * c)) for c in step) for sign in (-1, 1)]
    cv2.line(kernel, ends[0], ends[1], 1.0, 1, cv2.LINE_AA)
    return cv2.filter2D(picture, -1, kernel / kernel.sum(), borderType=cv2.BORDER_REFLECT)


def _pixels(picture):
    return np.clip(picture + 0.5, 0, 255).astype(np.uint8)


def sensed(picture, rng, noise):
    """8-bit pixels (height x width x 3, uint8); noise: deviation at mid grey."""
    picture = np.clip(picture, 0, 1)
    if noise > 0:
        grain = rng.standard_normal(picture.shape, np.float32)
        # Demosaicing spreads noise over neighbours; 1.77 restores its deviation.
        grain = cv2.GaussianBlur(grain, (0, 0), 0.55) * 1.77
        picture = picture + grain * (noise / 255) * np.sqrt(0.3 + 1.4 * picture)
    return _pixels(picture * 255)


def jpeg(pixels, quality):
    """The bytes of a JPEG file of pixels (RGB)."""
    return cv2.imencode(".jpg", pixels[..., ::-1], [cv2.IMWRITE_JPEG_QUALITY, quality])[1].tobytes()


def _field(rng, shape):
    # A smooth field of light, mean about 1.
    coarse = rng.uniform(0, 1, (int(rng.integers(2, 5)), int(rng.integers(2, 5))))
    smooth = cv2.resize(coarse.astype(np.float32), shape[1::-1], interpolation=cv2.INTER_CUBIC)
    return 1 + rng.uniform(0.1, 0.7) * (smooth - 0.5)


def _hard_shadow(rng, shape):
    height, width = shape[:2]
    points = rng.uniform(-0.3, 1.3, (int(rng.integers(3, 6)), 2)) * [width, height]
    mask = np.zeros((height, width), np.float32)
    cv2.fillPoly(mask, [cv2.convexHull(points.astype(np.int32))], 1.0)
    blur = max(0.6, abs(rng.normal(0, 0.03)) * height)
    return 1 - rng.uniform(0.15, 0.6) * cv2.GaussianBlur(mask, (0, 0), blur)


def _any_glare(rng, picture, quads):
    size = np.array(picture.shape[1::-1])
    centre = quads[-1].mean(0) if quads and rng.random() < 0.8 else rng.uniform(0, 1, 2) * size
    spread = np.ptp(quads[-1], axis=0) / 2 if quads else size / 3
    where = centre + rng.uniform(-1, 1, 2) * spread
    angle, reach = rng.uniform(0, np.pi), rng.uniform(0.03, 0.2) * size[1]
    glare(picture, where, angle, reach, reach * rng.uniform(0.15, 1), rng.uniform(60, 260))


def _blotches(rng, shape, cell, deviation):
    # Noise of patches of cell pixels, each colour its own: what is left of grain that a camera has smoothed.
    height, width = shape[:2]
    coarse = rng.normal(0, 1, (max(2, round(height / cell)), max(2, round(width / cell)), 3)).astype(np.float32)
    return cv2.resize(coarse, (width, height), interpolation=cv2.INTER_LINEAR) * np.float32(1.5 * deviation)


def night(rng, picture, quads):
    """As spoilt(), in the dark: the mean of the pixels is under DARK."""
    unit = picture.shape[0] / 256
    if rng.random() < 0.6:
        picture *= _field(rng, picture.shape)[..., None]
    if rng.random() < 0.5:  # a screen or a far lamp lights one side
        lamp(picture, rng, 1.0, rng.uniform(-1, 1), rng.uniform(0.3, 0.9))
    picture *= np.float32(1 + np.clip(rng.normal(0, 0.15, 3), -0.4, 0.4))
    if rng.random() < 0.15:
        _any_glare(rng, picture, quads)
    if rng.random() < 0.5:
        picture = cv2.GaussianBlur(picture, (0, 0), unit * abs(rng.normal(0, 0.8)) + 0.25)
    if rng.random() < 0.25:  # it is exposed for long
        picture = motion(picture, rng, unit * rng.uniform(1.5, 6))
    level = np.exp(rng.uniform(np.log(3), np.log(23)))
    light = picture * np.float32(level / max(picture.mean(), 1))
    grain = rng.standard_normal(picture.shape, np.float32)
    if rng.random() < 0.5:
        grain = cv2.GaussianBlur(grain, (0, 0), rng.uniform(0.5, 1.2)) * np.float32(1.8)
    # Grain that drowned the page would teach nothing.
    worst = min(1.0, 0.2 + level / 12)
    noise = grain * np.sqrt(rng.uniform(0, 0.6) * light + (worst * rng.uniform(0.2, 3)) ** 2)
    noise += _blotches(rng, picture.shape, unit * rng.uniform(2, 9), worst * rng.uniform(0, 1.5))
    if rng.random() < 0.2:  # the sensor's rows differ
        noise += rng.normal(0, rng.uniform(0.3, 1.5), (picture.shape[0], 1, 1)).astype(np.float32)
    black = np.float32(worst * rng.uniform(-1, 2))  # what the camera takes for it
    if rng.random() < 0.1:
        light, noise = (np.repeat(part.mean(2, keepdims=True), 3, 2) for part in (light, noise))
    pixels = _pixels(light + noise - black)
    while pixels.mean() >= DARK - 0.5:
        light, noise = 0.8 * light, 0.9 * noise
        pixels = _pixels(light + noise - black)
    if rng.random() < 0.35:
        pixels = cv2.medianBlur(pixels, 3)
    if rng.random() < 0.4:
        pixels = _packed(rng, pixels, 60)
    return pixels


def _packed(rng, pixels, least=25):
    _, data = cv2.imencode(".jpg", pixels, [cv2.IMWRITE_JPEG_QUALITY, int(rng.integers(least, 85))])
    return cv2.imdecode(data, cv2.IMREAD_COLOR)


def spoilt(rng, picture, quads):
    """8-bit pixels of picture (changed in place) as a poor camera in poor light saves it."""
    unit = picture.shape[0] / 256
    if rng.random() < 0.7:
        picture *= _field(rng, picture.shape)[..., None]
    if rng.random() < 0.3:
        picture *= _hard_shadow(rng, picture.shape)[..., None]
    picture *= np.float32(1 + np.clip(rng.normal(0, 0.09, 3), -0.3, 0.3))
    if rng.random() < 0.18:
        _any_glare(rng, picture, quads)
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
        picture = motion(picture, rng, unit * rng.uniform(1.5, 7))
    if rng.random() < 0.7:
        deviation = abs(rng.normal(0, 5)) * (1 if exposure >= 0.13 else 0.6)
        grain = np.empty(picture.shape, np.float32)
        cv2.setRNGSeed(int(rng.integers(2 ** 31)))
        cv2.randn(grain, 0, float(deviation))
        picture = picture + grain
    if rng.random() < 0.1:
        picture = np.repeat(picture.mean(2, keepdims=True), 3, 2)
    pixels = _pixels(picture)
    if rng.random() < 0.2:
        pixels = _packed(rng, pixels)
    return pixels
