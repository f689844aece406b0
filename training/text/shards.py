"""Draws lines into files that the trainer reads: python3 -m text.shards BACKGROUNDS FOLDER COUNT FIRST.

A line's seed is its shard's number and its place there, so any shard can be made again alone, in any order.
"""

import argparse
from pathlib import Path

import cv2
import numpy as np

from . import lines, papers

LINES = 500  # a shard
_PRINTS = 30  # sheets of security print
_SAME_PRINTS = 10  # shards that share them


def draw(number, grounds, count=LINES, held_out=False):
    """Lines of a shard: a list of (picture, text), see lines.line."""
    return [lines.line(np.random.default_rng([number, position]), held_out, grounds) for position in range(count)]


def write(path, drawn):
    """Keeps drawn lines in a file: their pictures side by side (48 x W x 3), each one's width, each one's text."""
    pictures, said = zip(*drawn)
    widths = np.int32([picture.shape[1] for picture in pictures])
    np.savez(path, pixels=np.concatenate(pictures, 1), widths=widths, texts=np.array(said))


def read(path):
    """The lines of a file: a list of (picture, text)."""
    with np.load(path) as kept:
        pixels, ends = kept["pixels"], np.cumsum(kept["widths"])
        return [(pixels[:, start:end], str(said)) for start, end, said in zip([0, *ends[:-1]], ends, kept["texts"])]


def main(source, folder, count, first, held_out):
    cv2.setNumThreads(1)
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    photographs = papers.photographs(source, papers.HELD_OUT if held_out else papers.TRAINED_ON)
    grounds = None
    for number in range(first, first + count):
        if (folder / f"{number:04d}.npz").exists():
            continue
        if grounds is None or number % _SAME_PRINTS == 0:
            rng = np.random.default_rng([number // _SAME_PRINTS, 1])
            grounds = papers.Papers(papers.security_prints(rng, _PRINTS), photographs)
        partial = folder / f"{number:04d}.partial.npz"
        write(partial, draw(number, grounds, held_out=held_out))
        partial.rename(folder / f"{number:04d}.npz")
        print(f"shard {number}, {first + count - 1 - number} to go", flush=True)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("backgrounds", help="folder that backgrounds.py filled")
    parser.add_argument("folder", help="for the shards; those that are there stay")
    parser.add_argument("count", type=int, help="how many shards of five hundred lines")
    parser.add_argument("first", type=int, help="number of the first one")
    parser.add_argument("--held-out", action="store_true", help="what is never trained on")
    options = parser.parse_args()
    main(options.backgrounds, options.folder, options.count, options.first, options.held_out)
