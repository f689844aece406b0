"""A drawn document: its pixels, its shape, and what it is."""

from dataclasses import dataclass

import cv2
import numpy as np

from .sheet import PX_PER_MM


@dataclass(frozen=True)
class Document:
    """pixels: height x width x 3, uint8, at PX_PER_MM. zone: machine-readable lines, or none."""

    pixels: np.ndarray
    kind: str
    zone: tuple = ()
    corner_mm: float = 0.0  # radius of the rounded corners
    thickness_mm: float = 0.2  # decides the width of its shadow

    @property
    def size_mm(self):
        """(width, height)"""
        return self.pixels.shape[1] / PX_PER_MM, self.pixels.shape[0] / PX_PER_MM

    def coverage(self):
        """Height x width, uint8: 255 where there is paper, less at the rounded corners."""
        height, width = self.pixels.shape[:2]
        radius = round(self.corner_mm * PX_PER_MM)
        if radius < 1:
            return np.full((height, width), 255, np.uint8)
        mask = np.zeros((height, width), np.uint8)
        cv2.rectangle(mask, (radius, 0), (width - radius - 1, height - 1), 255, -1)
        cv2.rectangle(mask, (0, radius), (width - 1, height - radius - 1), 255, -1)
        for x in (radius, width - radius - 1):
            for y in (radius, height - radius - 1):
                cv2.circle(mask, (x, y), radius, 255, -1, cv2.LINE_AA)
        return mask
