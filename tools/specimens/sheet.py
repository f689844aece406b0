"""A sheet of paper to print on, measured in millimetres, and the fonts that print on it."""

from functools import lru_cache
from pathlib import Path

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


@lru_cache(maxsize=256)
def _font(role, pixels):
    engine = ImageFont.Layout.RAQM if role == "bengali" else ImageFont.Layout.BASIC
    return ImageFont.truetype(_font_path(role), pixels, layout_engine=engine)


class Sheet:
    """width_mm x height_mm of paper; every position and size below is in millimetres."""

    def __init__(self, width_mm, height_mm, ground=(250, 249, 245)):
        self.width_mm, self.height_mm = width_mm, height_mm
        size = (round(width_mm * PX_PER_MM), round(height_mm * PX_PER_MM))
        self.image = Image.new("RGB", size, ground)

    @classmethod
    def of(cls, pixels):
        """A sheet that starts from pixels (height x width x 3, uint8) at PX_PER_MM."""
        sheet = cls(pixels.shape[1] / PX_PER_MM, pixels.shape[0] / PX_PER_MM)
        sheet.image = Image.fromarray(pixels)
        return sheet

    def array(self):
        """Height x width x 3, uint8."""
        return np.array(self.image)

    def text_width(self, text, font, size):
        """Width of text in millimetres at an em of size."""
        return _font(font, round(size * PX_PER_MM)).getlength(text) / PX_PER_MM

    def text(self, x, y, text, font="sans", size=2.6, colour=(30, 30, 40), anchor="ls", width=None):
        """Prints text with its baseline at y; size is the em, made smaller to fit width."""
        if width is not None:
            size = min(size, size * width / max(self.text_width(text, font, size), 1e-6))
        ImageDraw.Draw(self.image).text(
            (x * PX_PER_MM, y * PX_PER_MM), text, colour, _font(font, round(size * PX_PER_MM)),
            anchor)

    def spaced(self, x, y, text, pitch, size, font="zone", colour=(25, 25, 30)):
        """Prints one character every pitch, as a machine-readable zone is set."""
        for position, character in enumerate(text):
            self.text(x + (position + 0.5) * pitch, y, character, font, size, colour, "ms")

    def box(self, left, top, right, bottom, fill=None, outline=None, line=0.2):
        """A rectangle, filled, outlined or both."""
        corners = [v * PX_PER_MM for v in (left, top, right, bottom)]
        ImageDraw.Draw(self.image).rectangle(corners, fill, outline,
                                             max(1, round(line * PX_PER_MM)))

    def line(self, points, colour, width=0.15):
        """A polyline through points, (x, y) pairs."""
        ImageDraw.Draw(self.image).line([(x * PX_PER_MM, y * PX_PER_MM) for x, y in points], colour,
                                        max(1, round(width * PX_PER_MM)), joint="curve")

    def place(self, picture, left, top, width, height, opacity=1.0):
        """Prints picture (PIL, RGB or RGBA) into a box."""
        box = (round(left * PX_PER_MM), round(top * PX_PER_MM))
        size = (round(width * PX_PER_MM), round(height * PX_PER_MM))
        scaled = picture.convert("RGBA").resize(size, Image.LANCZOS)
        self.image.paste(scaled, box, scaled.getchannel("A").point(lambda a: round(a * opacity)))

    def stamp(self, x, y, text, size, colour, opacity, degrees, font="bold"):
        """Prints translucent text, turned counter-clockwise, centred at x, y."""
        reach = round((self.text_width(text, font, size) / 2 + size) * PX_PER_MM)
        layer = Image.new("L", (2 * reach, 2 * reach), 0)
        ImageDraw.Draw(layer).text((reach, reach), text, 255, _font(font, round(size * PX_PER_MM)),
                                   "mm")
        layer = layer.rotate(degrees, Image.BICUBIC).point(lambda a: round(a * opacity))
        corner = round(x * PX_PER_MM) - reach, round(y * PX_PER_MM) - reach
        self.image.paste(Image.new("RGB", layer.size, colour), corner, layer)
