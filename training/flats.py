"""Documents as they lie flat: the project's specimens, and invented layouts without end.

A flat is height x width x 4, uint8: red, green, blue, and coverage. All of it is invented.
"""

import sys
from functools import lru_cache
from pathlib import Path

import cv2
import numpy as np
from PIL import Image, ImageDraw, ImageFont

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "tools"))
from specimens import papers, passports, utopia  # noqa: E402

SPECIMENS = {  # the layouts that are trained on, and those that are held out
    False: (passports.bangladesh_page, passports.bangladesh_spread, utopia.classic,
            utopia.trilingual, utopia.identity_card, papers.receipt),
    True: (utopia.columns, papers.letter, papers.blank),
}
_FONTS = ("LiberationSans-Regular.ttf", "LiberationSans-Bold.ttf", "LiberationSerif-Regular.ttf",
          "LiberationSerif-Bold.ttf", "DejaVuSansMono.ttf", "LiberationSansNarrow-Regular.ttf")
_WORDS = ("river stone paper window garden copper signal harbour lantern meadow thirteen 2031 "
          "4711 08.15 No. sample specimen utopia total sum date name place north 19.90 A7 of the "
          "and to with from invoice order ticket seat page").split()


@lru_cache(maxsize=1)
def _font_files():
    found = {path.name: str(path) for path in Path("/usr/share/fonts").rglob("*.ttf")}
    return [found[name] for name in _FONTS]


@lru_cache(maxsize=400)
def _font(index, size):
    return ImageFont.truetype(_font_files()[index], size)


def specimen(rng, held_out, longest):
    """One of the project's own documents, its longer side longest pixels."""
    layouts = SPECIMENS[held_out]
    document = layouts[int(rng.integers(len(layouts)))](rng)
    pixels = np.dstack([document.pixels, document.coverage()])
    shrink = longest / max(pixels.shape[:2])
    return cv2.resize(pixels, None, fx=shrink, fy=shrink, interpolation=cv2.INTER_AREA)


def _tint(rng, least, most, spread):
    return tuple(int(c) for c in np.clip(rng.uniform(least, most) + rng.normal(0, spread, 3), 0, 255))


class _Canvas:
    # Coordinates are shares of the shorter side.
    def __init__(self, rng, aspect, longest, ground):
        self.rng, self.unit = rng, longest * aspect
        self.size = (max(16, round(longest * aspect)), longest)
        self.image = Image.new("RGB", self.size, ground)
        self.draw = ImageDraw.Draw(self.image)
        self.width, self.height = 1.0, 1.0 / aspect

    def turn(self):
        self.image = self.image.transpose(Image.ROTATE_90)

    def box(self, x0, y0, x1, y1, **look):
        u = self.unit
        if x1 > x0 and y1 > y0:
            self.draw.rectangle([x0 * u, y0 * u, x1 * u, y1 * u], **look)

    def text(self, x, y, size, width, ink, font=None, mono=False):
        pixels = max(4, round(size * self.unit))
        index = 4 if mono else (int(self.rng.integers(6)) if font is None else font)
        words = []
        while len(" ".join(words)) * 0.5 * size < width and len(words) < 30:
            words.append(_WORDS[int(self.rng.integers(len(_WORDS)))])
        line = " ".join(words)[:max(1, int(width / (size * 0.5)))]
        self.draw.text((x * self.unit, y * self.unit), line, ink, _font(index, pixels))

    def paragraph(self, x, y, width, height, size, ink, leading=1.5):
        font = int(self.rng.integers(6))
        while y + size < height:
            if self.rng.random() < 0.9:
                full = width if self.rng.random() < 0.75 else width * self.rng.uniform(0.2, 0.9)
                self.text(x, y, size, full, ink, font)
            y += size * leading


def _pattern(rng, pixels):
    # Waves, gradients and clouds as security paper and covers have them.
    height, width = pixels.shape[:2]
    y, x = np.mgrid[0:height, 0:width].astype(np.float32) / max(height, width)
    layer = pixels.astype(np.float32)
    if rng.random() < 0.6:
        a = rng.uniform(0, 2 * np.pi)
        ramp = (x * np.cos(a) + y * np.sin(a))[..., None]
        layer += ramp * rng.normal(0, 35, 3).astype(np.float32)
    for _ in range(int(rng.integers(0, 3))):
        a, f = rng.uniform(0, 2 * np.pi), rng.uniform(20, 90)
        bend = np.sin(2 * np.pi * rng.uniform(1, 4) * (y * np.cos(a) - x * np.sin(a)))
        wave = np.sin(f * (x * np.cos(a) + y * np.sin(a)) + rng.uniform(0, 4) * bend)
        layer += wave[..., None] * rng.normal(0, 9, 3).astype(np.float32)
    return np.clip(layer, 0, 255).astype(np.uint8)


def _patterned(canvas, rng):
    canvas.image = Image.fromarray(_pattern(rng, np.array(canvas.image)))
    canvas.draw = ImageDraw.Draw(canvas.image)


def _portrait(canvas, rng, x, y, w):
    h = w * 9 / 7
    canvas.box(x, y, x + w, y + h, fill=_tint(rng, 120, 235, 15))
    u, skin = canvas.unit, _tint(rng, 90, 220, 20)
    body = [(x + 0.05 * w) * u, (y + 0.72 * h) * u, (x + 0.95 * w) * u, (y + 1.2 * h) * u]
    canvas.draw.ellipse(body, fill=_tint(rng, 20, 160, 30))
    canvas.draw.ellipse([(x + 0.22 * w) * u, (y + 0.1 * h) * u, (x + 0.78 * w) * u,
                         (y + 0.52 * h) * u], fill=_tint(rng, 10, 140, 15))
    canvas.draw.ellipse([(x + 0.27 * w) * u, (y + 0.2 * h) * u, (x + 0.73 * w) * u,
                         (y + 0.8 * h) * u], fill=skin)
    canvas.box(x, y + h, x + w, y + h + 0.25 * w, fill=canvas.image.getpixel((2, 2)))


def _identity(canvas, rng, zone):
    # Portrait, labelled fields, often lines of machine-readable text. The canvas lies on its side.
    ink, label = _tint(rng, 10, 60, 10), _tint(rng, 40, 130, 30)
    w, h = canvas.width, canvas.height
    if rng.random() < 0.5:
        canvas.box(0, 0, w, h * rng.uniform(0.06, 0.16), fill=_tint(rng, 40, 220, 40))
    face = rng.uniform(0.24, 0.32) * w
    left = rng.random() < 0.75
    _portrait(canvas, rng, 0.05 * w if left else 0.93 * w - face, 0.2 * h, face)
    canvas.text(rng.uniform(0.05, 0.4), 0.03 * h, 0.055, rng.uniform(0.3, 0.6), label, 1)
    x = (0.09 * w + face) if left else 0.06 * w
    size, y = rng.uniform(0.028, 0.04), 0.18 * h
    while y < (0.72 if zone else 0.9) * h:
        canvas.text(x, y, size * 0.7, rng.uniform(0.1, 0.3), label)
        canvas.text(x, y + size * 0.8, size, rng.uniform(0.1, 0.4), ink)
        if rng.random() < 0.5:
            canvas.text(x + 0.3, y + size * 0.8, size, rng.uniform(0.1, 0.25), ink)
        y += size * rng.uniform(2.0, 2.6)
    if zone:
        size = 0.92 * w / 44 / 0.6
        for line in range(2):
            code = "".join(rng.choice(list("ABCDEFGHKLMNPRSTU0123456789<<<<<<<<"), 44))
            canvas.draw.text((0.04 * w * canvas.unit, (0.8 + 0.08 * line) * h * canvas.unit), code,
                             ink, _font(4, max(4, round(size * canvas.unit))))


def _landscape(rng, aspect, longest, ground):
    # A canvas wider than high: width is the unit.
    canvas = _Canvas(rng, 1.0, longest, ground)
    canvas.size = (longest, max(16, round(longest * aspect)))
    canvas.image = Image.new("RGB", canvas.size, ground)
    canvas.draw = ImageDraw.Draw(canvas.image)
    canvas.unit, canvas.height = longest, aspect
    return canvas


def _page(rng, longest):
    canvas = _landscape(rng, rng.uniform(0.66, 0.74), longest, _tint(rng, 190, 250, 12))
    _patterned(canvas, rng)
    _identity(canvas, rng, rng.random() < 0.85)
    return np.array(canvas.image)


def _spread(rng, longest):
    page = _page(rng, longest)
    if rng.random() < 0.4:
        other = _page(rng, longest)
        other = cv2.resize(other, page.shape[1::-1])
    else:
        canvas = _landscape(rng, page.shape[0] / page.shape[1], longest, _tint(rng, 190, 250, 12))
        _patterned(canvas, rng)
        if rng.random() < 0.7:
            canvas.paragraph(0.06, 0.06, 0.85, canvas.height * rng.uniform(0.3, 0.95),
                             rng.uniform(0.022, 0.04), _tint(rng, 20, 120, 20), 1.7)
        other = cv2.resize(np.array(canvas.image), page.shape[1::-1])
    pages = [other, page] if rng.random() < 0.8 else [page, other]
    pixels = np.concatenate(pages).astype(np.float32)
    rows = (np.arange(pixels.shape[0]) - page.shape[0]) / longest
    depth = rng.uniform(0.05, 0.35) * np.exp(-np.abs(rows) / rng.uniform(0.01, 0.06))
    pixels *= (1 - depth)[:, None, None]
    if rng.random() < 0.3:  # one page is turned against the other
        pixels = np.concatenate([pixels[:page.shape[0]][::-1, ::-1], pixels[page.shape[0]:]])
    return pixels.astype(np.uint8)


def _cover(rng, longest):
    dark = tuple(int(v) for v in np.clip(rng.uniform(8, 70) + rng.normal(0, 30, 3), 3, 140))
    canvas = _Canvas(rng, rng.uniform(0.66, 0.74), longest, dark)
    gold = tuple(int(v) for v in np.clip(np.array([190, 160, 90]) + rng.normal(0, 30, 3), 0, 255))
    u = canvas.unit
    canvas.text(0.2, 0.12, 0.07, 0.6, gold)
    x, y, r = 0.5, canvas.height * rng.uniform(0.4, 0.55), rng.uniform(0.12, 0.24)
    box = [(x - r) * u, (y - r) * u, (x + r) * u, (y + r) * u]
    canvas.draw.ellipse(box, outline=gold, width=max(1, int(0.015 * u)))
    for _ in range(int(rng.integers(4, 12))):
        a, b = rng.uniform(0, 6.28, 2)
        canvas.draw.line([(x + r * np.cos(a)) * u, (y + r * np.sin(a)) * u,
                          (x + r * np.cos(b)) * u, (y + r * np.sin(b)) * u], gold,
                         max(1, int(0.01 * u)))
    canvas.text(0.28, canvas.height * 0.8, 0.08, 0.5, gold)
    return np.array(canvas.image)


def _card(rng, longest):
    canvas = _landscape(rng, rng.uniform(0.58, 0.68), longest, _tint(rng, 60, 250, 35))
    _patterned(canvas, rng)
    if rng.random() < 0.6:
        _identity(canvas, rng, rng.random() < 0.3)
    else:
        for _ in range(int(rng.integers(2, 7))):
            canvas.text(rng.uniform(0.05, 0.5), rng.uniform(0.05, 0.9) * canvas.height,
                        rng.uniform(0.03, 0.09), rng.uniform(0.15, 0.5), _tint(rng, 0, 255, 20))
    return np.array(canvas.image)


def _receipt(rng, longest):
    canvas = _Canvas(rng, rng.uniform(0.3, 0.62), longest, _tint(rng, 215, 252, 4))
    ink, y = _tint(rng, 20, 110, 8), 0.08
    canvas.text(0.2, y, 0.09, 0.6, ink)
    while y < canvas.height - 0.3:
        y += rng.uniform(0.055, 0.09)
        canvas.text(0.06, y, 0.045, rng.uniform(0.3, 0.6), ink, mono=True)
        if rng.random() < 0.7:
            canvas.text(0.82, y, 0.045, 0.12, ink, mono=True)
    return np.array(canvas.image)


def _letter(rng, longest):
    canvas = _Canvas(rng, rng.uniform(0.66, 0.8), longest, _tint(rng, 215, 254, 6))
    ink, margin = _tint(rng, 10, 90, 15), rng.uniform(0.05, 0.14)
    h, columns = canvas.height, 1 + (rng.random() < 0.25)
    if rng.random() < 0.6:
        canvas.text(margin, 0.06, rng.uniform(0.03, 0.08), rng.uniform(0.2, 0.8), ink)
    for column in range(columns):
        width = (1 - 2 * margin) / columns - 0.02
        canvas.paragraph(margin + column * (width + 0.04), rng.uniform(0.15, 0.3), width,
                         h * rng.uniform(0.5, 0.96), rng.uniform(0.018, 0.035), ink,
                         rng.uniform(1.3, 2.0))
    if rng.random() < 0.3:  # a picture in the text
        x, y = rng.uniform(0.1, 0.5), rng.uniform(0.2, 0.7) * h
        canvas.box(x, y, x + 0.4, y + 0.3, fill=_tint(rng, 40, 220, 40))
    return np.array(canvas.image)


def _form(rng, longest):
    canvas = _Canvas(rng, rng.uniform(0.6, 0.95), longest, _tint(rng, 200, 252, 10))
    ink = _tint(rng, 20, 110, 20)
    rows, columns = int(rng.integers(4, 22)), int(rng.integers(1, 6))
    top, step = 0.15, (canvas.height - 0.25) / rows
    line = max(1, round(0.003 * canvas.unit))
    canvas.text(0.08, 0.04, 0.05, 0.7, ink)
    for row in range(rows):
        for column in range(columns):
            x, w = 0.06 + column * 0.88 / columns, 0.88 / columns
            canvas.box(x, top + row * step, x + w, top + (row + 1) * step, outline=ink, width=line)
            if rng.random() < 0.7:
                canvas.text(x + 0.01, top + (row + 0.3) * step, min(0.035, 0.5 * step), w * 0.8,
                            ink)
    return np.array(canvas.image)


def _note(rng, longest):
    canvas = _Canvas(rng, rng.uniform(0.6, 1.0), longest, _tint(rng, 205, 252, 14))
    rule = _tint(rng, 150, 210, 20)
    step, y = rng.uniform(0.03, 0.07), 0.08
    pen = _tint(rng, 10, 110, 30)
    while y < canvas.height:
        canvas.box(0, y, 1, y + 0.004, fill=rule)
        if rng.random() < 0.6:
            points, x = [], 0.1
            end = rng.uniform(0.3, 0.95)
            while x < end:
                points.append((x * canvas.unit, (y - rng.uniform(0, step * 0.7)) * canvas.unit))
                x += 0.012
            canvas.draw.line(points, pen, max(1, round(0.004 * canvas.unit)))
        y += step
    return np.array(canvas.image)


def _blank(rng, longest):
    canvas = _Canvas(rng, rng.uniform(0.6, 1.0), longest, _tint(rng, 180, 254, 10))
    if rng.random() < 0.5:
        canvas.text(rng.uniform(0.1, 0.4), rng.uniform(0.1, 0.9), rng.uniform(0.03, 0.1),
                    rng.uniform(0.2, 0.5), _tint(rng, 10, 120, 20))
    return np.array(canvas.image)


def printed(rng, longest, photo):
    """A book cover, leaflet or framed print: photo (RGB) with a title, perhaps a border."""
    aspect = rng.uniform(0.6, 0.95)
    pixels = cv2.resize(photo, (round(longest * aspect), longest), interpolation=cv2.INTER_AREA)
    image = Image.fromarray(pixels)
    draw = ImageDraw.Draw(image)
    for _ in range(int(rng.integers(1, 5))):
        size = round(rng.uniform(0.05, 0.16) * longest * aspect)
        word = " ".join(rng.choice(_WORDS, 2)).upper()
        draw.text((rng.uniform(0.04, 0.3) * longest * aspect, rng.uniform(0.02, 0.9) * longest),
                  word, _tint(rng, 0, 255, 60), _font(int(rng.integers(4)), max(6, size)))
    pixels = np.array(image)
    if rng.random() < 0.4:
        edge = round(rng.uniform(0.02, 0.08) * longest)
        pixels = cv2.copyMakeBorder(pixels, edge, edge, edge, edge, cv2.BORDER_CONSTANT,
                                    value=_tint(rng, 200, 254, 5))
    return pixels


_LAYOUTS = ((_page, 0.25), (_spread, 0.14), (_cover, 0.1), (_card, 0.13), (_receipt, 0.07),
            (_letter, 0.13), (_form, 0.06), (_note, 0.05), (_blank, 0.07))


def _banded(rng, pixels):
    # A band of colour along one side, dark ones above all: a header, a letterhead, a magnetic strip.
    # A network that never saw one takes a dark header for the desk.
    turns = int(rng.choice(4, p=[0.55, 0.15, 0.15, 0.15]))
    image = Image.fromarray(np.ascontiguousarray(np.rot90(pixels, turns)))
    draw = ImageDraw.Draw(image)
    width, height = image.size
    deep = round(rng.uniform(0.05, 0.2) * min(width, height) + 1)
    dark = rng.random() < 0.7
    colour = np.clip(rng.uniform(*((5, 90) if dark else (60, 240))) + rng.normal(0, 30, 3), 0, 255)
    draw.rectangle([0, 0, width, deep], fill=tuple(int(value) for value in colour))
    ink = _tint(rng, 180, 255, 15) if dark else _tint(rng, 0, 90, 20)
    for _ in range(int(rng.integers(0, 3))):
        word = _WORDS[int(rng.integers(len(_WORDS)))].upper()
        draw.text((rng.uniform(0.02, 0.8) * width, 0.25 * deep), word, ink,
                  _font(int(rng.integers(4)), max(4, deep // 2)))
    return np.rot90(np.array(image), -turns)


def invented(rng, longest):
    """A layout of its own kind, its longer side longest pixels."""
    shares = np.array([share for _, share in _LAYOUTS])
    layout = _LAYOUTS[int(rng.choice(len(_LAYOUTS), p=shares / shares.sum()))][0]
    pixels = layout(rng, longest if layout is not _spread else longest * 2 // 3)
    if rng.random() < 0.4:
        pixels = _banded(rng, pixels)
    coverage = np.full(pixels.shape[:2], 255, np.uint8)
    if layout in (_page, _spread, _cover, _card) and rng.random() < 0.7:
        radius = max(1, round(rng.uniform(0.015, 0.05) * min(coverage.shape)))
        h, w = coverage.shape
        coverage[:] = 0
        cv2.rectangle(coverage, (radius, 0), (w - radius - 1, h), 255, -1)
        cv2.rectangle(coverage, (0, radius), (w, h - radius - 1), 255, -1)
        for x in (radius, w - radius - 1):
            for y in (radius, h - radius - 1):
                cv2.circle(coverage, (x, y), radius, 255, -1, cv2.LINE_AA)
    return np.dstack([pixels, coverage])
