"""Printed sheets that documents lie on and that are no documents themselves, as flats: height x width x 4, uint8.

Sheets are measured in their width, so that x runs from 0 to 1.
"""

import cv2
import numpy as np
from PIL import Image

from .invented import BOLD, MONO, SERIF_BOLD, ellipse, paragraph, printed_font, tint, upright, words
from .sheet import coverage


def _picture(sheet, rng, photos, box, colour):
    # A part of one of photos (RGB) in box: left, top, right, bottom.
    photo = photos[int(rng.integers(len(photos)))]
    left, top, right, bottom = (round(v * sheet.scale) for v in box)
    size = max(right - left, 2), max(bottom - top, 2)
    span = min(photo.shape[1] / size[0], photo.shape[0] / size[1]) * rng.uniform(0.4, 1)
    w, h = (max(1, int(side * span)) for side in size)
    x, y = rng.integers(photo.shape[1] - w + 1), rng.integers(photo.shape[0] - h + 1)
    part = cv2.resize(photo[y:y + h, x:x + w], size, interpolation=cv2.INTER_AREA)
    if not colour:
        part = np.dstack([cv2.cvtColor(part, cv2.COLOR_RGB2GRAY)] * 3)
    paper = np.float32(sheet.image.getpixel((1, 1)))
    # Ink cannot be lighter than its paper.
    sheet.image.paste(Image.fromarray(np.uint8(part * (paper / 255))), (left, top))


def _story(sheet, rng, photos, box, columns, size, ink, colour):
    # A headline, perhaps a picture, and columns of text.
    left, top, right, bottom = box
    for _ in range(int(rng.integers(0, 3))):
        large = size * rng.uniform(1.6, 4)
        wide = (right - left) * rng.uniform(0.5, 0.9)
        words(sheet, rng, left, top, large, wide, ink, int(rng.choice([BOLD, SERIF_BOLD])))
        top += 1.3 * large
    if rng.random() < 0.5:
        deep = min((bottom - top) * rng.uniform(0.3, 0.7), (right - left) * 0.8)
        _picture(sheet, rng, photos, (left, top, right, top + deep), colour)
        top += deep + size
    width = (right - left) / columns
    for column in range(columns):
        paragraph(sheet, rng, left + column * width, top, width * 0.8, bottom, size, ink, rng.uniform(1.2, 1.5))


def _stories(sheet, rng, photos, top, columns, size, colour):
    # Rows of stories down to the foot of the sheet.
    ink, margin = tint(rng, 10, 60, 4), rng.uniform(0.03, 0.07)
    while top < sheet.height - 0.12:
        bottom = min(top + rng.uniform(0.25, 0.6), sheet.height - margin)
        cuts = rng.permutation(np.arange(1, columns))[:int(rng.integers(0, 3))]
        edges = [0, *np.sort(cuts), columns]
        for first, last in zip(edges, edges[1:]):
            x0, x1 = (margin + (1 - 2 * margin) * c / columns for c in (first, last))
            _story(sheet, rng, photos, (x0, top, x1 - 0.015, bottom), int(last - first), size, ink, colour)
            if first and rng.random() < 0.5:
                sheet.box(x0 - 0.01, top, x0 - 0.009, bottom, ink)
        top = bottom + 0.02
        if rng.random() < 0.5:
            sheet.box(margin, top - 0.01, 1 - margin, top - 0.008, ink)


def _newspaper(rng, longest, photos):
    grey = rng.uniform(195, 235)
    paper = np.clip(grey + np.array([[0, 0, 0], [0, -3, -14], [10, -16, -34]])[int(rng.integers(3))], 0, 255)
    sheet = upright(rng.uniform(0.6, 0.78), longest, tuple(int(c) for c in paper))
    top = 0.05
    if rng.random() < 0.6:
        words(sheet, rng, rng.uniform(0.05, 0.2), 0.03, rng.uniform(0.08, 0.13), 0.7, tint(rng, 5, 50, 10), SERIF_BOLD)
        sheet.box(0.04, 0.18, 0.96, 0.183, tint(rng, 10, 60, 4))
        top = 0.2
    _stories(sheet, rng, photos, top, int(rng.integers(3, 8)), rng.uniform(0.011, 0.016), rng.random() < 0.5)
    return sheet.array()


def _magazine(rng, longest, photos):
    sheet, top = upright(rng.uniform(0.66, 0.8), longest, tint(rng, 215, 254, 5)), 0.06
    if rng.random() < 0.6:
        top = rng.uniform(0.3, 0.8)
        _picture(sheet, rng, photos, (0, 0, 1, top), True)
        words(sheet, rng, 0.06, rng.uniform(0.05, 0.7) * top, rng.uniform(0.06, 0.12), 0.7, tint(rng, 0, 255, 30), BOLD)
    if rng.random() < 0.4:
        sheet.box(rng.uniform(0.5, 0.7), top, 1, sheet.height, tint(rng, 80, 240, 40))
    _stories(sheet, rng, photos, top + 0.03, int(rng.integers(1, 4)), rng.uniform(0.018, 0.026), True)
    return sheet.array()


def _form(rng, longest, _):
    sheet = upright(rng.uniform(0.68, 0.76), longest, tint(rng, 215, 254, 5))
    ink, shade, pen = tint(rng, 10, 110, 20), tint(rng, 90, 235, 25), tint(rng, 10, 90, 40)
    words(sheet, rng, 0.06, 0.04, 0.035, 0.6, ink, BOLD)
    y, step = 0.12, rng.uniform(0.03, 0.06)
    while y + step < sheet.height - 0.05:
        if rng.random() < 0.15:
            sheet.box(0.05, y, 0.95, y + step, shade)
            words(sheet, rng, 0.06, y + 0.2 * step, 0.6 * step, 0.4, ink, BOLD)
        else:
            cells = int(rng.integers(1, 5))
            for cell in range(cells):
                x, wide = 0.05 + 0.9 * cell / cells, 0.9 / cells
                sheet.box(x, y, x + wide, y + step, None, ink, 0.002)
                words(sheet, rng, x + 0.005, y + 0.1 * step, 0.3 * step, 0.5 * wide, ink)
                if rng.random() < 0.4:
                    words(sheet, rng, x + 0.02, y + 0.45 * step, 0.5 * step, 0.7 * wide, pen)
                elif rng.random() < 0.3:  # to be ticked
                    for box in range(3):
                        at = x + wide * (0.2 + 0.25 * box)
                        sheet.box(at, y + 0.5 * step, at + 0.3 * step, y + 0.8 * step, None, ink, 0.002)
        y += step
    return sheet.array()


def _envelope(rng, longest, photos):
    aspect, paper = rng.uniform(1.35, 2.1), (150, 200, 12) if rng.random() < 0.3 else (225, 252, 6)
    sheet = upright(aspect, longest / aspect, tint(rng, *paper))
    ink, h = tint(rng, 10, 80, 20), sheet.height
    if rng.random() < 0.25:  # its back: the seams of the flap
        seam = tuple(int(c * 0.85) for c in sheet.image.getpixel((1, 1)))
        for corner in ((0, 0), (1, 0)):
            sheet.line([corner, (0.5, h * rng.uniform(0.45, 0.65))], seam, 0.006)
            sheet.line([(corner[0], h), (0.5, h * 0.6)], seam, 0.004)
        return sheet.array()
    x, y = rng.uniform(0.1, 0.5), h * rng.uniform(0.4, 0.6)
    if rng.random() < 0.5:  # a window
        sheet.box(x - 0.03, y - 0.03, x + 0.42, y + 0.2, tint(rng, 190, 240, 4))
    for line in range(int(rng.integers(3, 6))):
        words(sheet, rng, x, y + 0.035 * line, 0.025, rng.uniform(0.15, 0.35), ink)
    words(sheet, rng, 0.04, 0.04, 0.02, 0.3, ink)
    if rng.random() < 0.75:
        wide, tall = rng.uniform(0.07, 0.1, 2)
        sheet.box(0.95 - wide, 0.04, 0.96, 0.05 + tall, (248, 247, 240))
        _picture(sheet, rng, photos, (0.957 - wide, 0.047, 0.953, 0.043 + tall), True)
        ellipse(sheet, 0.8, 0.05, 0.9, 0.15, outline=ink, width=max(1, round(0.003 * sheet.scale)))
    return sheet.array()


def _book(rng, longest, photos):
    pages, paper = [], tint(rng, 215, 250, 6)
    for _ in range(2):
        sheet = upright(rng.uniform(0.66, 0.72), 0.7 * longest, paper)
        margin, ink = rng.uniform(0.1, 0.16), tint(rng, 20, 70, 6)
        top = 0.12 if rng.random() < 0.8 else rng.uniform(0.3, 0.7)
        if rng.random() < 0.3:
            _picture(sheet, rng, photos, (margin, top, 1 - margin, top + 0.5), rng.random() < 0.6)
            top += 0.55
        paragraph(sheet, rng, margin, top, 0.95 - 2 * margin, sheet.height - 0.15, rng.uniform(0.022, 0.035), ink, 1.5)
        pages.append(sheet.array())
    pages[1] = cv2.resize(pages[1], pages[0].shape[1::-1])
    pixels = np.hstack(pages).astype(np.float32)
    away = np.abs(np.arange(pixels.shape[1]) / pages[0].shape[1] - 1)
    pixels *= (1 - rng.uniform(0.2, 0.6) * np.exp(-away / rng.uniform(0.03, 0.12)))[:, None]
    rim = round(rng.uniform(0.005, 0.03) * longest)  # its cover
    pixels = pixels.astype(np.uint8)
    return cv2.copyMakeBorder(pixels, rim, rim, rim, rim, cv2.BORDER_CONSTANT, value=tint(rng, 10, 160, 30))


def _timetable(rng, longest, _):
    sheet = upright(rng.uniform(0.6, 1.0), longest, tint(rng, 220, 252, 5))
    ink, band = tint(rng, 10, 80, 15), tint(rng, 150, 235, 30)
    step, columns = rng.uniform(0.018, 0.03), int(rng.integers(8, 16))
    sheet.box(0, 0, 1, 0.08, tint(rng, 20, 150, 50))
    words(sheet, rng, 0.04, 0.02, 0.045, 0.5, (250, 250, 250), BOLD)
    for row, y in enumerate(np.arange(0.1, sheet.height - 0.04, step)):
        if row % 2:
            sheet.box(0.02, y, 0.98, y + step, band)
        words(sheet, rng, 0.03, y, 0.8 * step, 0.2, ink)
        for column in range(columns):
            hour = f"{int(rng.integers(24)):02d}.{int(rng.integers(60)):02d}"
            at = (0.27 + 0.71 * column / columns) * sheet.scale, y * sheet.scale
            sheet.draw.text(at, hour, ink, printed_font(MONO, sheet, min(0.75 * step, 0.2 / columns)))
    return sheet.array()


def _score(rng, longest, _):
    sheet = upright(rng.uniform(0.7, 0.8), longest, tint(rng, 225, 253, 6))
    ink, gap, y = tint(rng, 5, 50, 3), rng.uniform(0.008, 0.013), 0.16
    words(sheet, rng, 0.3, 0.05, 0.05, 0.4, ink, SERIF_BOLD)
    while y + 8 * gap < sheet.height - 0.04:
        for line in range(5):
            sheet.box(0.06, y + line * gap, 0.94, y + line * gap + 0.0012, ink)
        x = 0.1
        while x < 0.92:
            at = y + gap * rng.uniform(-1, 5)
            ellipse(sheet, x, at, x + 1.3 * gap, at + gap, fill=ink)
            sheet.box(x + 1.15 * gap, at - 3 * gap, x + 1.3 * gap, at + 0.5 * gap, ink)
            x += gap * rng.uniform(2, 5)
        y += rng.uniform(9, 14) * gap
    return sheet.array()


def _catalogue(rng, longest, photos):
    sheet = upright(rng.uniform(0.66, 0.85), longest, tint(rng, 200, 254, 15))
    columns, ink = int(rng.integers(2, 5)), tint(rng, 10, 90, 30)
    side = 0.92 / columns
    for row in range(int((sheet.height - 0.1) / (1.25 * side))):
        for column in range(columns):
            x, y = 0.05 + column * side, 0.08 + row * 1.25 * side
            _picture(sheet, rng, photos, (x, y, x + 0.9 * side, y + 0.8 * side), True)
            words(sheet, rng, x, y + 0.83 * side, 0.08 * side, 0.8 * side, ink)
            words(sheet, rng, x, y + 0.95 * side, 0.14 * side, 0.4 * side, tint(rng, 0, 200, 60), BOLD)
    return sheet.array()


_TRAINED_ON = (_newspaper, _newspaper, _magazine, _form, _envelope, _book)
_HELD_OUT = (_timetable, _score, _catalogue)


def printed_sheet(rng, longest, photos, held_out=False):
    """A sheet of its own kind, its longer side longest pixels; photos (RGB) are printed in it."""
    designs = _HELD_OUT if held_out else _TRAINED_ON
    pixels = designs[int(rng.integers(len(designs)))](rng, longest, photos)
    return np.dstack([pixels, coverage(pixels.shape, 0)])
