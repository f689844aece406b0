#!/usr/bin/python3
"""Drawn documents: check digits, truth, repeatability, the command. Exit status 77: a package is missing."""

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
sys.path.insert(0, str(ROOT / "training"))
try:
    import cv2
    import numpy as np
    from drawing import camera, command, light, manifest, people, recipes, scenes, sheet, zone

    sheet.require_fonts()
except ModuleNotFoundError as error:
    if error.name not in ("cv2", "numpy", "PIL"):
        raise
    print(f"skipped: no {error.name}: install python3-pil, python3-numpy and python3-opencv")
    sys.exit(77)
except sheet.MissingPackage as error:
    print(f"skipped: {error}")
    sys.exit(77)

MARKERS = [(255, 0, 0), (0, 255, 0), (0, 0, 255), (255, 0, 255)]  # own tl, tr, br, bl


def manifest_of(folder):
    with open(Path(folder, "manifest.tsv"), encoding="utf-8", newline="") as file:
        return list(csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE))


def eriksson(**changes):
    """The holder in the examples of ICAO Doc 9303-4 and -5."""
    return replace(people.invent(np.random.default_rng(1), "UTO"), **{**dict(
        surname="ERIKSSON", given="ANNA MARIA", sex="F", number="L898902C3", personal_number="ZE184226B",
        born=date(1974, 8, 12), expires=date(2012, 4, 15)), **changes})


class ZoneTest(unittest.TestCase):
    def test_published_examples(self):
        self.assertEqual(zone.td3(eriksson()), ("P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<",
                                                "L898902C36UTO7408122F1204159ZE184226B<<<<<10"))
        self.assertEqual(zone.td1(eriksson(number="D23145890")),
                         ("I<UTOD231458907<<<<<<<<<<<<<<<", "7408122F1204159UTO<<<<<<<<<<<6",
                          "ERIKSSON<<ANNA<MARIA<<<<<<<<<<"))

    def test_lines_keep_their_length_and_alphabet(self):
        cases = [eriksson(surname="O'MUSTER-ÉCHANTILLON"), eriksson(surname="M" * 50),
                 eriksson(given="N " * 40), eriksson(number="A1", personal_number="")]
        for person in cases:
            for lines, length in ((zone.td3(person), 44), (zone.td1(person), 30)):
                for line in lines:
                    self.assertRegex(line, f"^[A-Z0-9<]{{{length}}}$")
        self.assertTrue(zone.td3(cases[0])[0].startswith("P<UTOOMUSTER<ECHANTILLON<<ANNA"))


def marked_page(_):
    """A white card with a coloured 7 mm square in every corner."""
    paper = sheet.Sheet(120, 80, (255, 255, 255))
    for colour, (x, y) in zip(MARKERS, [(0, 0), (113, 0), (113, 73), (0, 73)]):
        paper.box(x, y, x + 7, y + 7, fill=colour)
    return sheet.Document(paper.array(), "passport-drawn")


def found_corners(pixels):
    """The outermost corner of each marker in pixels: 4 x 2, in the order of MARKERS."""
    corners = []
    for colour in MARKERS:
        mask = (np.abs(pixels.astype(int) - colour).max(2) < 110).astype(np.uint8)
        blob = max(cv2.findContours(mask, cv2.RETR_EXTERNAL, cv2.CHAIN_APPROX_NONE)[0], key=cv2.contourArea)
        corners.append(cv2.approxPolyDP(blob, 0.12 * cv2.arcLength(blob, True), True).reshape(-1, 2) + 0.5)
    middle = np.mean([box.mean(0) for box in corners], 0)
    return np.array([box[np.argmax(np.linalg.norm(box - middle, axis=1))] for box in corners])


class SceneTest(unittest.TestCase):
    def test_outline_of_a_photograph_is_where_the_corners_are(self):
        even = dict(layout="marked", desk="plain", warmth=0.0, falloff=0.0, focus=0.0, noise=0.0, size=(800, 640))
        poses = {"level": dict(), "leaning": dict(roll=9, tilt=22, yaw=-14, share=0.9),
                 "far": dict(share=0.35, offset=(0.8, -0.7), tilt=10), "scan": dict(fills=True)}
        poses.update({f"turn {turn}": dict(turn=turn, roll=-6, tilt=12) for turn in (1, 2, 3)})
        with mock.patch.dict(recipes.LAYOUTS, marked=marked_page):
            for name, pose in poses.items():
                with self.subTest(name):
                    scene = scenes.photographed(recipes.Recipe(**{**even, **pose}), 5)
                    # A clockwise turn puts the document's own bottom-left corner at the top left.
                    found = np.roll(found_corners(scene.pixels), pose.get("turn", 0), axis=0)
                    self.assertLess(np.abs(found - scene.quads[0]).max(), 1.2)

    def test_outline_of_a_composed_scene_is_where_the_corners_are(self):
        flats = scenes.Flats([marked_page(None).flat(600)])
        grey = [np.full((300, 400, 3), 90, np.uint8)]
        seen = 0
        with mock.patch.object(light, "spoilt", lambda rng, picture, quads: picture.astype(np.uint8)):
            for seed in range(30):
                scene = scenes.composed(np.random.default_rng(seed), flats, grey, (640, 480), 4 / 3, 1)
                quad = scene.quads[0]
                if quad.min() < 0 or (quad.max(0) > (640, 480)).any():
                    continue  # cut by the frame
                with contextlib.suppress(ValueError):  # a marker is hidden
                    found = camera.clockwise(found_corners(scene.pixels))
                    self.assertLess(np.median(np.abs(found - quad)), 1.5, seed)
                    seen += 1
        self.assertGreater(seen, 15)

    def test_what_a_kind_of_scene_adds_is_seen_and_leaves_the_outline(self):
        flats, grey = scenes.Flats([marked_page(None).flat(400)]), [np.full((300, 400, 3), 90, np.uint8)]
        blue = scenes.Flats([np.full((300, 400, 4), (20, 60, 200, 255), np.uint8)])
        for seed, kind in ((seed, kind) for seed in range(8) for kind in ("print", "covered", "cut", "night")):
            def drawn(below):
                return scenes.composed(np.random.default_rng(seed), flats, grey, (256, 256), 1, 1, kind, below)

            bare_light = mock.patch.object(light, "spoilt", lambda _, picture, __: picture.astype(np.uint8))
            with self.subTest(kind, seed=seed), bare_light:
                scene = drawn(blue if kind == "print" else None)
                with mock.patch.object(scenes.hands, "grip"), mock.patch.object(scenes.hands, "fingers"):
                    bare = drawn(None)
                quad = scene.quads[0]
                np.testing.assert_array_equal(quad, bare.quads[0])
                page = cv2.fillConvexPoly(np.zeros((256, 256), np.uint8), quad.astype(np.int32), 1) > 0
                added = np.abs(scene.pixels.astype(int) - bare.pixels).max(2) > 12
                outside = (quad < 0).any(0).sum() + (quad > 256).any(0).sum()
                self.assertTrue({"print": (added & ~page).any(), "covered": 0 < (added & page).sum() < 0.5 * page.sum(),
                                 "cut": 1 <= outside <= 3, "night": scene.pixels.mean() < light.DARK}[kind])

    def test_document_is_drawn_where_the_pictures_origin_lies_beyond_its_horizon(self):
        for grid in camera.document_grid(np.array([[179, 236], [157, 208], [228, 195], [254, 214]]), (256, 256)):
            self.assertAlmostEqual(float(grid[213, 204]), 0.5, delta=0.2)

    def test_noise_has_the_stated_deviation_at_mid_grey(self):
        grey = np.full((200, 200, 3), 0.5, np.float32)
        for noise in (0, 3, 9):
            pixels = light.sensed(grey, np.random.default_rng(1), noise)
            self.assertAlmostEqual(float(pixels.std()), noise, delta=0.05 * noise)


class CommandTest(unittest.TestCase):
    def drawn(self, *arguments):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        with contextlib.redirect_stdout(io.StringIO()):
            self.assertEqual(command.main(["--out", folder.name, "--size", "400x320", *arguments]), 0)
        return Path(folder.name)

    def test_folder_and_manifest_agree(self):
        folder = self.drawn("--count", "3", "--seed", "4")
        rows = manifest_of(folder)
        self.assertEqual({row["file"] for row in rows}, {path.name for path in folder.glob("*.jpg")})
        for row in rows:
            self.assertEqual(cv2.imread(str(folder / row["file"])).shape, (320, 400, 3))
            self.assertIn(row["kind"], row["file"])
        # The pictures of a shorter run are those that a longer one starts with, to the byte.
        for path in self.drawn("--count", "2", "--seed", "4").glob("*.jpg"):
            self.assertEqual(path.read_bytes(), (folder / path.name).read_bytes())

    def test_wrong_usage(self):
        for arguments in ([], ["--out", "x", "--size", "12"], ["--out", "x", "--count", "-1"],
                          ["--out", "x", "--samples", "y"]):
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

    def test_samples_folder_holds_what_the_recipes_say(self):
        folder = ROOT / "samples"
        rows = {row["file"]: row for row in manifest_of(folder)}
        self.assertEqual(list(rows), list(recipes.SAMPLES))
        self.assertEqual(set(rows), {path.name for path in folder.glob("*.jpg")})
        for name in ("bangladesh-on-wood.jpg", "receipt.jpg"):
            seed, recipe = recipes.SAMPLES[name]
            scene = scenes.photographed(recipe, seed)
            self.assertEqual(tuple(rows[name].values()), manifest.full_row(name, scene, recipe))


if __name__ == "__main__":
    unittest.main()
