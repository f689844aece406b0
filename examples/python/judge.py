#!/usr/bin/python3
"""Says of each picture whether it shows a passport."""

import argparse
import datetime
import sys

import kestrelid


def examine(detector, file):
    examination = detector.examine_file(file, as_of=datetime.date.today())
    lines = []
    for zone in examination.zones:
        # What is wrong names places and fields, never what stands there.
        wrong = "; ".join(text for _, text in zone.problems)
        lines.append(f"zone {zone.format}, " + (f"not strict: {wrong}" if wrong else "strict"))
    return examination.verdict, lines or ["no machine-readable zone"]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--library", help="path of libkestrelid-detection.so.0 (default: the installed one)")
    parser.add_argument("--zone", action="store_true", help="say whether the machine-readable zone is to be trusted, too")
    parser.add_argument("files", nargs="+", metavar="FILE")
    arguments = parser.parse_args()
    try:
        detector = kestrelid.Detector(arguments.library, effort=kestrelid.VERDICT_ONLY,
                                      console=lambda line: print(line, file=sys.stderr))
    except OSError as error:
        print(f"judge.py: {error}", file=sys.stderr)
        return 2
    status = 0
    with detector:
        for file in arguments.files:
            try:
                if arguments.zone:
                    verdict, zones = examine(detector, file)
                else:
                    verdict, zones = detector.judge_file(file), []
            except kestrelid.Error as error:
                print(f"judge.py: {error}", file=sys.stderr)
                status = 1
                continue
            word = "passport" if verdict.is_passport else "not a passport"
            print(f"{file}: {word} ({verdict.confidence:.2f}; {'; '.join(verdict.reasons)})")
            for line in zones:
                print(f"{file}: {line}")
    return status


if __name__ == "__main__":
    sys.exit(main())
