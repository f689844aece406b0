"""What stands for a picture in Python becomes an image of the library.

Arrays are seen through the buffer protocol and Pillow is looked at only if somebody else imported it, so that this
package needs neither NumPy nor Pillow.
"""

from __future__ import annotations

import ctypes
import os
import sys
from ctypes import c_void_p
from typing import TYPE_CHECKING, Any, Literal, NoReturn, Optional, Protocol, Union

from ._errors import ArgumentError, UnreadableError
from ._library import Library, Pixels

if TYPE_CHECKING:
    import numpy
    import numpy.typing
    import PIL.Image

class BinaryFile(Protocol):
    """What open(file, "rb"), io.BytesIO, urllib and zipfile give, for example."""

    def read(self, size: int, /) -> Optional[bytes]: ...


Format = Literal["rgb", "bgr", "rgba", "bgra", "gray"]
Picture = Union[str, "os.PathLike[Any]", bytes, bytearray, memoryview, BinaryFile, "numpy.typing.NDArray[numpy.uint8]",
                "PIL.Image.Image"]

# KestrelidPixelFormat -> bytes a pixel.
_BGRA, _RGB, _GRAY, _BGR, _RGBA = range(5)
_DEPTHS = {_BGRA: 4, _RGB: 3, _GRAY: 1, _BGR: 3, _RGBA: 4}
_FORMATS = {"rgb": _RGB, "bgr": _BGR, "rgba": _RGBA, "bgra": _BGRA, "gray": _GRAY}

# The library's own limits, held before anything is copied.
_MAXIMUM_SIDE, _MAXIMUM_PIXELS, _MAXIMUM_FILE = 20000, 100_000_000, 64 * 1024 * 1024


def image(library: Library, picture: Any, format: Optional[Format]) -> c_void_p:
    """An image of the library, to be released."""
    pillow: Any = sys.modules.get("PIL.Image")
    is_pillow = pillow is not None and isinstance(picture, pillow.Image)
    is_path = isinstance(picture, (str, os.PathLike))
    is_file = not is_path and not is_pillow and callable(getattr(picture, "read", None))
    view = None if is_path or is_pillow or is_file else _view(picture)
    if view is not None and (view.ndim != 1 or view.format != "B"):
        return _of_array(library, view, format)
    if format is not None:
        raise ArgumentError("format= is for arrays of pixels, of shape (height, width) or (height, width, channels)")
    if is_path:
        path = os.fsencode(picture)
        if b"\0" in path:
            raise ArgumentError("a path cannot hold a zero byte")
        return library.make(library.image_read, path)
    if view is not None:
        encoded = picture if type(picture) is bytes else view.tobytes()
        return library.make(library.image_decode, encoded, len(encoded))
    if is_file:
        return _of_file(library, picture)
    return _of_pillow(library, picture)


def _view(picture: Any) -> memoryview:
    try:
        return memoryview(picture)
    except (TypeError, ValueError, BufferError):  # an array whose items no buffer can describe among them
        kind = f"{type(picture).__module__}.{type(picture).__qualname__}".replace("builtins.", "")
    raise TypeError(f"a picture is a path, the bytes of a file, a file that is open, an array of uint8 or a Pillow image, not {kind}"
                    + (f" of {picture.dtype}" if hasattr(picture, "dtype") else ""))


def _refuse(complaint: str) -> NoReturn:
    raise ArgumentError(complaint)


def _check_size(width: int, height: int) -> None:
    if not (0 < width <= _MAXIMUM_SIDE and 0 < height <= _MAXIMUM_SIDE and width * height <= _MAXIMUM_PIXELS):
        _refuse(f"a picture of {width}x{height} is out of range: 1 to {_MAXIMUM_SIDE} pixels a side, "
                f"{_MAXIMUM_PIXELS // 1_000_000} million in all")


def _of_array(library: Library, view: memoryview, format: Optional[Format]) -> c_void_p:
    given = shape = tuple(view.shape or ())
    if view.format not in ("B", "<B", ">B", "=B", "@B"):
        raise TypeError(f"an array of uint8 is needed, not one whose items are '{view.format}' of {view.itemsize} bytes")
    if len(shape) == 2:
        shape = (*shape, 1)
    if len(shape) != 3 or shape[2] not in (1, 3, 4):
        _refuse(f"an array of shape {given} is no picture: (height, width) or (height, width, 1, 3 or 4) is")
    height, width, channels = shape
    if format is None:
        if channels != 1:
            _refuse("format= must say what the channels are: " +
                    ("'rgb', or 'bgr' as OpenCV has them" if channels == 3 else "'rgba' or 'bgra'"))
        format = "gray"
    if format not in _FORMATS:
        _refuse(f"format={format!r} is none of {', '.join(_FORMATS)}")
    pixel_format = _FORMATS[format]
    needed = _DEPTHS[pixel_format]
    if channels != needed:
        _refuse(f"format={format!r} needs {needed} channels; the array of shape {given} has {channels}")
    _check_size(width, height)
    rows = view.tobytes()  # whatever the strides are: row after row, channel beside channel
    return _of_rows(library, rows, width, height, pixel_format)


def _of_rows(library: Library, rows: bytes, width: int, height: int, pixel_format: int) -> c_void_p:
    address = ctypes.cast(ctypes.c_char_p(rows), c_void_p)
    return library.make(library.image_from_pixels, ctypes.byref(
        Pixels(ctypes.sizeof(Pixels), address, len(rows), width * _DEPTHS[pixel_format], width, height, pixel_format)))


def _of_file(library: Library, file: Any) -> c_void_p:
    """What a file has from where it stands. It is left open, at its end."""
    name = getattr(file, "name", None)
    where = "".join(c if c.isprintable() else "\ufffd" for c in name) + ": " if name and isinstance(name, str) else ""
    encoded = bytearray()
    while len(encoded) <= _MAXIMUM_FILE:  # one call may give less than it is asked for
        try:
            part = file.read(_MAXIMUM_FILE + 1 - len(encoded))
        except UnicodeDecodeError:
            part = ""
        except (OSError, ValueError) as error:
            raise UnreadableError(f"{where}{' '.join(str(error).split())}") from error
        if isinstance(part, str):
            raise TypeError(f"{where}opened as text: a picture is read from a file opened by open(file, 'rb')")
        if not part:
            break
        try:
            encoded += part
        except TypeError:
            raise TypeError(f"{where}read() gave no bytes but {type(part).__qualname__}") from None
    if len(encoded) > _MAXIMUM_FILE:
        raise UnreadableError(f"{where}more than {_MAXIMUM_FILE} bytes, the most that are read")
    if not encoded:
        raise UnreadableError(f"{where}nothing is left to read: seek(0) goes back to the start of a file that was read")
    try:
        return library.make(library.image_decode, bytes(encoded), len(encoded))
    except UnreadableError as error:
        raise UnreadableError(f"{where}{error}") from None


def _of_pillow(library: Library, picture: Any) -> c_void_p:
    """As the library sees the file: turned as its EXIF data say, and on white where it lets through."""
    from PIL import Image, ImageOps

    _check_size(*picture.size)
    if picture.mode.startswith(("I", "F")):
        _refuse(f"a Pillow image of mode {picture.mode} has no fixed range of values: convert it to 'L' or 'RGB' first")
    try:
        if picture.getexif().get(0x0112, 1) != 1:
            picture = ImageOps.exif_transpose(picture)
        if picture.mode in ("RGBA", "LA", "PA", "RGBa", "La") or "transparency" in picture.info:
            white = Image.new("RGBA", picture.size, "white")
            picture = Image.alpha_composite(white, picture.convert("RGBA"))
        if picture.mode not in ("L", "RGB"):
            picture = picture.convert("RGB")
        rows = picture.tobytes()
    except (OSError, SyntaxError, ValueError, EOFError) as error:
        raise UnreadableError(f"Pillow cannot read the image: {' '.join(str(error).split())}") from error
    width, height = picture.size
    return _of_rows(library, rows, width, height, _GRAY if picture.mode == "L" else _RGB)
