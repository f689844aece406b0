"""Characters of the zone as small pictures: OCR-B and other fonts of even width, thin to heavy, narrow and wide."""

from functools import lru_cache
from pathlib import Path

import cv2
import numpy as np
from PIL import Image, ImageDraw, ImageFont

from drawing.sheet import MissingPackage

from .texts import ALPHABET

PITCH = 26  # pixels from one character to the next
WIDTH, HEIGHT = 44, 64  # of a character's picture
_FINER = 4
# File, Debian package, how often.
TRAINED_ON = (("OCRB.otf", "fonts-ocr-b", 62), ("OCRBS.otf", "fonts-ocr-b", 16), ("OCRBL.otf", "fonts-ocr-b", 3),
              ("LiberationMono-Regular.ttf", "fonts-liberation", 2), ("LiberationMono-Bold.ttf", "fonts-liberation", 1.5),
              ("DejaVuSansMono.ttf", "fonts-dejavu-core", 1.5), ("FreeMonoBold.otf", "fonts-freefont-otf", 2),
              ("NimbusMonoPS-Bold.otf", "fonts-urw-base35", 2), ("Inconsolata.otf", "fonts-inconsolata", 1.5),
              ("FiraCode-Medium.ttf", "fonts-firacode", 1.5), ("Anonymous Pro B.ttf", "fonts-anonymous-pro", 1),
              ("OCRA.ttf", "fonts-ocr-a", 1.5))
HELD_OUT = (("Hack-Regular.ttf", "fonts-hack", 1), ("NotoMono-Regular.ttf", "fonts-noto-mono", 1))
PRINT = (("LiberationSans-Regular.ttf", "fonts-liberation", 3), ("LiberationSans-Bold.ttf", "fonts-liberation", 2),
         ("LiberationSansNarrow-Regular.ttf", "fonts-liberation", 1), ("LiberationSerif-Regular.ttf", "fonts-liberation", 2),
         ("DejaVuSans.ttf", "fonts-dejavu-core", 1), ("FreeSansBold.otf", "fonts-freefont-otf", 1),
         ("URWGothic-Book.otf", "fonts-urw-base35", 1), ("P052-Roman.otf", "fonts-urw-base35", 1),
         ("Carlito-Regular.ttf", "fonts-crosextra-carlito", 1), ("RobotoSlab-Regular.otf", "fonts-roboto-slab", 1))
_STROKES = (-7, -5, -3, 0, 3, 5, 7, 9, 12)  # pixels, FINER than the pictures, taken from or added to a stroke's width
_WIDTHS = (0.88, 1.0, 1.0, 1.1)  # of the usual one


@lru_cache(maxsize=None)
def font_path(name, package):
    """Where the font file is; raises MissingPackage with the package that has it."""
    for path in sorted(Path("/usr/share/fonts").rglob(name)):
        return str(path)
    raise MissingPackage(f"font {name} is missing: install the Debian package {package}")


@lru_cache(maxsize=None)
def _drawn(name, package):
    # Large pictures of all characters, middle on middle; the line's middle is that of its capitals.
    path = font_path(name, package)
    size = 100 * PITCH * _FINER / ImageFont.truetype(path, 100).getlength("A")
    font = ImageFont.truetype(path, round(size))
    box = font.getbbox("H", anchor="ls")
    pictures = []
    for character in ALPHABET:
        picture = Image.new("L", (WIDTH * _FINER, HEIGHT * _FINER))
        ImageDraw.Draw(picture).text(((picture.width - font.getlength(character)) / 2,
                                      (picture.height - box[1] - box[3]) / 2), character, 255, font, "ls")
        pictures.append(np.array(picture))
    return pictures


@lru_cache(maxsize=None)
def _alphabet(name, package, stroke, width):
    # {character: WIDTH x HEIGHT, uint8}, or None where the strokes vanish.
    pictures = {}
    for character, large in zip(ALPHABET, _drawn(name, package)):
        if stroke:
            element = cv2.getStructuringElement(cv2.MORPH_ELLIPSE, (abs(stroke), abs(stroke)))
            large = cv2.dilate(large, element) if stroke > 0 else cv2.erode(large, element)
        side = large.shape[1]
        about_middle = np.float32([[width, 0, (1 - width) * side / 2], [0, 1, 0]])
        large = cv2.warpAffine(large, about_middle, large.shape[::-1])
        pictures[character] = cv2.resize(large, (WIDTH, HEIGHT), interpolation=cv2.INTER_AREA)
    return pictures if pictures["I"].max() > 120 else None


def weighted(rng, table):
    """A row of table, whose last column says how often."""
    left = rng.random() * sum(row[-1] for row in table)
    for row in table:
        left -= row[-1]
        if left < 0:
            return row
    return table[-1]


def alphabet(rng, fonts=TRAINED_ON):
    """A picture (HEIGHT x WIDTH, uint8, 255: ink) for each character, all of one font, stroke and width."""
    while True:
        name, package, _ = weighted(rng, fonts)
        stroke = _STROKES[int(rng.integers(len(_STROKES)))]
        width = _WIDTHS[int(rng.integers(len(_WIDTHS)))]
        pictures = _alphabet(name, package, stroke, width)
        if pictures:
            return pictures


@lru_cache(maxsize=400)
def _print_font(name, package, size):
    return ImageFont.truetype(font_path(name, package), size)


def line_of_print(rng, text, size):
    """Coverage (height x width, uint8) of text in an ordinary font whose em is size pixels."""
    name, package, _ = weighted(rng, PRINT)
    font = _print_font(name, package, int(size))
    box = font.getbbox(text)
    picture = Image.new("L", (max(1, box[2]), max(1, box[3] - box[1])))
    ImageDraw.Draw(picture).text((0, -box[1]), text, 255, font)
    return np.array(picture)
