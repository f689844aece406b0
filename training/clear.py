#!/usr/bin/python3
"""Draws documents that are photographed well, onto which faults are drawn later: clear.py FOLDER COUNT [SEED].

They are sharp, evenly lit and free of hands, glare and shadows; every tenth picture is a desk without one, lit as it comes.
"""

import sys
from dataclasses import replace
from pathlib import Path

import numpy as np

from drawing import light, manifest, recipes, scenes

_KINDS = ("passport-drawn", "passport-drawn", "passport-drawn", "other-id", "other-zone", "other-document")


def _clear(rng, number):
    if number % 10 == 9:
        return recipes.random_recipe(rng, "other-scene", (1280, 720))
    recipe = recipes.random_recipe(rng, _KINDS[number % len(_KINDS)], (1920, 1440))
    return replace(recipe, share=0.88, offset=(0.0, 0.0), tilt=recipe.tilt / 2, yaw=recipe.yaw / 2, fills=False, in_hand=False,
                   exposure=rng.uniform(0.9, 1.05), warmth=recipe.warmth / 2, falloff=0.15, shadow=0.0, glare=0.0, focus=0.4,
                   motion=0.0, noise=1.5, quality=92)


def main(folder, count, seed=1):
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    rows = []
    for number in range(int(count)):
        rng = np.random.default_rng([int(seed), number])
        recipe = _clear(rng, number)
        scene = scenes.photographed(recipe, int(rng.integers(2 ** 62)))
        name = f"{number:04d}.jpg"
        (folder / name).write_bytes(light.jpeg(scene.pixels, recipe.quality))
        rows.append(manifest.full_row(name, scene, recipe))
    manifest.write(folder, rows)


if __name__ == "__main__":
    if not 3 <= len(sys.argv) <= 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
