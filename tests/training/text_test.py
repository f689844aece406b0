#!/usr/bin/python3
"""The text networks: classes, graphs that are rewritten. Exit status 77: a package is missing."""

import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "training"))
try:
    import numpy as np
    from onnx import TensorProto, helper, numpy_helper
    from text import alphabet, graph, measure, quantise, runtime
except ImportError as missing:
    print(f"skipped: {missing}; install python3-onnx, python3-torch, python3-pil, python3-opencv and python3-numpy")
    sys.exit(77)


def answers(model, x):
    """What the network of a model, or of a file, makes of x."""
    with tempfile.TemporaryDirectory() as folder:
        path = model if isinstance(model, Path) else Path(folder, "model.onnx")
        if path != model:
            graph.save(model, path)
        try:
            return runtime.Session(path).run(x)[0]
        except runtime.MissingRuntime as missing:
            raise unittest.SkipTest(str(missing)) from missing


def spelt_out(rng):
    """A model as the published ones are: hard-swish in four operations, scales and shifts, gates, plain layers, two levels
    of a pyramid."""
    nodes, held, x = [], [], "x"

    def add(operation, *inputs, **how):
        names = []
        for given in inputs:
            if not isinstance(given, str):
                held.append(numpy_helper.from_array(np.float32(given), f"c{len(held)}"))
            names.append(given if isinstance(given, str) else held[-1].name)
        nodes.append(helper.make_node(operation, names, [f"v{len(nodes)}"], **how))
        return nodes[-1].output[0]

    def convolution(x, given, taken, side, groups=1):
        return add("Conv", x, rng.normal(0, 0.5, (given, taken // groups, side, side)), group=groups, strides=[1, 1],
                   pads=[side // 2] * 4, kernel_shape=[side, side])

    for given, taken, side, groups in ((6, 3, 1, 1), (6, 6, 3, 6), (8, 6, 1, 1), (8, 8, 3, 1)):
        x = add("Add", add("Mul", convolution(x, given, taken, side, groups), [1.5]), [-0.4])
        x = add("Div", add("Mul", x, add("Clip", add("Add", x, 3), 0, 6)), 6)
        x = add("Add", add("Mul", x, [0.7]), [0.9])
    x = convolution(convolution(x, 8, 8, 1), 4, 8, 1)
    x = add("BatchNormalization", x, [2] * 4, [0.3] * 4, [0.1] * 4, [0.5] * 4, epsilon=1e-5)

    def gated(x):
        return add("Add", x, add("Mul", x, add("HardSigmoid", add("GlobalAveragePool", x), alpha=0.2, beta=0.5)))

    def enlarged(x):
        return add("Resize", x, [], [1, 1, 2, 2], mode="nearest", coordinate_transformation_mode="asymmetric",
                   nearest_mode="floor")

    small = convolution(add("AveragePool", gated(x), kernel_shape=[2, 2], strides=[2, 2]), 6, 4, 1)
    fine = add("Add", gated(convolution(convolution(x, 3, 4, 1), 6, 3, 1)), enlarged(small))
    row = enlarged(convolution(small, 5, 6, 1)), gated(convolution(fine, 5, 6, 3))
    x = add("Relu", convolution(add("Concat", *row, axis=1), 4, 10, 3))
    for given, taken, activation in ((5, 4, "Relu"), (2, 5, "Sigmoid")):
        weights = rng.normal(0, 0.1, (taken, given, 2, 2)), rng.normal(0, 0.5, given)
        x = add(activation, add("ConvTranspose", x, *weights, strides=[2, 2], kernel_shape=[2, 2]))
    values = [helper.make_tensor_value_info(name, TensorProto.FLOAT, ["n", None, "h", "w"]) for name in ("x", x)]
    model = helper.make_model(helper.make_graph(nodes, "spelt", values[:1], values[1:], held),
                              opset_imports=[helper.make_opsetid("", 11)])
    model.ir_version = 8
    return model


class RewriteTest(unittest.TestCase):
    def test_best_path(self):
        for columns, text in (([33, 33, 0, 33, 65], "AAa"), ([0] * 4, ""), ([1, 95, 95, 94], "! ~")):
            self.assertEqual(alphabet.best_path(np.eye(alphabet.CLASSES)[columns]), (text, float(text > "")))

    def test_folded_and_halved_answer_as_what_is_spelt_out(self):
        rng = np.random.default_rng(1)
        model, x = spelt_out(rng), rng.normal(0, 1, (1, 3, 8, 12))
        with tempfile.TemporaryDirectory() as folder:
            graph.save(model, Path(folder, "spelt.onnx"))
            simple = graph.simplified(Path(folder, "spelt.onnx"))
        self.assertFalse({"ConvTranspose", "Resize"} & {node.op_type for node in simple.graph.node})
        self.assertEqual(simple.graph.input[0].type.tensor_type.shape.dim[0].dim_value, 1)
        wanted = answers(model, x)
        for changed, apart in ((simple, 1e-5), (graph.halved(simple), 3e-3)):
            self.assertLess(np.abs(answers(changed, x) - wanted).max(), apart * np.abs(wanted).max())


class MeasureTest(unittest.TestCase):
    def test_tally(self):
        for found, wanted, counts in (
                ("Date ofbirth", "Date of birth", (100 / 13, 0, 100 / 3, 100, 50)),
                ("A", "A", (0, 100, 100, np.nan, np.nan)),
                ("A B1 C", "A B2 C", (100 / 6, 0, 200 / 3, 100, 100)),
                ("of Da te", "of Date", (100 / 7, 0, 50, 50, 100))):
            np.testing.assert_allclose(measure.tally([found], [wanted]), counts, err_msg=found)

    def test_words_that_lost_their_spaces(self):
        known = measure.Vocabulary(["Date of birth", "Place", "la"])
        for text, counts in (("PLACE/Date of birth", (3, 1, 0)), ("Dateof birth", (1, 0, 1)), ("lala", (0, 0, 0)),
                             ("12MAR2020 1MARS", (0, 0, 1)), ("DATE<<DATEOFBIRTH<", (1, 0, 0))):
            self.assertEqual((known.words(text), known.phrases(text), known.glued(text)), counts, text)
        zones = {"a": ["P<<", "1<2"], "b": ["1<2", "X"]}
        self.assertEqual(measure.zones_exact([("a", "P< <"), ("b", "1<2")], zones), 2)

    def test_quantised_answers_nearly_as_floats(self):
        rng = np.random.default_rng(1)
        held = [numpy_helper.from_array(np.float32(values), name) for name, values in (
            ("w", rng.normal(0, 0.2, (50, 48, 1, 1))), ("b", rng.normal(0, 1, 50)), ("one", np.ones(50)),
            ("none", np.zeros(50)), ("gate", rng.normal(0, 0.2, (50, 50, 1, 1))))]
        sixth = {"alpha": 1 / 6}
        nodes = [helper.make_node(*row, **(sixth if row[2] == ["h"] else {})) for row in (
            ("GlobalAveragePool", ["x"], ["mean"]), ("HardSigmoid", ["mean"], ["open"]), ("Mul", ["x", "open"], ["e"]),
            ("Conv", ["e", "w", "b"], ["c"]), ("HardSigmoid", ["c"], ["h"]), ("Mul", ["c", "h"], ["m"]),
            ("BatchNormalization", ["m", "one", "offset", "none", "one"], ["s"]),
            ("Conv", ["s", "gate"], ["n"]), ("Relu", ["n"], ["y"]))]
        ends = [[helper.make_tensor_value_info(name, TensorProto.FLOAT, [1, None, 4, 9])] for name in "xy"]
        seen = {"e": quantise.Seen(extremes=[-2.5, 2.5], products=np.eye(48)), "c": quantise.Seen(extremes=[-9, 9])}
        x = rng.uniform(-4, 4, (1, 48, 4, 9))
        for offset, kept in ((-0.7, 0), (0.3, 0), (0.01, 1), (0.5, 1), (-20, 1)):  # no whole step; beyond what zero can be
            constants = [*held, numpy_helper.from_array(np.full(50, offset, np.float32), "offset")]
            model = helper.make_model(helper.make_graph(nodes, "wide", *ends, constants), ir_version=8,
                                      opset_imports=[helper.make_opsetid("", 17)])
            whole = quantise.quantised(quantise.floats(graph.halved(model)), seen)
            weights = {i.name: numpy_helper.to_array(i) for i in whole.graph.initializer}
            self.assertEqual((np.abs(weights["w.whole"]).max(), weights["gate"].dtype), (63, np.float32))
            self.assertEqual([n.op_type for n in whole.graph.node].count("BatchNormalization"), kept, offset)
            wanted = answers(model, x)
            self.assertLess(np.abs(answers(whole, x) - wanted).max(), 0.03 * np.abs(wanted).max(), offset)


if __name__ == "__main__":
    unittest.main()
