"""What documents lie on: drawn desks, or grounds made of photographs.

Every drawn desk is computed at the millimetres that the camera sees.
"""

import cv2
import numpy as np

_LATTICE = 256


def _colour(rng, choices):
    return np.float32(choices[int(rng.integers(len(choices)))]) / 255


def _noise(rng, x, y, cell_x, cell_y=None):
    # Value noise, -1..1, with features of cell_x by cell_y millimetres.
    lattice = rng.uniform(-1, 1, (_LATTICE, _LATTICE)).astype(np.float32)
    u, v = x / cell_x, y / (cell_y or cell_x)
    column, row = np.floor(u).astype(np.int32), np.floor(v).astype(np.int32)
    fu, fv = u - column, v - row
    fu, fv = fu * fu * (3 - 2 * fu), fv * fv * (3 - 2 * fv)
    left, right = column % _LATTICE, (column + 1) % _LATTICE
    upper, lower = row % _LATTICE, (row + 1) % _LATTICE
    top = lattice[upper, left] * (1 - fu) + lattice[upper, right] * fu
    bottom = lattice[lower, left] * (1 - fu) + lattice[lower, right] * fu
    return top * (1 - fv) + bottom * fv


def _turned(rng, x, y, spread):
    angle = rng.uniform(-spread, spread)
    return x * np.cos(angle) + y * np.sin(angle), y * np.cos(angle) - x * np.sin(angle)


def _mixed(first, second, share):
    share = np.clip(share, 0, 1)[..., None]
    return first * (1 - share) + second * share


def wood(rng, x, y):
    """Boards with grain along x."""
    x, y = _turned(rng, x, y, 0.25)
    board_width = rng.uniform(95, 150)
    boards = y / board_width + np.float32(rng.random())
    board = np.floor(boards).astype(np.int32)
    shift = (board * 977 % 613).astype(np.float32)  # every board is cut from another tree
    x = x + shift
    wandering = y + 7 * _noise(rng, x, y, 130, 26) + 1.6 * _noise(rng, x, y, 40, 7)
    rings = wandering / rng.uniform(4.5, 7.5)
    grain = 0.5 + 0.5 * np.sin(2 * np.pi * rings)
    fibre = _noise(rng, x, y, 16, 0.45) + 0.6 * _noise(rng, x, y, 5, 0.3)
    light = _colour(rng, [(196, 152, 104), (170, 122, 78), (142, 98, 62), (206, 172, 130), (112, 76, 52)])
    share = 0.55 * grain ** 2 + 0.16 * fibre + 0.1 * _noise(rng, x, y, 90)
    picture = _mixed(light, light * 0.66, share)
    picture *= (1 + 0.05 * np.sin(board * 2.3))[..., None]
    gap = np.exp(-((boards - np.round(boards)) * board_width / 0.5) ** 2)
    return picture * (1 - 0.6 * gap)[..., None]


def cloth(rng, x, y):
    """Woven cloth, plain or checked, with soft folds."""
    x, y = _turned(rng, x, y, 0.5)
    base = _colour(rng, [(70, 92, 120), (130, 60, 62), (92, 104, 84), (196, 188, 172), (60, 60, 70)])
    thread = rng.uniform(0.8, 1.3)
    weave = np.sin(2 * np.pi * x / thread) * np.sin(2 * np.pi * y / thread)
    folds = _noise(rng, x, y, 70) + 0.4 * _noise(rng, x, y, 28)
    tone = 1 + 0.07 * weave + 0.10 * folds + 0.05 * _noise(rng, x, y, 0.7)
    picture = base * tone[..., None]
    if rng.random() < 0.5:
        check = rng.uniform(14, 26)
        stripe = ((x / check) % 1 < 0.28).astype(np.float32) + ((y / check) % 1 < 0.28)
        picture = _mixed(picture, np.float32([0.88, 0.86, 0.82]) * tone[..., None], 0.28 * stripe)
    return picture


def plain(rng, x, y):
    """A laminate table top in one colour, lightly speckled."""
    base = _colour(rng, [(150, 152, 154), (92, 96, 100), (176, 166, 148), (60, 66, 74), (122, 140, 146)])
    tone = 1 + 0.04 * _noise(rng, x, y, 60) + 0.03 * _noise(rng, x, y, 0.6)
    return base * tone[..., None]


def stone(rng, x, y):
    """Polished stone with veins."""
    base = _colour(rng, [(108, 108, 112), (138, 128, 118), (74, 80, 82), (160, 152, 146)])
    clouds = sum(_noise(rng, x, y, cell) * weight for cell, weight in ((60, 0.5), (24, 0.3), (9, 0.2), (3, 0.15)))
    veins = np.exp(-14 * np.abs(_noise(rng, x, y, 75) + 0.35 * clouds))
    flecks = _noise(rng, x + y, x - y, 1.3) * _noise(rng, x, y, 1.1)
    tone = 1 + 0.20 * clouds + 0.16 * flecks
    return _mixed(base * tone[..., None], np.float32([0.80, 0.78, 0.74]), 0.35 * veins)


def glass(rng, x, y):
    """The lid behind the glass of a scanner: nearly white."""
    return np.float32([0.93, 0.93, 0.94]) * (1 + 0.01 * _noise(rng, x, y, 30))[..., None]


DESKS = {"wood": wood, "cloth": cloth, "plain": plain, "stone": stone}


def texture(name, rng, view):
    """What view sees of a desk (DESKS or 'glass'): float32, 0..1."""
    x, y = view.desk_grid()
    paint = glass if name == "glass" else DESKS[name]
    picture = paint(rng, x + rng.uniform(0, 9000), y + rng.uniform(0, 9000))
    return np.clip(picture, 0, 1).astype(np.float32)


def _rough(rng, size, cell):
    # Noise with features of cell (x, y) pixels, deviation about 1.
    grid = (max(2, int(size[1] / cell[1]) + 1), max(2, int(size[0] / cell[0]) + 1))
    noise = np.empty(grid, np.float32)
    cv2.setRNGSeed(int(rng.integers(2 ** 31)))
    cv2.randn(noise, 0, 1)
    return cv2.resize(noise, size, interpolation=cv2.INTER_CUBIC)


def _even(rng, size, tone):
    base = rng.uniform(15, 245) + rng.normal(0, 18, 3) if tone is None else tone
    picture = np.full((size[1], size[0], 3), np.clip(base, 0, 255), np.float32)
    if rng.random() < 0.75:  # grain, marble or brushed metal
        for _ in range(int(rng.integers(1, 4))):
            cell = size[1] * np.exp(rng.uniform(np.log(0.006), np.log(0.4), 2))
            if rng.random() < 0.5:
                cell[1] = cell[0]
            layer = _rough(rng, size, np.maximum(cell, 1))[..., None]
            picture += layer * (rng.normal(0, 7) + rng.normal(0, 2, 3)).astype(np.float32)
    return picture


def _photo(rng, places, size, aspect):
    photo = places[int(rng.integers(len(places)))]
    h, w = photo.shape[:2]
    # A crop that the scene's height spans, turned, perhaps leaning away as a floor does.
    span = min(h, w / aspect) * rng.uniform(0.25, 1.0)
    angle = rng.uniform(-0.3, 0.3) if rng.random() < 0.7 else rng.uniform(-np.pi, np.pi)
    turn = np.array([[np.cos(angle), np.sin(angle)], [-np.sin(angle), np.cos(angle)]])
    corners = np.array([[-aspect, -1], [aspect, -1], [aspect, 1], [-aspect, 1]]) * span / 2
    if rng.random() < 0.3:
        corners *= rng.uniform(0.6, 1.4, (4, 1))
    centre = np.array([w, h]) / 2 + rng.uniform(-0.5, 0.5, 2) * np.maximum([w - span * aspect, h - span], 0)
    source = (corners @ turn + centre).astype(np.float32)
    shrink = span / size[1]
    if shrink > 1.6:
        photo = cv2.resize(photo, None, fx=1 / shrink, fy=1 / shrink, interpolation=cv2.INTER_AREA)
        source /= shrink
    target = np.float32([[0, 0], [size[0], 0], [size[0], size[1]], [0, size[1]]])
    matrix = cv2.getPerspectiveTransform(source, target)
    return cv2.warpPerspective(photo, matrix, size, flags=cv2.INTER_LINEAR,
                               borderMode=cv2.BORDER_REFLECT).astype(np.float32)


def ground(rng, places, size, aspect, tone=None):
    """Any ground: one of the photographs places, two that meet, or grain around a colour (tone, RGB).

    float32, 0..255.
    """
    if tone is not None:
        return np.clip(_even(rng, size, tone), 0, 255)
    kind = rng.random()
    if kind < 0.2:
        return np.clip(_even(rng, size, None), 0, 255)
    picture = _photo(rng, places, size, aspect)
    if kind < 0.28:  # two grounds that meet in a line: the edge of a table, a wall
        other = _photo(rng, places, size, aspect) if rng.random() < 0.5 else _even(rng, size, None)
        a, width, height = rng.uniform(0, 2 * np.pi), size[0], size[1]
        y, x = np.mgrid[0:height, 0:width].astype(np.float32)
        side = ((x / width - 0.5) * np.cos(a) + (y / height - 0.5) * np.sin(a)) - rng.uniform(-0.4, 0.4)
        picture = np.where(side[..., None] > 0, other, picture)
    if rng.random() < 0.3:
        picture = picture * rng.uniform(0.4, 1) + rng.uniform(0, 80)
    return np.clip(picture, 0, 255)
