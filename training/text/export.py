"""Writes a trained recogniser as ONNX: python3 -m text.export CHECKPOINT MODEL. Weights in 16 bits, those of the
running mean; --floats keeps 32."""

import argparse

from . import graph
from .train import saved


def exported(checkpoint, path, floats=False):
    state = saved(checkpoint)
    model = graph.recogniser(state["mean"], state["blocks"])
    graph.save(model if floats else graph.halved(model), path)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("checkpoint", help="NAME.pt of text.train")
    parser.add_argument("model", help="file to write")
    parser.add_argument("--floats", action="store_true", help="weights in 32 bits")
    options = parser.parse_args()
    exported(options.checkpoint, options.model, options.floats)
