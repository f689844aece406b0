"""Lines of the shards for a step of training: alike in width, brought to one width, so that none is padded much."""

from functools import partial
from pathlib import Path

import cv2
import numpy as np
import torch

import folders
import sharding

from . import shards
from .alphabet import ALPHABET
from .seen import COLUMN, HEIGHT, NARROWEST, joined, planes

_STRETCH = 1.1  # of a line's width at most
_TOGETHER = 4  # shards whose features are made together
_GROUP = 16  # lines a time there: with fewer, torch takes a slow convolution in floats


def classes(text):
    return np.array([1 + ALPHABET.index(c) for c in text], np.int64)


class Alike:
    """Draws what is alike in width; a wide line counts for more draws, as fewer fit into a batch."""

    def __init__(self, widths):
        self._order = np.argsort(widths, kind="stable")
        self._widths = np.asarray(widths)[self._order]
        self._until = np.cumsum(self._widths)

    def draw(self, rng, total):
        """A width, and positions of lines that need not be stretched much for it, total wide in all."""
        anchor = np.searchsorted(self._until, rng.random() * self._until[-1], "right")
        wanted = self._widths[anchor] * rng.uniform(0.93, 1.07)
        first, end = np.searchsorted(self._widths, [wanted / _STRETCH, wanted * _STRETCH])
        return wanted, self._order[first + rng.permutation(end - first)[:max(1, int(total / wanted))]]


def _cropped(rng, picture):
    # Another crop of it: cut at its ends, or with more around it, and askew. In parts of the height.
    height, width = picture.shape[:2]
    ends = rng.uniform(-0.35, 0.35, 2) * min(1, width / 2 / height) * (rng.random(2) < 0.7)
    top, bottom = rng.uniform(-0.12, 0.15, 2)
    tilt = rng.normal(0, 0.05) * (rng.random() < 0.5)
    corners = [[ends[0], top - tilt], [width / height - ends[1], top + tilt], [ends[0], 1 - bottom - tilt]]
    matrix = cv2.getAffineTransform(np.float32(corners) * height, np.float32([[0, 0], [width, 0], [0, height]]))
    return cv2.warpAffine(picture, matrix, (width, height), borderMode=cv2.BORDER_REPLICATE)


def _roughened(rng, picture):
    # A line as a bad crop or a bad picture shows it; not all of its text may be left.
    height, width = picture.shape[:2]
    if rng.random() < 0.75:
        picture = _cropped(rng, picture)
    if rng.random() < 0.4:  # fewer pixels
        share = rng.uniform(0.3, 0.8)
        size = max(4, round(width * share)), round(height * share)
        picture = cv2.resize(cv2.resize(picture, size, interpolation=cv2.INTER_AREA), (width, height))
    if rng.random() < 0.3:
        picture = cv2.GaussianBlur(picture, (0, 0), rng.uniform(0.4, 1.6))
    if rng.random() < 0.3:
        picture = 2.0 * picture - cv2.GaussianBlur(picture, (0, 0), rng.uniform(0.8, 2.5))
    values = picture.astype(np.float32)
    if rng.random() < 0.5:  # pale or harsh, dark or light
        values = (values - 128) * np.float32(rng.uniform(0.25, 1.3)) + np.float32(128 + rng.uniform(-70, 70))
    if rng.random() < 0.4:
        values = values + np.float32(rng.uniform(2, 14)) * rng.standard_normal(values.shape, np.float32)
    if rng.random() < 0.08:
        values = 255 - values
    if rng.random() < 0.06:  # upside down
        values = values[::-1, ::-1]
    return np.clip(values, 0, 255).astype(np.uint8)


class Lines:
    """Lines of the shards that are there, a few shards at a time, each about as often as the others; none is the same
    twice."""

    def __init__(self, folder, seed, held):
        self._folder, self._rng, self._most = folder, np.random.default_rng(seed), held
        self._held, self._uses, self._unused = [], {}, 0
        while len(self._held) < held:
            self._renew()

    def _renew(self):
        path = min(sharding.listed(self._folder), key=lambda p: (self._uses.get(p.name, 0), self._rng.random()))
        self._uses[path.name] = self._uses.get(path.name, 0) + 1
        self._held.append([(picture, classes(text)) for picture, text in shards.read(path)])
        self._held = self._held[-self._most:]
        self._lines = sum(self._held, [])
        self._alike = Alike([picture.shape[1] for picture, _ in self._lines])
        self._unused += len(self._held[-1])

    def batch(self, columns):
        """Planes of lines, how many columns are a line's own (None: all), and classes of the lines."""
        return self._batch(columns, lambda picture: picture)

    def rough(self, columns):
        """A batch as bad crops and bad pictures show it; not all of a line's text may be left."""
        return self._batch(columns, partial(_roughened, self._rng))

    def _batch(self, columns, change):
        if self._unused <= 0:
            self._renew()
        width, chosen = self._alike.draw(self._rng, columns * COLUMN)
        self._unused -= len(chosen)
        width = -(-int(width) // COLUMN) * COLUMN if width > NARROWEST else int(width)
        pictures = [change(self._lines[position][0]) for position in chosen]
        pictures = [self._varied(picture, width) for picture in pictures]
        return torch.from_numpy(joined(pictures, width)), None, [self._lines[position][1] for position in chosen]

    def _varied(self, picture, width):
        rng = self._rng
        x = planes(cv2.resize(picture, (max(8, width - int(rng.integers(COLUMN))), HEIGHT)))
        offset = rng.uniform(-0.15, 0.15) + rng.uniform(-0.05, 0.05, (3, 1, 1))
        return np.clip(x * rng.uniform(0.8, 1.15) + offset, -1, 1, dtype=np.float32)


class Features:
    """What the backbone makes of the lines, from a folder that write() filled."""

    def __init__(self, folder, seed):
        self._rng, self._maps, self._said = np.random.default_rng(seed), [], []
        for path in sorted(Path(folder).glob("*.npy")):
            if "partial" not in path.name:
                maps = np.load(path, mmap_mode="r")
                with np.load(path.with_suffix(".npz")) as kept:
                    self._maps += np.split(maps, np.cumsum(kept["columns"])[:-1])
                    self._said += np.split(kept["said"], np.cumsum(kept["lengths"])[:-1])
        self._alike = Alike([len(maps) for maps in self._maps])

    def batch(self, columns):
        """As of Lines, with features (N x T x channels) for the lines; those of narrower ones end in zeros."""
        chosen = self._alike.draw(self._rng, columns)[1]
        own = [len(self._maps[position]) for position in chosen]
        features = np.zeros((len(chosen), max(own), self._maps[0].shape[1]), np.float32)
        for line, position in zip(features, chosen):
            line[:len(self._maps[position])] = self._maps[position]
        return torch.from_numpy(features), torch.tensor(own), [self._said[position] for position in chosen]


def write(net, source, folder, member=0, members=1):
    """Features of all shards in source (16-bit floats), each member its share; those that are there stay."""
    folder = folders.made(folder)
    paths = sharding.listed(source)
    lots = [paths[at:at + _TOGETHER] for at in range(0, len(paths), _TOGETHER)][member::members]
    for number, lot in enumerate(lots):
        done = folder / f"{lot[0].stem}.npy"
        if done.exists():
            continue
        maps, said = _features(net, [line for path in lot for line in shards.read(path)])
        np.savez(done.with_suffix(".npz"), columns=[len(m) for m in maps], said=np.concatenate(said),
                 lengths=[len(s) for s in said])
        partial = folder / f"{lot[0].stem}.partial.npy"
        np.save(partial, np.concatenate(maps))
        partial.rename(done)
        print(f"features of {lot[0].stem} and the next, {len(lots) - 1 - number} lots to go", flush=True)


def _features(net, lines):
    # The widest first: what they leave free holds the narrower ones' maps, and memory does not grow.
    lines = sorted(lines, key=lambda line: -line[0].shape[1])
    maps = []
    for at in range(0, len(lines), _GROUP):
        group = [picture for picture, _ in lines[at:at + _GROUP]]
        width = max(8, int(np.mean([picture.shape[1] for picture in group])))
        group = torch.from_numpy(joined([planes(cv2.resize(picture, (width, HEIGHT))) for picture in group], width))
        with torch.no_grad():
            filled = net.features(group.repeat(-(-_GROUP // len(group)), 1, 1, 1)[:_GROUP])
        maps += list(filled[:len(group)].numpy().astype(np.float16))
    return maps, [classes(text) for _, text in lines]
