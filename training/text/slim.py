"""A slimmer form of a trained recogniser, to be trained on: without the channels that matter least."""

from dataclasses import replace

import cv2
import numpy as np
import torch

from . import shards
from .net import Recogniser
from .seen import HEIGHT, joined, planes

# Channels that a 1 x 1 convolution gives in the published network, and here: multiples of 16, which the runtime's
# kernels take at a time. What the backbone gives at last stays, so that the layers after it fit on.
WIDTHS = {64: 48, 128: 112, 240: 192, 480: 384}
_LINES, _WIDTH = 48, 320  # that the channels are judged by, and how wide; pixels


def sample(path):
    """Planes of some lines of a shard, brought to one width."""
    some = sorted(shards.read(path), key=lambda line: abs(line[0].shape[1] - _WIDTH))[:_LINES]
    return torch.from_numpy(joined([planes(cv2.resize(picture, (_WIDTH, HEIGHT))) for picture, _ in some], _WIDTH))


def _spread(weights, blocks, lines):
    # Mean and deviation of what the blocks give, by channel.
    found = {}

    def see(number, x):
        x = x.transpose(0, 1).flatten(1).numpy()
        found[number] = x.mean(1), x.std(1)

    with torch.no_grad():
        Recogniser(weights, blocks).features(lines, see)
    return found


def slim(weights, blocks, lines):
    """Weights and blocks without the channels whose change on lines (planes) matters least to the next convolution,
    which gets their mean as a bias."""
    spread, weights, blocks = _spread(weights, blocks, lines), dict(weights), list(blocks)
    for number in range(1, len(blocks) - 2, 2):  # a 1 x 1 convolution, then one of each channel, then a 1 x 1 again
        follower, (mean, deviation) = weights[f"{number + 2}.w"], spread[number + 1]
        counts = np.square(deviation) * np.square(follower).sum((0, 2, 3))
        kept = np.sort(np.argsort(-counts)[:WIDTHS.get(len(counts), len(counts))])
        lost = np.setdiff1d(np.arange(len(counts)), kept)
        weights[f"{number + 2}.b"] = weights[f"{number + 2}.b"] + follower[:, lost, 0, 0] @ mean[lost]
        weights[f"{number + 2}.w"] = follower[:, kept]
        gate = [f"{number + 1}.se2.w", f"{number + 1}.se2.b"] if blocks[number + 1].gated else []
        for role in (f"{number}.w", f"{number}.b", f"{number + 1}.w", f"{number + 1}.b", *gate):
            weights[role] = weights[role][kept]
        if gate:
            weights[f"{number + 1}.se1.w"] = weights[f"{number + 1}.se1.w"][:, kept]
        blocks[number + 1] = replace(blocks[number + 1], groups=len(kept))
    return weights, blocks
