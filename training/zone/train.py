"""Trains the zone network on shards that zone.shards drew: python3 -m zone.train SHARDS FOLDER --steps N.

Writes FOLDER/last.pt every few minutes and goes on from it; FOLDER/curve.tsv grows with it. The rate
falls to nothing over the last --cool steps. New shards join while it runs.
"""

import argparse
import time

import numpy as np
import torch
from torch.nn import functional

import folders
import sharding

from .net import ZoneNet
from .strips import normalised

_POOL = 6  # shards held in memory
_SAVE = 200  # steps between two checkpoints
_TELL = 100  # steps between two lines of progress
_KEEP = 0.998  # of the running mean of the weights, each step


class Pool:
    """Strips of the shards in folder that are there, a few shards at a time, each about as often as the others."""

    def __init__(self, folder, seed, size):
        self._folder, self._rng, self._size = folder, np.random.default_rng(seed), size
        self._held, self._uses = [], {}
        while len(self._held) < size:
            self.renew()

    def renew(self):
        path = min(sharding.listed(self._folder), key=lambda p: (self._uses.get(p.name, 0), self._rng.random()))
        self._uses[path.name] = self._uses.get(path.name, 0) + 1
        with np.load(path) as shard:
            self._held.append((shard["pixels"], shard["said"]))
        self._held = self._held[-self._size:]
        return len(self._held[-1][0])

    def batch(self, size):
        """Strips as the network takes them, their texts one after the other, and how long each is."""
        pixels, said = [], []
        for shard in self._rng.integers(0, len(self._held), size):
            position = int(self._rng.integers(len(self._held[shard][0])))
            pixels.append(self._held[shard][0][position])
            said.append(self._held[shard][1][position])
        said = np.stack(said)
        lengths = (said > 0).sum(1)
        return (torch.from_numpy(normalised(np.stack(pixels))), torch.from_numpy(said[said > 0].astype(np.int64)),
                torch.from_numpy(lengths))


def loss(scores, said, lengths):
    """CTC: how unlikely the texts are, a character."""
    chances = functional.log_softmax(scores, 1).permute(2, 0, 1)
    columns = torch.full((len(lengths),), chances.shape[0], dtype=torch.long)
    return functional.ctc_loss(chances, said, columns, lengths, zero_infinity=True)


def _rate(step, options):
    warm = min(1.0, (step + 1) / 300)
    left = (options.steps - step) / options.cool if options.cool else 1.0
    return options.rate * warm * min(1.0, left)


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
    torch.set_flush_denormal(True)  # they make a step several times as slow
    folder = folders.made(options.folder)
    net, mean = ZoneNet(), ZoneNet()
    last, step = folder / "last.pt", 0
    state = torch.load(last) if last.exists() else None
    if state:
        net.load_state_dict(state["net"])
    net = net.to(memory_format=torch.channels_last)
    mean.load_state_dict(state["mean"] if state else net.state_dict())
    optimizer = torch.optim.AdamW(net.parameters(), lr=options.rate, betas=(0.9, 0.98), weight_decay=0.01)
    if state:
        optimizer.load_state_dict(state["optimizer"])
        step = state["step"]
    pool = Pool(options.shards, [options.seed, step], options.pool)
    losses, began, first, unused = [], time.time(), step, 0
    net.train()
    while step < options.steps:
        for group in optimizer.param_groups:
            group["lr"] = _rate(step, options)
        lines, said, lengths = pool.batch(options.batch)
        with torch.autocast("cpu", torch.bfloat16, enabled=options.halves):
            scores = net(lines.contiguous(memory_format=torch.channels_last))
        cost = loss(scores.float(), said, lengths)
        optimizer.zero_grad()
        cost.backward()
        torch.nn.utils.clip_grad_norm_(net.parameters(), 5.0)
        optimizer.step()
        _average(mean, net, step)
        losses.append(cost.item())
        step += 1
        unused -= options.batch
        if unused <= 0:
            unused += pool.renew()
        if step % _TELL == 0:
            seconds = time.time() - began
            with open(folder / "curve.tsv", "a", encoding="utf-8") as curve:
                curve.write(f"{step}\t{np.mean(losses[-_TELL:]):.4f}\t{_rate(step, options):.6f}\t{seconds:.0f}\n")
            print(f"step {step} of {options.steps}, loss {np.mean(losses[-_TELL:]):.3f}, "
                  f"{seconds / (step - first) * (options.steps - step) / 60:.0f} minutes left", flush=True)
        if step % _SAVE == 0 or step == options.steps:
            torch.save({"net": net.state_dict(), "mean": mean.state_dict(),
                        "optimizer": optimizer.state_dict(), "step": step}, folder / "partial.pt")
            (folder / "partial.pt").rename(last)
    return float(np.mean(losses[-_TELL:])) if losses else None


def parsed(arguments=None):
    parser = argparse.ArgumentParser(description=__doc__)
    option = parser.add_argument
    option("shards", help="folder of shards")
    option("folder", help="for the checkpoint and the curve")
    option("--steps", type=int, required=True, help="in all, those of the checkpoint included")
    option("--cool", type=int, default=0, help="last steps in which the rate falls (default: 0)")
    option("--batch", type=int, default=32, help="strips a step (default: %(default)s)")
    option("--rate", type=float, default=2e-3, help="of learning (default: %(default)s)")
    option("--threads", type=int, default=1, help="of the processor (default: %(default)s)")
    option("--halves", action="store_true", help="convolutions in bfloat16: faster where the processor knows it")
    option("--pool", type=int, default=_POOL, help="shards in memory (default: %(default)s)")
    option("--seed", type=int, default=1, help="(default: %(default)s)")
    return parser.parse_args(arguments)


if __name__ == "__main__":
    final = train(parsed())
    print("these steps were done before" if final is None else f"loss at the end {final:.3f}")
