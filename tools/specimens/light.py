"""From what lies there to what the sensor saves: lamp, shadow, blur, noise, JPEG."""

import cv2
import numpy as np


def _grid(size):
    width, height = size
    u, v = np.meshgrid(np.linspace(-1, 1, width, dtype=np.float32),
                       np.linspace(-1, 1, height, dtype=np.float32))
    return u, v


def lamp(picture, rng, exposure, warmth, falloff):
    """Lights picture (float32, 0..1, in place) from one side; warmth -1..1 tints blue to orange."""
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


def glare(picture, rng, where, reach, strength):
    """A reflection on lamination around where (x, y pixels), about reach pixels wide (in place)."""
    height, width = picture.shape[:2]
    x, y = np.meshgrid(np.arange(width, dtype=np.float32), np.arange(height, dtype=np.float32))
    angle = rng.uniform(0, np.pi)
    dx, dy = x - where[0], y - where[1]
    long = (dx * np.cos(angle) + dy * np.sin(angle)) / reach
    short = (dy * np.cos(angle) - dx * np.sin(angle)) / (0.4 * reach)
    picture += strength * np.exp(-(long ** 2 + short ** 2))[..., None]


def defocus(picture, sigma):
    """Blurs by a Gaussian of sigma pixels."""
    return cv2.GaussianBlur(picture, (0, 0), sigma) if sigma > 0.15 else picture


def motion(picture, rng, length):
    """Blurs along a random direction over length pixels."""
    if length < 1:
        return picture
    reach = int(np.ceil(length)) | 1
    kernel = np.zeros((reach, reach), np.float32)
    centre, angle = reach // 2, rng.uniform(0, np.pi)
    step = np.array([np.cos(angle), np.sin(angle)]) * length / 2
    ends = [tuple(int(round(centre + sign * c)) for c in step) for sign in (-1, 1)]
    cv2.line(kernel, ends[0], ends[1], 1.0, 1, cv2.LINE_AA)
    return cv2.filter2D(picture, -1, kernel / kernel.sum(), borderType=cv2.BORDER_REPLICATE)


def sensed(picture, rng, noise):
    """8-bit pixels (height x width x 3, uint8); noise: deviation at mid grey, in steps of 255."""
    picture = np.clip(picture, 0, 1)
    if noise > 0:
        grain = rng.standard_normal(picture.shape, np.float32)
        # Demosaicing spreads noise over neighbours; 1.77 restores its deviation.
        grain = cv2.GaussianBlur(grain, (0, 0), 0.55) * 1.77
        picture = picture + grain * (noise / 255) * np.sqrt(0.3 + 1.4 * picture)
    return np.clip(picture * 255 + 0.5, 0, 255).astype(np.uint8)


def jpeg(pixels, quality):
    """The bytes of a JPEG file of pixels (RGB)."""
    done, data = cv2.imencode(".jpg", pixels[..., ::-1], [cv2.IMWRITE_JPEG_QUALITY, int(quality)])
    if not done:
        raise ValueError("OpenCV could not write a JPEG")
    return data.tobytes()
