"""Trains the recogniser on for documents, on shards that text.shards drew.

python3 -m text.train neck RESOURCES SHARDS FOLDER --minutes M: from the published recogniser; its backbone stays as it
is and runs over each line once. Then python3 -m text.train whole SHARDS FOLDER --minutes M: all weights, from those;
shards that are drawn meanwhile join. Then python3 -m text.train slim SHARDS FOLDER --minutes M: a slimmer one, with
the whole as its teacher. Each writes FOLDER/NAME.pt every minute and goes on from it; FOLDER/NAME.tsv grows
with it. Minutes are those spent on steps, over all starts; the rate falls to nothing with them.
"""

import argparse
import ctypes
import math
import pickle
import time
from dataclasses import asdict
from functools import partial
from pathlib import Path

import cv2
import numpy as np
import torch
from torch.nn import functional

import folders
import sharding

from . import batches, published, slim
from .net import Recogniser
from .team import Team

_SAVE = 60  # seconds between two checkpoints
_TELL = 20  # seconds between two lines of progress
_WARM = 100  # steps in which the rate rises
_KEEP = 0.998  # of the running mean of the weights, each step
_STEEPEST = 5.0  # norm of a step's gradient at most
_DROPOUT = 0.05  # before the classes
_BEFORE = {"whole": "neck", "slim": "whole"}  # what a part starts from
_BATCHES = 3  # a step, each of lines of another width: what is long and what is short differs in kind, too
_ROUGH = 2  # of them are roughened where a teacher tells what can still be read


def loss(scores, columns, said):
    """CTC: how unlikely the texts are, a character. A text that its columns cannot hold counts nothing."""
    chances = functional.log_softmax(scores, 2).transpose(0, 1)
    if columns is None:
        columns = torch.full((len(said),), len(chances))
    lengths = torch.tensor([len(text) for text in said])
    costs = functional.ctc_loss(chances, torch.from_numpy(np.concatenate(said)), columns, lengths, reduction="sum",
                                zero_infinity=True)
    return costs / max(1, int(lengths.sum()))


def likeness(features, scores, taught, told):
    """How far features and scores are from a teacher's: of the features' variance, and of a column's probabilities."""
    apart = functional.mse_loss(features, taught) / taught.var()
    return apart + functional.kl_div(functional.log_softmax(scores, 2).flatten(0, 1),
                                     functional.log_softmax(told, 2).flatten(0, 1), reduction="batchmean",
                                     log_target=True)


def saved(path):
    """What a checkpoint holds."""
    try:
        state = torch.load(path)
        state["blocks"] = [published.Block(**block) for block in state["blocks"]]
        return state
    except OSError as error:
        raise SystemExit(f"{path}: {error.strerror}") from error
    except (pickle.UnpicklingError, EOFError, KeyError, TypeError, RuntimeError) as error:
        raise SystemExit(f"{path}: not a checkpoint of text.train") from error


def _started(options):
    """State at the start: of the checkpoint, or the weights to start from."""
    last = Path(options.folder, f"{options.part}.pt")
    if last.exists():
        return saved(last)
    if options.part != "neck":
        state = saved(Path(options.folder, f"{_BEFORE[options.part]}.pt"))
        weights, blocks = state["mean"], state["blocks"]
        if options.part == "slim":
            weights, blocks = slim.slim(weights, blocks, slim.sample(sharding.listed(options.shards)[0]))
        return {"blocks": blocks, "weights": weights, "mean": weights}
    weights, blocks = published.recogniser(Path(options.resources, published.RECOGNISER))
    weights = published.reduced(weights, published.characters(Path(options.resources, published.DICTIONARY)))
    return {"blocks": blocks, "weights": weights, "mean": weights}


def _source(options, net, member, team, step):
    seed = [options.seed, member, step]
    if options.part != "neck":
        return batches.Lines(options.shards, seed, options.pool)
    features = Path(options.folder, "features")
    batches.write(net, options.shards, features, member, team.members)
    if team.members > 1:
        team.meet()
    return batches.Features(features, seed)


def _teacher(options):
    if options.part != "slim":
        return None
    state = saved(Path(options.folder, f"{_BEFORE[options.part]}.pt"))
    return Recogniser(state["mean"], state["blocks"]).requires_grad_(False)


def _average(mean, net, step):
    keep = min(_KEEP, step / (step + 100))  # early weights are soon forgotten
    with torch.no_grad():
        for kept, new in zip(mean.parameters(), net.parameters()):
            kept.mul_(keep).add_(new, alpha=1 - keep)


def _clock(options, step, seconds):
    """The part of the budget that is spent: 1 at the end."""
    return max(step / options.steps if options.steps else 0, seconds / 60 / options.minutes if options.minutes else 0)


class _Record:
    """Progress on the screen and in FOLDER/NAME.tsv, checkpoints in FOLDER/NAME.pt."""

    def __init__(self, options, state):
        self._options, self._blocks = options, state["blocks"]
        self._path = Path(options.folder, options.part)
        self._mean = Recogniser(state["mean"], state["blocks"])
        self._spent, self._lines = state.get("spent", 0.0), state.get("lines", 0)
        self._began = self._told = self._kept = time.time()
        self._losses, self.loss = [], None  # since the last line of progress; the mean up to that

    def clock(self, step):
        return _clock(self._options, step, self._seconds())

    def _seconds(self):
        return self._spent + time.time() - self._began

    def add(self, net, optimizer, step, clock, cost, lines):
        _average(self._mean, net, step)
        self._losses.append(cost)
        self._lines += lines
        now = time.time()
        if now - self._told > _TELL or clock >= 1:
            self._tell(step, clock, optimizer.param_groups[0]["lr"])
            self._told = now
        if now - self._kept > _SAVE or clock >= 1:
            self._keep(net, optimizer, step)
            self._kept = now

    def _tell(self, step, clock, rate):
        self.loss, self._losses = float(np.mean(self._losses)), []
        left = max(0, self._seconds() / 60 * (1 - clock) / clock)
        with open(self._path.with_suffix(".tsv"), "a", encoding="utf-8") as curve:
            curve.write(f"{step}\t{self.loss:.4f}\t{rate:.6f}\t{self._seconds():.0f}\t{self._lines}\n")
        print(f"{self._options.part}: step {step}, {self._lines} lines, loss {self.loss:.4f}, {left:.1f} minutes left",
              flush=True)

    def _keep(self, net, optimizer, step):
        partial_path = self._path.with_suffix(".partial.pt")
        torch.save({"blocks": [asdict(block) for block in self._blocks], "weights": net.weights(),
                    "mean": self._mean.weights(), "optimizer": optimizer.state_dict(), "step": step,
                    "spent": self._seconds(), "lines": self._lines}, partial_path)
        partial_path.rename(self._path.with_suffix(".pt"))


def _rate(options, step, clock):
    return options.rate * min(1, (step + 1) / _WARM) * (1 + math.cos(math.pi * min(1, clock))) / 2


def _keep_memory():
    # glibc gives large maps back to the system at once; getting them anew, zeroed, took half of the features' time.
    trim, top, mapped = -1, -2, -3  # M_TRIM_THRESHOLD, M_TOP_PAD, M_MMAP_THRESHOLD of malloc.h
    library = ctypes.CDLL(None)
    for which, size in ((trim, 1 << 30), (top, 1 << 28), (mapped, 1 << 30)):
        if hasattr(library, "mallopt"):
            library.mallopt(which, size)


def train(options, member, team):
    """One member's part, to the end of the budget; the mean loss of the last steps."""
    torch.manual_seed(options.seed + member)
    torch.set_num_threads(1)
    _keep_memory()
    torch.set_flush_denormal(True)  # they make a step several times as slow
    cv2.setNumThreads(1)
    state = _started(options)
    net, step = Recogniser(state["weights"], state["blocks"]), state.get("step", 0)
    source, teacher = _source(options, net, member, team, step), _teacher(options)
    learned = net.neck() if options.part == "neck" else list(net.parameters())
    for parameter in net.parameters():
        parameter.requires_grad_(any(parameter is one for one in learned))
    optimizer = torch.optim.Adam(learned, betas=(0.9, 0.99))
    if "optimizer" in state:
        optimizer.load_state_dict(state["optimizer"])
    record = _Record(options, state)
    clock = _clock(options, step, state.get("spent", 0.0))
    while clock < 1:
        optimizer.zero_grad()
        cost, lines = 0.0, 0
        for number in range(_BATCHES):
            roughly = teacher is not None and number < _ROUGH
            inputs, columns, said = (source.rough if roughly else source.batch)(options.columns)
            with torch.autocast("cpu", torch.bfloat16, enabled=not options.floats):
                features = inputs if options.part == "neck" else net.features(inputs)
                scores = net.read(features, columns, _DROPOUT)
                taught = teacher and teacher.features(inputs)
                told = teacher and teacher.read(taught)
            part = 0.0 if roughly else loss(scores, columns, said) / _BATCHES
            if teacher:
                part = part + likeness(features, scores, taught, told) / _BATCHES
            part.backward()
            cost, lines = cost + part.item(), lines + len(said)
        step += 1
        clock = team.together(member, learned, record.clock(step))
        torch.nn.utils.clip_grad_norm_(learned, _STEEPEST)
        for group in optimizer.param_groups:
            group["lr"] = _rate(options, step, clock)
        optimizer.step()
        if member == 0:
            record.add(net, optimizer, step, clock, cost, lines * team.members)
    return record.loss


def _knows_halves():
    """Whether the processor multiplies in bfloat16; others take longer with them than with floats."""
    try:
        return "avx512_bf16" in Path("/proc/cpuinfo").read_text(encoding="utf-8")
    except OSError:
        return False


def parsed(arguments=None):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parts = parser.add_subparsers(dest="part", required=True)
    for name, help_text, rate in (("neck", "the layers after the backbone", 2.5e-4), ("whole", "all layers", 1e-4),
                                  ("slim", "a slimmer one, taught by the whole", 5e-4)):
        part = parts.add_parser(name, help=help_text)
        option = part.add_argument
        if name == "neck":
            option("resources", help="folder that text.fetch filled")
        option("shards", help="folder of shards")
        option("folder", help="for checkpoints and curves" + (", and for features" if name == "neck" else ""))
        option("--minutes", type=float, help="that it may take")
        option("--steps", type=int, help="that it may take")
        option("--columns", type=int, default=400, help="of scores in a batch (default: %(default)s)")
        option("--rate", type=float, default=rate, help="of learning (default: %(default)s)")
        option("--processes", type=int, default=1, help="with a thread each (default: %(default)s)")
        option("--pool", type=int, default=16, help="shards in memory (default: %(default)s)")
        option("--seed", type=int, default=1, help="(default: %(default)s)")
        option("--floats", action="store_true", default=not _knows_halves(),
               help="no products in bfloat16, which are three times as fast where the processor knows them")
    options = parser.parse_args(arguments)
    if not (options.minutes or options.steps):
        parser.error("needs --minutes or --steps")
    return options


def run(options):
    """Trains with all its processes; the loss at the end, None where the budget was spent before."""
    folders.made(options.folder)
    state = _started(options)
    if _clock(options, state.get("step", 0), state.get("spent", 0.0)) >= 1:
        return None
    size = sum(values.size for values in state["weights"].values())
    return Team(options.processes, size).run(partial(train, options))


if __name__ == "__main__":
    final = run(parsed())
    print("the budget was spent before" if final is None else f"loss at the end {final:.4f}")
