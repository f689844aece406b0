"""Errors and time of recognisers: python3 -m text.measure MODEL... [--dictionary FILE] [--crops FOLDER] ...

Tables with a row a model, in the order given: drawn lines with fonts and words that training never sees, and with those
that it knows, lines of zones apart; with --crops, what text.crops cut out of labelled pictures; processor time. Words
are split by spaces and sought in their order; a model with the published classes needs their dictionary.
"""

import argparse
import re
from difflib import SequenceMatcher

import cv2
import numpy as np

from zone.measure import distance

from . import crops, lines, papers, texts, words
from .reading import Reader
from .seen import HEIGHT

WIDTHS = (160, 320, 480, 960)  # pixels of the lines that are timed
_RUNS = 12
_SEED = 90002  # no shard's
_SURE = 0.5  # confidence below which the library drops a line
_MONTHS = {texts.plain(month[:3]).lower() for row in words.MONTHS for month in row}
_GLUED_DATE = r"\b[0-9]{1,2}([A-Za-z]{3})(?:[0-9]{2,4})?\b"


def is_zone(text):
    """Whether text is of a zone, which has fillers and no space."""
    return text.count("<") > 1 and " " not in text


def grounds(folder, held_out):
    """Papers of a seed of their own, with photographs; folder: what backgrounds.py filled, None: no photographs."""
    if folder is None:
        return None
    prints = papers.security_prints(np.random.default_rng(_SEED), 20)
    return papers.Papers(prints, papers.photographs(folder, papers.HELD_OUT if held_out else papers.TRAINED_ON))


def drawn(count, held_out, ground, seed=_SEED):
    """Lists of the pictures and texts of count lines on ground."""
    made = [lines.line(np.random.default_rng([seed, held_out, i]), held_out, ground) for i in range(count)]
    return [picture for picture, _ in made], [text for _, text in made]


def agreeing(found, wanted):
    """Runs that two sequences have in common, in order: (place in found, place in wanted, length)."""
    return SequenceMatcher(None, found, wanted, autojunk=False).get_matching_blocks()


def tally(found, wanted):
    """Of lists of texts, in percent: characters misread, lines exact, words exact; spaces' precision and recall."""
    def percent(part, whole):
        return 100 * part / whole if whole else float("nan")

    right = [sum(run.size for run in agreeing(f.split(), w.split())) for f, w in zip(found, wanted)]
    spaces = sum(f[run.a:run.a + run.size].count(" ") for f, w in zip(found, wanted) for run in agreeing(f, w))
    return [percent(sum(map(distance, found, wanted)), sum(map(len, wanted))),
            percent(sum(f == w for f, w in zip(found, wanted)), len(wanted)),
            percent(sum(right), sum(len(w.split()) for w in wanted)),
            percent(spaces, sum(f.count(" ") for f in found)), percent(spaces, sum(w.count(" ") for w in wanted))]


class Vocabulary:
    """What documents say, to tell on real lines what was read well and what lost its spaces."""

    _LONGEST = 16

    def __init__(self, phrases):
        """phrases: without accents; those of several words are looked for as a whole, too."""
        self._known = {word for phrase in phrases for word in re.findall("[a-z]{2,}", phrase.lower())}
        self._phrases = {phrase for phrase in map(_words_alone, phrases) if " " in phrase}

    def words(self, text):
        """How many of text's words are known, of at least three letters."""
        return sum(word in self._known for word in re.findall("[a-z]{3,}", text.lower()))

    def phrases(self, text):
        """How many of the known phrases stand in text with their spaces."""
        return sum(f" {phrase} " in f" {_words_alone(text)} " for phrase in self._phrases)

    def glued(self, text):
        """How many of text's words are several known ones without the spaces between, or a date such as 12MAR2020."""
        if "<" in text:  # a zone, which has none
            return 0
        return (sum(map(self._several, re.findall("[a-z]{4,}", text.lower())))
                + sum(word[:3].lower() in _MONTHS for word in re.findall(_GLUED_DATE, text)))

    def _several(self, word):
        # At least two known words, of three letters on average. fewest: words up to each letter.
        fewest = [0] + [np.inf] * len(word)
        for end in range(2, len(word) + 1):
            for begin in range(max(0, end - self._LONGEST), end - 1):
                if word[begin:end] in self._known:
                    fewest[end] = min(fewest[end], fewest[begin] + 1)
        return word not in self._known and 2 <= fewest[-1] <= len(word) / 3


def _words_alone(text):
    return " ".join(re.findall("[a-z]+", text.lower()))


def vocabulary():
    """What the drawn lines are made of."""
    known = [*sum(words.LABELS, []), *words.NAMES, *words.PLACES, *words.COUNTRIES, *words.OTHERS, *words.SENTENCES]
    return Vocabulary([texts.plain(text) for text in known])


def zones_exact(read, zones):
    """Lines of zones that some crop of their picture gives; read: (picture, text) each, zones: {picture: lines}."""
    seen = {(picture, text.replace(" ", "")) for picture, text in read}
    return sum((picture, line) in seen for picture, both in zones.items() for line in both)


def seconds(sessions, width, runs=_RUNS):
    """Least processor time of each for a line of width pixels; the sessions take turns."""
    line = np.random.default_rng(_SEED).uniform(-1, 1, (1, 3, HEIGHT, width)).astype(np.float32)
    taken = np.empty((runs, len(sessions)))
    for run in range(runs):
        for place, session in enumerate(sessions):
            session.run(line)
            taken[run, place] = session.seconds
    return taken.min(0)


def _table(title, names, heads, rows):
    print(f"\n{title}")
    width = max(map(len, names))
    print(" " * width, *(f"{head:>12}" for head in heads))
    for name, row in zip(names, rows):
        print(name.ljust(width), *(f"{value:12}" if isinstance(value, int) else f"{value:12.2f}" for value in row),
              flush=True)


def on_drawn(names, readers, count, folder):
    for held_out, title in ((True, "fonts and words held out"), (False, "fonts that training knows")):
        pictures, wanted = drawn(count, held_out, grounds(folder, held_out))
        found = [[reader.read(picture)[0] for picture in pictures] for reader in readers]
        for zone in (False, True):
            some = [i for i, text in enumerate(wanted) if is_zone(text) == zone]
            rows = [tally([said[i] for i in some], [wanted[i] for i in some])[:2 if zone else 5] for said in found]
            heads = ["misread", "lines", "words", "space prec.", "space recall"][:2 if zone else 5]
            _table(f"Drawn, {title}: {len(some)} {'lines of zones' if zone else 'other lines'}, percent",
                   names, heads, rows)


def on_crops(names, readers, folder):
    cut, zones = crops.read(folder)
    known = vocabulary()
    rows, first = [], None
    for reader in readers:
        said = [text if confidence >= _SURE else "" for text, confidence in (reader.read(crop) for *_, crop in cut)]
        first = first or said
        unchanged = [text == before for text, before in zip(said, first) if text or before]
        rows.append([zones_exact([(picture, text) for (picture, *_), text in zip(cut, said)], zones),
                     *(sum(map(count, said)) for count in (known.words, known.phrases, known.glued)),
                     100 * float(np.mean(unchanged))])
    _table(f"{len(cut)} crops; zone lines exact of {2 * len(zones)}; texts as the first model's in percent",
           names, ["zone lines", "known words", "phrases", "glued words", "unchanged"], rows)


def timed(names, readers):
    taken = np.array([seconds([reader.session for reader in readers], width) for width in WIDTHS]).T
    _table("Milliseconds of a processor for 1000 pixels, one thread, in lines of ... pixels", names, WIDTHS,
           (1e6 * taken / WIDTHS).tolist())
    _table("Times as fast as the first model", names, WIDTHS, (taken[0] / taken).tolist())


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("models", nargs="+", metavar="model", help="recognisers; the first is the one to compare with")
    parser.add_argument("--dictionary", help="of the models that have the published classes")
    parser.add_argument("--crops", help="folder that text.crops filled")
    parser.add_argument("--backgrounds", help="folder that backgrounds.py filled, to draw lines on photographs too")
    parser.add_argument("--lines", type=int, default=600, help="drawn for each table (default: %(default)s)")
    options = parser.parse_args()
    cv2.setNumThreads(1)
    read_by = [Reader(model, options.dictionary) for model in options.models]
    if options.lines:
        on_drawn(options.models, read_by, options.lines, options.backgrounds)
    if options.crops:
        on_crops(options.models, read_by, options.crops)
    timed(options.models, read_by)
