#!/usr/bin/python3
"""The recogniser in training: network and graph agree, steps help, it goes on. Exit status 77: a package is missing."""

import contextlib
import io
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "training"))
try:
    import numpy as np
    import torch
    from text import export, graph, net, published, runtime, shards, slim, train
    from torch.nn import functional
except ImportError as missing:
    print(f"skipped: {missing}; install python3-torch, python3-onnx, python3-opencv and python3-numpy")
    sys.exit(77)

ROWS = [((3, 3), (2, 1), 8), ((1, 1), (1, 1), 1), ((5, 5), (2, 1), 8), ((1, 1), (1, 1), 1), ((5, 5), (2, 2), 8)]


def small(seed=1):
    """Weights and blocks of a recogniser with 8 channels, 16 after the backbone."""
    rng, weights = np.random.default_rng(seed), {"epsilon": np.float32(1e-5), "scale": np.float32(0.7)}

    def layer(role, shape, outputs):
        weights[f"{role}.w"] = rng.normal(0, np.prod(shape) ** -0.5 * outputs ** 0.5, shape).astype(np.float32)
        weights[f"{role}.b"] = rng.normal(0, 0.1, outputs).astype(np.float32)

    blocks = [published.Block(kernel, strides, tuple(side // 2 for side in kernel), groups, kernel[0] == 5)
              for kernel, strides, groups in ROWS]
    layer("stem", (8, 3, 3, 3), 8)
    for number, block in enumerate(blocks):
        layer(f"{number}", (8, 8 // block.groups, *block.kernel), 8)
        weights[f"{number}.a"], weights[f"{number}.c"] = np.float32([0.8]), np.float32([0.3])
        if block.gated:
            layer(f"{number}.se1", (2, 8, 1, 1), 2)
            layer(f"{number}.se2", (8, 2, 1, 1), 8)
    for number, shape in enumerate([(4, 8, 1, 3), (16, 4, 1, 1), (8, 16, 1, 1), (4, 16, 1, 3), (16, 4, 1, 1)]):
        layer(f"neck.{number}", shape, shape[0])
    for number, shape in enumerate([(16, 48), (16, 16), (16, 20), (20, 16)] * 2 + [(16, 96)]):
        layer(f"fc{number}", shape, shape[1])
    for number in range(5):
        weights[f"ln{number}.w"], weights[f"ln{number}.b"] = rng.normal(1, 0.1, (2, 16)).astype(np.float32)
    return weights, blocks


class TrainingTest(unittest.TestCase):
    def test_network_answers_as_its_graph(self):
        weights, blocks = small()
        network = net.Recogniser(weights, blocks).eval()
        self.assertEqual({role: values.shape for role, values in network.weights().items()},
                         {role: np.shape(values) for role, values in weights.items()})
        x = torch.randn(2, 3, 48, 104, generator=torch.Generator().manual_seed(1))
        with torch.no_grad():
            features = network.features(x)
            wanted = network.read(features)
            longer = functional.pad(features, (0, 0, 0, 3), value=2)
            self.assertLess(float((network.read(longer, torch.tensor([13, 13]))[:, :13] - wanted).abs().max()), 1e-5)
        with tempfile.TemporaryDirectory() as folder:
            graph.save(graph.recogniser(weights, blocks), Path(folder, "net.onnx"))
            try:
                answer = runtime.Session(Path(folder, "net.onnx")).run(x.numpy())[0]
            except runtime.MissingRuntime as missing:
                self.skipTest(str(missing))
        self.assertLess(np.abs(answer - torch.softmax(wanted, 2).numpy()).max(), 1e-4)

    def test_gradients_of_wide_depthwise_convolutions(self):
        x, weight, bias = (torch.randn(*shape, dtype=torch.float64, requires_grad=True)
                           for shape in ((2, 3, 7, 9), (3, 1, 5, 5), (3,)))
        for strides in ((1, 1), (2, 1)):
            self.assertTrue(torch.autograd.gradcheck(
                lambda *given: net._Depthwise.apply(*given, strides, (2, 2)), (x, weight, bias)), strides)

    def test_steps_lower_the_loss_and_go_on(self):
        rng = np.random.default_rng(1)
        lines = [(rng.integers(0, 255, (48, 90, 3), np.uint8), "A<A") for _ in range(40)]
        with tempfile.TemporaryDirectory() as folder, contextlib.redirect_stdout(io.StringIO()), \
                mock.patch.dict(slim.WIDTHS, {8: 6}), \
                mock.patch.multiple(published, recogniser=lambda path: small(), characters=mock.DEFAULT,
                                    reduced=lambda weights, classes: weights):
            np.savez(Path(folder, "0000.npz"), **shards.packed(lines))
            common = ["--pool", "1", "--columns", "100", "--rate", "0.02", "--steps"]
            for part, more in ((["neck", folder], []), (["whole"], ["--processes", "2"]), (["slim"], [])):
                part += [folder, folder + "/run", *common]
                before = train.run(train.parsed([*part, "1"]))
                self.assertLess(train.run(train.parsed([*part, "40", *more])), before, part[0])
                self.assertIsNone(train.run(train.parsed([*part, "40"])))
            state = train.saved(Path(folder, "run", "whole.pt"))
            self.assertEqual((state["step"], state["blocks"]), (40, small()[1]))
            slimmer = train.saved(Path(folder, "run", "slim.pt"))
            self.assertEqual([block.groups for block in slimmer["blocks"]], [8, 1, 6, 1, 8])
            export.exported(Path(folder, "run", "slim.pt"), Path(folder, "slim.onnx"))
            self.assertLess(Path(folder, "slim.onnx").stat().st_size, 40_000)


if __name__ == "__main__":
    unittest.main()
