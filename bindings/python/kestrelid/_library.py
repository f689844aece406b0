"""kestrelid.h by ctypes. CDLL gives the interpreter lock away for the time of each call."""

from __future__ import annotations

import ctypes
import functools
import os
from ctypes import POINTER, c_char_p, c_double, c_int, c_int32, c_size_t, c_void_p
from typing import Any, Optional, Type, Union

from ._errors import ArgumentError, Error, LibraryError, OutOfMemoryError, UnreadableError
from ._version import __version__

NAME = "libkestrelid-detection.so.0"  # with the number of the interface
VARIABLE = "KESTRELID_LIBRARY"
PACKAGE = "libkestrelid-detection0"

CONSOLE = ctypes.CFUNCTYPE(None, c_void_p, POINTER(ctypes.c_char), c_size_t)


class Pixels(ctypes.Structure):
    _fields_ = [("struct_size", c_size_t), ("bytes", c_void_p), ("size", c_size_t), ("stride", c_size_t),
                ("width", c_int32), ("height", c_int32), ("format", c_int32)]


class Options(ctypes.Structure):
    _fields_ = [("struct_size", c_size_t), ("resources", c_char_p), ("effort", c_int32),
                ("text_threads", c_int32), ("share", c_void_p), ("console", CONSOLE), ("console_user", c_void_p)]


class Day(ctypes.Structure):
    _fields_ = [("year", c_int32), ("month", c_int32), ("day", c_int32)]


class ZoneStruct(ctypes.Structure):
    _fields_ = [("struct_size", c_size_t), ("lines", c_size_t), ("fields", c_size_t), ("problems", c_size_t),
                ("format", c_int32), ("is_strict", c_int32), ("pixels_per_character", c_double), ("corners", c_double * 8)]


class ZoneFieldStruct(ctypes.Structure):
    _fields_ = [("struct_size", c_size_t), ("corrections", c_size_t), ("doubtful", c_size_t), ("kind", c_int32),
                ("check_digit", c_int32), ("year", c_int32), ("two_digit_year", c_int32), ("month", c_int32),
                ("day", c_int32), ("is_known_state", c_int32), ("is_perhaps_truncated", c_int32)]


# name -> (what it returns, its arguments). Handles and errors that a function makes come last, by their addresses; texts
# are c_void_p, so that ctypes does not cut them at a zero byte.
_FUNCTIONS: dict[str, tuple[Any, list[Any]]] = {
    "library_version": (c_char_p, []),
    "error_text": (c_char_p, [c_void_p]),
    "error_free": (None, [c_void_p]),
    "image_read": (c_int, [c_char_p, c_void_p, c_void_p]),
    "image_decode": (c_int, [c_char_p, c_size_t, c_void_p, c_void_p]),
    "image_from_pixels": (c_int, [POINTER(Pixels), c_void_p, c_void_p]),
    "image_release": (None, [c_void_p]),
    "result_release": (None, [c_void_p]),
    "result_is_passport": (c_int, [c_void_p]),
    "result_confidence": (c_double, [c_void_p]),
    "result_reason_count": (c_size_t, [c_void_p]),
    "result_reason": (c_void_p, [c_void_p, c_size_t, c_void_p]),
    "result_recognized_text": (c_void_p, [c_void_p, c_void_p]),
    "result_outline": (c_int, [c_void_p, c_double * 8]),
    "result_match_count": (c_size_t, [c_void_p]),
    "result_match": (c_void_p, [c_void_p, c_size_t, POINTER(c_int32), c_void_p]),
    "zones_parse": (c_int, [c_char_p, c_size_t, POINTER(Day), c_void_p, c_void_p]),
    "zones_release": (None, [c_void_p]),
    "zones_count": (c_size_t, [c_void_p]),
    "zones_zone": (c_int, [c_void_p, c_size_t, POINTER(ZoneStruct)]),
    "zones_line": (c_void_p, [c_void_p, c_size_t, c_size_t, c_void_p]),
    "zones_field": (c_int, [c_void_p, c_size_t, c_size_t, POINTER(ZoneFieldStruct)]),
    "zones_field_text": (c_void_p, [c_void_p, c_size_t, c_size_t, c_void_p]),
    "zones_field_characters": (c_void_p, [c_void_p, c_size_t, c_size_t, c_void_p]),
    "zones_field_state": (c_void_p, [c_void_p, c_size_t, c_size_t, c_void_p]),
    "zones_problem": (c_void_p, [c_void_p, c_size_t, c_size_t, POINTER(c_int32), c_void_p]),
    "zone_format_name": (c_char_p, [c_int32]),
    "zone_field_key": (c_char_p, [c_int32]),
    "check_digit_key": (c_char_p, [c_int32]),
    "zone_problem_key": (c_char_p, [c_int32]),
    "detector_create": (c_int, [POINTER(Options), c_void_p, c_void_p]),
    "detector_release": (None, [c_void_p]),
    "detector_validate_wait": (c_int, [c_void_p, c_void_p, c_void_p, c_void_p]),
    "detector_examine_wait": (c_int, [c_void_p, c_void_p, POINTER(Day), c_void_p, c_void_p, c_void_p]),
}

# By KestrelidStatus; others are Error itself.
_ERRORS: dict[int, Type[Error]] = {1: ArgumentError, 2: UnreadableError, 3: OutOfMemoryError}


class Library:
    """The functions of a loaded library, by their names without `kestrelid_`."""

    def __init__(self, path: str, loaded: ctypes.CDLL) -> None:
        for name, (result, arguments) in _FUNCTIONS.items():
            try:
                function = getattr(loaded, f"kestrelid_{name}")
            except AttributeError:
                raise LibraryError(f"{path} has no function kestrelid_{name}: version {__version__} of this package needs "
                                   f"the same version of the library; see the package {PACKAGE}") from None
            function.restype, function.argtypes = result, arguments
            setattr(self, name, function)

    def __getattr__(self, name: str) -> Any:
        raise AttributeError(f"kestrelid.h has no function kestrelid_{name}")

    def call(self, function: Any, *arguments: Any) -> None:
        error = c_void_p()
        status = function(*arguments, ctypes.byref(error))
        if status != 0:
            text = (self.error_text(error) or b"").decode(errors="replace")
            self.error_free(error)
            raise _ERRORS.get(status, Error)(text or "not enough memory to say what failed")

    def make(self, function: Any, *arguments: Any) -> c_void_p:
        """The handle that a function makes."""
        handle = c_void_p()
        self.call(function, *arguments, ctypes.byref(handle))
        return handle

    @staticmethod
    def text(function: Any, *arguments: Any) -> Optional[str]:
        size = c_size_t()
        address = function(*arguments, ctypes.byref(size))
        return None if address is None else ctypes.string_at(address, size.value).decode()


@functools.lru_cache(maxsize=None)
def _loaded(path: str, named_by: str) -> Library:
    try:
        loaded = ctypes.CDLL(path)
    except OSError as error:
        way_out = (f"Check {named_by}." if named_by else
                   f"Install the Debian package {PACKAGE}, or let the environment variable {VARIABLE} name the library's file.")
        raise LibraryError(f"{error}. {way_out}") from None
    return Library(path, loaded)


def load(path: Union[str, os.PathLike[str], None] = None) -> Library:
    """path: None for KESTRELID_LIBRARY, or else the installed one."""
    if path is not None:
        return _loaded(os.fspath(path), "the argument library=")
    variable = os.environ.get(VARIABLE)
    return _loaded(variable, f"the environment variable {VARIABLE}") if variable else _loaded(NAME, "")
