"""Lines as a text detector cuts them out of photographs of documents, and what they say."""

from dataclasses import dataclass

import cv2
import numpy as np

from drawing import light

from . import fonts, papers, seen, texts
from .fonts import CAPITAL
from .seen import COLUMN, HEIGHT

NARROWEST, WIDEST = 16, 1400
_MIDDLE = 3 * CAPITAL  # the baseline's row among the ink
_ROWS = _MIDDLE + 2 * CAPITAL
_SIDE = 2 * CAPITAL  # columns of ink on both sides of the text
_BRIGHTNESS = np.array([0.114, 0.587, 0.299])  # of blue, green and red
# Lines of nothing but these look alike in both sizes of their letters, or hang at no known height.
_FLAT = frozenset("cosuvwxzCOSUVWXZ0pPyY.,:;'`\"-_~^*=+<> ")


@dataclass
class _Set:
    """A text in print: ink (rows x columns, uint8) and where the text lies in it, pixels."""

    ink: np.ndarray
    left: float
    right: float
    top: float
    bottom: float


@dataclass(frozen=True)
class _Type:
    """How a text is set. Spacing in parts of a capital's height, added after each character."""

    font: tuple
    spacing: float = 0.0
    word_spacing: float = 1.0
    small_capitals: bool = False


def _any_type(rng, phrase, held_out):
    # -0.02 to 0.12 of an em.
    spacing = rng.uniform(-0.03, 0.17) if rng.random() < (0.15 if phrase.zone else 0.4) else 0.0
    word_spacing = rng.uniform(0.7, 1.6) if rng.random() < 0.6 else 1.0
    small_capitals = not phrase.zone and rng.random() < 0.03
    return _Type(fonts.any_font(rng, phrase.zone, held_out), spacing, word_spacing, small_capitals)


def _placed(rng, drawn, kind):
    # [(Glyph, x)] and the end of the line; None where the font lacks a character.
    places, x, before = [], 0.0, None
    for character in drawn:
        capital = CAPITAL
        if kind.small_capitals and character.upper() != character and len(character.upper()) == 1:
            character, capital = character.upper(), fonts.SMALL
        glyph = fonts.glyph(*kind.font, " " if character == texts.GAP else character, capital)
        if glyph is None:
            return None, 0
        if before and capital == CAPITAL:
            x += fonts.kerning(*kind.font, before + character)
        before = character if capital == CAPITAL and character != texts.GAP else None
        places.append((glyph, x))
        if character == " ":
            x += glyph.advance * kind.word_spacing
        elif character == texts.GAP:
            x += 1.4 * CAPITAL * rng.uniform(2, 5)
        else:
            x += glyph.advance
        x += kind.spacing * CAPITAL
    return places, x


def _lay(ink, places, left, baseline):
    # Lays glyphs into ink; the outermost pixels of what was laid: left, top, right, bottom, or None.
    reach = None
    for glyph, x in places:
        if glyph.picture is None:
            continue
        y, x = int(baseline + glyph.top), int(round(left + x + glyph.left))
        rows, columns = glyph.picture.shape
        y0, x0, y1, x1 = max(0, y), max(0, x), min(ink.shape[0], y + rows), min(ink.shape[1], x + columns)
        if y1 <= y0 or x1 <= x0:
            continue
        part = ink[y0:y1, x0:x1]
        np.maximum(part, glyph.picture[y0 - y:y1 - y, x0 - x:x1 - x], out=part)
        reach = reach or [x0, y0, x1, y1]
        reach = [min(reach[0], x0), min(reach[1], y0), max(reach[2], x1), max(reach[3], y1)]
    return reach


def _set(rng, phrase, kind):
    places, end = _placed(rng, phrase.drawn, kind)
    if not places:
        return None
    ink = np.zeros((_ROWS, int(end) + 2 * _SIDE), np.uint8)
    reach = _lay(ink, places, _SIDE, _MIDDLE)
    if reach is None:
        return None
    left, top, right, bottom = reach
    flat = _FLAT.issuperset(phrase.text)
    if flat or rng.random() < 0.3:  # at times the box is as high as the font's letters
        top, bottom = min(top, _MIDDLE - CAPITAL), max(bottom, _MIDDLE)
    top, bottom = min(top, _MIDDLE - fonts.small_height(*kind.font)), max(bottom, _MIDDLE)
    return _Set(ink, left, right, top, bottom)


def _ruled(rng, line, box):
    # Rules of forms: under the text or around it, at the edge of what is seen.
    left, top, right, bottom = map(int, box)
    thick, tone, sort = int(rng.integers(1, 5)), int(rng.integers(120, 256)), rng.random()
    if sort < 0.55:
        y = int(min(line.bottom + rng.uniform(3, 10), bottom + 4))
        if rng.random() < 0.3:
            for x in range(left, right, 3 * thick + 4):
                cv2.circle(line.ink, (x, y), thick // 2 + 1, tone, -1)
        else:
            cv2.line(line.ink, (0, y), (line.ink.shape[1], y), tone, thick)
    elif sort < 0.8:
        cv2.rectangle(line.ink, (left + 1, top + 1), (right - 2, bottom - 2), tone, thick)
    else:
        x = int(rng.choice([(left + line.left) / 2 - thick, (right + line.right) / 2 + thick]))
        cv2.line(line.ink, (x, 0), (x, _ROWS), tone, thick)


def _neighbours(rng, phrase, kind, line, box, held_out):
    # Lines above and below, of which the box cuts all but a rim away: no more shows than 0.4 of a capital.
    for below in (True, False):
        if rng.random() < 0.5:
            continue
        other = texts.Phrase(texts.zone_line(rng), True) if phrase.zone else texts.phrase(rng, held_out)
        places, _ = _placed(rng, other.drawn, kind)
        if not places:
            continue
        apart = rng.uniform(0, 0.5) * CAPITAL
        if below:
            baseline = max(box[3] + 0.6 * CAPITAL, line.bottom + 1.1 * CAPITAL) + apart
        else:
            baseline = min(box[1] + 0.4 * CAPITAL, line.top - 0.3 * CAPITAL) - apart
        _lay(line.ink, places, _SIDE + rng.choice([0, rng.uniform(-300, 200)]), baseline)


def _box(rng, line):
    # What the detector takes: left, top, right, bottom, pixels of the ink. The text takes 0.55 to 0.9 of its height,
    # down to 0.48 for long lines, which would be wider than WIDEST.
    text = line.bottom - line.top
    least = (line.right - line.left) * HEIGHT / (0.96 * WIDEST)
    height = max(text / rng.uniform(0.55, 0.9), min(text / 0.48, least * rng.uniform(1, 1.1)))
    top = line.top - rng.uniform(0.3, 0.7) * (height - text)
    margins = rng.uniform(2, 25, 2) * height / HEIGHT
    return [line.left - margins[0], top, line.right + margins[1], top + height]


def _stroked(rng, ink):
    # Thinner or thicker strokes: where the blurred edge is cut off.
    where, gain = rng.uniform(0.3, 0.57), rng.uniform(1.5, 3)
    steps = np.arange(256, dtype=np.float32) / 255
    curve = (255 * np.clip((steps - where) * gain + 0.5, 0, 1)).astype(np.uint8)
    return cv2.LUT(cv2.GaussianBlur(ink, (0, 0), rng.uniform(1, 2)), curve)


def _seen(rng, line, box, size):
    # Ink 0..1 in the crop of size (width, height), tilted and askew as far as the box's margins let it.
    left, top, right, bottom = box
    reduced = size[1] / (bottom - top)
    ink = line.ink
    if reduced < 0.6:  # what one pixel of the sensor gathers
        ink = cv2.resize(ink, None, fx=1.4 * reduced, fy=1.4 * reduced, interpolation=cv2.INTER_AREA)
    shrunk = np.divide(ink.shape[::-1], line.ink.shape[::-1])
    slack = 0.8 * max(0, min(line.top - top, bottom - line.bottom))
    corners = np.array([[left, top], [right, top], [right, bottom], [left, bottom]])
    if rng.random() < 0.6:
        drift = np.tan(np.radians(rng.uniform(-2.5, 2.5))) * (right - left) / 2
        drift = np.clip(drift, -slack, slack) * rng.uniform(0.3, 1)
        corners[:, 1] += np.array([-1, 1, 1, -1]) * drift
        slack -= abs(drift)
    if rng.random() < 0.4:
        side = min(line.left - left, right - line.right) - 2 * (bottom - top) / HEIGHT
        most = [min(0.1 * (bottom - top), max(0, side)), min(0.06 * (bottom - top), slack)]
        corners += rng.uniform(-1, 1, (4, 2)) * most
    corners = (corners * shrunk).astype(np.float32)
    target = np.float32([[0, 0], [size[0], 0], [size[0], size[1]], [0, size[1]]])
    matrix = cv2.getPerspectiveTransform(corners, target)
    return cv2.warpPerspective(ink, matrix, size, flags=cv2.INTER_LINEAR).astype(np.float32) / 255


def _colours(rng):
    # Colour of the paper and of the ink, BGR: dark on light, or in 15% light on dark; never too much alike to be read.
    tint = rng.normal(0, 20 if rng.random() < 0.25 else 7, 3)
    hue = rng.normal(0, 30 if rng.random() < 0.3 else 6, 3)
    if rng.random() < 0.85:
        paper = rng.uniform(170, 252) if rng.random() < 0.55 else rng.uniform(110, 200)
        ink = paper * (rng.uniform(0, 0.35) if rng.random() < 0.8 else rng.uniform(0.35, 0.62))
    else:
        paper = rng.uniform(10, 115)
        ink = min(255, paper + rng.uniform(70, 200))
    colours = np.clip([paper + tint, ink + hue], 0, 255)
    return colours if abs(np.subtract(*colours) @ _BRIGHTNESS) > 45 else _colours(rng)


def _printed(rng, ink, px_per_mm, grounds, held_out):
    tone, colour = _colours(rng)
    paper = np.clip(grounds.piece(rng, ink.shape[::-1], px_per_mm, tone, held_out), 0, 255)
    # A pattern as strong as the print would be unreadable.
    busy, apart = float(paper.std((0, 1)).mean()), abs(float(paper.mean()) - float(colour.mean()))
    if busy > 0.3 * apart:
        mean = paper.mean((0, 1))
        paper = mean + (paper - mean) * np.float32(0.3 * apart / busy)
    if rng.random() < 0.08:  # worn off in spots
        spots = cv2.GaussianBlur(rng.standard_normal(ink.shape, np.float32), (0, 0), rng.uniform(0.5, 1.3))
        ink = ink * np.clip(1 - rng.uniform(0.1, 0.4) * np.maximum(spots / (spots.std() + 1e-5), 0), 0, 1)
    return paper + (np.float32(colour) - paper) * ink[..., None]


def _lit(rng, picture):
    height, width = picture.shape[:2]
    if rng.random() < 0.35:
        picture *= np.linspace(*rng.uniform(0.7, 1.15, 2), width, dtype=np.float32)[None, :, None]
    if rng.random() < 0.1:  # the edge of a shadow
        slant = rng.uniform(-1.5, 1.5) * np.arange(height, dtype=np.float32)[:, None]
        x = np.arange(width, dtype=np.float32) + slant
        shade = 1 / (1 + np.exp(-np.clip((x - rng.uniform(0, width)) / (rng.uniform(0.03, 0.5) * height), -30, 30)))
        picture *= (1 - rng.uniform(0.15, 0.5) * (shade if rng.random() < 0.5 else 1 - shade))[..., None]
    if rng.random() < 0.05:
        where = rng.uniform(0, 1, 2) * [width, height]
        light.glare(picture, where, rng.uniform(0, 3.14), height * rng.uniform(0.5, 4), height * rng.uniform(0.3, 1.5),
                    rng.uniform(-50, 60))


def _sensed(rng, picture, letter):
    # What lens, sensor and file make of it; letter: height of a capital, pixels.
    _lit(rng, picture)
    if rng.random() < 0.45:
        picture = cv2.GaussianBlur(picture, (0, 0), max(0.25, letter * min(0.075, abs(rng.normal(0, 0.035)))))
    length = letter * rng.uniform(0.05, 0.16)
    if length > 1 and rng.random() < 0.12:
        picture = light.motion(picture, rng, length)
    if rng.random() < 0.1:
        picture = picture + rng.uniform(0.3, 1.2) * (picture - cv2.GaussianBlur(picture, (0, 0), rng.uniform(0.6, 1.5)))
    contrast = rng.random()
    if contrast < 0.2:
        picture = 128 + (picture - 128) * np.float32(rng.uniform(0.5, 0.9)) + np.float32(rng.uniform(-30, 30))
    elif contrast < 0.35:
        picture = 255 * (np.clip(picture, 0, 255) / 255) ** np.float32(np.exp(rng.normal(0, 0.35)))
    if rng.random() < 0.65:
        noise = abs(rng.normal(0, 5)) * min(1.0, letter / 14)
        picture = picture + np.float32(noise) * rng.standard_normal(picture.shape, np.float32)
    if rng.random() < 0.12:
        picture = np.repeat(picture.mean(2, keepdims=True), 3, 2)
    pixels = np.clip(picture + 0.5, 0, 255).astype(np.uint8)
    if rng.random() < 0.5:
        quality = int(rng.uniform(35 if letter > 12 else 60, 96))
        data = cv2.imencode(".jpg", pixels, [cv2.IMWRITE_JPEG_QUALITY, quality])[1]
        pixels = cv2.imdecode(data, cv2.IMREAD_COLOR)
    return pixels


def _at_height(rng, pixels, width):
    if pixels.shape[0] > HEIGHT:
        way = cv2.INTER_AREA
    else:
        way = cv2.INTER_CUBIC if rng.random() < 0.5 else cv2.INTER_LINEAR
    return cv2.resize(pixels, (width, HEIGHT), interpolation=way)


def _empty(rng, grounds, held_out):
    # Paper, photographs, rules, and nothing to read.
    width = int(np.exp(rng.uniform(np.log(40), np.log(500))))
    height = int(rng.uniform(12, HEIGHT))
    size = max(4, round(width * height / HEIGHT)), height
    if rng.random() < 0.5:
        picture = grounds.photograph(rng, size)
    else:
        picture = grounds.piece(rng, size, rng.uniform(3, 18), _colours(rng)[0], held_out)
    if rng.random() < 0.3:
        ends = (rng.uniform(-0.1, 1.1, (2, 2)) * size).astype(int).tolist()
        thick = max(1, int(height * rng.uniform(0.02, 0.1)))
        cv2.line(picture, *ends, rng.uniform(0, 255, 3).tolist(), thick, cv2.LINE_AA)
    return _at_height(rng, _sensed(rng, np.ascontiguousarray(picture), 0.5 * height), width)


def _picture(rng, phrase, kind, grounds, held_out):
    line = _set(rng, phrase, kind)
    if line is None:
        return None
    box = _box(rng, line)
    squeeze = rng.uniform(0.8, 1.2) if rng.random() < 0.5 else 1.0
    width = round((box[2] - box[0]) / (box[3] - box[1]) * HEIGHT * squeeze)
    if not NARROWEST <= width <= WIDEST:
        return None
    if rng.random() < 0.3:
        _neighbours(rng, phrase, kind, line, box, held_out)
    if rng.random() < 0.08 and not phrase.zone:
        _ruled(rng, line, box)
    if rng.random() < 0.45:
        line.ink = _stroked(rng, line.ink)
    # Pixels of a capital in the photograph; lines of zones, which hold no small letters, are legible at fewer.
    letter = np.exp(rng.uniform(np.log(6.5 if phrase.zone else 7.2), np.log(36)))
    height = max(10, round(letter * (box[3] - box[1]) / CAPITAL))
    ink = _seen(rng, line, box, (max(4, round(width * height / HEIGHT)), height))
    printed = _printed(rng, ink, letter / rng.uniform(1.4, 3), grounds, held_out)
    return _at_height(rng, _sensed(rng, printed, letter), width)


def fits(width, text):
    """Whether a line of width pixels has columns enough for text: CTC needs a blank between equal characters."""
    repeats = sum(a == b for a, b in zip(text, text[1:]))
    return max(seen.NARROWEST, width) // COLUMN >= len(text) + repeats + 1


def line(rng, held_out=False, grounds=None):
    """A line, HEIGHT x width x 3 (uint8, BGR), and what it says; "" where it holds no text.

    grounds: papers.Papers, or None: no photographs. held_out: only fonts, words and forms that are never trained on.
    """
    grounds = grounds or papers.without_photographs()
    while True:
        phrase = texts.phrase(rng, held_out)
        if not phrase.drawn:
            return _empty(rng, grounds, held_out), ""
        kind = _any_type(rng, phrase, held_out)
        text = phrase.text.upper() if kind.small_capitals else phrase.text
        picture = _picture(rng, phrase, kind, grounds, held_out)
        if picture is not None and fits(picture.shape[1], text):
            return picture, text
