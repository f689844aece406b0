"""Strips as the reader cuts them out of pictures: one line of a zone, or none, and what is legible of it."""

import cv2
import numpy as np

from drawing import light

from . import glyphs
from .glyphs import PITCH
from .sheets import Sheet, filled
from .views import any_view

HEIGHT = 32  # pixels of every strip
WIDTH = 320  # of those that are trained on
_LEGIBLE, _HIDDEN = 0.45, 0.25  # share of a character's ink that shows: at least, at most
_TRIES = 6  # at hiding places without leaving any half hidden


def seen(rng, sheet, view, width):
    """Ink 0..1 in the picture that the strip is cut from, and the places in it: (character, x, y)."""
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
    """Hides places under bars, fingers or glare: the picture and the text that is left to read."""
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


def line(rng, text, view, grounds, fonts=glyphs.TRAINED_ON, others=(), bar=None):
    """A strip (HEIGHT x W, uint8) of the whole line text, others below it, as view sees it.

    bar, (first, last, tone): places under a bar of that grey.
    """
    width = (round((len(text) + 3.2) * view.strip_pitch) + 3) // 4 * 4
    sheet = Sheet(view, width)
    left = (sheet.size[0] - len(text) * PITCH) / 2
    sheet.write(rng, [text, *others], 0, left, view, glyphs.alphabet(rng, fonts))
    _, picture, _, places = _printed(rng, sheet, view, width, grounds)
    if bar:
        first, last = (int(places[place][1] + side * view.pitch / 2) for place, side in zip(bar, (-1, 1)))
        middle, reach = places[bar[0]][2], 0.8 * view.pitch
        picture[max(0, int(middle - reach)):int(middle + reach), first:last] = bar[2]
    return _cut(_spoilt(rng, picture, view), view, width)


def window(rng, grounds, fonts=glyphs.TRAINED_ON):
    """A strip of WIDTH at random, and the text that is legible in it; it is empty where no line is."""
    view = any_view(rng)
    sheet = Sheet(view, WIDTH)
    filled(rng, sheet, view, fonts)
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
