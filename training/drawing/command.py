"""The command tools/draw-specimens."""

import argparse
import sys
from pathlib import Path

import numpy as np

from . import manifest
from .light import jpeg
from .recipes import KINDS, SAMPLES, random_recipe
from .scenes import photographed
from .sheet import MissingPackage, require_fonts

_EXAMPLES = """examples:
  draw-specimens --samples samples                  draw the pictures of samples/ again
  draw-specimens --out /tmp/set --count 200         200 pictures, two thirds of them passports
  draw-specimens --out /tmp/ids --count 20 --kind other-id --size 1280x720 --seed 7

The same options give the same bytes with the same versions of Pillow, NumPy, OpenCV and the fonts;
a longer run starts with the pictures of a shorter one. Every folder gets a manifest.tsv with each
picture's outline and machine-readable lines. All people, numbers and faces are invented.
"""
_MIX = {"passport-drawn": 0.65, "other-id": 0.08, "other-document": 0.17, "other-scene": 0.10}


def _size(text):
    try:
        width, height = (int(part) for part in text.lower().split("x"))
    except ValueError:
        raise argparse.ArgumentTypeError(f"'{text}' is not WIDTHxHEIGHT") from None
    if not (320 <= width <= 8000 and 320 <= height <= 8000):
        raise argparse.ArgumentTypeError("width and height must be 320 to 8000 pixels")
    return width, height


def _natural(text):
    value = int(text) if text.isdigit() else -1
    if value < 0:
        raise argparse.ArgumentTypeError(f"'{text}' is not a number from 0 upwards")
    return value


def _parser():
    parser = argparse.ArgumentParser(
        prog="draw-specimens",
        description="Draws invented passports and other papers and photographs them.",
        epilog=_EXAMPLES, formatter_class=argparse.RawDescriptionHelpFormatter)
    target = parser.add_mutually_exclusive_group(required=True)
    target.add_argument("--out", metavar="FOLDER", help="draw pictures at random into FOLDER")
    target.add_argument("--samples", metavar="FOLDER", help="draw exactly the project's samples into FOLDER")
    parser.add_argument("--count", type=_natural, default=10, help="how many pictures (default: 10)")
    parser.add_argument("--seed", type=_natural, default=1, help="start of the randomness (default: 1)")
    parser.add_argument("--kind", choices=sorted(KINDS), help="only this kind (default: a mixture)")
    parser.add_argument("--size", type=_size, metavar="WxH",
                        help="pixels of every picture (default: 1280x720, 1280x960 or 960x1280)")
    return parser


def _planned(options):
    # Yields file name, seed, recipe.
    if options.samples:
        for name, (seed, recipe) in SAMPLES.items():
            yield name, seed, recipe
        return
    for position in range(options.count):
        rng = np.random.default_rng([options.seed, position])
        kind = options.kind or str(rng.choice(list(_MIX), p=list(_MIX.values())))
        recipe = random_recipe(rng, kind, options.size)
        yield f"{position:05d}-{kind}.jpg", int(rng.integers(2 ** 62)), recipe


def main(arguments=None):
    """Runs the command; returns its exit status: 0 done, 1 not drawn, 2 wrong usage."""
    options = _parser().parse_args(arguments)
    try:
        require_fonts()
        folder = Path(options.samples or options.out)
        folder.mkdir(parents=True, exist_ok=True)
        rows = []
        for name, seed, recipe in _planned(options):
            scene = photographed(recipe, seed)
            (folder / name).write_bytes(jpeg(scene.pixels, recipe.quality))
            rows.append(manifest.full_row(name, scene, recipe))
        manifest.write(folder, rows)
    except MissingPackage as error:
        print(f"draw-specimens: {error}", file=sys.stderr)
        return 1
    except OSError as error:
        print(f"draw-specimens: {error.filename}: {error.strerror}", file=sys.stderr)
        return 1
    print(f"{len(rows)} pictures and manifest.tsv in {folder}")
    return 0
