#!/usr/bin/python3
"""Holds the real recogniser to floors.tsv: at least and at most so many pictures of a kind called passports, or with a
zone that is what a word of the evaluation says.

Usage: floors_test.py KESTRELID SET MANIFEST, where KESTRELID is the program and SET a name in floors.tsv. Exit status 77 (skipped) where MANIFEST does not exist. A gain raises the floor.
"""
import csv
import json
import pathlib
import subprocess
import sys
import tempfile

SKIPPED = 77
EVALUATE = pathlib.Path(__file__).parents[2] / "apps/evaluate/evaluate.py"


def measure(kestrelid, manifest, *options):
    """The evaluation's JSON."""
    options = [f"--kestrelid={kestrelid}", *options]
    with tempfile.TemporaryDirectory() as folder:
        output = pathlib.Path(folder) / "result.json"
        subprocess.run([sys.executable, "-B", EVALUATE, manifest, *options, "--json", output], check=True)
        return json.loads(output.read_text())


def counted(result, row):
    """The figure that a row bounds; None where the evaluation has no such kind."""
    if row["effort"] == "zones":
        kind, word = row["kind"].split()
        return result["zones"].get(kind, {}).get(word)
    if row["effort"] == "-":
        return result["combinations"][0]["outlines"]["all"]["good"]
    combination = next(entry for entry in result["combinations"] if entry["effort"] == row["effort"])
    kinds = combination["passports"] | combination["others"]
    return kinds[row["kind"]]["calledPassport"] if row["kind"] in kinds else None


def main(kestrelid, name, manifest):
    if not pathlib.Path(manifest).exists():
        print(f"skipped: no labelled pictures at {manifest}; point KESTRELID_EVALUATION_SET at a folder with a manifest.tsv")
        return SKIPPED
    with open(pathlib.Path(__file__).with_name("floors.tsv"), newline="") as table:
        rows = [row for row in csv.DictReader(table, delimiter="\t") if row["set"] == name]
    efforts = sorted({row["effort"] for row in rows} - {"-", "zones"})
    result = measure(kestrelid, manifest, *(f"--effort={effort}" for effort in efforts))
    result |= measure(kestrelid, manifest, "--zones")
    failures = [f"efforts disagree: {entry}" for entry in result["disagreements"]]
    failures += [
        f"{combination['effort']}: {combination['noVerdict']} pictures without a verdict"
        for combination in result["combinations"] if combination["noVerdict"]
    ]
    for row in rows:
        figure = counted(result, row)
        if figure is None or not int(row["least"]) <= figure <= int(row["most"]):
            failures.append(f"{row['effort']}, {row['kind']}: {figure}, not {row['least']} to {row['most']}")
    print("\n".join(failures) or f"{len(rows)} bounds hold")
    return 1 if failures or not rows else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
