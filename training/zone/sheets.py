"""A sheet that lines of a zone, ordinary print or nothing stand on."""

import cv2
import numpy as np

from . import glyphs, texts
from .glyphs import PITCH

_MARGIN = 48  # pixels around the part that is seen, for what turns into view


class Sheet:
    """Print at PITCH pixels a character: how much ink lies where, and where the read line's characters stand."""

    def __init__(self, view, width):
        across, down = width / view.strip_pitch, view.height / min(view.squeeze, 1.0)
        self.size = round(across * PITCH) + 2 * _MARGIN, round(down * PITCH) + 2 * _MARGIN
        self.ink = np.zeros(self.size[::-1], np.uint8)
        self.left, self.right = _MARGIN, self.size[0] - _MARGIN
        self.middle = np.array(self.size) / 2
        self.places = []  # (character, x, y) of its middle

    def lay(self, picture, x, y):
        """Lays picture (uint8) with its top left corner at x, y."""
        x, y = int(round(x)), int(round(y))
        top, left = max(0, y), max(0, x)
        bottom, right = min(self.size[1], y + picture.shape[0]), min(self.size[0], x + picture.shape[1])
        if bottom > top and right > left:
            view = self.ink[top:bottom, left:right]
            np.maximum(view, picture[top - y:bottom - y, left - x:right - x], out=view)

    def write(self, rng, lines, read, left, view, pictures):
        """Writes lines (of equal length) from left on, the one numbered read through the middle; None: no line."""
        wanted = read if read is not None else 0
        for number, line in enumerate(lines):
            y = self.middle[1] + (view.offset + (number - wanted) * view.spacing / view.squeeze) * PITCH
            if read is None:
                y += view.spacing / view.squeeze / 2 * PITCH
            if not -glyphs.HEIGHT / 2 < y < self.size[1] + glyphs.HEIGHT / 2:
                continue
            for place, character in enumerate(line):
                x = left + (place + 0.5) * PITCH
                wander = rng.normal(0, view.restless, 2) if view.restless else (0, 0)
                self.lay(pictures[character], x - glyphs.WIDTH / 2 + wander[0], y - glyphs.HEIGHT / 2 + wander[1])
                if number == read:
                    self.places.append((character, x, y))


def _words(rng, sheet, y, left=None, right=None):
    # A line of ordinary print whose middle lies at y, from left on or up to right.
    size = PITCH * rng.uniform(0.7, 2.0)
    line = glyphs.line_of_print(rng, texts.other(rng, int(rng.integers(1, 5))), size)
    if rng.random() < 0.2:
        line = cv2.resize(line, None, fx=rng.uniform(1.0, 1.6), fy=1)
    if right is not None:
        line, left = line[:, :max(1, int(right))], right - min(line.shape[1], max(1, int(right)))
    sheet.lay(line, left, y - line.shape[0] / 2)


def _surroundings(rng, sheet, first, last, view):
    # Other print and dark edges above, below and beside the line, which lies from first to last.
    kind, middle = rng.random(), sheet.middle[1]
    outside = PITCH * (1.35 + rng.random()) * (1 if rng.random() < 0.5 else -1)
    if kind < 0.4:
        _words(rng, sheet, middle + outside / view.squeeze, rng.uniform(0, sheet.size[0] * 0.7))
    elif kind < 0.55:
        y, thick = int(middle + outside), int(rng.integers(1, 10))
        end = sheet.size[0], y + int(rng.integers(-6, 7))
        cv2.line(sheet.ink, (0, y), end, int(rng.integers(60, 256)), thick, cv2.LINE_AA)
    elif kind < 0.75:
        if sheet.right - last > 2.5 * PITCH and rng.random() < 0.5:
            _words(rng, sheet, middle, left=last + PITCH * rng.uniform(1.2, 3))
        elif first - sheet.left > 2.5 * PITCH:
            _words(rng, sheet, middle, right=first - PITCH * rng.uniform(1.2, 3))
    else:  # the page ends, a dark desk begins
        shade, edge = int(rng.integers(60, 256)), PITCH * rng.uniform(0.4, 3)
        if rng.random() < 0.5:
            sheet.ink[:, :max(0, int(first - edge))] = shade
        else:
            sheet.ink[:, int(last + edge):] = shade


def filled(rng, sheet, view, fonts):
    """Puts something into the sheet; a window of a zone in most cases."""
    kind = rng.random()
    across = int((sheet.right - sheet.left) / PITCH)
    if kind > 0.96:  # nothing, or not much
        if rng.random() < 0.5:
            _surroundings(rng, sheet, *rng.uniform(sheet.left, sheet.right, 2), view)
        return
    if kind > 0.88:
        for line in range(int(rng.integers(-1, 1)), int(rng.integers(1, 3))):
            _words(rng, sheet, sheet.middle[1] + (view.offset + line * view.spacing * rng.uniform(0.6, 1.2)) * PITCH,
                   sheet.left - PITCH * rng.uniform(-2, 3))
        return
    lines = texts.zone(rng)
    length = len(lines[0])
    count = min(length, int(rng.integers(max(6, across - 8), across + 1)))
    if rng.random() < 0.08:
        count = int(rng.integers(1, count + 1))
    start = int(rng.integers(0, length - count + 1))
    if rng.random() < 0.3:
        start = 0 if rng.random() < 0.5 else length - count
    free = sheet.right - sheet.left - count * PITCH
    left = sheet.left + (free * rng.random() if rng.random() < 0.7 else free * int(rng.integers(2)))
    read = int(rng.integers(len(lines)))
    if kind > 0.865:  # between two lines
        read = None
    sheet.write(rng, [line[start:start + count] for line in lines], read, left, view, glyphs.alphabet(rng, fonts))
    if rng.random() < 0.25:
        _surroundings(rng, sheet, left, left + count * PITCH, view)
