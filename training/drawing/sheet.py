"""A sheet of paper to print on, the fonts that print on it, and the document that comes of it."""

from dataclasses import dataclass
from functools import lru_cache
from pathlib import Path

import cv2
import numpy as np
from PIL import Image, ImageDraw, ImageFont, features

PX_PER_MM = 16  # about twice what a page that fills a 1280-pixel picture needs
_ROOTS = ("/usr/share/fonts", "/usr/local/share/fonts")
_FONTS = {  # role: file, Debian package
    "zone": ("OCRB.otf", "fonts-ocr-b"),
    "sans": ("LiberationSans-Regular.ttf", "fonts-liberation"),
    "bold": ("LiberationSans-Bold.ttf", "fonts-liberation"),
    "narrow": ("LiberationSansNarrow-Regular.ttf", "fonts-liberation"),
    "serif": ("LiberationSerif-Regular.ttf", "fonts-liberation"),
    "serif-bold": ("LiberationSerif-Bold.ttf", "fonts-liberation"),
    "mono": ("DejaVuSansMono.ttf", "fonts-dejavu-core"),
    "mono-bold": ("DejaVuSansMono-Bold.ttf", "fonts-dejavu-core"),
    "bengali": ("Lohit-Bengali.ttf", "fonts-lohit-beng-bengali"),
}


class MissingPackage(Exception):
    """Something from outside is not installed; the text names the Debian package."""


@lru_cache(maxsize=None)
def _font_path(role):
    name, package = _FONTS[role]
    for root in _ROOTS:
        for path in sorted(Path(root).rglob(name)):
            return str(path)
    raise MissingPackage(f"font {name} is missing: install the Debian package {package}")


def require_fonts():
    """Raises MissingPackage for the first font, or the text shaping, that is not installed."""
    for role in _FONTS:
        _font_path(role)
    if not features.check("raqm"):
        raise MissingPackage("no shaping of Bengali text: install the Debian package libraqm0")


@lru_cache(maxsize=600)
def font(role, pixels, shaped=True):
    """A font of _FONTS whose em is pixels; shaped: with kerning and joined letters."""
    engine = ImageFont.Layout.RAQM if shaped else ImageFont.Layout.BASIC
    return ImageFont.truetype(_font_path(role), pixels, layout_engine=engine)


class Sheet:
    """Width x height of paper, scale pixels to a unit; a unit is a millimetre unless scale is given."""

    def __init__(self, width, height, ground=(250, 249, 245), scale=PX_PER_MM):
        self.height, self.scale = height, scale
        self.image = Image.new("RGB", (round(width * scale), round(height * scale)), ground)
        self.draw = ImageDraw.Draw(self.image)

    def show(self, pixels):
        """Replaces what is on it by pixels (height x width x 3, uint8)."""
        self.image.paste(Image.fromarray(pixels))

    @classmethod
    def of(cls, pixels):
        """A sheet that starts from pixels (height x width x 3, uint8) at PX_PER_MM."""
        sheet = cls(pixels.shape[1] / PX_PER_MM, pixels.shape[0] / PX_PER_MM)
        sheet.show(pixels)
        return sheet

    def array(self):
        """Height x width x 3, uint8."""
        return np.array(self.image)

    def _font(self, role, size):
        return font(role, round(size * self.scale), role == "bengali")

    def text_width(self, text, font, size):
        """Width of text at an em of size."""
        return self._font(font, size).getlength(text) / self.scale

    def text(self, x, y, text, font="sans", size=2.6, colour=(30, 30, 40), anchor="ls", width=None):
        """Prints text with its baseline at y; size is the em, made smaller to fit width."""
        if width is not None:
            size = min(size, size * width / max(self.text_width(text, font, size), 1e-6))
        self.draw.text((x * self.scale, y * self.scale), text, colour, self._font(font, size), anchor)

    def spaced(self, x, y, text, pitch, size, font="zone", colour=(25, 25, 30)):
        """Prints one character every pitch, as a machine-readable zone is set."""
        for position, character in enumerate(text):
            self.text(x + (position + 0.5) * pitch, y, character, font, size, colour, "ms")

    def box(self, left, top, right, bottom, fill=None, outline=None, line=0.2):
        """A rectangle, filled, outlined or both."""
        corners = [v * self.scale for v in (left, top, right, bottom)]
        self.draw.rectangle(corners, fill, outline, max(1, round(line * self.scale)))

    def line(self, points, colour, width=0.15):
        """A polyline through points, (x, y) pairs."""
        self.draw.line([(x * self.scale, y * self.scale) for x, y in points], colour,
                       max(1, round(width * self.scale)), joint="curve")

    def place(self, picture, left, top, width, height, opacity=1.0):
        """Prints picture (PIL, RGB or RGBA) into a box."""
        box = (round(left * self.scale), round(top * self.scale))
        size = (round(width * self.scale), round(height * self.scale))
        scaled = picture.convert("RGBA").resize(size, Image.LANCZOS)
        self.image.paste(scaled, box, scaled.getchannel("A").point(lambda a: round(a * opacity)))

    def stamp(self, x, y, text, size, colour, opacity, degrees, font="bold"):
        """Prints translucent text, turned counter-clockwise, centred at x, y."""
        reach = round((self.text_width(text, font, size) / 2 + size) * self.scale)
        layer = Image.new("L", (2 * reach, 2 * reach), 0)
        ImageDraw.Draw(layer).text((reach, reach), text, 255, self._font(font, size), "mm")
        layer = layer.rotate(degrees, Image.BICUBIC).point(lambda a: round(a * opacity))
        corner = round(x * self.scale) - reach, round(y * self.scale) - reach
        self.image.paste(Image.new("RGB", layer.size, colour), corner, layer)


def coverage(shape, radius):
    """Height x width of shape, uint8: 255 where there is paper, less at corners of radius pixels."""
    height, width = shape[:2]
    mask = np.full((height, width), 255 if radius < 1 else 0, np.uint8)
    if radius >= 1:
        cv2.rectangle(mask, (radius, 0), (width - radius - 1, height - 1), 255, -1)
        cv2.rectangle(mask, (0, radius), (width - 1, height - radius - 1), 255, -1)
        for x in (radius, width - radius - 1):
            for y in (radius, height - radius - 1):
                cv2.circle(mask, (x, y), radius, 255, -1, cv2.LINE_AA)
    return mask


@dataclass(frozen=True)
class Document:
    """pixels: height x width x 3, uint8, at PX_PER_MM. zone: machine-readable lines, or none."""

    pixels: np.ndarray
    kind: str  # as the manifest names it
    zone: tuple = ()
    corner_mm: float = 0.0  # radius of the rounded corners
    thickness_mm: float = 0.2  # decides the width of its shadow

    @property
    def size_mm(self):
        """(width, height)"""
        return self.pixels.shape[1] / PX_PER_MM, self.pixels.shape[0] / PX_PER_MM

    def coverage(self):
        """Where there is paper: height x width, uint8."""
        return coverage(self.pixels.shape, round(self.corner_mm * PX_PER_MM))

    def flat(self, longest):
        """Height x width x 4, uint8, colours and coverage, the longer side longest pixels."""
        shrink = longest / max(self.pixels.shape[:2])
        return cv2.resize(np.dstack([self.pixels, self.coverage()]), None, fx=shrink, fy=shrink,
                          interpolation=cv2.INTER_AREA)
