"""Drawn examples in numbered files. Each is made from its number alone, so any can be made again, in any order."""

import argparse
from functools import lru_cache
from pathlib import Path

import cv2
import numpy as np

import folders

_TOGETHER = 10  # files that share what is costly to draw


def fill(folder, count, first, draw, shared):
    """Writes count files into folder, from number first on; those that are there stay.

    draw(number, of): arrays by name; of: what shared(number // _TOGETHER) gives, made once for as many files.
    """
    cv2.setNumThreads(1)
    folder = folders.made(folder)
    shared = lru_cache(maxsize=1)(shared)
    for number in range(first, first + count):
        done = folder / f"{number:04d}.npz"
        if done.exists():
            continue
        partial = folder / f"{number:04d}.partial.npz"
        np.savez(partial, **draw(number, shared(number // _TOGETHER)))
        partial.rename(done)
        print(f"shard {number}, {first + count - 1 - number} to go", flush=True)


def listed(folder):
    """The files in folder that are whole, sorted; never none."""
    paths = sorted(path for path in Path(folder).glob("*.npz") if "partial" not in path.name)
    if not paths:
        raise SystemExit(f"no shards in {folder}")
    return paths


def parser(description, holds):
    """Of a command that fills a folder; holds: what one file does."""
    made = argparse.ArgumentParser(description=description)
    made.add_argument("backgrounds", help="folder that backgrounds.py filled")
    made.add_argument("folder", help="for the shards; those that are there stay")
    made.add_argument("count", type=int, help=f"how many shards of {holds}")
    made.add_argument("first", type=int, help="number of the first one")
    return made
