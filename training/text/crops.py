"""Cuts the lines of text out of labelled pictures: python3 -m text.crops MANIFEST FOLDER PUBLISHED.

As the library cuts them (src/vision/text: TextDetector, TextBoxes, LineBox, PageReader), but which way up a page lies
is told by reading its clearest lines both ways. FOLDER gets a PNG a line, 48 pixels high; index.tsv: picture,
passport or other, crop, the published recogniser's confidence and text; zones.tsv: picture and both lines of its
zone, where the manifest names them. Crops measure: nothing is trained on them, and none enters the repository.
"""

import argparse
import csv
from dataclasses import dataclass, replace
from pathlib import Path

import cv2
import numpy as np

from . import published
from .reading import Reader, load
from .runtime import Session
from .seen import HEIGHT

_INDEX, _ZONES = "index.tsv", "zones.tsv"
_PICTURE_SIDE, _DETECTOR_SIDE = 1800, 832  # pixels: longest side read from, longest side the detector sees
_SIDE_MULTIPLE, _STRONGEST_ENLARGING = 32, 2.0
_MEAN, _DEVIATION = np.array([0.485, 0.456, 0.406]), np.array([0.229, 0.224, 0.225])  # red, green, blue of 0..1
_PIXEL, _BOX, _UNCLIP = 0.3, 0.5, 1.6  # least probability of a pixel, of a core; growth by area over half the perimeter
_SMALLEST_CORE, _MOST_BOXES = 3, 400
_LONGEST = 2400  # pixels of a crop; longer lines are squeezed
_ELONGATED, _CROSSWISE, _SMOOTH_SHRINK = 1.7, 2.5, 1.5
_VOTERS = 6  # lines that tell which way up a page lies


@dataclass(frozen=True)
class Line:
    """A line of text in a picture, in pixels; along: unit vector in reading direction, y growing downwards."""

    centre: np.ndarray
    along: np.ndarray
    length: float
    height: float
    crosswise: bool = False  # runs up or down the page, so that the page's direction does not tell its own

    def reversed(self):
        return replace(self, along=-self.along)


def boxes(detector, picture):
    """Rotated boxes ((x, y), (width, height), degrees) around the text of picture (BGR)."""
    height, width = picture.shape[:2]
    scale = min(_STRONGEST_ENLARGING, _DETECTOR_SIDE / max(height, width))
    seen = [max(1, round(side * scale / _SIDE_MULTIPLE)) * _SIDE_MULTIPLE for side in (width, height)]
    small = cv2.resize(picture, seen, interpolation=cv2.INTER_AREA if seen[0] < width else cv2.INTER_LINEAR)
    values = ((small[:, :, ::-1] / 255 - _MEAN) / _DEVIATION).astype(np.float32)
    likely = detector.run(np.ascontiguousarray(values.transpose(2, 0, 1)[None]))[0][0, 0]
    contours = cv2.findContours((likely > _PIXEL).astype(np.uint8), cv2.RETR_LIST, cv2.CHAIN_APPROX_SIMPLE)[0]
    found = []
    for centre, (across, down), angle in map(cv2.minAreaRect, contours):
        if min(across, down) < _SMALLEST_CORE:
            continue
        core = np.zeros(likely.shape, np.uint8)
        cv2.fillConvexPoly(core, np.int32(np.round(cv2.boxPoints((centre, (across, down), angle)))), 255)
        if cv2.mean(likely, core)[0] < _BOX:
            continue
        growth = _UNCLIP * across * down / (across + down)
        corners = cv2.boxPoints((centre, (across + growth, down + growth), angle))
        found.append(cv2.minAreaRect(np.float32(corners * [width / seen[0], height / seen[1]])))
    return sorted(found, key=lambda box: -box[1][0] * box[1][1])[:_MOST_BOXES]


def _unit(radians):
    return np.array([np.cos(radians), np.sin(radians)])


def _mean_angle(found, reference, tolerance):
    # Radians, of the elongated boxes within tolerance of reference, by length. Angles are doubled, as a direction and
    # its opposite are the same.
    total = np.zeros(2)
    for _, (across, down), degrees in found:
        angle = np.radians(degrees if across >= down else degrees + 90)
        off = (angle - reference + np.pi / 2) % np.pi - np.pi / 2
        if max(across, down) >= _ELONGATED * min(across, down) and abs(off) <= tolerance:
            total += _unit(2 * angle) * max(across, down)
    return np.arctan2(total[1], total[0]) / 2 if total.any() else reference


def level(found):
    """The boxes as lines of one page, and that page's direction (radians, one of the two ways along it)."""
    page = _mean_angle(found, _mean_angle(found, 0, np.pi / 2 + 0.01), np.pi / 8)
    lines = []
    for centre, (length, height), degrees in found:
        turns = round((page - np.radians(degrees)) / (np.pi / 2))
        if turns % 2:
            length, height = height, length
        along = _unit(np.radians(degrees) + turns * np.pi / 2)
        if height > _CROSSWISE * length:
            lines.append(Line(np.array(centre), np.array([-along[1], along[0]]), height, length, True))
        else:
            lines.append(Line(np.array(centre), along, length, height))
    return lines, page


def cut(picture, line):
    """The line upright, HEIGHT x W x 3."""
    width = int(np.clip(round(line.length / line.height * HEIGHT), 1, _LONGEST))
    shrinks = line.height > _SMOOTH_SHRINK * HEIGHT  # sampling between neighbours would skip pixels
    size = (max(1, round(line.length)), round(line.height)) if shrinks else (width, HEIGHT)
    down = np.array([-line.along[1], line.along[0]])
    across_step, down_step = line.along * line.length / size[0], down * line.height / size[1]
    origin = line.centre - (line.along * line.length + down * line.height - across_step - down_step) / 2 - 0.5
    crop = cv2.warpAffine(picture, np.float32(np.stack([across_step, down_step, origin], 1)), size,
                          flags=cv2.INTER_LINEAR | cv2.WARP_INVERSE_MAP, borderMode=cv2.BORDER_REPLICATE)
    return cv2.resize(crop, (width, HEIGHT), interpolation=cv2.INTER_AREA) if shrinks else crop


def _upside_down(picture, lines, reader):
    clear = [line for line in lines if not line.crosswise and line.length > 1.5 * line.height]
    clear.sort(key=lambda line: -line.height * min(line.length, 6 * line.height))
    lead = 0.0
    for line in clear[:_VOTERS]:
        for sign, turned in ((-1, line), (1, line.reversed())):
            text, confidence = reader.read(cut(picture, turned))
            lead += sign * confidence * len(text)
    return lead > 0


def crops(picture, detector, reader):
    """Of each line of picture (BGR): its crop, the reader's text, its confidence."""
    scale = _PICTURE_SIDE / max(picture.shape[:2])
    if scale < 1:
        size = [max(1, round(side * scale)) for side in picture.shape[1::-1]]
        picture = cv2.resize(picture, size, interpolation=cv2.INTER_AREA)
    lines, page = level(boxes(detector, picture))
    if abs(np.cos(page)) < abs(np.sin(page)):  # the detector breaks up lines that run up or down
        picture = cv2.rotate(picture, cv2.ROTATE_90_CLOCKWISE)
        lines, page = level(boxes(detector, picture))
    if _upside_down(picture, lines, reader):
        lines = [line.reversed() for line in lines]
    for line in lines:
        ways = [cut(picture, way) for way in ([line, line.reversed()] if line.crosswise else [line])]
        said, crop = max(((reader.read(crop), crop) for crop in ways), key=lambda way: way[0][1])
        yield crop, *said


def write(manifest, folder, resources):
    """Cuts every picture of manifest into folder, with the models of resources."""
    detector = Session(resources / published.DETECTOR)
    reader = Reader(resources / published.RECOGNISER, resources / published.DICTIONARY)
    folder.mkdir(parents=True, exist_ok=True)
    with open(manifest, encoding="utf-8") as rows, open(folder / _INDEX, "w", encoding="utf-8") as index, \
            open(folder / _ZONES, "w", encoding="utf-8") as zones:
        number = 0
        for row in csv.DictReader(rows, delimiter="\t", quoting=csv.QUOTE_NONE):
            kind = "passport" if row["kind"].startswith("passport") else "other"
            if row["mrz1"] != "-":
                print(row["file"], row["mrz1"], row["mrz2"], sep="\t", file=zones)
            first = number
            for crop, text, confidence in crops(load(manifest.parent / row["file"]), detector, reader):
                cv2.imwrite(str(folder / f"{number:05d}.png"), crop)
                print(row["file"], kind, f"{number:05d}.png", f"{confidence:.4f}", text, sep="\t", file=index)
                number += 1
            print(f"{row['file']}: {number - first} lines", flush=True)


def read(folder):
    """The crops in folder as lists of (picture, kind, crop); zones as {picture: [line, line]}."""
    def rows(name):
        try:
            return [row.split("\t") for row in Path(folder, name).read_text(encoding="utf-8").splitlines()]
        except OSError as error:
            raise SystemExit(f"{Path(folder, name)}: {error.strerror}") from error
    return ([(row[0], row[1], load(Path(folder, row[2]))) for row in rows(_INDEX)],
            {row[0]: row[1:] for row in rows(_ZONES)})


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("manifest", type=Path, help="table of pictures that lie beside it: file, kind, mrz1, mrz2")
    parser.add_argument("folder", type=Path, help="for the crops, below training/out")
    parser.add_argument("published", type=Path, help="folder that text.fetch filled")
    options = parser.parse_args()
    cv2.setNumThreads(1)
    try:
        write(options.manifest, options.folder, options.published)
    except OSError as error:
        raise SystemExit(f"{error.filename}: {error.strerror}") from error
    except KeyError as error:
        raise SystemExit(f"{options.manifest}: has no column {error}") from error
