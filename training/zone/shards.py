"""Draws strips into files that the trainer reads: python3 -m zone.shards BACKGROUNDS FOLDER COUNT FIRST.

A shard's seed is its number, so any of them can be made again alone, in any order.
"""

import argparse
from pathlib import Path

import cv2
import numpy as np

from . import grounds, strips
from .texts import ALPHABET

STRIPS = 4000  # a shard
_LONGEST = 40  # characters of a strip
_PRINTS = 30  # sheets of security print
_SAME_PRINTS = 10  # shards that share them


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
    cv2.setNumThreads(1)
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    photographs = grounds.photographs(source, grounds.TRAINED_ON)
    papers = None
    for number in range(first, first + count):
        if (folder / f"{number:04d}.npz").exists():
            continue
        if papers is None or number % _SAME_PRINTS == 0:
            rng = np.random.default_rng([number // _SAME_PRINTS, 1])
            papers = grounds.Grounds(grounds.security_prints(rng, _PRINTS), photographs)
        pixels, said = draw_shard(number, papers)
        partial = folder / f"{number:04d}.partial.npz"
        np.savez(partial, pixels=pixels, said=said)
        partial.rename(folder / f"{number:04d}.npz")
        print(f"shard {number}, {first + count - 1 - number} to go", flush=True)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("backgrounds", help="folder that backgrounds.py filled")
    parser.add_argument("folder", help="for the shards; those that are there stay")
    parser.add_argument("count", type=int, help="how many shards of four thousand strips")
    parser.add_argument("first", type=int, help="number of the first one")
    options = parser.parse_args()
    main(options.backgrounds, options.folder, options.count, options.first)
