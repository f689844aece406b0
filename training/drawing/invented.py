"""Invented layouts without end, as flats: height x width x 4, uint8, colours and coverage.

Sheets are measured in their width, so that x runs from 0 to 1.
"""

import cv2
import numpy as np
from PIL import Image, ImageDraw

from .sheet import Sheet, coverage, font

_FONTS = ("sans", "bold", "serif", "serif-bold", "mono", "narrow")
BOLD, SERIF_BOLD, MONO = 1, 3, 4
_WORDS = ("river stone paper window garden copper signal harbour lantern meadow thirteen 2031 "
          "4711 08.15 No. sample specimen utopia total sum date name place north 19.90 A7 of the "
          "and to with from invoice order ticket seat page").split()


def tint(rng, least, most, spread):
    return tuple(int(c) for c in np.clip(rng.uniform(least, most) + rng.normal(0, spread, 3), 0, 255))


def upright(aspect, longest, ground):
    return Sheet(1.0, 1 / aspect, ground, longest * aspect)


def printed_font(index, sheet, size):
    return font(_FONTS[index], max(4, round(size * sheet.scale)))


def _word(rng):
    return _WORDS[int(rng.integers(len(_WORDS)))]


def words(sheet, rng, x, y, size, width, ink, index=None):
    # Words that fill width, their top at y.
    index = int(rng.integers(6)) if index is None else index
    said = []
    while len(" ".join(said)) * 0.5 * size < width and len(said) < 30:
        said.append(_word(rng))
    line = " ".join(said)[:max(1, int(width / (size * 0.5)))]
    sheet.draw.text((x * sheet.scale, y * sheet.scale), line, ink, printed_font(index, sheet, size))


def paragraph(sheet, rng, x, y, width, bottom, size, ink, leading):
    index = int(rng.integers(6))
    while y + size < bottom:
        if rng.random() < 0.9:
            full = width if rng.random() < 0.75 else width * rng.uniform(0.2, 0.9)
            words(sheet, rng, x, y, size, full, ink, index)
        y += size * leading


def ellipse(sheet, x0, y0, x1, y1, **look):
    sheet.draw.ellipse([v * sheet.scale for v in (x0, y0, x1, y1)], **look)


def _patterned(rng, height, longest, ground):
    # A sheet wider than high with waves and gradients, as security paper and covers have them.
    sheet = Sheet(1.0, height, ground, longest)
    layer = sheet.array().astype(np.float32)
    y, x = np.mgrid[:layer.shape[0], :layer.shape[1]].astype(np.float32) / max(layer.shape[:2])
    if rng.random() < 0.6:
        a = rng.uniform(0, 2 * np.pi)
        ramp = (x * np.cos(a) + y * np.sin(a))[..., None]
        layer += ramp * rng.normal(0, 35, 3).astype(np.float32)
    for _ in range(int(rng.integers(0, 3))):
        a, f = rng.uniform(0, 2 * np.pi), rng.uniform(20, 90)
        bend = np.sin(2 * np.pi * rng.uniform(1, 4) * (y * np.cos(a) - x * np.sin(a)))
        wave = np.sin(f * (x * np.cos(a) + y * np.sin(a)) + rng.uniform(0, 4) * bend)
        layer += wave[..., None] * rng.normal(0, 9, 3).astype(np.float32)
    sheet.show(np.clip(layer, 0, 255).astype(np.uint8))
    return sheet


def _portrait(sheet, rng, x, y, w):
    h = w * 9 / 7
    sheet.box(x, y, x + w, y + h, tint(rng, 120, 235, 15))
    skin = tint(rng, 90, 220, 20)
    for x0, y0, x1, y1, colour in ((0.05, 0.72, 0.95, 1.2, (20, 160, 30)),
                                   (0.22, 0.1, 0.78, 0.52, (10, 140, 15)), (0.27, 0.2, 0.73, 0.8, None)):
        ellipse(sheet, x + x0 * w, y + y0 * h, x + x1 * w, y + y1 * h,
                fill=tint(rng, *colour) if colour else skin)
    sheet.box(x, y + h, x + w, y + h + 0.25 * w, sheet.image.getpixel((2, 2)))


def _identity(sheet, rng, zone):
    # Portrait, labelled fields, often lines of machine-readable text, on a sheet wider than high.
    ink, label, h = tint(rng, 10, 60, 10), tint(rng, 40, 130, 30), sheet.height
    if rng.random() < 0.5:
        sheet.box(0, 0, 1, h * rng.uniform(0.06, 0.16), tint(rng, 40, 220, 40))
    face = rng.uniform(0.24, 0.32)
    left = rng.random() < 0.75
    _portrait(sheet, rng, 0.05 if left else 0.93 - face, 0.2 * h, face)
    words(sheet, rng, rng.uniform(0.05, 0.4), 0.03 * h, 0.055, rng.uniform(0.3, 0.6), label, BOLD)
    x = (0.09 + face) if left else 0.06
    size, y = rng.uniform(0.028, 0.04), 0.18 * h
    while y < (0.72 if zone else 0.9) * h:
        words(sheet, rng, x, y, size * 0.7, rng.uniform(0.1, 0.3), label)
        words(sheet, rng, x, y + size * 0.8, size, rng.uniform(0.1, 0.4), ink)
        if rng.random() < 0.5:
            words(sheet, rng, x + 0.3, y + size * 0.8, size, rng.uniform(0.1, 0.25), ink)
        y += size * rng.uniform(2.0, 2.6)
    for line in range(2 if zone else 0):
        code = "".join(rng.choice(list("ABCDEFGHKLMNPRSTU0123456789<<<<<<<<"), 44))
        sheet.draw.text((0.04 * sheet.scale, (0.8 + 0.08 * line) * h * sheet.scale), code, ink,
                        printed_font(MONO, sheet, 0.92 / 44 / 0.6))


def _page(rng, longest):
    sheet = _patterned(rng, rng.uniform(0.66, 0.74), longest, tint(rng, 190, 250, 12))
    _identity(sheet, rng, rng.random() < 0.85)
    return sheet.array()


def _spread(rng, longest):
    longest = longest * 2 // 3
    page = _page(rng, longest)
    if rng.random() < 0.4:
        other = _page(rng, longest)
    else:
        sheet = _patterned(rng, page.shape[0] / page.shape[1], longest, tint(rng, 190, 250, 12))
        if rng.random() < 0.7:
            paragraph(sheet, rng, 0.06, 0.06, 0.85, sheet.height * rng.uniform(0.3, 0.95),
                      rng.uniform(0.022, 0.04), tint(rng, 20, 120, 20), 1.7)
        other = sheet.array()
    other = cv2.resize(other, page.shape[1::-1])
    pages = [other, page] if rng.random() < 0.8 else [page, other]
    pixels = np.concatenate(pages).astype(np.float32)
    rows = (np.arange(pixels.shape[0]) - page.shape[0]) / longest
    depth = rng.uniform(0.05, 0.35) * np.exp(-np.abs(rows) / rng.uniform(0.01, 0.06))
    pixels *= (1 - depth)[:, None, None]
    if rng.random() < 0.3:  # one page is turned against the other
        pixels[:page.shape[0]] = pixels[:page.shape[0]][::-1, ::-1].copy()
    return pixels.astype(np.uint8)


def _cover(rng, longest):
    dark = tuple(int(v) for v in np.clip(rng.uniform(8, 70) + rng.normal(0, 30, 3), 3, 140))
    sheet = upright(rng.uniform(0.66, 0.74), longest, dark)
    gold = tuple(int(v) for v in np.clip(np.array([190, 160, 90]) + rng.normal(0, 30, 3), 0, 255))
    u = sheet.scale
    words(sheet, rng, 0.2, 0.12, 0.07, 0.6, gold)
    x, y, r = 0.5, sheet.height * rng.uniform(0.4, 0.55), rng.uniform(0.12, 0.24)
    ellipse(sheet, x - r, y - r, x + r, y + r, outline=gold, width=max(1, int(0.015 * u)))
    for _ in range(int(rng.integers(4, 12))):
        a = rng.uniform(0, 6.28, 2)
        ends = np.stack([x + r * np.cos(a), y + r * np.sin(a)], 1) * u
        sheet.draw.line([tuple(end) for end in ends], gold, max(1, int(0.01 * u)))
    words(sheet, rng, 0.28, sheet.height * 0.8, 0.08, 0.5, gold)
    return sheet.array()


def _card(rng, longest):
    sheet = _patterned(rng, rng.uniform(0.58, 0.68), longest, tint(rng, 60, 250, 35))
    if rng.random() < 0.6:
        _identity(sheet, rng, rng.random() < 0.3)
    else:
        for _ in range(int(rng.integers(2, 7))):
            words(sheet, rng, rng.uniform(0.05, 0.5), rng.uniform(0.05, 0.9) * sheet.height,
                  rng.uniform(0.03, 0.09), rng.uniform(0.15, 0.5), tint(rng, 0, 255, 20))
    return sheet.array()


def _receipt(rng, longest):
    sheet = upright(rng.uniform(0.3, 0.62), longest, tint(rng, 215, 252, 4))
    ink, y = tint(rng, 20, 110, 8), 0.08
    words(sheet, rng, 0.2, y, 0.09, 0.6, ink)
    while y < sheet.height - 0.3:
        y += rng.uniform(0.055, 0.09)
        words(sheet, rng, 0.06, y, 0.045, rng.uniform(0.3, 0.6), ink, MONO)
        if rng.random() < 0.7:
            words(sheet, rng, 0.82, y, 0.045, 0.12, ink, MONO)
    return sheet.array()


def _letter(rng, longest):
    sheet = upright(rng.uniform(0.66, 0.8), longest, tint(rng, 215, 254, 6))
    ink, margin = tint(rng, 10, 90, 15), rng.uniform(0.05, 0.14)
    h, columns = sheet.height, 1 + (rng.random() < 0.25)
    if rng.random() < 0.6:
        words(sheet, rng, margin, 0.06, rng.uniform(0.03, 0.08), rng.uniform(0.2, 0.8), ink)
    for column in range(columns):
        width = (1 - 2 * margin) / columns - 0.02
        paragraph(sheet, rng, margin + column * (width + 0.04), rng.uniform(0.15, 0.3), width,
                  h * rng.uniform(0.5, 0.96), rng.uniform(0.018, 0.035), ink, rng.uniform(1.3, 2.0))
    if rng.random() < 0.3:  # a picture in the text
        x, y = rng.uniform(0.1, 0.5), rng.uniform(0.2, 0.7) * h
        sheet.box(x, y, x + 0.4, y + 0.3, tint(rng, 40, 220, 40))
    return sheet.array()


def _form(rng, longest):
    sheet = upright(rng.uniform(0.6, 0.95), longest, tint(rng, 200, 252, 10))
    ink = tint(rng, 20, 110, 20)
    rows, columns = int(rng.integers(4, 22)), int(rng.integers(1, 6))
    top, step, w = 0.15, (sheet.height - 0.25) / rows, 0.88 / columns
    words(sheet, rng, 0.08, 0.04, 0.05, 0.7, ink)
    for row, column in np.ndindex(rows, columns):
        x, y = 0.06 + column * 0.88 / columns, top + row * step
        sheet.box(x, y, x + w, top + (row + 1) * step, None, ink, 0.003)
        if rng.random() < 0.7:
            words(sheet, rng, x + 0.01, top + (row + 0.3) * step, min(0.035, 0.5 * step), w * 0.8, ink)
    return sheet.array()


def _note(rng, longest):
    sheet = upright(rng.uniform(0.6, 1.0), longest, tint(rng, 205, 252, 14))
    rule, step, y = tint(rng, 150, 210, 20), rng.uniform(0.03, 0.07), 0.08
    pen, u = tint(rng, 10, 110, 30), sheet.scale
    while y < sheet.height:
        sheet.box(0, y, 1, y + 0.004, rule)
        if rng.random() < 0.6:
            points, x = [], 0.1
            end = rng.uniform(0.3, 0.95)
            while x < end:
                points.append((x * u, (y - rng.uniform(0, step * 0.7)) * u))
                x += 0.012
            sheet.draw.line(points, pen, max(1, round(0.004 * u)))
        y += step
    return sheet.array()


def _blank(rng, longest):
    sheet = upright(rng.uniform(0.6, 1.0), longest, tint(rng, 180, 254, 10))
    if rng.random() < 0.5:
        words(sheet, rng, rng.uniform(0.1, 0.4), rng.uniform(0.1, 0.9), rng.uniform(0.03, 0.1),
              rng.uniform(0.2, 0.5), tint(rng, 10, 120, 20))
    return sheet.array()


_LAYOUTS = {_page: 0.25, _spread: 0.14, _cover: 0.1, _card: 0.13, _receipt: 0.07, _letter: 0.13,
            _form: 0.06, _note: 0.05, _blank: 0.07}


def _banded(rng, pixels):
    # A band of colour along one side, dark ones above all: a header, a letterhead, a magnetic strip.
    # A network that never saw one takes a dark header for the desk.
    turns = int(rng.choice(4, p=[0.55, 0.15, 0.15, 0.15]))
    image = Image.fromarray(np.ascontiguousarray(np.rot90(pixels, turns)))
    draw = ImageDraw.Draw(image)
    width, height = image.size
    deep = round(rng.uniform(0.05, 0.2) * min(width, height) + 1)
    dark = rng.random() < 0.7
    draw.rectangle([0, 0, width, deep], tint(rng, *((5, 90) if dark else (60, 240)), 30))
    ink = tint(rng, 180, 255, 15) if dark else tint(rng, 0, 90, 20)
    for _ in range(int(rng.integers(0, 3))):
        word = _word(rng).upper()
        draw.text((rng.uniform(0.02, 0.8) * width, 0.25 * deep), word, ink,
                  font(_FONTS[int(rng.integers(4))], max(4, deep // 2)))
    return np.rot90(np.array(image), -turns)


def invented(rng, longest):
    """A layout of its own kind, its longer side longest pixels."""
    shares = np.array(list(_LAYOUTS.values()))
    layout = list(_LAYOUTS)[int(rng.choice(len(_LAYOUTS), p=shares / shares.sum()))]
    pixels = layout(rng, longest)
    if rng.random() < 0.4:
        pixels = _banded(rng, pixels)
    radius = 0
    if layout in (_page, _spread, _cover, _card) and rng.random() < 0.7:
        radius = max(1, round(rng.uniform(0.015, 0.05) * min(pixels.shape[:2])))
    return np.dstack([pixels, coverage(pixels.shape, radius)])


def printed(rng, longest, photo):
    """A book cover, leaflet or framed print: photo (RGB) with a title, perhaps a border."""
    aspect = rng.uniform(0.6, 0.95)
    width = longest * aspect
    image = Image.fromarray(cv2.resize(photo, (round(width), longest), interpolation=cv2.INTER_AREA))
    draw = ImageDraw.Draw(image)
    for _ in range(int(rng.integers(1, 5))):
        size = round(rng.uniform(0.05, 0.16) * width)
        word = " ".join(rng.choice(_WORDS, 2)).upper()
        draw.text((rng.uniform(0.04, 0.3) * width, rng.uniform(0.02, 0.9) * longest), word,
                  tint(rng, 0, 255, 60), font(_FONTS[int(rng.integers(4))], max(6, size)))
    pixels = np.array(image)
    if rng.random() < 0.4:
        edge = round(rng.uniform(0.02, 0.08) * longest)
        pixels = cv2.copyMakeBorder(pixels, edge, edge, edge, edge, cv2.BORDER_CONSTANT,
                                    value=tint(rng, 200, 254, 5))
    return np.dstack([pixels, coverage(pixels.shape, 0)])
