#!/usr/bin/python3
"""Drawn lines of documents: what they say and that the network can learn it. Exit status 77: a package is missing."""

import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "training"))
try:
    import numpy as np
    from drawing.sheet import MissingPackage
    from text import fonts, lines, shards, texts
    from text.alphabet import ALPHABET

    for row in fonts.TRAINED_ON + fonts.HELD_OUT + fonts.ZONE + fonts.ZONE_HELD_OUT:
        fonts.font_path(*row[:2])
except ImportError as missing:
    print(f"skipped: {missing}; install python3-pil, python3-numpy and python3-opencv")
    sys.exit(77)
except MissingPackage as missing:
    print(f"skipped: {missing}")
    sys.exit(77)


class LinesTest(unittest.TestCase):
    def test_every_line_can_be_learned_and_keeps_to_its_words(self):
        for held_out in (False, True):
            drawn = shards.draw(1, None, 300, held_out)
            for picture, text in drawn:
                self.assertLessEqual(set(text), set(ALPHABET), text)
                self.assertEqual(text, " ".join(text.split()))
                self.assertEqual((picture.shape[0], picture.shape[2], picture.dtype), (48, 3, np.uint8))
                self.assertTrue(lines.fits(picture.shape[1], text), text)
                self.assertTrue(held_out or not texts.held_words(text), text)
            self.assertEqual(any(texts.held_words(text) for _, text in drawn), held_out)

    def test_lines_too_narrow_for_their_text_are_drawn_again(self):
        for width, text, enough in ((64, "1234567", True), (64, "12345678", False), (64, "1123456", False)):
            self.assertEqual(lines.fits(width, text), enough, text)
        with mock.patch.object(lines, "fits", lambda width, _: width > 250):
            self.assertTrue(all(picture.shape[1] > 250 for picture, text in shards.draw(2, None, 40) if text))

    def test_a_label_is_plain_where_the_print_has_accents(self):
        for drawn, text in (("Prénoms", "Prenoms"), ("DOĞUM YERİ/Płeć", "DOGUM YERI/Plec"),
                            ("Größe\tN° 5", "Grosse No 5"), ("Đặng", "Dang")):
            self.assertEqual(texts.Phrase(drawn).text, text)

    def test_lines_of_zones_have_no_spaces(self):
        zones = [texts.zone_line(np.random.default_rng(seed)) for seed in range(400)]
        self.assertLessEqual(set("".join(zones)), set("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789<"))
        self.assertLessEqual({30, 36, 44}, set(map(len, zones)))

    def test_a_shard_is_the_same_again_and_as_it_was_kept(self):
        drawn = shards.draw(3, None, 5)
        with tempfile.TemporaryDirectory() as folder:
            np.savez(Path(folder, "0003.npz"), **shards.packed(drawn))
            for (picture, text), *others in zip(drawn, shards.draw(3, None, 5), shards.read(Path(folder, "0003.npz"))):
                for same_picture, same_text in others:
                    self.assertTrue(text == same_text and np.array_equal(picture, same_picture), text)


if __name__ == "__main__":
    unittest.main()
