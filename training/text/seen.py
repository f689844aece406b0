"""What a network sees of lines: numbers for pixels, and how wide."""

import numpy as np

HEIGHT = 48  # pixels of a line
COLUMN = 8  # pixels of its width for each column of scores
NARROWEST = 64  # pixels of width at least


def planes(picture):
    """A line (HEIGHT x W x 3, uint8) as 3 x HEIGHT x W floats in -1..1."""
    return picture.transpose(2, 0, 1).astype(np.float32) / 127.5 - 1


def joined(lines, width):
    """Planes, width wide at most, as a network takes them: N x 3 x HEIGHT x W', filled up with 0."""
    values = np.zeros((len(lines), 3, HEIGHT, max(NARROWEST, -(-width // COLUMN) * COLUMN)), np.float32)
    for target, line in zip(values, lines):
        target[..., :line.shape[2]] = line
    return values


def alone(picture):
    """The picture of one line as a network takes it."""
    return joined([planes(picture)], picture.shape[1])
