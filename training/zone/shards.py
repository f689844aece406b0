"""Draws strips into files that the trainer reads: python3 -m zone.shards BACKGROUNDS FOLDER COUNT FIRST."""

import numpy as np

import sharding

from . import grounds, strips
from .texts import ALPHABET

STRIPS = 4000  # a shard
_LONGEST = 40  # characters of a strip
_PRINTS = 30  # sheets of security print


def codes(text):
    """Classes of the network: one byte a character, filled up with zeros."""
    return np.array([1 + ALPHABET.index(c) for c in text] + [0] * (_LONGEST - len(text)), np.uint8)


def draw_shard(number, papers, count=STRIPS):
    """Pixels (count x HEIGHT x WIDTH, uint8) and what they say (count x _LONGEST, uint8, see codes)."""
    pixels = np.empty((count, strips.HEIGHT, strips.WIDTH), np.uint8)
    said = np.empty((count, _LONGEST), np.uint8)
    for position in range(count):
        pixels[position], text = strips.window(np.random.default_rng([number, position]), papers)
        said[position] = codes(text)
    return pixels, said


def main(source, folder, count, first):
    photographs = grounds.photographs(source, grounds.TRAINED_ON)

    def shared(ten):
        return grounds.Grounds(grounds.security_prints(np.random.default_rng([ten, 1]), _PRINTS), photographs)

    def draw(number, papers):
        pixels, said = draw_shard(number, papers)
        return {"pixels": pixels, "said": said}

    sharding.fill(folder, count, first, draw, shared)


if __name__ == "__main__":
    options = sharding.parser(__doc__, "four thousand strips").parse_args()
    main(options.backgrounds, options.folder, options.count, options.first)
