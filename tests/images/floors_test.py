#!/usr/bin/python3
"""Holds the real recognisers to floors.tsv: at least and at most so many pictures of a kind called passports.

Usage: floors_test.py EVALUATE SET MANIFEST, where EVALUATE is the program kestrelid-evaluate and SET a name in
floors.tsv. Exit status 77 (skipped) where MANIFEST does not exist. A gain raises the floor.
"""
import csv
import json
import pathlib
import subprocess
import sys
import tempfile

SKIPPED = 77


def measure(evaluate, manifest, rows):
    """The evaluation program's JSON for the recognisers and efforts that rows name."""
    wanted = {(row["recognizer"], row["effort"]) for row in rows if row["recognizer"] != "-"}
    options = [f"--recognizer={name}" for name in sorted({recognizer for recognizer, _ in wanted})]
    options += [f"--effort={name}" for name in sorted({effort for _, effort in wanted})]
    with tempfile.TemporaryDirectory() as folder:
        output = pathlib.Path(folder) / "result.json"
        subprocess.run([evaluate, manifest, *options, "--json", output], check=True)
        return json.loads(output.read_text())


def counted(result, row):
    """The figure that a row bounds; None where the evaluation has no such kind."""
    if row["recognizer"] == "-":
        return result["outlines"]["good"]
    for combination in result["combinations"]:
        if (combination["recognizer"], combination["effort"]) == (row["recognizer"], row["effort"]):
            kinds = combination["passports"] | combination["others"]
            return kinds[row["kind"]]["calledPassport"] if row["kind"] in kinds else None
    return None


def main(evaluate, name, manifest):
    if not pathlib.Path(manifest).exists():
        print(f"skipped: no labelled pictures at {manifest}; point KESTRELID_EVALUATION_SET at a folder with a manifest.tsv")
        return SKIPPED
    with open(pathlib.Path(__file__).with_name("floors.tsv"), newline="") as table:
        rows = [row for row in csv.DictReader(table, delimiter="\t") if row["set"] == name]
    result = measure(evaluate, manifest, rows)
    failures = [f"efforts disagree: {entry}" for entry in result["disagreements"]]
    failures += [
        f"{combination['recognizer']} {combination['effort']}: {combination['noVerdict']} pictures without a verdict"
        for combination in result["combinations"] if combination["noVerdict"]
    ]
    for row in rows:
        figure = counted(result, row)
        if figure is None or not int(row["least"]) <= figure <= int(row["most"]):
            failures.append(f"{row['recognizer']} {row['effort']}, {row['kind']}: {figure}, "
                            f"not {row['least']} to {row['most']}")
    print("\n".join(failures) or f"{len(rows)} bounds hold")
    return 1 if failures or not rows else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
