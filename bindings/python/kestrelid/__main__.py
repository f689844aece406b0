"""Says whether pictures show a passport; without one, which versions of package and library work together here."""

import argparse
import sys

from . import Detector, Error, LibraryError, __version__


def main() -> int:
    parser = argparse.ArgumentParser(prog="python3 -m kestrelid", description=__doc__,
                                     epilog="Exit status: 0 done, 1 some picture could not be read, 2 wrong usage or no library.")
    parser.add_argument("files", nargs="*", metavar="FILE", help="a picture")
    files = parser.parse_args().files
    try:
        detector = Detector(effort="verdict")
    except LibraryError as error:
        print(f"kestrelid: {error}", file=sys.stderr)
        return 2
    status = 0
    with detector:
        if not files:
            print(f"kestrelid {__version__}, library {detector.library_version}")
        for file in files:
            try:
                result = detector.judge(file)
            except Error as error:
                print(f"kestrelid: {error}", file=sys.stderr)
                status = 1
                continue
            print(f"{file}: {'passport' if result.is_passport else 'not a passport'}, confidence {result.confidence:.3f}")
    return status


if __name__ == "__main__":
    sys.exit(main())
