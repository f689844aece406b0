"""From the picture of a line to what a recogniser makes of it, as the library reads (src/vision/text/CtcReading)."""

import cv2
import numpy as np

from . import published
from .alphabet import ALPHABET, CLASSES, best_path
from .runtime import Session
from .seen import HEIGHT, NARROWEST, alone

_MARKS = {"\u2013": "-", "\u2014": "-", "\u2018": "'", "\u2019": "'", "\u201c": '"', "\u201d": '"'}


def _english(character):
    # The character of ASCII that one of the dictionary is or stands for; None: it is of another script.
    if len(character) != 1:
        return None
    if "\uff01" <= character <= "\uff5e":  # full-width forms
        return chr(ord(character) - 0xff01 + ord("!"))
    return character if " " <= character <= "~" else _MARKS.get(character)


class Reader:
    """Reads lines with the model at path; dictionary: the published one, for a model with the published classes."""

    def __init__(self, path, dictionary=None):
        self.session = Session(path)
        classes = self.session.run(np.zeros((1, 3, HEIGHT, NARROWEST), np.float32))[0].shape[-1]
        characters = ["", *ALPHABET]
        if classes != CLASSES:
            if dictionary is None:
                raise SystemExit(f"{path}: has {classes} classes, so their dictionary is needed")
            characters = published.characters(dictionary)
        if classes != len(characters):
            raise SystemExit(f"{path}: has {classes} classes, {dictionary or 'the alphabet'} {len(characters)}")
        self._classes = [0] + [i for i, c in enumerate(characters) if i and _english(c)]
        self._characters = [""] + [_english(characters[i]) for i in self._classes[1:]]

    def read(self, picture):
        """The text of a line (HEIGHT x W x 3, BGR), and its confidence: the mean of its characters', 0..1."""
        return best_path(self.session.run(alone(picture))[0][0][:, self._classes], self._characters)


def load(path):
    """The picture in a file, BGR."""
    picture = cv2.imread(str(path))
    if picture is None:
        raise SystemExit(f"{path}: no picture that can be read")
    return picture
