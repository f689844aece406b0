"""The fonts of drawn lines, and their characters as pictures, all capitals of one height."""

from dataclasses import dataclass
from functools import lru_cache

import numpy as np
from PIL import Image, ImageDraw, ImageFont

from zone import glyphs
from zone.glyphs import font_path, weighted

from .texts import plain

CAPITAL = 40  # pixels, of a capital H
SMALL = 31  # of a small capital
# File, Debian package, how often. Upright sans serif stands on most documents.
TRAINED_ON = (
    ("LiberationSans-Regular.ttf", "fonts-liberation", 14), ("LiberationSans-Bold.ttf", "fonts-liberation", 9),
    ("LiberationSans-Italic.ttf", "fonts-liberation", 3), ("LiberationSans-BoldItalic.ttf", "fonts-liberation", 1.5),
    ("LiberationSansNarrow-Regular.ttf", "fonts-liberation", 3),
    ("LiberationSansNarrow-Bold.ttf", "fonts-liberation", 3), ("LiberationSerif-Regular.ttf", "fonts-liberation", 3.5),
    ("LiberationSerif-Bold.ttf", "fonts-liberation", 2.5), ("LiberationSerif-Italic.ttf", "fonts-liberation", 1.5),
    ("LiberationMono-Regular.ttf", "fonts-liberation", 2), ("LiberationMono-Bold.ttf", "fonts-liberation", 1.5),
    ("DejaVuSans.ttf", "fonts-dejavu-core", 2.5), ("DejaVuSans-Bold.ttf", "fonts-dejavu-core", 1.5),
    ("DejaVuSerif.ttf", "fonts-dejavu-core", 1), ("DejaVuSerif-Bold.ttf", "fonts-dejavu-core", 0.7),
    ("DejaVuSansMono.ttf", "fonts-dejavu-core", 1.5), ("DejaVuSansMono-Bold.ttf", "fonts-dejavu-core", 1),
    ("FreeSans.otf", "fonts-freefont-otf", 2), ("FreeSansBold.otf", "fonts-freefont-otf", 1.5),
    ("FreeSansOblique.otf", "fonts-freefont-otf", 1), ("FreeSerif.otf", "fonts-freefont-otf", 1),
    ("FreeMonoBold.otf", "fonts-freefont-otf", 1), ("NimbusSans-Regular.otf", "fonts-urw-base35", 3),
    ("NimbusSans-Bold.otf", "fonts-urw-base35", 2), ("NimbusRoman-Regular.otf", "fonts-urw-base35", 1.5),
    ("NimbusRoman-Bold.otf", "fonts-urw-base35", 1), ("NimbusRoman-Italic.otf", "fonts-urw-base35", 1),
    ("NimbusMonoPS-Bold.otf", "fonts-urw-base35", 1.5), ("URWGothic-Book.otf", "fonts-urw-base35", 1),
    ("URWGothic-Demi.otf", "fonts-urw-base35", 1), ("URWBookman-Light.otf", "fonts-urw-base35", 0.7),
    ("C059-Roman.otf", "fonts-urw-base35", 0.8), ("C059-Bold.otf", "fonts-urw-base35", 0.7),
    ("Carlito-Regular.ttf", "fonts-crosextra-carlito", 2), ("Carlito-Bold.ttf", "fonts-crosextra-carlito", 1.5),
    ("Carlito-Italic.ttf", "fonts-crosextra-carlito", 0.7), ("Caladea-Regular.ttf", "fonts-crosextra-caladea", 1),
    ("Caladea-BoldItalic.ttf", "fonts-crosextra-caladea", 0.5), ("RobotoSlab-Regular.otf", "fonts-roboto-slab", 1),
    ("RobotoSlab-Bold.otf", "fonts-roboto-slab", 0.7), ("Roboto-Regular.ttf", "fonts-roboto-unhinted", 2.5),
    ("Roboto-Medium.ttf", "fonts-roboto-unhinted", 1.5), ("Roboto-Bold.ttf", "fonts-roboto-unhinted", 1.5),
    ("Roboto-Italic.ttf", "fonts-roboto-unhinted", 0.8), ("Roboto-Black.ttf", "fonts-roboto-unhinted", 0.5),
    ("OpenSans-Regular.ttf", "fonts-open-sans", 2.5), ("OpenSans-Light.ttf", "fonts-open-sans", 0.8),
    ("OpenSans-Bold.ttf", "fonts-open-sans", 1.5), ("OpenSans-SemiboldItalic.ttf", "fonts-open-sans", 0.6),
    ("OpenSans-CondBold.ttf", "fonts-open-sans", 1.2), ("OpenSans-CondLight.ttf", "fonts-open-sans", 0.8),
    ("Cantarell-Regular.otf", "fonts-cantarell", 1), ("Cantarell-Bold.otf", "fonts-cantarell", 0.8),
    ("LinLibertine_R.otf", "fonts-linuxlibertine", 0.8), ("LinLibertine_RB.otf", "fonts-linuxlibertine", 0.6),
    ("LinBiolinum_R.otf", "fonts-linuxlibertine", 1), ("PTS55F.ttf", "fonts-paratype", 1.5),
    ("PTS75F.ttf", "fonts-paratype", 1.2), ("PTS56F.ttf", "fonts-paratype", 0.6), ("PTM55F.ttf", "fonts-paratype", 1),
    ("Inconsolata.otf", "fonts-inconsolata", 1), ("FiraCode-Medium.ttf", "fonts-firacode", 1),
    ("Anonymous Pro B.ttf", "fonts-anonymous-pro", 0.7), ("OCRA.ttf", "fonts-ocr-a", 0.7),
    ("OCRB.otf", "fonts-ocr-b", 4), ("OCRBS.otf", "fonts-ocr-b", 1))
# Whole families: one in five of all fonts.
HELD_OUT = (
    ("Lato-Regular.ttf", "fonts-lato", 3), ("Lato-Bold.ttf", "fonts-lato", 2), ("Lato-Italic.ttf", "fonts-lato", 1),
    ("ClearSans-Regular.ttf", "fonts-clear-sans", 3), ("ClearSans-Bold.ttf", "fonts-clear-sans", 2),
    ("RobotoCondensed-Regular.ttf", "fonts-roboto-unhinted", 2),
    ("RobotoCondensed-Bold.ttf", "fonts-roboto-unhinted", 1.5), ("NimbusSansNarrow-Bold.otf", "fonts-urw-base35", 1),
    ("P052-Roman.otf", "fonts-urw-base35", 1.5), ("P052-Bold.otf", "fonts-urw-base35", 1),
    ("GenBasR.ttf", "fonts-sil-gentium-basic", 1), ("GenBasI.ttf", "fonts-sil-gentium-basic", 0.7),
    ("PTF55F.ttf", "fonts-paratype", 1), ("PTF75F.ttf", "fonts-paratype", 0.7),
    ("Courier Prime.otf", "fonts-courier-prime", 1), ("Courier Prime Bold.otf", "fonts-courier-prime", 0.7),
    ("Hack-Regular.ttf", "fonts-hack", 1), ("NotoMono-Regular.ttf", "fonts-noto-mono", 1))
ZONE = glyphs.TRAINED_ON
# The zones of all documents are set in OCR-B, so it cannot be held out; what the lines say is new.
ZONE_HELD_OUT = (("OCRB.otf", "fonts-ocr-b", 5), *glyphs.HELD_OUT)


@dataclass(frozen=True)
class Glyph:
    """A character: its picture (uint8, 255: ink; or None), left and top from its place on the baseline, in pixels."""

    picture: np.ndarray | None
    left: int
    top: int
    advance: float


@lru_cache(maxsize=None)
def _font(name, package, capital):
    path = font_path(name, package)
    at_1000 = ImageFont.truetype(path, 1000, layout_engine=ImageFont.Layout.BASIC)
    size = round(1000 * capital / -at_1000.getbbox("H", anchor="ls")[1])
    return ImageFont.truetype(path, size, layout_engine=ImageFont.Layout.BASIC)


def _drawn(font, character):
    left, top, right, bottom = font.getbbox(character, anchor="ls")
    picture = Image.new("L", (max(1, right - left), max(1, bottom - top)))
    ImageDraw.Draw(picture).text((-left, -top), character, 255, font, "ls")
    return Glyph(np.array(picture) if picture.getbbox() else None, left, top, font.getlength(character))


@lru_cache(maxsize=None)
def _missing(font):
    glyph = _drawn(font, "\uffff")
    return None if glyph.picture is None else glyph.picture.tobytes()


@lru_cache(maxsize=None)
def glyph(name, package, character, capital=CAPITAL):
    """A Glyph; where the font lacks an accented letter that of the plain one, None where it lacks that, too."""
    font = _font(name, package, capital)
    if character == " ":
        return Glyph(None, 0, 0, font.getlength(" "))
    drawn = _drawn(font, character)
    if drawn.picture is not None and drawn.picture.tobytes() != _missing(font):
        return drawn
    base = plain(character)
    return glyph(name, package, base, capital) if base != character and len(base) == 1 else None


@lru_cache(maxsize=None)
def kerning(name, package, pair):
    """Pixels that the second of two characters is moved by."""
    font = _font(name, package, CAPITAL)
    return font.getlength(pair) - font.getlength(pair[0]) - font.getlength(pair[1])


@lru_cache(maxsize=None)
def small_height(name, package):
    """Pixels, of a small x."""
    return -glyph(name, package, "x").top


def any_font(rng, zone=False, held_out=False):
    """Name and package of a font at random."""
    return weighted(rng, (ZONE_HELD_OUT if held_out else ZONE) if zone else HELD_OUT if held_out else TRAINED_ON)[:2]
