#!/usr/bin/python3
"""Says of each picture whether it shows a passport."""

import argparse
import datetime
import sys

import kestrelid


def examine(detector, file):
    examination = detector.examine(file, as_of=datetime.date.today())
    lines = []
    for zone in examination.zones:
        # What is wrong names places and fields, never what stands there.
        wrong = "; ".join(problem.text for problem in zone.problems)
        lines.append(f"zone {zone.format}, " + (f"not strict: {wrong}" if wrong else "strict"))
    return examination, lines or ["no machine-readable zone"]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--library", help="path of libkestrelid-detection.so.0 (default: the installed one)")
    parser.add_argument("--zone", action="store_true", help="say whether the machine-readable zone is to be trusted, too")
    parser.add_argument("files", nargs="+", metavar="FILE")
    arguments = parser.parse_args()
    try:
        detector = kestrelid.Detector(library=arguments.library, effort="verdict")
    except kestrelid.LibraryError as error:
        print(f"judge.py: {error}", file=sys.stderr)
        return 2
    status = 0
    with detector:
        for file in arguments.files:
            try:
                result, zones = examine(detector, file) if arguments.zone else (detector.judge(file), [])
            except kestrelid.Error as error:
                print(f"judge.py: {error}", file=sys.stderr)
                status = 1
                continue
            word = "passport" if result.is_passport else "not a passport"
            print(f"{file}: {word} ({result.confidence:.2f}; {'; '.join(result.reasons)})")
            for line in zones:
                print(f"{file}: {line}")
    return status


if __name__ == "__main__":
    sys.exit(main())
