#!/usr/bin/python3
"""Tests of tools/draw-specimens: check digits, truth, repeatability. Exit 77: package missing."""

import contextlib
import csv
import io
import sys
import tempfile
import unittest
from dataclasses import replace
from datetime import date
from pathlib import Path
from unittest import mock

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools"))
try:
    import cv2
    import numpy as np
    from specimens import command, draw_picture, light, manifest, people, recipes, samples
    from specimens import scene, sheet, zone
    from specimens.document import Document

    sheet.require_fonts()
except ModuleNotFoundError as error:
    if error.name not in ("cv2", "numpy", "PIL"):
        raise
    print(f"skipped: no {error.name}: install python3-pil, python3-numpy and python3-opencv")
    sys.exit(77)
except sheet.MissingPackage as error:
    print(f"skipped: {error}")
    sys.exit(77)

SMALL = (480, 360)
MARKERS = [(255, 0, 0), (0, 255, 0), (0, 0, 255), (255, 0, 255)]  # own tl, tr, br, bl


def read_manifest(folder):
    with open(Path(folder, "manifest.tsv"), encoding="utf-8", newline="") as file:
        return list(csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE))


def eriksson(**changes):
    """The holder in the examples of ICAO Doc 9303-4 and -5."""
    someone = people.invent(np.random.default_rng(1), "UTO")
    return replace(someone, **{**dict(
        surname="ERIKSSON", given="ANNA MARIA", sex="F", number="L898902C3",
        personal_number="ZE184226B",
        born=date(1974, 8, 12), expires=date(2012, 4, 15)), **changes})


class ZoneTest(unittest.TestCase):
    def test_published_passport(self):
        self.assertEqual(zone.td3(eriksson()), ("P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<",
                                                "L898902C36UTO7408122F1204159ZE184226B<<<<<10"))

    def test_published_card(self):
        self.assertEqual(zone.td1(eriksson(number="D23145890")),
                         ("I<UTOD231458907<<<<<<<<<<<<<<<", "7408122F1204159UTO<<<<<<<<<<<6",
                          "ERIKSSON<<ANNA<MARIA<<<<<<<<<<"))

    def test_lines_keep_their_length_and_alphabet(self):
        cases = [eriksson(surname="O'MUSTER-ÉCHANTILLON"), eriksson(surname="M" * 50),
                 eriksson(given="N " * 40), eriksson(number="A1", personal_number="")]
        cases += [people.invent(np.random.default_rng(seed), state)
                  for seed in range(20) for state in ("BGD", "UTO")]
        for person in cases:
            with self.subTest(person.surname):
                for lines, length in ((zone.td3(person), 44), (zone.td1(person), 30)):
                    for line in lines:
                        self.assertRegex(line, f"^[A-Z0-9<]{{{length}}}$")
        self.assertTrue(zone.td3(cases[0])[0].startswith("P<UTOOMUSTER<ECHANTILLON<<ANNA"))


def marked_page(_):
    """A white card with a coloured 7 mm square in every corner."""
    paper = sheet.Sheet(120, 80, (255, 255, 255))
    for colour, (x, y) in zip(MARKERS, [(0, 0), (113, 0), (113, 73), (0, 73)]):
        paper.box(x, y, x + 7, y + 7, fill=colour)
    return Document(paper.array(), "passport-drawn")


def found_corners(pixels):
    """The outermost corner of each marker in pixels: 4 x 2, in the order of MARKERS."""
    corners = []
    for colour in MARKERS:
        away = np.abs(pixels.astype(int) - colour).max(2)
        mask = (away < 110).astype(np.uint8)
        blob = max(cv2.findContours(mask, cv2.RETR_EXTERNAL, cv2.CHAIN_APPROX_NONE)[0],
                   key=cv2.contourArea)
        box = cv2.approxPolyDP(blob, 0.12 * cv2.arcLength(blob, True), True).reshape(-1, 2) + 0.5
        corners.append(box)
    middle = np.mean([box.mean(0) for box in corners], 0)
    return np.array([box[np.argmax(np.linalg.norm(box - middle, axis=1))] for box in corners])


class PictureTest(unittest.TestCase):
    def test_outline_is_where_the_corners_are_drawn(self):
        even = dict(layout="utopia-classic", desk="plain", exposure=1.0, warmth=0.0, falloff=0.0,
                    focus=0.0, noise=0.0, size=(800, 640))
        poses = {"level": dict(), "leaning": dict(roll=9, tilt=22, yaw=-14, share=0.9),
                 "far": dict(share=0.35, offset=(0.8, -0.7), tilt=10)}
        poses.update({f"turn {turn}": dict(turn=turn, roll=-6, tilt=12) for turn in (1, 2, 3)})
        with mock.patch.dict(scene._LAYOUTS, {"utopia-classic": marked_page}):
            for name, pose in poses.items():
                with self.subTest(name):
                    picture = draw_picture(recipes.Recipe(**{**even, **pose}), 5)
                    # A clockwise turn puts the document's own bottom-left corner at the top left.
                    found = np.roll(found_corners(picture.pixels), pose.get("turn", 0), axis=0)
                    self.assertLess(np.abs(found - picture.quad).max(), 1.2)

    def test_scan_fills_the_picture(self):
        picture = draw_picture(recipes.Recipe("utopia-columns", size=SMALL, fills=True), 3)
        self.assertTrue(np.allclose(picture.quad, [[0, 0], [480, 0], [480, 360], [0, 360]],
                                    atol=1e-3))

    def test_equal_seeds_give_equal_bytes(self):
        recipe = recipes.Recipe("utopia-trilingual", "stone", SMALL, things=5, in_hand=True,
                                shadow=0.4, glare=0.4, motion=3)
        first, again, other = (draw_picture(recipe, seed) for seed in (7, 7, 8))
        self.assertEqual(first.file_bytes(), again.file_bytes())
        self.assertFalse(np.array_equal(first.pixels, other.pixels))

    def test_every_layout_on_every_desk_is_drawn_to_size(self):
        layouts = [layout for kind in recipes.KINDS.values() for layout in kind]
        desks = ["wood", "cloth", "plain", "stone"] * 3
        for layout, desk in zip(layouts, desks):
            with self.subTest(layout):
                picture = draw_picture(recipes.Recipe(layout, desk, SMALL), 2)
                self.assertEqual(picture.pixels.shape, (360, 480, 3))
                self.assertEqual(picture.quad is None, layout == "none")
                lengths = [44, 44] if picture.recipe.kind == "passport-drawn" else []
                self.assertEqual([len(line) for line in picture.zone], lengths)


class LightTest(unittest.TestCase):
    def test_noise_has_the_stated_deviation_at_mid_grey(self):
        grey = np.full((200, 200, 3), 0.5, np.float32)
        for noise in (0, 3, 9):
            pixels = light.sensed(grey, np.random.default_rng(1), noise)
            self.assertAlmostEqual(float(pixels.std()), noise, delta=0.05 * noise)

    def test_blurs_spread_light_without_losing_any(self):
        dot = np.zeros((61, 61, 3), np.float32)
        dot[30, 30] = 1
        blurs = {"focus": light.defocus(dot, 2),
                 "motion": light.motion(dot, np.random.default_rng(3), 5)}
        for name, spread in blurs.items():
            with self.subTest(name):
                self.assertLess(spread.max(), 0.4)
                self.assertAlmostEqual(float(spread.sum()), 3, places=3)


class CommandTest(unittest.TestCase):
    def drawn(self, *arguments):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        with contextlib.redirect_stdout(io.StringIO()):
            self.assertEqual(command.main(["--out", folder.name, "--size", "400x320", *arguments]),
                             0)
        return Path(folder.name)

    def test_folder_and_manifest_agree(self):
        folder = self.drawn("--count", "3", "--seed", "4")
        rows = read_manifest(folder)
        self.assertEqual(tuple(rows[0]),
                         ("file", "kind", "quad_tl_tr_br_bl", "mrz1", "mrz2", "licence", "shows"))
        self.assertEqual({row["file"] for row in rows},
                         {path.name for path in folder.glob("*.jpg")})
        for row in rows:
            self.assertEqual(cv2.imread(str(folder / row["file"])).shape, (320, 400, 3))
            self.assertIn(row["kind"], recipes.KINDS)
        shorter = self.drawn("--count", "1", "--seed", "4")
        name = rows[0]["file"]
        self.assertEqual((shorter / name).read_bytes(), (folder / name).read_bytes())

    def test_wrong_usage(self):
        for arguments in ([], ["--out", "x", "--size", "12"], ["--out", "x", "--count", "-1"],
                          ["--out", "x", "--kind", "banknote"], ["--out", "x", "--samples", "y"]):
            with self.subTest(arguments), contextlib.redirect_stderr(io.StringIO()):
                with self.assertRaises(SystemExit) as stopped:
                    command.main(arguments)
                self.assertEqual(stopped.exception.code, 2)

    def test_missing_font_names_its_package(self):
        said = io.StringIO()
        sheet._font_path.cache_clear()
        self.addCleanup(sheet._font_path.cache_clear)
        with mock.patch.object(sheet, "_ROOTS", ()), contextlib.redirect_stderr(said):
            self.assertEqual(command.main(["--out", tempfile.gettempdir()]), 1)
        self.assertRegex(said.getvalue(), r"^draw-specimens: .*fonts-ocr-b\n$")


class SamplesTest(unittest.TestCase):
    def test_folder_holds_what_the_list_says(self):
        folder = ROOT / "samples"
        rows = {row["file"]: row for row in read_manifest(folder)}
        self.assertEqual(list(rows), list(samples.SAMPLES))
        self.assertEqual(set(rows), {path.name for path in folder.glob("*.jpg")})
        self.assertLessEqual(sum(path.stat().st_size for path in folder.glob("*.jpg")), 2_000_000)
        for name in ("bangladesh-on-wood.jpg", "receipt.jpg"):
            seed, recipe = samples.SAMPLES[name]
            self.assertEqual(tuple(rows[name].values()),
                             manifest.row(name, draw_picture(recipe, seed)))


if __name__ == "__main__":
    unittest.main()
