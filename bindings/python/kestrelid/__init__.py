"""Whether a still picture shows a passport, and its machine-readable zones.

    with kestrelid.Detector() as detector:
        result = detector.judge("passport.jpg")
        print(result.is_passport, result.confidence)
        for zone in detector.examine("passport.jpg", as_of=datetime.date.today()).zones:
            print(zone.format, zone.is_strict)

A picture is a path, the bytes of a file, a file that is open, an array of uint8 or a Pillow image. Every method may be
called from any thread; other Python threads run while one waits. Everything stays on the machine, in the library
libkestrelid-detection.so.0, which this package looks for where the system has its libraries, or where the
environment variable KESTRELID_LIBRARY says.
"""

from ._detector import Detector, parse_zones
from ._errors import ArgumentError, Error, LibraryError, OutOfMemoryError, UnreadableError
from ._pictures import BinaryFile, Format, Picture
from ._results import Examination, KeywordMatch, Result, Zone, ZoneField, ZoneProblem
from ._version import __version__

__all__ = ["ArgumentError", "BinaryFile", "Detector", "Error", "Examination", "Format", "KeywordMatch", "LibraryError",
           "OutOfMemoryError", "Picture", "Result", "UnreadableError", "Zone", "ZoneField", "ZoneProblem", "__version__", "parse_zones"]
