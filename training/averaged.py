#!/usr/bin/python3
"""Writes a checkpoint between a network and what was made of it: averaged.py MODEL CHECKPOINT SHARDS OUT.

What is trained on with new kinds of scenes learns these and forgets a little of others. A mean of the weights before
and after keeps most of either (arXiv:2109.01903), as long as the rate was low. What the layers normalise by is measured
anew, on batches of SHARDS.
"""

import argparse

import cv2
import torch
from torch import nn

import export
import restore
import train
from net import SIDE, OutlineNet

_BATCHES, _BATCH = 40, 32
_SETTLED = 16  # of them give MODEL back what it normalises by, as many as when it is trained on
_SEED = 5


def averaged(before, after, share, batches):
    """The OutlineNet between two, of which the second, trained on from the first, counts share.

    batches: N x 3 x side x side each, to normalise by.
    """
    net, ends = OutlineNet(), after.state_dict()
    net.load_state_dict({name: (value * (1 - share) + ends[name] * share).to(value.dtype)
                         for name, value in before.state_dict().items()})
    for norm in [module for module in net.modules() if isinstance(module, nn.BatchNorm2d)]:
        norm.reset_running_stats()
        norm.momentum = None  # each batch counts as much
    net.train()
    with torch.no_grad():
        for pictures in batches:
            net(pictures)
    return net.eval()


def main(options):
    cv2.setNumThreads(1)
    pool = train.Pool(options.shards, _SEED)
    for _ in range(train.POOL):
        pool.renew()
    batches = [pool.batch(_BATCH, SIDE)[0] for _ in range(_BATCHES)]
    before = restore.settle(restore.network(options.model), batches[:_SETTLED])
    net = averaged(before, export.load(options.checkpoint), options.share, batches)
    try:
        torch.save({"mean": net.state_dict()}, options.out)
    except (OSError, RuntimeError) as error:
        raise SystemExit(f"{options.out}: {error}") from error


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("model", help="ONNX file of 8-bit weights that training began with (train.py --from)")
    parser.add_argument("checkpoint", help="last.pt of train.py")
    parser.add_argument("shards", help="folder of shards")
    parser.add_argument("out", help="checkpoint to write, for export.py")
    parser.add_argument("--share", type=float, default=0.65, help="of CHECKPOINT in it, 0 to 1 (default: %(default)s)")
    parsed = parser.parse_args()
    if not 0 <= parsed.share <= 1:
        parser.error("--share must be from 0 to 1")
    main(parsed)
