#!/usr/bin/python3
"""The binding for Python against the built library, KESTRELID_LIBRARY."""

import concurrent.futures
import datetime
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

from PIL import Image

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "examples" / "python"))

import kestrelid  # noqa: E402

LIBRARY = os.environ["KESTRELID_LIBRARY"]
PASSPORT = ROOT / "samples" / "bangladesh-on-wood.jpg"
RECEIPT = ROOT / "samples" / "receipt.jpg"


def judge(*arguments):
    command = [ROOT / "examples" / "python" / "judge.py", *arguments]
    return subprocess.run(command, capture_output=True, text=True, timeout=100, check=False)


class Judging(unittest.TestCase):
    def test_file_its_bytes_and_its_pixels_give_one_verdict(self):
        with kestrelid.Detector(LIBRARY) as detector:
            verdict = detector.judge_file(PASSPORT)
            self.assertTrue(verdict.is_passport)
            self.assertGreaterEqual(verdict.confidence, 0.5)
            self.assertEqual(len(verdict.reasons), 3)
            self.assertIn("BANGLADESH", verdict.recognized_text)
            self.assertEqual(detector.judge_bytes(PASSPORT.read_bytes()), verdict)
            # As a camera gives them: blue first, rows with a gap behind them.
            with Image.open(PASSPORT) as picture:
                width, height = picture.size
                rows = picture.convert("RGBA").tobytes("raw", "BGRA", width * 4 + 12)
            self.assertEqual(detector.judge_pixels(rows, width, height, "BGRA", width * 4 + 12), verdict)

    def test_examining_gives_the_same_verdict_and_the_zone(self):
        with kestrelid.Detector(LIBRARY) as owner, kestrelid.Detector(share=owner) as detector:
            owner.close()  # zones are shared too
            examination = detector.examine_file(PASSPORT)
            self.assertEqual(examination.verdict, detector.judge_file(PASSPORT))
            later = detector.examine_bytes(PASSPORT.read_bytes(), as_of=datetime.date(2020, 1, 1))
        (zone,) = examination.zones
        self.assertEqual((zone.format, zone.is_strict, zone.problems), ("TD3", True, ()))
        self.assertIn("\t".join(zone.lines), (ROOT / "samples" / "manifest.tsv").read_text())
        self.assertTrue(0.1 < zone.corners[0][0] < zone.corners[1][0] < 1 and 0.5 < zone.corners[0][1] < zone.corners[3][1] < 1)
        self.assertEqual([z.field("dateOfBirth").year for z in (zone, *later.zones)], [None, 1982])
        self.assertEqual(zone.field("nationality").state, "Bangladesh")

    def test_zones_of_text(self):
        text = "P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<\nL898902C36UTO7409122F1204159ZE184226B<<<<<10"
        (wrong,) = kestrelid.parse_zones(text, library=LIBRARY)
        self.assertEqual((wrong.is_strict, wrong.corners, wrong.problems[0]),
                         (False, (), ("checkDigitFailed", "line 2, column 20, date of birth: the check digit does not match")))
        birth = wrong.field("dateOfBirth")
        self.assertEqual((birth.check_digit, birth.year, birth.two_digit_year, birth.month), ("failed", None, 74, 9))
        self.assertEqual(kestrelid.parse_zones(b"\xff\0no zone", library=LIBRARY), ())

    def test_command(self):
        result = judge("--library", LIBRARY, PASSPORT, "gone.jpg", RECEIPT)
        self.assertEqual(result.returncode, 1)
        self.assertRegex(result.stdout, rf"\A{PASSPORT}: passport \(.*\n{RECEIPT}: not a passport \(.*\n\Z")
        self.assertEqual(result.stderr, "judge.py: gone.jpg: cannot be opened: No such file or directory\n")
        result = judge("--library", LIBRARY, "--zone", PASSPORT, RECEIPT)
        self.assertEqual(result.stdout.splitlines()[1::2], [f"{PASSPORT}: zone TD3, strict", f"{RECEIPT}: no machine-readable zone"])
        self.assertEqual(judge("--library", "/nowhere/lib.so", PASSPORT).returncode, 2)
        self.assertEqual(judge().returncode, 2)


class WithoutModels(unittest.TestCase):
    def setUp(self):
        self.lines = []
        self.detector = kestrelid.Detector(LIBRARY, resources="/nowhere", outlines=kestrelid.CLASSICAL,
                                           console=self.lines.append)
        self.addCleanup(self.detector.close)

    def test_pixels_and_console(self):
        for mode, size in (("BGRA", 4), ("RGB", 3), ("L", 1)):
            with self.subTest(mode):
                verdict = self.detector.judge_pixels(bytes(64 * 48 * size), 64, 48, mode)
                self.assertFalse(verdict.is_passport)
        self.assertEqual(len(self.lines), 3)
        self.assertIn("/nowhere", self.lines[0])

    def test_failures_are_exceptions(self):
        with tempfile.NamedTemporaryFile(suffix=".jpg") as empty:
            with self.assertRaisesRegex(kestrelid.Error, f"^{empty.name}: the file is empty$"):
                self.detector.judge_file(empty.name)
        with self.assertRaisesRegex(kestrelid.Error, "size does not hold all rows"):
            self.detector.judge_pixels(b"abc", 2, 2, "L")
        self.detector.close()
        with self.assertRaisesRegex(ValueError, "closed"):
            self.detector.judge_bytes(b"")
        with self.assertRaisesRegex(ValueError, "closed"):
            kestrelid.Detector(share=self.detector)

    def test_threads_and_sharing(self):
        shared = kestrelid.Detector(share=self.detector, effort=kestrelid.VERDICT_ONLY)
        self.detector.close()
        with concurrent.futures.ThreadPoolExecutor(6) as pool:
            verdicts = list(pool.map(lambda _: shared.judge_pixels(bytes(64 * 48), 64, 48, "L"), range(6)))
        shared.close()
        self.assertEqual((len(verdicts), len(set(verdicts))), (6, 1))


if __name__ == "__main__":
    unittest.main()
