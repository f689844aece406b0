"""A labelled set of pictures: the tab-separated list that names them."""

import math
import os
from dataclasses import dataclass


class Unusable(Exception):
    """What cannot be used and why, on one line."""


@dataclass(frozen=True)
class Picture:
    name: str  # as it stands in the list
    path: str
    kind: str  # "passport-scan", "other-id", ...
    quad: list | None  # where the document lies: four corners (x, y) in pixels of the upright picture
    zone: list | None = None  # the lines of its machine-readable zone


def _quad(text):
    corners = [[float(number) for number in corner.split(",")] for corner in text.split(";")]
    if [len(corner) for corner in corners] != [2] * 4 or not all(math.isfinite(n) for corner in corners for n in corner):
        raise ValueError
    return corners


def read(path):
    """The pictures of a list whose first line names its columns: file (relative to the list), kind and, where there is
    one, a column whose name begins with quad, and columns mrz1, mrz2 and mrz3. Other columns, empty lines and lines that begin with # are passed over."""
    with open(path, encoding="utf-8", errors="surrogateescape") as file:
        lines = [(number, line.rstrip("\n").split("\t")) for number, line in enumerate(file, 1)]
    lines = [(number, fields) for number, fields in lines if fields != [""] and not fields[0].startswith("#")]
    number, names = lines[0] if lines else (1, [])
    if not {"file", "kind"} <= set(names):
        raise Unusable(f"{path}:{number}: the first line must name the columns 'file' and 'kind'")
    if len(lines) == 1:
        raise Unusable(f"{path}: names no pictures")
    pictures = []
    for number, fields in lines[1:]:
        values = dict(zip(names, fields))
        for name in ("file", "kind"):
            if not values.get(name):
                raise Unusable(f"{path}:{number}: no {name}")
        quad = next((value for name, value in values.items() if name.startswith("quad") and value not in ("", "-")), None)
        try:
            quad = quad and _quad(quad)
        except ValueError:
            raise Unusable(f"{path}:{number}: the outline is not x,y;x,y;x,y;x,y") from None
        file = os.path.join(os.path.dirname(path) or ".", values["file"])
        zone = [value for name in ("mrz1", "mrz2", "mrz3") if (value := values.get(name, "-")) not in ("", "-")]
        pictures.append(Picture(values["file"], file, values["kind"], quad, zone or None))
    return pictures
