#!/usr/bin/python3
"""Measures hits, false hits, delays and memory of kestrelid over a labelled set of pictures."""

import argparse
import json
import shlex
import signal
import sys

import figures
import labels
import measuring
import tables
import zones

_EPILOG = """MANIFEST begins with a line that names its columns: file (relative to the list), kind
(passport-... or another word) and, where it is known, quad: the document's corners in pixels,
x,y;x,y;x,y;x,y from the top left clockwise, or -; mrz1, mrz2, mrz3: the lines of its zone, or -.

Examples:
  tools/evaluate samples/manifest.tsv
  tools/evaluate samples/manifest.tsv --effort verdict --outlines --verbose
  tools/evaluate samples/manifest.tsv --report out/report

Delays mean something on a quiet machine only. Exit status: 0 all judged, 1 a picture without a
verdict or efforts that disagree, 2 wrong usage."""


def _progress(text):
    if sys.stderr.isatty():
        print(f"\r\033[K{text}", end="", file=sys.stderr, flush=True)


def _tell(message):
    _progress("")
    print(f"evaluate: {tables.shown(message)}", file=sys.stderr)


class _Parser(argparse.ArgumentParser):
    def error(self, message):
        _tell(message)
        sys.exit(2)


def _number(most):
    def parse(text):
        if not text.isdecimal() or not 1 <= int(text) <= most:
            raise argparse.ArgumentTypeError(f"'{text}' is no number from 1 to {most}")
        return int(text)
    return parse


def _options():
    parser = _Parser(prog="tools/evaluate", description=__doc__, epilog=_EPILOG, allow_abbrev=False,
                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("manifest", metavar="MANIFEST", help="tab-separated list of pictures")
    parser.add_argument("--effort", action="append", choices=("complete", "verdict"), help="may stand twice (default: both)")
    parser.add_argument("--program", action="append", type=shlex.split, default=[], metavar="COMMAND",
                        help="measure another program too: 'COMMAND FILE...' prints what 'kestrelid validate --json' does")
    parser.add_argument("--limit", type=_number(10**9), metavar="N", help="judge the first N pictures only")
    parser.add_argument("--jobs", type=_number(64), default=1, metavar="N",
                        help="pictures that kestrelid judges at once; more than one disturbs the delays (default: 1)")
    parser.add_argument("--resources", metavar="DIR", help="folder that holds the models and the ONNX Runtime library")
    parser.add_argument("--outlines", action="store_true", help="compare outlines with the known ones, kind by kind")
    parser.add_argument("--zones", action="store_true",
                        help="read machine-readable zones instead, and compare them with the known ones")
    parser.add_argument("--verbose", action="store_true", help="tell of every picture")
    parser.add_argument("--report", metavar="DIR", help="write the page DIR/index.html with plots, and with the pictures that were "
                        "called wrongly: it is as personal as they are")
    parser.add_argument("--json", metavar="FILE", help="write the result to FILE as well")
    parser.add_argument("--kestrelid", default="kestrelid", metavar="PATH", help=argparse.SUPPRESS)
    options = parser.parse_args()
    if options.report and options.zones:
        parser.error("--report tells of verdicts, not of --zones")
    return options


def _measured(options, pictures):
    resources = ["--resources", options.resources] if options.resources else []
    validate = [options.kestrelid, "validate", "--json", "--jobs", str(options.jobs), *resources, "--effort"]
    efforts = dict.fromkeys(options.effort or ("complete", "verdict"))
    runs = [("kestrelid", effort, [*validate, effort, "--"]) for effort in efforts]
    runs += [(shlex.join(command), "-", command) for command in options.program]
    total = len(runs) * len(pictures)
    combinations = []

    def tell(done):
        done += len(combinations) * len(pictures)
        _progress(f"[{'#' * (done * 30 // total):.<30}] {done} of {total}")

    for program, effort, command in runs:
        rows, peak = measuring.measure(command, [picture.path for picture in pictures], tell)
        combinations.append(figures.combination(program, effort, pictures, rows, peak))
    _progress("")
    return combinations


def _read_zones(options, pictures):
    resources = ["--resources", options.resources] if options.resources else []
    rows = zones.read([options.kestrelid, "zone", "--json", *resources, "--"], [picture.path for picture in pictures])
    if options.verbose:
        for picture, row in zip(pictures, rows):
            print(f"{tables.shown(picture.name)}: {' '.join(sorted(zones.compared(picture, row))) or 'none'}")
    counts = zones.counts(pictures, rows)
    print(tables.zones(counts), end="", flush=True)
    if options.json:
        with open(options.json, "w", encoding="utf-8") as file:
            json.dump({"manifest": options.manifest, "zones": counts}, file)
    return 1 if any("error" in row for row in rows) else 0


def main():
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)
    options = _options()
    pictures = labels.read(options.manifest)[:options.limit]
    if options.zones:
        return _read_zones(options, pictures)
    if options.report:
        import report  # its plots need a package of their own
        report.folder(options.report)
    combinations = _measured(options, pictures)
    disagreements = figures.disagreements(combinations)
    if options.verbose:
        print(tables.pictures(combinations))
    if options.outlines:
        print(tables.outlines(combinations))
    print(tables.verdicts(combinations) + tables.overlap_line(combinations)
          + tables.agreement_lines(combinations, disagreements), end="", flush=True)
    failed = {(entry["file"], entry["error"]) for run in combinations for entry in run["pictures"] if "error" in entry}
    for name, cause in sorted(failed):
        _tell(f"{name}: {cause}")
    if options.json:
        with open(options.json, "w", encoding="utf-8") as file:
            json.dump({"manifest": options.manifest, "combinations": combinations, "disagreements": disagreements}, file)
    if options.report:
        report.write(options.report, options.manifest, pictures, combinations)
    return 1 if failed or disagreements else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except labels.Unusable as unusable:
        _tell(str(unusable))
    except OSError as failure:
        _tell(f"{failure.filename or 'standard output'}: {failure.strerror}")
    sys.exit(1)
