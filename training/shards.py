#!/usr/bin/python3
"""Draws scenes into files that the trainer reads: pixels, and the corners of the documents."""

import cv2
import numpy as np

import backgrounds
import sharding
from drawing import cards, keyboards, papers, passports, prints, scenes, utopia
from drawing.invented import invented, printed

SIDE = 256  # pixels; the network is trained on smaller ones
SCENES = 1000  # a shard
# By kind of scene: what its documents lie on, and how many of that are drawn.
BELOW = {"print": (prints.printed_sheet, 60), "keys": (keyboards.keyboard, 40)}
CLOSER = 0.22  # of the scenes: cut to one document and what is around it, as the finder looks again at what it found
_AROUND = (0.12, 0.4)  # of its box, on each side; the finder takes 0.25 of a box that it has to guess
_LEAST, _MOST_SEEN = 48, 0.8  # pixels of a side, and of the picture, that such a cut shows
_MOST = 6  # documents a scene
_LAYOUTS = (passports.bangladesh_page, passports.bangladesh_spread, utopia.classic, utopia.trilingual,
            cards.identity_card, papers.receipt)  # the others are held out


def draw_invented(seed, longest, places, layouts, covers):
    """A list of flats: as many invented layouts, and as many covers made of photographs places."""
    # Other numbers in the middle of the seeds would draw other documents.
    flats = [invented(np.random.default_rng([seed, 8, i]), longest) for i in range(layouts)]
    for position in range(covers):
        rng = np.random.default_rng([seed, 7, position])
        flats.append(printed(rng, longest, places[int(rng.integers(len(places)))]))
    return flats


def draw_flats(seed, places, specimens=90, layouts=420, covers=40, longest=420):
    """scenes.Flats to train on: the project's specimens and draw_invented's."""
    flats = []
    for position in range(specimens):
        rng = np.random.default_rng([seed, 8, position])
        flats.append(_LAYOUTS[int(rng.integers(len(_LAYOUTS)))](rng).flat(longest))
    return scenes.Flats(flats + draw_invented(seed, longest, places, layouts, covers))


def draw_below(seed, places, longest=640, held_out=False, share=1.0):
    """By kind of scene, the Flats that documents lie on; held_out: of designs and colours that are never trained on.

    Otherwise a document may lie on a larger one as well: half of the printed sheets are invented layouts.
    """
    below = {}
    for middle, (kind, (draw, count)) in enumerate(BELOW.items()):
        rngs = [np.random.default_rng([seed, 5 + middle, i]) for i in range(round(share * count))]
        flats = [draw(rng, longest, places, held_out) for rng in rngs]
        if kind == "print" and not held_out:
            flats += draw_invented(seed + 90000, longest, places, len(flats), 0)
        below[kind] = scenes.Flats(flats)
    return below


def _closer(rng, scene):
    """Pixels and corners of what is around one of the scene's documents; of the whole scene, if that is little less."""
    size = np.array(scene.pixels.shape[1::-1])
    left_top, right_bottom = np.zeros(2, int), size
    if scene.quads:
        quad = np.clip(scene.quads[int(rng.integers(len(scene.quads)))], 0, size)
        beyond = rng.uniform(*_AROUND, (2, 2)) * np.ptp(quad, axis=0)
        around = np.clip([quad.min(0) - beyond[0], quad.max(0) + beyond[1]], 0, size).round().astype(int)
        if np.ptp(around, axis=0).min() >= _LEAST and np.prod(np.ptp(around, axis=0)) <= _MOST_SEEN * np.prod(size):
            left_top, right_bottom = around
    part = scene.pixels[left_top[1]:right_bottom[1], left_top[0]:right_bottom[0]]
    shrinks = min(part.shape[:2]) > SIDE
    pixels = cv2.resize(part, (SIDE, SIDE), interpolation=cv2.INTER_AREA if shrinks else cv2.INTER_LINEAR)
    return pixels, [(quad - left_top) * SIDE / (right_bottom - left_top) for quad in scene.quads]


def draw_shard(number, documents, below, places):
    """Pixels (SCENES x SIDE x SIDE x 3, uint8) and corners (SCENES x _MOST x 4 x 2, NaN: none)."""
    shares = [share for share, _ in scenes.KINDS.values()]
    kinds = np.random.default_rng([number, 0, 1]).choice(list(scenes.KINDS), SCENES, p=shares)
    closer = np.random.default_rng([number, 0, 2]).random(SCENES) < CLOSER
    pixels = np.empty((SCENES, SIDE, SIDE, 3), np.uint8)
    quads = np.full((SCENES, _MOST, 4, 2), np.nan, np.float32)
    for position in range(SCENES):
        kind = str(kinds[position])
        rng = np.random.default_rng([number, position])
        side = 2 * SIDE if closer[position] else SIDE
        scene = scenes.composed(rng, documents, places, (side, side), kind=kind, below=below.get(kind))
        pixels[position], corners = _closer(rng, scene) if closer[position] else (scene.pixels, scene.quads)
        for slot, quad in enumerate(corners[:_MOST]):
            quads[position, slot] = quad
    return pixels, quads


def main(source, folder, count, first):
    places = backgrounds.load(source, backgrounds.TRAINED_ON, 640)

    def shared(ten):
        return draw_flats(1000 + ten, places), draw_below(1000 + ten, places)

    def draw(number, drawn):
        pixels, quads = draw_shard(number, *drawn, places)
        return {"pixels": pixels, "quads": quads}

    sharding.fill(folder, count, first, draw, shared)


if __name__ == "__main__":
    options = sharding.parser(__doc__, "a thousand scenes").parse_args()
    main(options.backgrounds, options.folder, options.count, options.first)
