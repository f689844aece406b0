"""Security print: fine waves and rosettes in pale inks."""

import cv2
import numpy as np

from .sheet import PX_PER_MM

_SHIFT = 4  # fractional bits of the polylines' coordinates


def _stroke(pixels, x, y, colour, width=1):
    points = np.round(np.stack([x, y], 1) * PX_PER_MM * (1 << _SHIFT)).astype(np.int32)
    cv2.polylines(pixels, [points], False, colour, width, cv2.LINE_AA, _SHIFT)


def tinted(colours, width_mm, height_mm):
    """Paper whose tint runs left to right through colours; height x width x 3, uint8."""
    width, height = round(width_mm * PX_PER_MM), round(height_mm * PX_PER_MM)
    stops = np.linspace(0, 1, len(colours))
    across = np.linspace(0, 1, width)
    row = np.stack([np.interp(across, stops, [c[i] for c in colours]) for i in range(3)], 1)
    return np.repeat(row.round().astype(np.uint8)[None], height, 0)


def waves(pixels, rng, colour, pitch=1.3):
    """Wavy lines over the whole sheet, pitch millimetres apart, drawn into pixels."""
    height, width = (v / PX_PER_MM for v in pixels.shape[:2])
    x = np.linspace(0, width, 240)
    long_wave, short_wave = rng.uniform(50, 80), rng.uniform(14, 24)
    phase, drift = rng.uniform(0, 6.28), rng.uniform(0.10, 0.22)
    for line in range(-6, int(height / pitch) + 6):
        y = line * pitch + 3.2 * np.sin(2 * np.pi * x / long_wave + phase)
        y = y + 1.1 * np.sin(2 * np.pi * x / short_wave + phase + drift * line)
        _stroke(pixels, x, y, colour)


def rosette(pixels, rng, x, y, radius, colour, petals=None):
    """A rosette of overlapping curves around x, y, drawn into pixels."""
    petals = petals or int(rng.integers(7, 14))
    angle = np.linspace(0, 2 * np.pi, 480)
    for ring in range(14):
        reach = radius * (0.35 + 0.65 * ring / 13)
        wave = 1 + 0.16 * np.sin(petals * angle + ring * 0.42)
        _stroke(pixels, x + reach * wave * np.cos(angle), y + reach * wave * np.sin(angle), colour)


def security_paper(rng, width_mm, height_mm, tints, inks):
    """Tinted paper with waves and three rosettes; height x width x 3, uint8."""
    pixels = tinted(tints, width_mm, height_mm)
    waves(pixels, rng, inks[0])
    waves(pixels, rng, inks[1], 2.1)
    rosette(pixels, rng, width_mm * 0.62, height_mm * 0.45, height_mm * 0.34, inks[2])
    rosette(pixels, rng, width_mm * 0.93, height_mm * 0.12, height_mm * 0.17, inks[1])
    rosette(pixels, rng, width_mm * 0.04, height_mm * 0.70, height_mm * 0.20, inks[1])
    return pixels
