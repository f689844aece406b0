"""Strips as the reader cuts them out of pictures: one line of a zone, or none, and what is legible of it."""

from dataclasses import dataclass

import cv2
import numpy as np

from drawing import light

from . import glyphs, texts
from .glyphs import PITCH

HEIGHT = 32  # pixels of every strip
WIDTH = 320  # of those that are trained on
_MARGIN = 48  # pixels around the part of the sheet that is seen, for what turns into view
_LEGIBLE, _HIDDEN = 0.45, 0.25  # share of a character's ink that shows: at least, at most
_TRIES = 6  # at hiding places without leaving any half hidden


@dataclass(frozen=True)
class View:
    """How a line is seen. A pitch is the distance from one character to the next."""

    pitch: float = 16.0  # pixels in the picture that the strip is cut from
    strip_pitch: float = 14.0  # pixels in the strip
    height: float = 1.9  # pitches that the strip shows
    offset: float = 0.0  # pitches, of the line's middle below the strip's
    spacing: float = 2.5  # pitches between lines
    tilt: float = 0.0  # degrees
    slant: float = 0.0  # of the characters, height to the side
    squeeze: float = 1.0  # height by width
    keystone: float = 0.0  # pitches, deviation of the strip's corners
    bend: float = 0.0  # pitches
    restless: float = 0.0  # pixels of the glyphs, deviation of their places
    ink: float = 0.12  # 0 black .. 1 as the paper
    worn: float = 0.0  # share of the ink lost in spots
    focus: float = 0.02  # pitches, deviation of the blur
    motion: float = 0.0  # pitches
    sharpened: float = 0.0
    noise: float = 2.0  # deviation, in steps of 255
    enlarged: float = 1.0  # times, before it was saved
    quality: int = 90  # of the JPEG; 100: none
    contrast: float = 1.0
    cubic: bool = False  # how the strip is cut


def any_view(rng):
    """A View at random, from easy to hardly legible."""
    chance = rng.random(12)
    pitch = np.exp(rng.uniform(np.log(5), np.log(16))) if chance[0] < 0.75 else rng.uniform(14, 38)
    return View(
        pitch=pitch, strip_pitch=rng.uniform(10.5, 18), height=rng.uniform(1.45, 2.35),
        offset=rng.normal(0, 0.11) if rng.random() < 0.8 else rng.uniform(-0.4, 0.4),
        spacing=rng.uniform(2.0, 2.9), tilt=rng.normal(0, 0.7) if chance[1] < 0.85 else rng.uniform(-2.4, 2.4),
        slant=rng.normal(0, 0.06), squeeze=np.exp(rng.normal(0, 0.08)) if chance[2] < 0.6 else rng.uniform(0.75, 1.3),
        keystone=rng.uniform(0, 0.12) if chance[3] < 0.4 else 0.0,
        bend=rng.uniform(-0.12, 0.12) if chance[4] < 0.2 else 0.0,
        restless=rng.uniform(0, 0.8) if chance[5] < 0.5 else 0.0,
        ink=rng.uniform(0, 0.35) if chance[6] < 0.75 else rng.uniform(0.35, 0.82),
        worn=rng.uniform(0.1, 0.45) if chance[7] < 0.15 else 0.0,
        focus=min(0.2, abs(rng.normal(0, 0.085))) if chance[8] < 0.6 else 0.0,
        motion=rng.uniform(0.1, 0.6) if rng.random() < 0.22 else 0.0,
        sharpened=rng.uniform(0.3, 1.5) if chance[8] > 0.88 else 0.0,
        noise=abs(rng.normal(0, 6)) if chance[9] < 0.75 else 0.0,
        enlarged=rng.uniform(1.2, 2.0) if chance[10] < 0.12 and pitch > 10 else 1.0,
        quality=int(rng.uniform(22, 95)) if chance[11] < 0.7 else 100,
        contrast=rng.uniform(0.3, 0.9) if rng.random() < 0.2 else 1.0, cubic=rng.random() < 0.3)


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


def _filled(rng, sheet, view, fonts):
    # Puts something into the sheet; a window of a zone in most cases.
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


def seen(rng, sheet, view, width):
    # Ink 0..1 in the picture that the strip is cut from, and the places in it: (character, x, y).
    across, down = width / view.strip_pitch, view.height
    size = max(24, round(across * view.pitch)), max(8, round(down * view.pitch))
    half = np.array([across, down]) * PITCH / 2
    corners = np.array([[-1, -1], [1, -1], [1, 1], [-1, 1]]) * half
    angle = np.radians(view.tilt)
    turn = np.array([[np.cos(angle), view.slant - np.sin(angle)], [np.sin(angle), np.cos(angle) * view.squeeze]])
    moved = corners @ turn.T
    if view.keystone:
        moved = moved + rng.standard_normal((4, 2)) * [2 * PITCH * view.keystone, 0.4 * PITCH * view.keystone]
    scale = np.array(size) / (2 * half)
    matrix = cv2.getPerspectiveTransform((corners + sheet.middle).astype(np.float32),
                                         ((moved + half) * scale).astype(np.float32))
    ink = sheet.ink
    reduced = view.pitch / PITCH
    if reduced < 1:  # what one pixel of the sensor gathers
        ink = cv2.GaussianBlur(ink, (0, 0), 0.42 / reduced)
    ink = cv2.warpPerspective(ink, matrix, size, flags=cv2.INTER_LINEAR).astype(np.float32) / 255
    if view.bend:
        x, y = np.meshgrid(np.arange(size[0], dtype=np.float32), np.arange(size[1], dtype=np.float32))
        wave = np.sin(x / size[0] * rng.uniform(2, 7) + rng.uniform(0, 6))
        ink = cv2.remap(ink, x, y + np.float32(view.bend * view.pitch) * wave.astype(np.float32), cv2.INTER_LINEAR)
    if view.worn:
        spots = cv2.GaussianBlur(rng.standard_normal(ink.shape, np.float32), (0, 0), rng.uniform(0.4, 1.2))
        ink = ink * np.clip(1 - view.worn * np.maximum(spots / (spots.std() + 1e-5), 0), 0, 1)
    if not sheet.places:
        return ink, []
    points = np.float32([[place[1:] for place in sheet.places]])
    points = cv2.perspectiveTransform(points, matrix)[0]
    return ink, [(place[0], *point) for place, point in zip(sheet.places, points)]


def _cover(rng, shape, places, view):
    # An opaque thing over some places: how much it hides (height x width, 0..1). Its ends lie between characters.
    cover = np.zeros(shape, np.float32)
    first = int(rng.integers(len(places)))
    last = min(len(places) - 1, first + int(rng.integers(0, 3) if rng.random() < 0.5 else rng.integers(2, 16)))
    reach = view.pitch * (0.5 + rng.normal(0, 0.05))
    left, right = places[first][1] - reach, places[last][1] + reach
    kind, middle = rng.random(), places[(first + last) // 2][2]
    if kind < 0.7:  # a bar
        above, below = view.pitch * rng.uniform(0.6, 1.3, 2)
        box = [left, middle - above], [right, middle - above], [right, middle + below], [left, middle + below]
        cv2.fillPoly(cover, [np.round(np.array(box) * 16).astype(np.int32)], 1.0, cv2.LINE_8, 4)
    else:  # a finger, a stain
        side = 1 if rng.random() < 0.5 else -1
        centre = (left + right) / 2, middle + side * view.pitch * rng.uniform(0, 1.2)
        axes = (right - left) / 2, view.pitch * rng.uniform(0.9, 2.5)
        cv2.ellipse(cover, [int(c * 16) for c in centre], [max(16, int(a * 16)) for a in axes], rng.uniform(-20, 20),
                    0, 360, 1.0, -1, cv2.LINE_8, 4)
    return cover


def _legible(ink, cover, places, view):
    # For each place, the share of its ink that shows.
    reach = 0.5 * view.pitch
    shares = []
    for _, x, y in places:
        box = (slice(max(0, int(y - reach * view.squeeze)), int(y + reach * view.squeeze) + 1),
               slice(max(0, int(x - reach)), int(x + reach) + 1))
        total = ink[box].sum()
        shares.append(float((ink[box] * (1 - cover[box])).sum() / total) if total > 0 else 0.0)
    return shares


def hidden(rng, paper, printed, ink, places, view):
    # Hides places under bars, fingers or glare: the picture and the text that is left to read.
    text = "".join(place[0] for place in places)
    for _ in range(_TRIES if places and rng.random() < 0.2 else 0):
        if rng.random() < 0.6:
            cover = _cover(rng, ink.shape, places, view)
            tone = rng.uniform(0, 70) if rng.random() < 0.6 else rng.uniform(70, 250)
            if rng.random() < 0.2:  # smeared or made unreadable on purpose
                tone = cv2.GaussianBlur(printed, (0, 0), view.pitch * rng.uniform(0.7, 1.5))
            picture = printed * (1 - cover) + tone * cover
        else:
            spot = np.zeros(ink.shape, np.float32)
            where = places[int(rng.integers(len(places)))][1:]
            long, short = view.pitch * np.sort(rng.uniform(0.8, 6, 2))[::-1]
            light.glare(spot[..., None], where, rng.normal(0, 0.6), long, short, rng.uniform(80, 420))
            picture = np.minimum(printed + spot, 255)
            left = np.minimum(paper + spot, 255) - picture
            cover = np.clip(1 - left / np.maximum(paper - printed, 1), 0, 1)
        shares = _legible(ink, cover, places, view)
        if not any(_HIDDEN < share < _LEGIBLE for share in shares):
            return picture, "".join(c for c, share in zip(text, shares) if share >= _LEGIBLE)
    return printed, text


def _spoilt(rng, picture, view):
    # What lens, sensor and file make of it; uint8.
    if rng.random() < 0.15:
        light.soft_shadow(picture[..., None], rng, rng.uniform(0.1, 0.6))
    if rng.random() < 0.12:  # light or shade that hides nothing
        where = rng.uniform(0, 1, 2) * picture.shape[::-1]
        light.glare(picture[..., None], where, rng.uniform(0, 3.14), view.pitch * rng.uniform(1, 10),
                    view.pitch * rng.uniform(0.6, 5), rng.uniform(-70, 70))
    if view.focus:
        picture = cv2.GaussianBlur(picture, (0, 0), max(0.25, view.focus * view.pitch))
    if view.motion * view.pitch >= 1:
        picture = light.motion(picture, rng, view.motion * view.pitch)
    if view.sharpened:
        picture = picture + view.sharpened * (picture - cv2.GaussianBlur(picture, (0, 0), rng.uniform(0.6, 1.5)))
    picture = 128 + (picture - 128) * view.contrast
    if view.noise:
        picture = picture + np.float32(view.noise) * rng.standard_normal(picture.shape, np.float32)
    pixels = np.clip(picture + 0.5, 0, 255).astype(np.uint8)
    if view.enlarged > 1:
        small = [max(4, int(side / view.enlarged)) for side in pixels.shape[::-1]]
        pixels = cv2.resize(cv2.resize(pixels, small, interpolation=cv2.INTER_AREA), pixels.shape[::-1],
                            interpolation=cv2.INTER_CUBIC)
    if view.quality < 100:
        data = cv2.imencode(".jpg", pixels, [cv2.IMWRITE_JPEG_QUALITY, view.quality])[1]
        pixels = cv2.imdecode(data, cv2.IMREAD_GRAYSCALE)
    return pixels


def _printed(rng, sheet, view, width, grounds):
    # Paper, print on it, ink and places, before anything hides them.
    ink, places = seen(rng, sheet, view, width)
    paper = grounds.piece(rng, ink.shape[::-1], view.pitch)
    paper = np.clip(paper, 40, 255)
    ink_tone = view.ink * float(paper.mean())
    return paper, paper + (ink_tone - paper) * ink, ink, places


def _cut(picture, view, width):
    way = cv2.INTER_CUBIC if view.cubic else cv2.INTER_LINEAR
    if view.pitch > 1.3 * view.strip_pitch:
        way = cv2.INTER_AREA
    return cv2.resize(picture, (width, HEIGHT), interpolation=way)


def line(rng, text, view, grounds, fonts=glyphs.TRAINED_ON, others=()):
    """A strip (HEIGHT x W, uint8) of the whole line text, others below it, as view sees it."""
    width = (round((len(text) + 3.2) * view.strip_pitch) + 3) // 4 * 4
    sheet = Sheet(view, width)
    left = (sheet.size[0] - len(text) * PITCH) / 2
    sheet.write(rng, [text, *others], 0, left, view, glyphs.alphabet(rng, fonts))
    return _cut(_spoilt(rng, _printed(rng, sheet, view, width, grounds)[1], view), view, width)


def window(rng, grounds, fonts=glyphs.TRAINED_ON):
    """A strip of WIDTH at random, and the text that is legible in it; it is empty where no line is."""
    view = any_view(rng)
    sheet = Sheet(view, WIDTH)
    _filled(rng, sheet, view, fonts)
    paper, printed, ink, places = _printed(rng, sheet, view, WIDTH, grounds)
    picture, text = hidden(rng, paper, printed, ink, places, view)
    if rng.random() < 0.1:  # a stamp, a scratch, a fold
        strokes = np.zeros(ink.shape, np.uint8)
        for _ in range(int(rng.integers(1, 4))):
            ends = (rng.uniform(-0.1, 1.1, (2, 2)) * ink.shape[::-1]).astype(int).tolist()
            cv2.line(strokes, ends[0], ends[1], 255, max(1, int(view.pitch * rng.uniform(0.1, 0.5))), cv2.LINE_AA)
        picture = picture + np.float32(rng.uniform(-90, 60) / 255) * strokes
    strip = _cut(_spoilt(rng, picture.astype(np.float32), view), view, WIDTH)
    return (255 - strip if rng.random() < 0.02 else strip), text


def normalised(strips):
    """Strips (N x HEIGHT x W) as the network takes them: N x 1 x HEIGHT x W, float32, each by its own mean."""
    strips = strips.astype(np.float32)
    centred = strips - strips.mean((1, 2), keepdims=True)
    return (centred / (strips.std((1, 2), keepdims=True) + 8))[:, None]
