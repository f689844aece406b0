"""Rewrites the published text networks into fast equal ones: python3 -m text.rewrite RESOURCES FOLDER.

Writes recogniser.onnx with the published classes, recogniser-96.onnx with those of alphabet.py, detector.onnx and
direction.onnx, with weights in 16 bits; --floats keeps them in 32. Prints for each what it differs by from the
published one on drawn pictures: the largest difference of a probability, decisions that change (best classes of
columns, pixels that are text, directions), and its share of the published one's processor time.
"""

import argparse
from pathlib import Path

import cv2
import numpy as np

import folders

from . import graph, published
from .alphabet import ALPHABET
from .runtime import Session
from .seen import HEIGHT

_SEED = 7
_RUNS = 3  # the fastest counts
_TEXT = 0.3  # least probability of a pixel that is text, as the library takes it


def drawn(rng, count, height, width):
    """Pictures (count x 3 x height x width, -1..1) of words on uneven paper, a line every 48 pixels."""
    pictures = []
    for _ in range(count):
        paper = cv2.resize(rng.uniform(140, 255, (3, 5, 3)).astype(np.float32), (width, height))
        for bottom in range(35, height, 48):
            words = "".join(rng.choice(list(ALPHABET), width // 18))
            font, scale = int(rng.integers(0, 5)), float(rng.uniform(0.7, 1.1))
            cv2.putText(paper, words, (4, bottom), font, scale, rng.uniform(0, 90, 3), 2, cv2.LINE_AA)
        pictures.append((paper + rng.normal(0, 4, paper.shape)).clip(0, 255) / 127.5 - 1)
    return np.stack(pictures).transpose(0, 3, 1, 2).astype(np.float32)


def _best(probabilities):
    return probabilities.argmax(-1)


def _text(probabilities):
    return probabilities > _TEXT


class _Rewriting:
    def __init__(self, resources, folder, floats):
        self._resources, self._folder, self._floats = Path(resources), folder, floats

    def write(self, name, model, source, shapes, decide, wanted=lambda outputs: outputs):
        """wanted: what the outputs of the source's network are to be compared as."""
        path = self._folder / name
        graph.save(model if self._floats else graph.halved(model), path)
        before, after = (Session(file) for file in (self._resources / source, path))
        rng = np.random.default_rng(_SEED)
        apart, changed, decided, seconds = 0.0, 0, 0, np.zeros(2)
        for shape in shapes:
            x, times = drawn(rng, *shape), []
            for _ in range(_RUNS):
                (old,), (new,) = before.run(x), after.run(x)
                times.append((before.seconds, after.seconds))
            old = wanted(old)
            apart = max(apart, float(np.abs(old - new).max()))
            changed += int((decide(old) != decide(new)).sum())
            decided += decide(old).size
            seconds += np.min(times, 0)
        print(f"{name:18} {path.stat().st_size / 1e6:6.2f} MB  differs by {apart:.1e}, {changed} of {decided} "
              f"decisions, {seconds[1] / seconds[0]:.2f} of the time", flush=True)


def main(resources, folder, floats=False):
    cv2.setNumThreads(1)
    source, rewriting = Path(resources), _Rewriting(resources, folders.made(folder), floats)
    weights, blocks = published.recogniser(source / published.RECOGNISER)
    classes = published.characters(source / published.DICTIONARY)
    lines = [(count, HEIGHT, width) for count, width in ((1, 64), (1, 200), (3, 320), (2, 488), (1, 1200))]

    def reduced(probabilities):
        kept = probabilities[..., published.kept(classes)]
        return kept / kept.sum(-1, keepdims=True)

    rewriting.write("recogniser.onnx", graph.recogniser(weights, blocks), published.RECOGNISER, lines, _best)
    rewriting.write("recogniser-96.onnx", graph.recogniser(published.reduced(weights, classes), blocks),
                    published.RECOGNISER, lines, _best, reduced)
    rewriting.write("detector.onnx", graph.simplified(source / published.DETECTOR), published.DETECTOR,
                    [(1, 512, 736), (1, 736, 480), (1, 256, 320)], _text)
    rewriting.write("direction.onnx", graph.simplified(source / published.DIRECTION), published.DIRECTION,
                    [(1, 48, 192), (20, 48, 192)], _best)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("resources", help="folder that text.fetch filled")
    parser.add_argument("folder", help="for the rewritten ones")
    parser.add_argument("--floats", action="store_true", help="weights in 32 bits")
    options = parser.parse_args()
    main(options.resources, options.folder, options.floats)
