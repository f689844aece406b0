"""Whether a still picture shows a passport: a binding of kestrelid.h by ctypes.

    detector = kestrelid.Detector()
    verdict = detector.judge_file("passport.jpg")
    print(verdict.is_passport, verdict.confidence)

Every method may be called from any thread, but close() only when no other one is running; while one waits, other
Python threads run.
"""

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


class _Pixels(ctypes.Structure):
    _fields_ = [("struct_size", c_size_t), ("bytes", c_void_p), ("size", c_size_t), ("stride", c_size_t),
                ("width", c_int32), ("height", c_int32), ("format", c_int32)]


class _Options(ctypes.Structure):
    _fields_ = [("struct_size", c_size_t), ("resources", c_char_p), ("outlines", c_int32),
                ("effort", c_int32), ("text_threads", c_int32), ("share", c_void_p), ("console", CONSOLE),
                ("console_user", c_void_p)]


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
    "detector_create": (c_int, [POINTER(_Options), c_void_p, c_void_p]),
    "detector_release": (None, [c_void_p]),
    "detector_validate_wait": (c_int, [c_void_p, c_void_p, c_void_p, c_void_p]),
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
        handle, error = c_void_p(), c_void_p()
        status = function(*arguments, ctypes.byref(handle), ctypes.byref(error))
        if status != 0:
            text = self.error_text(error).decode(errors="replace")
            self.error_free(error)
            raise Error(status, text)
        return handle


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
        kept = bytes(pixels)
        address = ctypes.cast(c_char_p(kept), c_void_p)
        stride = stride or width * {"BGRA": 4, "RGB": 3, "L": 1}[mode]
        described = _Pixels(ctypes.sizeof(_Pixels), address, len(kept), stride, width, height, FORMATS[mode])
        return self._judge(self._library.image_from_pixels, ctypes.byref(described))

    def _judge(self, make_image, *arguments):
        library = self._library
        if not self._handle:
            raise ValueError("the detector is closed")
        image = library.make(make_image, *arguments)
        try:
            result = library.make(library.detector_validate_wait, self._handle, image)
        finally:
            library.image_release(image)
        try:
            reasons = [library.result_reason(result, index, None) for index in range(library.result_reason_count(result))]
            return Verdict(bool(library.result_is_passport(result)), library.result_confidence(result),
                           tuple(reason.decode() for reason in reasons),
                           library.result_recognized_text(result, None).decode())
        finally:
            library.result_release(result)
