"""Whether a still picture shows a passport, and its machine-readable zones: a binding of kestrelid.h by ctypes.

    detector = kestrelid.Detector()
    verdict = detector.judge_file("passport.jpg")
    print(verdict.is_passport, verdict.confidence)
    for zone in detector.examine_file("passport.jpg", as_of=datetime.date.today()).zones:
        print(zone.format, zone.is_strict)

Every method may be called from any thread, but close() only when no other one is running; while one waits, other
Python threads run.
"""

import contextlib
import ctypes
import ctypes.util
import dataclasses
import os
import sys
from ctypes import POINTER, c_char_p, c_double, c_int, c_int32, c_size_t, c_void_p

# Values of the enums in kestrelid.h.
NETWORK_FIRST, NETWORK, CLASSICAL = 0, 1, 2
COMPLETE, VERDICT_ONLY = 0, 1
FORMATS = {"BGRA": 0, "RGB": 1, "L": 2}  # by the names that Pillow uses

CONSOLE = ctypes.CFUNCTYPE(None, c_void_p, POINTER(ctypes.c_char), c_size_t)


class Error(Exception):
    """The text names the file, where there is one, and the cause."""

    def __init__(self, status, text):
        super().__init__(text)
        self.status = status  # KestrelidStatus


@dataclasses.dataclass(frozen=True)
class Verdict:
    is_passport: bool
    confidence: float  # 0 to 1
    reasons: tuple
    recognized_text: str  # personal data: never log it


@dataclasses.dataclass(frozen=True)
class ZoneField:
    """Personal data: never log it. What is None does not exist, or is not known."""
    kind: str  # "documentNumber", for example
    text: str  # for people
    characters: str  # as printed, fillers included
    check_digit: str  # "none", "passed" or "failed"
    corrections: int  # characters that were taken for others than those read best
    doubtful: int  # characters that might be others
    year: "int | None"  # with its century, if as_of was given
    two_digit_year: "int | None"
    month: "int | None"
    day: "int | None"
    state: "str | None"  # English; "" for a code that is not known
    is_perhaps_truncated: bool


@dataclasses.dataclass(frozen=True)
class Zone:
    """A machine-readable zone. Personal data: never log it."""
    format: str  # "TD3", for example
    is_strict: bool  # nothing speaks against it
    lines: tuple
    fields: tuple  # of ZoneField
    problems: tuple  # "checkDigitFailed", for example, and one line of text each: nothing of what the zone says
    corners: tuple  # x and y from the picture's top left corner, 0 to 1; empty for a zone of a text
    pixels_per_character: float  # 0: unknown

    def field(self, kind):
        return next((field for field in self.fields if field.kind == kind), None)


@dataclasses.dataclass(frozen=True)
class Examination:
    verdict: Verdict
    zones: tuple  # of Zone, the clearest first


class _Pixels(ctypes.Structure):
    _fields_ = [("struct_size", c_size_t), ("bytes", c_void_p), ("size", c_size_t), ("stride", c_size_t),
                ("width", c_int32), ("height", c_int32), ("format", c_int32)]


class _Options(ctypes.Structure):
    _fields_ = [("struct_size", c_size_t), ("resources", c_char_p), ("outlines", c_int32),
                ("effort", c_int32), ("text_threads", c_int32), ("share", c_void_p), ("console", CONSOLE),
                ("console_user", c_void_p)]


class _Day(ctypes.Structure):
    _fields_ = [("year", c_int32), ("month", c_int32), ("day", c_int32)]


class _Zone(ctypes.Structure):
    _fields_ = [("struct_size", c_size_t), ("lines", c_size_t), ("fields", c_size_t), ("problems", c_size_t),
                ("format", c_int32), ("is_strict", c_int32), ("pixels_per_character", c_double), ("corners", c_double * 8)]


class _ZoneField(ctypes.Structure):
    _fields_ = [("struct_size", c_size_t), ("corrections", c_size_t), ("doubtful", c_size_t), ("kind", c_int32),
                ("check_digit", c_int32), ("year", c_int32), ("two_digit_year", c_int32), ("month", c_int32),
                ("day", c_int32), ("is_known_state", c_int32), ("is_perhaps_truncated", c_int32)]


# name -> (what it returns, its arguments); those that return c_int and take an error last may fail.
_FUNCTIONS = {
    "library_version": (c_char_p, []),
    "error_text": (c_char_p, [c_void_p]),
    "error_free": (None, [c_void_p]),
    "image_read": (c_int, [c_char_p, c_void_p, c_void_p]),
    "image_decode": (c_int, [c_char_p, c_size_t, c_void_p, c_void_p]),
    "image_from_pixels": (c_int, [POINTER(_Pixels), c_void_p, c_void_p]),
    "image_release": (None, [c_void_p]),
    "result_release": (None, [c_void_p]),
    "result_is_passport": (c_int, [c_void_p]),
    "result_confidence": (c_double, [c_void_p]),
    "result_reason_count": (c_size_t, [c_void_p]),
    "result_reason": (c_char_p, [c_void_p, c_size_t, c_void_p]),
    "result_recognized_text": (c_char_p, [c_void_p, c_void_p]),
    "zones_parse": (c_int, [c_char_p, c_size_t, POINTER(_Day), c_void_p, c_void_p]),
    "zones_release": (None, [c_void_p]),
    "zones_count": (c_size_t, [c_void_p]),
    "zones_zone": (c_int, [c_void_p, c_size_t, POINTER(_Zone)]),
    "zones_line": (c_char_p, [c_void_p, c_size_t, c_size_t, c_void_p]),
    "zones_field": (c_int, [c_void_p, c_size_t, c_size_t, POINTER(_ZoneField)]),
    "zones_field_text": (c_char_p, [c_void_p, c_size_t, c_size_t, c_void_p]),
    "zones_field_characters": (c_char_p, [c_void_p, c_size_t, c_size_t, c_void_p]),
    "zones_field_state": (c_char_p, [c_void_p, c_size_t, c_size_t, c_void_p]),
    "zones_problem": (c_char_p, [c_void_p, c_size_t, c_size_t, POINTER(c_int32), c_void_p]),
    "zone_format_name": (c_char_p, [c_int32]),
    "zone_field_key": (c_char_p, [c_int32]),
    "check_digit_key": (c_char_p, [c_int32]),
    "zone_problem_key": (c_char_p, [c_int32]),
    "detector_create": (c_int, [POINTER(_Options), c_void_p, c_void_p]),
    "detector_release": (None, [c_void_p]),
    "detector_validate_wait": (c_int, [c_void_p, c_void_p, c_void_p, c_void_p]),
    "detector_examine_wait": (c_int, [c_void_p, c_void_p, POINTER(_Day), c_void_p, c_void_p, c_void_p]),
}


class _Library:
    def __init__(self, path):
        path = path or ctypes.util.find_library("kestrelid-detection")
        if not path:
            raise OSError("libkestrelid-detection is not installed; name its file")
        loaded = ctypes.CDLL(os.fspath(path))
        for name, (result, arguments) in _FUNCTIONS.items():
            function = getattr(loaded, "kestrelid_" + name)
            function.restype, function.argtypes = result, arguments
            setattr(self, name, function)

    def make(self, function, *arguments):
        """The handle that a function makes as its last argument but the error."""
        handle = c_void_p()
        self.call(function, *arguments, ctypes.byref(handle))
        return handle

    def call(self, function, *arguments):
        error = c_void_p()
        status = function(*arguments, ctypes.byref(error))
        if status != 0:
            text = self.error_text(error).decode(errors="replace")
            self.error_free(error)
            raise Error(status, text)

    def verdict(self, result):
        """Releases the result."""
        try:
            reasons = [self.result_reason(result, index, None) for index in range(self.result_reason_count(result))]
            return Verdict(bool(self.result_is_passport(result)), self.result_confidence(result),
                           tuple(reason.decode() for reason in reasons),
                           self.result_recognized_text(result, None).decode())
        finally:
            self.result_release(result)

    def zones(self, zones):
        """Releases the zones."""
        try:
            return tuple(self._zone(zones, index) for index in range(self.zones_count(zones)))
        finally:
            self.zones_release(zones)

    def _zone(self, zones, index):
        zone = _Zone(ctypes.sizeof(_Zone))
        self.zones_zone(zones, index, ctypes.byref(zone))
        lines = tuple(self.zones_line(zones, index, line, None).decode() for line in range(zone.lines))
        fields = tuple(self._field(zones, index, field) for field in range(zone.fields))
        problems = tuple(self._problem(zones, index, problem) for problem in range(zone.problems))
        corners = tuple(zip(zone.corners[::2], zone.corners[1::2])) if any(zone.corners) else ()
        return Zone(self.zone_format_name(zone.format).decode(), bool(zone.is_strict), lines, fields, problems, corners,
                    zone.pixels_per_character)

    def _field(self, zones, zone, index):
        field = _ZoneField(ctypes.sizeof(_ZoneField))
        self.zones_field(zones, zone, index, ctypes.byref(field))
        state = self.zones_field_state(zones, zone, index, None)
        date = (None if part < 0 else part for part in (field.year, field.two_digit_year, field.month, field.day))
        return ZoneField(self.zone_field_key(field.kind).decode(), self.zones_field_text(zones, zone, index, None).decode(),
                         self.zones_field_characters(zones, zone, index, None).decode(),
                         self.check_digit_key(field.check_digit).decode(), field.corrections, field.doubtful, *date,
                         None if state is None else state.decode(), bool(field.is_perhaps_truncated))

    def _problem(self, zones, zone, index):
        kind = c_int32()
        text = self.zones_problem(zones, zone, index, ctypes.byref(kind), None)
        return self.zone_problem_key(kind).decode(), text.decode()


def _day(as_of):
    return ctypes.byref(_Day(as_of.year, as_of.month, as_of.day)) if as_of else None


def parse_zones(text, as_of=None, library=None):
    """The machine-readable zones in a str or in bytes, one line of a zone a line of text.
    as_of: the datetime.date that tells the centuries of years; None: years keep two digits."""
    loaded = _Library(library)
    given = text.encode() if isinstance(text, str) else bytes(text)
    return loaded.zones(loaded.make(loaded.zones_parse, given, len(given), _day(as_of)))


class Detector:
    """Models are loaded by the first picture. share: another detector whose models this one uses too."""

    def __init__(self, library=None, *, resources=None, outlines=NETWORK_FIRST, effort=COMPLETE,
                 text_threads=0, share=None, console=None):
        """library: the path of the shared library; None: the installed one.
        console: gets a line of text where recognition fails, on any thread; None: standard output."""
        self._handle = None
        if share and not share._handle:
            raise ValueError("the detector to share with is closed")
        self._library = share._library if share else _Library(library)
        # Kept as long as the library may call it: by this detector, and by those that share through _shared.
        self._console = CONSOLE(lambda _, line, size: console(line[:size].decode(errors="replace"))) if console else CONSOLE()
        self._shared = share
        options = _Options(ctypes.sizeof(_Options), os.fsencode(resources) if resources else None, outlines,
                           effort, text_threads, share._handle if share else None, self._console, None)
        self._handle = self._library.make(self._library.detector_create, ctypes.byref(options))

    def close(self):
        handle, self._handle = self._handle, None
        if handle:
            self._library.detector_release(handle)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def __del__(self):
        if not sys.is_finalizing():
            self.close()

    @property
    def library_version(self):
        return self._library.library_version().decode()

    def judge_file(self, path):
        return self._judge(self._library.image_read, os.fsencode(path))

    def judge_bytes(self, encoded):
        """encoded: the bytes of a JPEG, PNG, WebP, TIFF or HEIC file."""
        return self._judge(self._library.image_decode, encoded, len(encoded))

    def judge_pixels(self, pixels, width, height, mode, stride=None):
        """mode: a name of FORMATS. stride: bytes from one row to the next; None: rows without a gap."""
        return self._judge(self._library.image_from_pixels, _described(pixels, width, height, mode, stride))

    def examine_file(self, path, as_of=None):
        """The verdict, and the zones. as_of: as for parse_zones()."""
        return self._examine(as_of, self._library.image_read, os.fsencode(path))

    def examine_bytes(self, encoded, as_of=None):
        return self._examine(as_of, self._library.image_decode, encoded, len(encoded))

    def examine_pixels(self, pixels, width, height, mode, stride=None, as_of=None):
        return self._examine(as_of, self._library.image_from_pixels, _described(pixels, width, height, mode, stride))

    def _judge(self, make_image, *arguments):
        library = self._library
        with self._image(make_image, *arguments) as image:
            return library.verdict(library.make(library.detector_validate_wait, self._handle, image))

    def _examine(self, as_of, make_image, *arguments):
        library, result, zones = self._library, c_void_p(), c_void_p()
        with self._image(make_image, *arguments) as image:
            library.call(library.detector_examine_wait, self._handle, image, _day(as_of), ctypes.byref(result),
                         ctypes.byref(zones))
        try:
            verdict = library.verdict(result)
        finally:
            found = library.zones(zones)
        return Examination(verdict, found)

    @contextlib.contextmanager
    def _image(self, make_image, *arguments):
        if not self._handle:
            raise ValueError("the detector is closed")
        image = self._library.make(make_image, *arguments)
        try:
            yield image
        finally:
            self._library.image_release(image)


def _described(pixels, width, height, mode, stride):
    kept = bytes(pixels)
    described = _Pixels(ctypes.sizeof(_Pixels), ctypes.cast(c_char_p(kept), c_void_p), len(kept),
                        stride or width * {"BGRA": 4, "RGB": 3, "L": 1}[mode], width, height, FORMATS[mode])
    described.kept = kept  # the bytes, for as long as this names their address
    return described
