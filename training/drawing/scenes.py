"""Puts documents, ground, things, hands and light together and takes the picture.

photographed() follows a recipe, in millimetres; composed() draws everything at random, in milliseconds,
as training needs it by the ten thousand.
"""

from dataclasses import dataclass, field

import cv2
import numpy as np

from . import brush, camera, desks, hands, light, things
from .recipes import LAYOUTS

_BARE_MM = (125, 88)  # a desk without document is seen from as near as one with a passport page
_ANY = (0.2, 0.6, 0.12, 0.05, 0.03)
KINDS = {  # of composed scenes: share in training, chances of 0, 1, .. 4 documents
    "usual": (0.47, _ANY),
    "print": (0.22, (0, 0.9, 0.1, 0, 0)),  # on a printed sheet
    "keys": (0.06, (0.12, 0.8, 0.08, 0, 0)),  # on a keyboard or a laptop
    "night": (0.06, _ANY),
    "covered": (0.06, (0, 0.92, 0.08, 0, 0)),  # by fingers
    "cut": (0.05, (0, 1, 0, 0, 0)),  # by one to three sides of the frame
    "several": (0.08, (0, 0, 0.45, 0.35, 0.2)),  # that may lie over one another
}


@dataclass
class Scene:
    """pixels: height x width x 3, uint8, RGB. quads: corners in pixels, 4 x 2 each, clockwise
    around the document, some perhaps outside the picture; the uppermost document last. kinds goes
    with quads. zone: the machine-readable lines of a photographed document."""

    pixels: np.ndarray
    quads: list = field(default_factory=list)
    kinds: list = field(default_factory=list)
    zone: tuple = ()


def _desk(recipe, rng, view, size_mm):
    picture = desks.texture("glass" if recipe.fills else recipe.desk, rng, view)
    if recipe.things:
        things.scatter(picture, rng, view, size_mm, recipe.things)
    if recipe.in_hand:  # the desk is an arm's length further away, so out of focus
        picture = cv2.GaussianBlur(picture, (0, 0), 6.0) * 0.8
    return picture


def _lay(picture, document, view, shadow):
    # Lays document over picture (float32, in place) as view sees it.
    mask = view.project(document.coverage()).astype(np.float32) / 255
    if shadow:
        reach = document.thickness_mm * view.scale()
        brush.cast_shadow(picture, mask, (0.9 * reach, 1.08 * reach), 1.2 * reach, 0.55)
        brush.cast_shadow(picture, mask, (0, 0), 3.5 * reach + 1, 0.30)
    brush.flat(picture, mask, view.project(document.pixels, cv2.BORDER_REPLICATE) / np.float32(255))


def photographed(recipe, seed):
    """The Scene that recipe tells of, with as-seen corners; equal arguments give equal bytes."""
    print_rng, desk_rng, light_rng = (np.random.default_rng([seed, stream]) for stream in range(3))
    document = LAYOUTS[recipe.layout](print_rng) if recipe.layout != "none" else None
    size_mm = document.size_mm if document else _BARE_MM
    if recipe.fills:
        view = camera.filling(size_mm, recipe.size, recipe.turn)
    else:
        view = camera.aimed(size_mm, recipe.size, recipe.share, recipe.roll + 90 * recipe.turn,
                            recipe.tilt, recipe.yaw, recipe.offset)
    picture = _desk(recipe, desk_rng, view, size_mm)
    if document:
        quad = camera.as_seen(view.pixels(camera.outline(size_mm)))
        hand = hands.Hand(desk_rng, quad, view.scale()) if recipe.in_hand else None
        if hand:
            hand.behind(picture)
        _lay(picture, document, view, shadow=not (recipe.fills or hand))
        if hand:
            hand.over(picture)

    light.lamp(picture, light_rng, recipe.exposure, recipe.warmth, recipe.falloff)
    if recipe.shadow:
        light.soft_shadow(picture, light_rng, recipe.shadow)
    if recipe.glare and document:
        spot = quad.mean(0) + light_rng.uniform(-0.3, 0.3, 2) * np.ptp(quad, axis=0)
        reach = 12 * view.scale()
        light.glare(picture, spot, light_rng.uniform(0, np.pi), reach, 0.4 * reach, recipe.glare)
    if recipe.focus > 0.15:
        picture = cv2.GaussianBlur(picture, (0, 0), recipe.focus)
    if recipe.motion:
        picture = light.motion(picture, light_rng, recipe.motion)
    pixels = light.sensed(picture, light_rng, recipe.noise)
    return Scene(pixels, [quad], [document.kind], document.zone) if document else Scene(pixels)


class Flats:
    """Flat documents (height x width x 4, uint8) at several sizes; kinds goes with pictures."""

    def __init__(self, pictures, kinds=None):
        self.kinds = kinds or ["document"] * len(pictures)
        self.levels = []
        for picture in pictures:
            levels = [picture]
            while max(levels[-1].shape[:2]) > 48:
                levels.append(cv2.resize(levels[-1], None, fx=0.5, fy=0.5, interpolation=cv2.INTER_AREA))
            self.levels.append(levels)

    def __len__(self):
        return len(self.levels)

    def shape(self, index):
        return self.levels[index][0].shape[:2]

    def at(self, index, longest):
        """The smallest picture whose longer side is at least longest pixels, or the largest."""
        levels = self.levels[index]
        return next((level for level in levels[:0:-1] if max(level.shape[:2]) >= longest), levels[0])


def _bent(rng, u, v):
    # Curled edges and a shade that goes with them; corners stay where they are.
    shade = np.float32(1)
    if rng.random() < 0.35:
        reach = rng.normal(0, 0.018)
        along, across = (u, v) if rng.random() < 0.5 else (v, u)
        arch = np.sin(np.pi * np.clip(along, 0, 1) ** rng.uniform(0.6, 1.6)) * reach
        across += arch if rng.random() < 0.6 else arch * (1 - 2 * np.clip(across, 0, 1))
        shade = 1 + np.float32(rng.normal(0, 0.12)) * np.cos(np.pi * np.clip(along, 0, 1))
    if rng.random() < 0.18:  # folds
        along = u if rng.random() < 0.5 else v
        for place in (0.5,) if rng.random() < 0.6 else (1 / 3, 2 / 3):
            away = (along - place) / 0.02
            shade = shade * (1 - rng.uniform(-0.1, 0.25) * np.exp(-away * away))
            shade = shade * (1 + np.float32(rng.normal(0, 0.06)) * np.sign(away))
    return shade


def _lay_flat(rng, picture, flat, grid, glued=False, stiff=False):
    # Lays flat (RGBA) over picture (float32, in place), perhaps bent unless it is stiff; glued: without a shadow.
    # grid: u and v, 0..1 over it, of every pixel.
    u, v = grid
    shade = np.float32(1) if stiff else _bent(rng, u, v)
    h, w = flat.shape[:2]
    seen = cv2.remap(flat, u * w - 0.5, v * h - 0.5, cv2.INTER_LINEAR, borderMode=cv2.BORDER_CONSTANT)
    cover = seen[..., 3].astype(np.float32) / 255
    paper = seen[..., :3].astype(np.float32)
    if not glued and rng.random() < 0.75:
        reach = picture.shape[0] * abs(rng.normal(0, 0.012)) + 0.5
        offset = rng.normal(0, 1.5) * reach, rng.normal(0, 1.5) * reach
        brush.cast_shadow(picture, cover, offset, reach, rng.uniform(0.1, 0.6))
    if rng.random() < 0.5:
        paper *= np.float32(rng.uniform(0.75, 1.1))
    paper *= shade[..., None] if shade.ndim else shade
    # Remapping against black already weighed the colours at the rim by their coverage.
    picture *= 1 - cover[..., None]
    picture += np.clip(paper, 0, 255) * (cover > 0)[..., None]


def _longest(quad):
    return max(np.linalg.norm(np.roll(quad, -1, 0) - quad, axis=1))


def _lay_below(rng, picture, below, quad, shape, stiff):
    # Lays one of below (Flats) into picture where the document of shape (height, width) with corners quad will lie.
    index = int(rng.integers(len(below)))
    # From a letter on a keyboard and a spread on a form to a card on a broadsheet.
    ratio = np.exp(rng.uniform(np.log(1.5 if stiff else 1.3), np.log(4)))
    grid = camera.ground_grid(rng, camera.document_grid(quad, picture.shape[1::-1]), shape, below.shape(index), ratio)
    _lay_flat(rng, picture, below.at(index, ratio * _longest(quad)), grid, stiff=stiff)


def composed(rng, flats, places, size, aspect=None, documents=None, kind="usual", below=None):
    """A Scene of size (width, height) pixels with Flats on places (photographs, uint8).

    documents: how many are tried, None for any. A scene is aspect wide and 1 high, whatever its pixels.
    kind: one of KINDS. below: Flats that documents lie on in scenes of the kinds print and keys; these
    are ground, so that the Scene tells nothing of them.
    """
    if aspect is None:
        aspect = float(rng.choice([16 / 9, 4 / 3, 3 / 4, 9 / 16, 1.0, 1.5, 2 / 3]))
    if documents is None:
        documents = int(rng.choice(5, p=KINDS[kind][1]))
    fills = documents == 1 and kind in ("usual", "night", "covered") and rng.random() < 0.1
    chosen, quads = [], []
    for _ in range(documents):
        index = int(rng.integers(len(flats)))
        shape = flats.shape(index)
        if fills:
            quad = camera.scanned(rng, shape, aspect)
        elif kind == "cut":
            quad = camera.cut(rng, shape, aspect)
        else:
            quad = camera.placed(rng, shape, aspect, quads, kind == "several")
        if quad is not None:
            chosen.append(index)
            quads.append(quad)
    quads = [quad * [size[0] / aspect, size[1]] for quad in quads]

    tone = None
    if chosen and rng.random() < 0.14:  # a desk of the document's own colour
        small = flats.levels[chosen[0]][-1]
        tone = np.median(small[..., :3].reshape(-1, 3), axis=0) + rng.normal(0, 10)
    picture = desks.ground(rng, places, size, aspect, tone)
    if below:
        shape = flats.shape(chosen[0]) if chosen else (2, 3)
        quad = quads[0] if chosen else camera.placed(rng, shape, aspect, []) * [size[0] / aspect, size[1]]
        _lay_below(rng, picture, below, quad, shape, kind == "keys")
    if rng.random() < (0.35 if chosen else 0.6):
        things.strew(rng, picture, aspect, quads)
    held = chosen and not fills and kind not in ("print", "keys", "covered") and rng.random() < 0.2
    hand = hands.RoughHand(rng, quads[0]) if held else None
    if hand:
        hand.behind(picture)
    for index, quad in zip(chosen, quads):
        _lay_flat(rng, picture, flats.at(index, _longest(quad)), camera.document_grid(quad, size), fills or hand)
    if kind == "covered":
        hands.grip(rng, picture, quads[-1])
    elif hand:
        hand.over(picture)
    elif chosen and rng.random() < 0.15:
        hands.fingers(rng, picture, quads[-1])
    pixels = (light.night if kind == "night" else light.spoilt)(rng, picture, quads)
    return Scene(pixels, [camera.clockwise(q) for q in quads], [flats.kinds[i] for i in chosen])
