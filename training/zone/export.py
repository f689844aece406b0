"""Writes the trained zone network as ONNX: python3 -m zone.export CHECKPOINT MODEL.

As ../export.py does: batch normalisation folded into the convolutions, weights as 8-bit whole numbers with a
scale for each output channel; --floats keeps them as they are.
"""

import argparse
import pickle
import warnings

import torch

import export

from .net import COLUMNS, ZoneNet
from .strips import HEIGHT


def exported(net, path, floats=False):
    """Writes net (changed in place) to path; returns the module as written."""
    net = export.folded(net.eval())
    if not floats:
        net = export.packed(net)
    with warnings.catch_warnings():
        # Of constants whose shape the exporter cannot tell; it needs none of them.
        warnings.simplefilter("ignore", UserWarning)
        torch.onnx.export(net, torch.zeros(2, 1, HEIGHT, 80 * COLUMNS), str(path), opset_version=13,
                          input_names=["lines"], output_names=["scores"], do_constant_folding=floats,
                          dynamic_axes={"lines": {0: "lines", 3: "width"}, "scores": {0: "lines", 2: "columns"}})
    return net


def load(checkpoint):
    """The network of a checkpoint, its running mean of weights."""
    net = ZoneNet()
    try:
        net.load_state_dict(torch.load(checkpoint)["mean"])
    except OSError as error:
        raise SystemExit(f"{checkpoint}: {error.strerror}") from error
    except (pickle.UnpicklingError, EOFError, KeyError, TypeError, RuntimeError) as error:
        raise SystemExit(f"{checkpoint}: not a checkpoint of zone.train") from error
    return net.eval()


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("checkpoint", help="last.pt of zone.train")
    parser.add_argument("model", help="file to write")
    parser.add_argument("--floats", action="store_true", help="weights as they are, not 8-bit")
    options = parser.parse_args()
    try:
        exported(load(options.checkpoint), options.model, options.floats)
    except OSError as error:
        raise SystemExit(f"{options.model}: {error.strerror}") from error
