"""The detector."""

from __future__ import annotations

import contextlib
import ctypes
import datetime
import logging
import os
import sys
import weakref
from ctypes import c_int32, c_void_p
from typing import Any, Callable, Iterator, Literal, Optional, Type, Union

from . import _pictures
from ._errors import ArgumentError, Error
from ._library import CONSOLE, Day, Library, Options, ZoneFieldStruct, ZoneStruct, load
from ._pictures import Format, Picture
from ._results import Examination, KeywordMatch, Outline, Point, Result, Zone, ZoneField, ZoneProblem

Effort = Literal["complete", "verdict"]
Path = Union[str, "os.PathLike[str]"]

_EFFORTS = {"complete": 0, "verdict": 1}


def _callback(console: Callable[[str], object]) -> Any:
    return CONSOLE(lambda _, line, size: console(line[:size].decode(errors="replace")))


_log = _callback(logging.getLogger("kestrelid").warning)


class _Handle:
    """A detector of the library. Whoever uses it holds on to this: it is released when nobody does any more."""

    alive: weakref.WeakSet[_Handle] = weakref.WeakSet()
    inherited = False  # this process was forked from one that had some, whose threads it lacks

    def __init__(self, library: Library, options: Options, kept: tuple[object, ...]) -> None:
        self.address: Optional[c_void_p] = None
        self.library = library
        self.kept = kept  # what the library may call or use as long as this lives
        self.check_process()
        self.address = library.make(library.detector_create, ctypes.byref(options))
        _Handle.alive.add(self)

    def __del__(self) -> None:
        if not sys.is_finalizing() and self.address and not _Handle.inherited:
            self.library.detector_release(self.address)

    @staticmethod
    def check_process() -> None:
        # A call would wait for ever for the threads; a new detector would share them.
        if _Handle.inherited:
            raise Error("this process was forked from one that had a detector, whose threads it lacks: start it by "
                        "multiprocessing.get_context('spawn')")

    @staticmethod
    def after_fork() -> None:
        _Handle.inherited = _Handle.inherited or len(_Handle.alive) > 0


os.register_at_fork(after_in_child=_Handle.after_fork)


class Detector:
    """Decides whether pictures show a passport. Any thread may call any method, several at once.

    Models are loaded by the first picture, about 300 MB; detectors with equal options share them.
    """

    _handle: Optional[_Handle] = None

    def __init__(self, *, library: Optional[Path] = None, resources: Optional[Path] = None,
                 effort: Effort = "complete", text_threads: Optional[int] = None, share: Optional[Detector] = None,
                 console: Optional[Callable[[str], object]] = None) -> None:
        """library: file of the shared library. None: as the environment variable KESTRELID_LIBRARY says, or the installed one.
        resources: folder of the models. None: beside the library.
        effort: "verdict" stops reading once the verdict is certain, so that reasons and text may be shorter.
        text_threads: that one picture's text may use, 1 to 64. None: two.
        share: a detector whose library, models, threads and console this one takes.
        console: gets a line where recognition fails, which says what the machine lacks, on any thread. None: a warning of the
        logger "kestrelid"."""
        if effort not in _EFFORTS:
            raise ArgumentError(f"effort={effort!r} is none of {', '.join(_EFFORTS)}")
        shared = share._use() if share else None
        self._library: Library = shared.library if shared else load(library)
        callback = _callback(console) if console else CONSOLE(0) if shared else _log
        options = Options(ctypes.sizeof(Options), os.fsencode(resources) if resources else None, _EFFORTS[effort],
                          text_threads or 0, shared.address if shared else None, callback, None)
        self._handle = _Handle(self._library, options, (callback, shared))

    def judge(self, picture: Picture, *, format: Optional[Format] = None) -> Result:
        """Whether the picture shows a passport.

        picture: a path; the bytes of a JPEG, PNG, WebP, TIFF or HEIC file; such a file, opened by open(file, "rb"), which is
        read from where it stands; an array of uint8 (NumPy, OpenCV, memoryview) of shape (height, width) or (height, width,
        channels), whatever its strides; or a Pillow image. At most 64 MB for a file, 100 million pixels, 20000 a side.
        format: what the channels of an array are: "rgb", "bgr", "rgba", "bgra" (whose alpha is ignored) or "gray".

        Raises UnreadableError, ArgumentError, OutOfMemoryError or another Error, TypeError for what is no picture, and
        ValueError once the detector is closed."""
        library, result = self._library, c_void_p()
        with self._image(picture, format) as (detector, image):
            library.call(library.detector_validate_wait, detector, image, ctypes.byref(result))
        return _result(library, result)

    def examine(self, picture: Picture, *, format: Optional[Format] = None,
                as_of: Optional[datetime.date] = None) -> Examination:
        """The same verdict, and the machine-readable zones of the picture.

        as_of: the day that tells the centuries of years. None: years keep two digits."""
        library, result, zones = self._library, c_void_p(), c_void_p()
        with self._image(picture, format) as (detector, image):
            library.call(library.detector_examine_wait, detector, image, _day(as_of), ctypes.byref(result),
                         ctypes.byref(zones))
        try:
            outline, matches = _outline(library, result), _matches(library, result)
        finally:
            try:
                verdict = _result(library, result)
            finally:
                found = _zones(library, zones)
        return Examination(verdict.is_passport, verdict.confidence, verdict.reasons, verdict.recognized_text, outline,
                           matches, found)

    @property
    def library_version(self) -> str:
        version: bytes = self._library.library_version()
        return version.decode()

    def close(self) -> None:
        """Gives models and threads back; calls that still run end as they would."""
        self._handle = None

    def __enter__(self) -> Detector:
        return self

    def __exit__(self, exception: Optional[Type[BaseException]], value: object, traceback: object) -> None:
        self.close()

    def __reduce__(self) -> Any:
        raise TypeError("a Detector cannot be sent to another process: make one there")

    def _use(self) -> _Handle:
        handle = self._handle
        if handle is None:
            raise ValueError("the detector is closed")
        handle.check_process()
        return handle

    @contextlib.contextmanager
    def _image(self, picture: Picture, format: Optional[Format]) -> Iterator[tuple[Optional[c_void_p], c_void_p]]:
        handle = self._use()
        image = _pictures.image(self._library, picture, format)
        try:
            yield handle.address, image
        finally:
            self._library.image_release(image)


def parse_zones(text: Union[str, bytes], *, as_of: Optional[datetime.date] = None,
                library: Optional[Path] = None) -> tuple[Zone, ...]:
    """The machine-readable zones in a text, one line of a zone a line of text. as_of, library: as for Detector."""
    loaded = load(library)
    given = text.encode(errors="replace") if isinstance(text, str) else bytes(memoryview(text))
    return _zones(loaded, loaded.make(loaded.zones_parse, given, len(given), _day(as_of)))


def _day(day: Optional[datetime.date]) -> Any:
    if day is None:
        return None
    if not isinstance(day, datetime.date):
        raise TypeError(f"as_of is a datetime.date, not {type(day).__qualname__}")
    return ctypes.byref(Day(day.year, day.month, day.day))


def _result(library: Library, result: c_void_p) -> Result:
    """Releases the result."""
    try:
        reasons = (library.text(library.result_reason, result, index)
                   for index in range(library.result_reason_count(result)))
        return Result(bool(library.result_is_passport(result)), library.result_confidence(result),
                      tuple(reason or "" for reason in reasons), library.text(library.result_recognized_text, result) or "")
    finally:
        library.result_release(result)


def _outline(library: Library, result: c_void_p) -> Optional[Outline]:
    corners = (ctypes.c_double * 8)()
    return _corners(corners) if library.result_outline(result, corners) else None


def _corners(values: Any) -> Outline:
    points: list[Point] = list(zip(values[::2], values[1::2]))
    return points[0], points[1], points[2], points[3]


def _matches(library: Library, result: c_void_p) -> tuple[KeywordMatch, ...]:
    distance, matches = c_int32(), []
    for index in range(library.result_match_count(result)):
        keyword = library.text(library.result_match, result, index, ctypes.byref(distance))
        matches.append(KeywordMatch(keyword or "", distance.value))
    return tuple(matches)


def _zones(library: Library, zones: c_void_p) -> tuple[Zone, ...]:
    """Releases the zones."""
    try:
        return tuple(_zone(library, zones, index) for index in range(library.zones_count(zones)))
    finally:
        library.zones_release(zones)


def _zone(library: Library, zones: c_void_p, index: int) -> Zone:
    zone = ZoneStruct(ctypes.sizeof(ZoneStruct))
    library.zones_zone(zones, index, ctypes.byref(zone))
    return Zone(
        library.zone_format_name(zone.format).decode(), bool(zone.is_strict),
        tuple(library.text(library.zones_line, zones, index, line) or "" for line in range(zone.lines)),
        tuple(_field(library, zones, index, field) for field in range(zone.fields)),
        tuple(_problem(library, zones, index, problem) for problem in range(zone.problems)),
        _corners(zone.corners) if any(zone.corners) else None, zone.pixels_per_character)


def _field(library: Library, zones: c_void_p, zone: int, index: int) -> ZoneField:
    field = ZoneFieldStruct(ctypes.sizeof(ZoneFieldStruct))
    library.zones_field(zones, zone, index, ctypes.byref(field))
    year, two_digit_year, month, day = (
        None if part < 0 else part for part in (field.year, field.two_digit_year, field.month, field.day))
    return ZoneField(
        library.zone_field_key(field.kind).decode(), library.text(library.zones_field_text, zones, zone, index) or "",
        library.text(library.zones_field_characters, zones, zone, index) or "",
        library.check_digit_key(field.check_digit).decode(), field.corrections, field.doubtful,
        year, two_digit_year, month, day, library.text(library.zones_field_state, zones, zone, index),
        bool(field.is_perhaps_truncated))


def _problem(library: Library, zones: c_void_p, zone: int, index: int) -> ZoneProblem:
    kind = c_int32()
    text = library.text(library.zones_problem, zones, zone, index, ctypes.byref(kind))
    return ZoneProblem(library.zone_problem_key(kind).decode(), text or "")
