"""Errors of the network on drawn lines it never saw: python3 -m zone.measure CHECKPOINT BACKGROUNDS.

Whole lines of 44 characters on held-out photographs and security prints, a row for each way to make reading hard, all
else easy. Prints, in percent, characters misread (edit distance) and lines exact. --eight rounds the weights as exported.
"""

import argparse
from dataclasses import replace

import cv2
import numpy as np
import torch

import export as outline_export

from . import export, glyphs, grounds, strips, texts
from .views import View

_SEED = 90001  # no shard's
_OCR_B = glyphs.TRAINED_ON[:3]
_EASY = View(pitch=14, noise=3, quality=80, focus=0.03)
CASES = (
    [(f"pitch {pitch} px", replace(_EASY, pitch=pitch)) for pitch in (4, 5, 6, 7, 9, 11, 14, 20)]
    + [(f"blur {focus} of a pitch", replace(_EASY, focus=focus)) for focus in (0.06, 0.1, 0.14, 0.18, 0.22)]
    + [(f"motion {motion} of a pitch", replace(_EASY, motion=motion)) for motion in (0.2, 0.3, 0.4, 0.5, 0.6)]
    + [(f"tilt {tilt} degrees", replace(_EASY, tilt=tilt)) for tilt in (0.5, 1.0, 1.5)]
    + [(f"squeezed to {squeeze}", replace(_EASY, squeeze=squeeze)) for squeeze in (0.75, 0.87, 1.15, 1.3)]
    + [(f"ink {ink} of the paper", replace(_EASY, ink=ink)) for ink in (0.5, 0.7, 0.8)]
    + [(f"{name} bar over 8 places", _EASY, (12, 19, tone)) for name, tone in (("black", 15), ("white", 235))]
    + [("noise 15, JPEG 30", replace(_EASY, noise=15, quality=30)), ("offset 0.25 pitch", replace(_EASY, offset=0.25)),
       ("pitch 6, blur 0.12", replace(_EASY, pitch=6, focus=0.12))])


def greedy(scores):
    """The text of the best class of each column (CLASSES x T), repeats and blanks taken out."""
    best = scores.argmax(0)
    kept = [c for c, before in zip(best, [0, *best[:-1]]) if c and c != before]
    return "".join(texts.ALPHABET[c - 1] for c in kept)


def distance(a, b):
    """Characters to change, add or drop to make a of b."""
    row = list(range(len(b) + 1))
    for i, x in enumerate(a, 1):
        before, row[0] = row[0], i
        for j, y in enumerate(b, 1):
            before, row[j] = row[j], min(row[j] + 1, row[j - 1] + 1, before + (x != y))
    return row[-1]


def _case_lines(number, papers, count, fonts, view, bar=None):
    for position in range(count):
        rng = np.random.default_rng([_SEED, number, position])
        lines = texts.zone(rng)
        while len(lines[0]) != 44:
            lines = texts.zone(rng)
        shown = lines[0][:bar[0]] + lines[0][bar[1] + 1:] if bar else lines[0]
        yield shown, strips.line(rng, lines[0], view, papers, fonts, lines[1:], bar)


def read_net(net):
    """A function from a list of strips of one size to their texts."""
    def read(pictures):
        with torch.no_grad():
            return [greedy(s) for s in net(torch.from_numpy(strips.normalised(np.stack(pictures)))).numpy()]
    return read


def table(readers, papers, count):
    """Prints a row a case, for each of readers the share of characters misread and of lines exact, in percent."""
    groups = [(glyphs.HELD_OUT, "held-out fonts", _EASY)] + [(_OCR_B, *case) for case in CASES]
    for number, (fonts, name, *seen) in enumerate(groups):
        wanted, pictures = zip(*_case_lines(number, papers, count, fonts, *seen))
        row = name.ljust(24)
        for read in readers:
            found = [text for i in range(0, count, 20) for text in read(pictures[i:i + 20])]
            wrong = sum(distance(f, w) for f, w in zip(found, wanted)) / sum(map(len, wanted))
            row += f"  {100 * wrong:6.2f} {100 * np.mean([f == w for f, w in zip(found, wanted)]):5.1f}"
        print(row, flush=True)


def windows(readers, papers, count):
    """The same for windows as training draws them; of those without text, how many characters are made up in each."""
    drawn = [strips.window(np.random.default_rng([_SEED, 1000, i]), papers) for i in range(count)]
    for name, some in (("with text", [d for d in drawn if d[1]]), ("without", [d for d in drawn if not d[1]])):
        characters = sum(len(text) for _, text in some)
        row = f"windows {name}, {len(some)}".ljust(24)
        for read in readers:
            found = [text for i in range(0, len(some), 20) for text in read([strip for strip, _ in some[i:i + 20]])]
            wrong = sum(distance(f, text) for f, (_, text) in zip(found, some))
            exact = 100 * np.mean([f == text for f, (_, text) in zip(found, some)])
            row += f"  {100 * wrong / characters if characters else wrong / len(some):6.2f} {exact:5.1f}"
        print(row, flush=True)


def held_out(folder):
    """Grounds that no shard was drawn on; folder: what backgrounds.py filled."""
    prints = grounds.security_prints(np.random.default_rng(_SEED), 20)
    return grounds.Grounds(prints, grounds.photographs(folder, grounds.HELD_OUT))


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("checkpoint", help="last.pt of zone.train")
    parser.add_argument("backgrounds", help="folder that backgrounds.py filled")
    parser.add_argument("--lines", type=int, default=100, help="a case (default: %(default)s)")
    parser.add_argument("--eight", action="store_true", help="weights rounded to 8 bits, as exported")
    options = parser.parse_args()
    cv2.setNumThreads(1)
    torch.set_num_threads(1)
    measured = export.load(options.checkpoint)
    if options.eight:
        measured = outline_export.packed(outline_export.folded(measured))
    ground = held_out(options.backgrounds)
    table([read_net(measured)], ground, options.lines)
    windows([read_net(measured)], ground, 10 * options.lines)
