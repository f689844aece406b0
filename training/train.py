#!/usr/bin/python3
"""Trains the outline network on shards that shards.py drew.

Writes FOLDER/last.pt every few minutes and goes on from it; FOLDER/curve.tsv grows with it. --from
starts with the weights of a network that was exported before. The rate falls to nothing, as half a
cosine, over the last --cool steps. The same shards, options and number of threads give the same
network again.
"""

import argparse
import math
import time
from concurrent.futures import ThreadPoolExecutor

import cv2
import numpy as np
import torch

import folders
import restore
import sharding
import targets
from net import SIDE, OutlineNet

POOL = 12  # shards held in memory
_RENEW = 40  # steps between two shards
_SAVE = 50  # steps between two checkpoints
_TELL = 100  # steps between two lines of progress
_RECENT = 25  # steps that a loss is the mean of
_KEEP = 0.998  # of the running mean of the weights, each step
_SETTLE = 16  # batches that tell an exported network what its layers normalise by


class Pool:
    """Scenes of the shards in folder that are there and not held out, a few shards at a time."""

    def __init__(self, folder, seed):
        self._folder, self._rng = folder, np.random.default_rng(seed)
        self._held, self._uses = [], {}

    def renew(self):
        paths = sharding.listed(self._folder)
        names = {name for name, _, _ in self._held}
        fresh = [p for p in paths if p.name not in names] or paths
        # The least used first, so that new shards join at once.
        path = min(fresh, key=lambda p: (self._uses.get(p.name, 0), self._rng.random()))
        self._uses[path.name] = self._uses.get(path.name, 0) + 1
        with np.load(path) as shard:
            self._held.append((path.name, shard["pixels"], shard["quads"]))
        self._held = self._held[-POOL:]

    def batch(self, size, side):
        """Pictures (N x 3 x side x side, 0..255) and wanted maps, turned, mirrored and tinted."""
        rng = self._rng
        pictures, wanted = [], []
        for _ in range(size):
            _, pixels, quads = self._held[int(rng.integers(len(self._held)))]
            index = int(rng.integers(len(pixels)))
            picture, corners = turned(pixels[index], quads[index], int(rng.integers(8)))
            drawn = picture.shape[0]
            if side != drawn:
                picture = cv2.resize(picture, (side, side), interpolation=cv2.INTER_AREA)
            picture = picture.astype(np.float32)
            if rng.random() < 0.3:
                picture = picture[..., rng.permutation(3)]
            if rng.random() < 0.5:
                picture = picture * np.float32(np.exp(rng.normal(0, 0.15, 3)))
            if rng.random() < 0.07:
                picture = np.repeat(picture.mean(2, keepdims=True), 3, 2)
            pictures.append(np.clip(picture, 0, 255).transpose(2, 0, 1))
            wanted.append(targets.maps(corners * (side / drawn), side))
        return torch.from_numpy(np.stack(pictures)), torch.from_numpy(np.stack(wanted))


def turned(picture, quads, way):
    """A square picture and its corners in one of the eight ways to lay a square; way 0: as is."""
    side = picture.shape[0]
    if way & 4:
        picture, quads = picture.transpose(1, 0, 2), quads[..., ::-1]
    if way & 2:
        picture, quads = picture[:, ::-1], quads * [-1, 1] + [side, 0]
    if way & 1:
        picture, quads = picture[::-1], quads * [1, -1] + [0, side]
    return np.ascontiguousarray(picture), quads


def _batches(pool, options, step):
    """What each step from step on learns from; the next one is drawn meanwhile."""
    def drawn(at):
        if at % _RENEW == 0 and at > step:
            pool.renew()
        return pool.batch(options.batch, options.side)

    with ThreadPoolExecutor(1) as drawer:
        following = drawer.submit(drawn, step)
        for at in range(step + 1, options.steps + 1):
            ready, following = following.result(), drawer.submit(drawn, at) if at < options.steps else None
            yield ready


def _rate(step, options):
    warm = min(1.0, (step + 1) / 100)
    left = min(1.0, (options.steps - step) / options.cool) if options.cool else 1.0
    return options.rate * warm * (1 - math.cos(math.pi * left)) / 2


def _average(mean, net, step):
    keep = min(_KEEP, step / (step + 100))  # early weights are soon forgotten
    with torch.no_grad():
        for kept, new in zip(mean.state_dict().values(), net.state_dict().values()):
            if kept.dtype.is_floating_point:
                kept.mul_(keep).add_(new, alpha=1 - keep)
            else:
                kept.copy_(new)


def train(options):
    """Runs to options.steps; returns the mean loss of the last steps; None where none were left."""
    torch.manual_seed(options.seed)
    torch.set_num_threads(options.threads)
    cv2.setNumThreads(1)
    folder = folders.made(options.folder)
    last = folder / "last.pt"
    starts = options.start and not last.exists()
    net = (restore.network(options.start) if starts else OutlineNet()).to(memory_format=torch.channels_last)
    mean = OutlineNet()
    optimizer = torch.optim.AdamW(net.parameters(), lr=options.rate, weight_decay=1e-4)
    step = 0
    if last.exists():
        state = torch.load(last)
        net.load_state_dict(state["net"])
        mean.load_state_dict(state["mean"])
        optimizer.load_state_dict(state["optimizer"])
        step = state["step"]
    pool = Pool(options.shards, [options.seed, step])
    for _ in range(options.pool):
        pool.renew()
    if starts:
        restore.settle(net, (pool.batch(options.batch, options.side)[0] for _ in range(_SETTLE)))
    if step == 0:
        mean.load_state_dict(net.state_dict())
    losses, began, first = [], time.time(), step
    net.train()
    for pictures, wanted in _batches(pool, options, step):
        for group in optimizer.param_groups:
            group["lr"] = _rate(step, options)
        with torch.autocast("cpu", torch.bfloat16, enabled=options.halves):
            maps = net(pictures.contiguous(memory_format=torch.channels_last))
        cost = targets.loss(maps.float(), wanted)
        optimizer.zero_grad()
        cost.backward()
        torch.nn.utils.clip_grad_norm_(net.parameters(), 5.0)
        optimizer.step()
        _average(mean, net, step)
        losses.append(cost.item())
        step += 1
        if step % _RECENT == 0:
            with open(folder / "curve.tsv", "a", encoding="utf-8") as curve:
                curve.write(f"{step}\t{options.side}\t{np.mean(losses[-_RECENT:]):.4f}\t"
                            f"{_rate(step, options):.6f}\t{time.time() - began:.0f}\n")
        if step % _TELL == 0:
            left = (time.time() - began) / (step - first) * (options.steps - step) / 60
            print(f"step {step} of {options.steps}, loss {np.mean(losses[-_RECENT:]):.3f}, "
                  f"{left:.0f} minutes left", flush=True)
        if step % _SAVE == 0 or step == options.steps:
            torch.save({"net": net.state_dict(), "mean": mean.state_dict(),
                        "optimizer": optimizer.state_dict(), "step": step},
                       folder / "partial.pt")
            (folder / "partial.pt").rename(last)
    return float(np.mean(losses[-_RECENT:])) if losses else None


def parsed(arguments=None):
    parser = argparse.ArgumentParser(description=__doc__)
    option = parser.add_argument
    option("shards", help="folder of shards")
    option("folder", help="for the checkpoint and the curve")
    option("--from", dest="start", metavar="MODEL", help="ONNX file of 8-bit weights to begin with (default: none)")
    option("--steps", type=int, required=True, help="in all, those of the checkpoint included")
    option("--cool", type=int, default=0, help="last steps in which the rate falls (default: 0)")
    option("--side", type=int, default=SIDE, help="of the pictures, pixels (default: %(default)s)")
    option("--batch", type=int, default=32, help="pictures a step (default: %(default)s)")
    option("--rate", type=float, default=2e-3, help="of learning (default: %(default)s)")
    option("--threads", type=int, default=1, help="of the processor (default: %(default)s)")
    option("--halves", action="store_true", help="convolutions in bfloat16: faster where the processor knows it")
    option("--pool", type=int, default=POOL, help="shards in memory (default: %(default)s)")
    option("--seed", type=int, default=1, help="(default: %(default)s)")
    return parser.parse_args(arguments)


if __name__ == "__main__":
    loss = train(parsed())
    print("these steps were done before" if loss is None else f"loss at the end {loss:.3f}")
