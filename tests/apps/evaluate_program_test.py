"""kestrelid-evaluate over a few of the samples."""

import json
import unittest

from command_line import EVALUATE, SAMPLES, CommandLineTest, run


class Evaluate(CommandLineTest):
    def test_table_and_json_agree_on_the_samples(self):
        rows = (SAMPLES / "manifest.tsv").read_text().splitlines()
        kinds = {row.split("\t")[1]: row for row in rows[1:]}
        chosen = [kinds["passport-drawn"], kinds["other-scene"]]
        manifest = self.write("m.tsv", "\n".join([rows[0], *(f"{SAMPLES}/{row}" for row in chosen)]).encode())
        report = self.folder / "report.json"
        # An option may stand more than once, and does not swallow what follows its word.
        result = run("--effort", "complete", "--effort", "verdict", "--recognizer", "ppocr", str(manifest),
                     "--json", str(report), "--verbose", program=EVALUATE)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        table = result.stdout.decode()
        self.assertIn("Efforts agree", table)
        self.assertEqual(table.count("\nppocr"), 2 * len(chosen) + 2)

        written = json.loads(report.read_text())
        self.assertEqual([entry["effort"] for entry in written["combinations"]], ["complete", "verdict"])
        for entry in written["combinations"]:
            self.assertEqual(entry["passports"], {"passport-drawn": {"calledPassport": 1, "judged": 1}})
            self.assertEqual(entry["others"], {"other-scene": {"calledPassport": 0, "judged": 1}})
            self.assertLessEqual(entry["medianMilliseconds"], entry["p90Milliseconds"])
            self.assertGreater(entry["peakMemoryMiB"], 50)  # the models alone
        self.assertEqual(written["outlines"]["known"], 1)
        self.assertGreater(written["outlines"]["median"], 0.8)
        self.assertEqual(written["disagreements"], [])

    def test_outlines_alone(self):
        rows = (SAMPLES / "manifest.tsv").read_text().splitlines()
        chosen = [next(row for row in rows if row.split("\t")[1] == "passport-drawn"), "gone.jpg\tother-scene\t-"]
        columns = ["\t".join(row.split("\t")[:3]) for row in [rows[0], f"{SAMPLES}/{chosen[0]}", chosen[1]]]
        manifest = self.write("m.tsv", "\n".join(columns).encode())
        report = self.folder / "report.json"
        result = run(str(manifest), "--outlines", "classical", "--json", str(report), program=EVALUATE)
        self.assertEqual(result.returncode, 1)
        self.assert_error_lines(result, ["kestrelid-evaluate: gone.jpg: "])
        self.assertEqual(result.stdout.decode().count("\nclassical"), 3)
        (finder,) = json.loads(report.read_text())["finders"]
        self.assertEqual(finder["outlines"], "classical")
        self.assertEqual([(kind["pictures"], kind["good"]) for kind in finder["kinds"].values()],
                         [(0, 0), (1, 1), (1, 1)])
        self.assertGreater(finder["pictures"][0]["overlap"], 0.8)
        self.assertIn("error", finder["pictures"][1])

    def test_picture_that_is_missing_is_told_once(self):
        manifest = self.write("m.tsv", b"file\tkind\ngone.jpg\tother-scene\n")
        result = run(str(manifest), "--recognizer", "ppocr", program=EVALUATE)
        self.assertEqual(result.returncode, 1)
        self.assert_error_lines(result, ["kestrelid-evaluate: gone.jpg: "])

    def test_manifest_errors_name_the_line(self):
        manifest = self.write("m.tsv", b"file\tkind\tquad\na.jpg\tother\t-\nb.jpg\tother\t1,2\n")
        result = run(str(manifest), program=EVALUATE)
        self.assertEqual((result.returncode, result.stdout), (1, b""))
        self.assert_error_lines(result, [f"kestrelid-evaluate: {manifest}:3: "])
        gone = self.folder / "gone.tsv"
        self.assert_error_lines(run(str(gone), program=EVALUATE), [f"kestrelid-evaluate: {gone}: "])

    def test_wrong_usage(self):
        for arguments in [[], ["m.tsv", "--recognizer", "magic"], ["m.tsv", "--jobs", "0"], ["m.tsv", "--what"],
                          ["m.tsv", "--outlines", "both", "--effort", "complete"]]:
            self.assert_wrong_usage(*arguments, program=EVALUATE)


if __name__ == "__main__":
    unittest.main()
