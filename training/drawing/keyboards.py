"""Keyboards and laptops that documents lie on, as flats: height x width x 4, uint8. A key is 1 wide and 1 high."""

import numpy as np
from PIL import Image, ImageDraw

from .invented import tint
from .sheet import coverage, font

_ROWS = (  # of keys: how wide, and what is printed on them
    ((1,) * 13 + (2,), ["1", "2", "3", "4", "5", "6", "7", "8", "9", "0", "-", "=", "+", "Bksp"]),
    ((1.5,) + (1,) * 12 + (1.5,), ["Tab", *"QWERTYUIOP[]", "\\"]),
    ((1.75,) + (1,) * 11 + (2.25,), ["Caps", *"ASDFGHJKL;'", "Enter"]),
    ((2.25,) + (1,) * 10 + (2.75,), ["Shift", *"ZXCVBNM,./", "Shift"]),
    ((1.25,) * 3 + (6.25,) + (1,) * 3, ["Ctrl", "Fn", "Alt", "", "Alt", "Ctrl", ">"]),
)
_PAD = ["7", "8", "9", "4", "5", "6", "1", "2", "3", "0", ".", "+"]
# Body, key, print: least and most grey, and how far colours are from grey.
_TRAINED_ON = (
    ((20, 60, 4), (14, 50, 4), (150, 235, 6)), ((150, 205, 4), (15, 45, 4), (170, 240, 6)),
    ((165, 215, 4), (215, 252, 4), (60, 120, 6)), ((225, 250, 3), (230, 254, 3), (90, 150, 6)),
    ((70, 120, 6), (20, 60, 4), (180, 240, 6)), ((10, 40, 4), (60, 100, 6), (200, 250, 6)))
_HELD_OUT = (
    ((170, 205, 22), (200, 235, 22), (30, 90, 20)), ((25, 60, 10), (30, 70, 10), (120, 250, 70)),
    ((90, 150, 35), (190, 245, 18), (40, 110, 25)))


class _Keys:
    # A board of width x height keys, unit pixels a key.
    def __init__(self, rng, width, height, unit, colours):
        self.body, self.key, self.ink = (tint(rng, *colour) for colour in colours)
        self._unit, self._rng = unit, rng
        self.image = Image.new("RGB", (round(width * unit), round(height * unit)), self.body)
        self._draw = ImageDraw.Draw(self.image)
        self._gap, self._round = rng.uniform(0.05, 0.16), rng.uniform(0.05, 0.2)
        self._bevel = rng.uniform(0.06, 0.14) if rng.random() < 0.5 else 0.0  # of tall keys
        self._size = max(4, round(unit * rng.uniform(0.25, 0.42)))
        self._corner = rng.random() < 0.5  # where letters are printed

    def box(self, x, y, width, height, colour, radius=0.0):
        corners = [v * self._unit for v in (x, y, x + width, y + height)]
        self._draw.rounded_rectangle(corners, radius * self._unit, tuple(min(255, max(0, int(c))) for c in colour))

    def put(self, x, y, width, height, said):
        """One key in its place, said printed on it."""
        g = self._gap / 2
        self.box(x + g / 2, y + g / 2, width - g, height - g, [c * 0.55 for c in self.body], self._round)
        side = [c * (0.75 if self._bevel else 1) for c in self.key]
        self.box(x + g, y + g, width - 2 * g, height - 2 * g, side, self._round)
        if self._bevel:
            b = g + self._bevel
            top = [c * 1.06 for c in self.key]
            self.box(x + b, y + g + self._bevel / 2, width - 2 * b, height - g - 2 * b, top, self._round)
        size = self._size if len(said) < 2 else max(4, self._size * 2 // 3)
        at = (x + 0.22, y + 0.15) if self._corner or len(said) > 1 else (x + 0.36, y + 0.25)
        self._draw.text([v * self._unit for v in at], said, self.ink, font("sans", size))

    def block(self, x, y):
        """The letters and digits, 15 x 5 keys."""
        for row, (widths, said) in enumerate(_ROWS):
            edges = np.cumsum((0,) + widths) * 15 / sum(widths)
            for left, right, word in zip(edges, edges[1:], said):
                self.put(x + left, y + row, right - left, 1, word)

    def grid(self, x, y, columns, rows, said, height=1.0):
        """Keys in rows and columns."""
        for row, column in np.ndindex(rows, columns):
            self.put(x + column, y + row * height, 1, height, said[(row * columns + column) % len(said)])


def _functions(keys, x, y, height):
    keys.put(x, y, 1, height, "Esc")
    for group in range(3):
        keys.grid(x + 1.75 + 4.5 * group, y, 4, 1, [f"F{group * 4 + i}" for i in (1, 2, 3, 4)], height)


def _laptop(rng, unit, colours, photo):
    side, screen, rest = rng.uniform(0.4, 2), rng.choice([0, rng.uniform(0.5, 4)]), rng.uniform(3.5, 6.5)
    keys = _Keys(rng, 15 + 2 * side, screen + 1.2 + 5 + rest, unit, colours)
    if screen:  # its lower part, bright or dark
        keys.box(0, 0, 15 + 2 * side, screen, (8, 8, 10))
        if rng.random() < 0.5:
            width, height = (max(2, round(v * unit)) for v in (14.4 + 2 * side, screen - 0.4))
            shown = Image.fromarray(photo).resize((width, 2 * height)).crop((0, height, width, 2 * height))
            keys.image.paste(shown, (round(0.3 * unit), 0))
    _functions(keys, side, screen + 0.4, 0.7)
    keys.block(side, screen + 1.2)
    pad, shade = rng.uniform(4, 7.5), rng.uniform(0.85, 1.08)
    keys.box(side + 7.2 - pad / 2, screen + 6.6, pad, rest - 0.9, [c * shade for c in keys.body], 0.15)
    return keys.image, 0.5


def _desktop(rng, unit, colours):
    rim, pads = rng.uniform(0.3, 0.9), rng.random() < 0.6
    width = 15 + 2 * rim + (7.7 if pads else 0)
    keys = _Keys(rng, width, 6.4 + 2 * rim, unit, colours)
    _functions(keys, rim, rim, 1)
    keys.block(rim, rim + 1.4)
    if pads:
        keys.grid(rim + 15.3, rim + 1.4, 3, 2, ["Ins", "Home", "PgUp", "Del", "End", "PgDn"])
        keys.grid(rim + 15.3, rim + 5.4, 3, 1, ["<", "v", ">"])
        keys.put(rim + 16.3, rim + 4.4, 1, 1, "^")
        keys.grid(rim + 18.6, rim + 2.4, 3, 4, _PAD)
        keys.grid(rim + 18.6, rim + 1.4, 4, 1, ["Num", "/", "*", "-"])
        for row, height in ((2.4, 2), (4.4, 2)):
            keys.put(rim + 21.6, rim + row, 1, height, "+")
    return keys.image, rng.uniform(0.1, 0.6)


def keyboard(rng, longest, photos, held_out=False):
    """A laptop, whose screen may show one of photos (RGB), or a keyboard, about longest pixels wide."""
    colours = _HELD_OUT if held_out else _TRAINED_ON
    colours = colours[int(rng.integers(len(colours)))]
    if rng.random() < 0.55:
        image, corner = _laptop(rng, longest / 17, colours, photos[int(rng.integers(len(photos)))])
    else:
        image, corner = _desktop(rng, longest / 17, colours)
    pixels = np.array(image)
    return np.dstack([pixels, coverage(pixels.shape, round(corner * longest / 17))])
