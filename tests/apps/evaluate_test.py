"""The evaluation over programs that answer what the test has them answer."""

import base64
import importlib.util
import io
import json
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from PIL import Image

FOLDER = Path(__file__).resolve().parents[2] / "apps/evaluate"
sys.path.insert(0, str(FOLDER))
import figures
import labels

# Prints a row for each file after "--" from the answers of the effort before it; the models are loaded for the first.
STAND_IN = """#!/usr/bin/python3
import json, sys
split = sys.argv.index("--")
for number, path in enumerate(sys.argv[split + 1:]):
    row = {"confidence": 0.5} | json.load(open(__file__ + ".json"))[sys.argv[split - 1]][path.rsplit("/", 1)[1]]
    print(json.dumps(row | ({} if number else {"milliseconds": 9999})))
"""
# The corners are the left half of what is known, the box is all of it.
OUTLINE = {"corners": [[0.2, 0.2], [0.5, 0.2], [0.5, 0.8], [0.2, 0.8]], "box": [0.2, 0.2, 0.6, 0.6]}
COMPLETE = {
    "hit.jpg": {"isPassport": True, "milliseconds": 10, "reasons": ["A (distance 0); B (distance 1)"], "outline": OUTLINE},
    "miss.jpg": {"isPassport": False, "milliseconds": 20, "outline": None},
    "false.jpg": {"isPassport": True, "milliseconds": 30, "reasons": ["<b>"], "outline": OUTLINE},
    "bad.jpg": {"error": "truncated"},
}
MANIFEST = """# comment
note\tkind\tfile\tquad_tl_tr_br_bl
x\tpassport-scan\thit.jpg\t10,20;4e1,20;40,80;10,80

x\tpassport-photo\tmiss.jpg\t10,20;40,20;40,80;10,80
x\tother-id\tfalse.jpg\t-
x\tother-id\tbad.jpg
"""


class Evaluate(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.write("m.tsv", MANIFEST)
        for name in COMPLETE:  # 50 x 100 once it is upright
            exif = Image.Exif()
            exif[0x0112] = 6
            Image.new("L", (100, 50)).save(self.folder / name, exif=exif)

    def write(self, name, text):
        (self.folder / name).write_text(text)
        (self.folder / name).chmod(0o755)
        return str(self.folder / name)

    def run_on(self, program, *options):
        command = [sys.executable, "-B", FOLDER / "evaluate.py", self.folder / "m.tsv", "--kestrelid", program, *options]
        return subprocess.run(command, capture_output=True, text=True, timeout=60)

    def test_counts_delays_overlaps_and_disagreements(self):
        changed = COMPLETE | {"miss.jpg": COMPLETE["miss.jpg"] | {"confidence": 0.4}}
        program = self.write("judge", STAND_IN)
        self.write("judge.json", json.dumps({"complete": COMPLETE, "verdict": changed}))
        output = self.folder / "result.json"
        result = self.run_on(program, "--json", output, "--verbose", "--outlines", "--program", f"{program} complete --")
        self.assertEqual((result.returncode, result.stderr), (1, "evaluate: bad.jpg: truncated\n"))
        self.assertRegex(result.stdout, r"kestrelid +complete +1/2 +1/1 +0/1 +1/1 +1/1 +1 +20 +30 ")
        self.assertRegex(result.stdout, r"not a passport +MISS .* miss.jpg\n.* passport +FALSE HIT .* false.jpg\n.* FAILED ")
        self.assertIn("Outlines: overlap median 0.000, 10th percentile 0.000, at least 0.8 in 1/2.\n"
                      "Efforts DISAGREE:\n  miss.jpg\n", result.stdout)
        written = json.loads(output.read_text())
        complete, verdict, other = written["combinations"]
        self.assertEqual(complete["others"], {"other-id": {"calledPassport": 1, "judged": 1}})
        self.assertGreater(complete["peakMemoryMiB"], 4)
        hit = complete["pictures"][0]
        self.assertAlmostEqual(hit["overlap"], 1)
        self.assertAlmostEqual(hit["cornersOverlap"], 0.5)
        self.assertEqual(hit["matched"], 2)
        self.assertEqual(written["disagreements"], ["miss.jpg"])
        self.assertEqual((other["effort"], other["pictures"]), ("-", complete["pictures"]))

    @unittest.skipUnless(importlib.util.find_spec("matplotlib"), "python3-matplotlib is missing: run tools/setup")
    def test_report_holds_all_it_shows_and_draws_outlines_on_wrong_pictures(self):
        program = self.write("judge", STAND_IN)
        self.write("judge.json", json.dumps({"complete": COMPLETE}))
        result = self.run_on(program, "--effort", "complete", "--report", self.folder / "new/report")
        self.assertEqual((result.returncode, result.stderr), (1, "evaluate: bad.jpg: truncated\n"))
        page = (self.folder / "new/report/index.html").read_text()
        self.assertEqual(re.findall(r'(?:src|href)="(?!data:image/(?:png|jpeg);base64,)|https?:|<b></', page), [])
        images = {name: Image.open(io.BytesIO(base64.b64decode(data)))
                  for name, data in re.findall(r'alt="(.*?)" src="data:image/[a-z]+;base64,(.*?)"', page)}
        self.assertEqual(list(images), ["Hits by kind", "Delays", "Confidence", "Overlap of outlines with the known ones",
                                        "miss.jpg", "false.jpg"])
        for name, x, colour in (("miss.jpg", 10, (0, 183, 255)), ("false.jpg", 10, (255, 122, 0))):  # known; found
            shown = images[name].getpixel((x, 50))
            self.assertLess(max(abs(a - b) for a, b in zip(shown, colour)), 90, (name, shown))
        self.assertIn("<li>bad.jpg: truncated</li>", page)
        for options, status, cause in ((["--report", self.folder / "m.tsv"], 1, "m.tsv: File exists"), (["--report", "x", "--zones"], 2, "--zones")):
            result = self.run_on("/nowhere", *options)
            self.assertEqual((result.returncode, len(result.stderr.splitlines())), (status, 1))
            self.assertIn(cause, result.stderr)

    def test_programs_that_fail_are_told_in_one_line(self):
        for script, cause in [("kill -9 $$", "died: Killed"), ("echo no models >&2", "no models"), ("echo 1", "1 lines for 5"),
                              ("for i in 1 2 3 4 5; do echo 1; done", "prints something else")]:
            result = self.run_on(self.write("judge", f"#!/bin/sh\n{script}\n"))
            self.assertEqual((result.returncode, result.stdout), (1, ""))
            self.assertRegex(result.stderr, rf"^evaluate: [^\n]*{cause}[^\n]*\n$")

    def test_manifest_errors_name_the_line(self):
        for text, line in [("", 1), ("\nname\tkind\nx\ty\n", 2), ("file\tkind\na.jpg\tother\n\tother\n", 3), ("file\tkind\na\n", 2),
                           ("file\tkind\tquad\na\tother\t1,2;3,4;5,6\n", 2), ("file\tkind\tquad\na\tother\t1,2;3,4;5,6;7,inf\n", 2)]:
            with self.subTest(text), self.assertRaisesRegex(labels.Unusable, rf"m\.tsv:{line}: "):
                labels.read(self.write("m.tsv", text))


class Figures(unittest.TestCase):
    def test_percentile_is_the_nearest_rank(self):
        for values, percent, expected in [([], 50, 0), ([7], 10, 7), ([5, 1, 4, 2, 3], 50, 3), (range(1, 11), 90, 9),
                                          (range(1, 11), 10, 1), (range(1, 12), 90, 10)]:
            self.assertEqual(figures.percentile(list(values), percent), expected)

    def test_overlap_is_intersection_by_union(self):
        square = [(0, 0), (2, 0), (2, 2), (0, 2)]
        for other, expected in [(square, 1), ([(1, 0), (2, 1), (1, 2), (0, 1)], 0.5), ([(1, 1), (3, 1), (3, 3), (1, 3)], 1 / 7),
                                ([(2, 0), (4, 0), (4, 2), (2, 2)], 0), ([(5, 5), (6, 5), (6, 6), (5, 6)], 0)]:
            self.assertAlmostEqual(figures.overlap(square, other), expected)
            self.assertAlmostEqual(figures.overlap(other, square), expected)


if __name__ == "__main__":
    unittest.main()
