"""How a line is seen, from easy to hardly legible."""

from dataclasses import dataclass

import numpy as np


@dataclass(frozen=True)
class View:
    """How a line is seen. A pitch is the distance from one character to the next."""

    pitch: float = 16.0  # pixels in the picture that the strip is cut from
    strip_pitch: float = 14.0  # pixels in the strip
    height: float = 1.9  # pitches that the strip shows
    offset: float = 0.0  # pitches, of the line's middle below the strip's
    spacing: float = 2.5  # pitches between lines
    tilt: float = 0.0  # degrees
    slant: float = 0.0  # of the characters, height to the side
    squeeze: float = 1.0  # height by width
    keystone: float = 0.0  # pitches, deviation of the strip's corners
    bend: float = 0.0  # pitches
    restless: float = 0.0  # pixels of the glyphs, deviation of their places
    ink: float = 0.12  # 0 black .. 1 as the paper
    worn: float = 0.0  # share of the ink lost in spots
    focus: float = 0.02  # pitches, deviation of the blur
    motion: float = 0.0  # pitches
    sharpened: float = 0.0
    noise: float = 2.0  # deviation, in steps of 255
    enlarged: float = 1.0  # times, before it was saved
    quality: int = 90  # of the JPEG; 100: none
    contrast: float = 1.0
    cubic: bool = False  # how the strip is cut


def any_view(rng):
    """A View at random, from easy to hardly legible."""
    chance = rng.random(12)
    pitch = np.exp(rng.uniform(np.log(5), np.log(16))) if chance[0] < 0.75 else rng.uniform(14, 38)
    return View(
        pitch=pitch, strip_pitch=rng.uniform(10.5, 18), height=rng.uniform(1.45, 2.35),
        offset=rng.normal(0, 0.11) if rng.random() < 0.8 else rng.uniform(-0.4, 0.4),
        spacing=rng.uniform(2.0, 2.9), tilt=rng.normal(0, 0.7) if chance[1] < 0.85 else rng.uniform(-2.4, 2.4),
        slant=rng.normal(0, 0.06), squeeze=np.exp(rng.normal(0, 0.08)) if chance[2] < 0.6 else rng.uniform(0.75, 1.3),
        keystone=rng.uniform(0, 0.12) if chance[3] < 0.4 else 0.0,
        bend=rng.uniform(-0.12, 0.12) if chance[4] < 0.2 else 0.0,
        restless=rng.uniform(0, 0.8) if chance[5] < 0.5 else 0.0,
        ink=rng.uniform(0, 0.35) if chance[6] < 0.75 else rng.uniform(0.35, 0.82),
        worn=rng.uniform(0.1, 0.45) if chance[7] < 0.15 else 0.0,
        focus=min(0.2, abs(rng.normal(0, 0.085))) if chance[8] < 0.6 else 0.0,
        motion=rng.uniform(0.1, 0.6) if rng.random() < 0.22 else 0.0,
        sharpened=rng.uniform(0.3, 1.5) if chance[8] > 0.88 else 0.0,
        noise=abs(rng.normal(0, 6)) if chance[9] < 0.75 else 0.0,
        enlarged=rng.uniform(1.2, 2.0) if chance[10] < 0.12 and pitch > 10 else 1.0,
        quality=int(rng.uniform(22, 95)) if chance[11] < 0.7 else 100,
        contrast=rng.uniform(0.3, 0.9) if rng.random() < 0.2 else 1.0, cubic=rng.random() < 0.3)
