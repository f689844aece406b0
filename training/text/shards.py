"""Draws lines into files that the trainer reads: python3 -m text.shards BACKGROUNDS FOLDER COUNT FIRST."""

import numpy as np

import sharding

from . import lines, papers

LINES = 500  # a shard
_PRINTS = 30  # sheets of security print


def draw(number, grounds, count=LINES, held_out=False):
    """Lines of a shard: a list of (picture, text), see lines.line."""
    return [lines.line(np.random.default_rng([number, position]), held_out, grounds) for position in range(count)]


def packed(drawn):
    """Drawn lines as arrays: their pictures side by side (48 x W x 3), each one's width, each one's text."""
    pictures, said = zip(*drawn)
    widths = np.int32([picture.shape[1] for picture in pictures])
    return {"pixels": np.concatenate(pictures, 1), "widths": widths, "texts": np.array(said)}


def read(path):
    """The lines of a file: a list of (picture, text)."""
    with np.load(path) as kept:
        pixels, ends = kept["pixels"], np.cumsum(kept["widths"])
        return [(pixels[:, start:end], str(said)) for start, end, said in zip([0, *ends[:-1]], ends, kept["texts"])]


def main(source, folder, count, first):
    photographs = papers.photographs(source, papers.TRAINED_ON)

    def shared(ten):
        return papers.Papers(papers.security_prints(np.random.default_rng([ten, 1]), _PRINTS), photographs)

    sharding.fill(folder, count, first, lambda number, grounds: packed(draw(number, grounds)), shared)


if __name__ == "__main__":
    options = sharding.parser(__doc__, "five hundred lines").parse_args()
    main(options.backgrounds, options.folder, options.count, options.first)
