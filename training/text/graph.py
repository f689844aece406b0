"""Clean graphs of the text networks, equal to the published ones and a third to a half faster."""

import numpy as np
import onnx
from onnx import TensorProto, helper, numpy_helper

from . import folding, published
from .seen import HEIGHT

_NOTICE = "Derived from PP-OCRv4 mobile of PaddleOCR (Apache-2.0): graph rewritten, weights changed."


class _Writer:
    """Nodes and constants of a graph, in the order they are asked for."""

    def __init__(self):
        self.nodes, self.constants = [], {}

    def constant(self, name, values, kind=np.float32):
        self.constants[name] = np.array(values, kind, order="C")
        return name

    def add(self, operation, name, *inputs, **how):
        self.nodes.append(helper.make_node(operation, inputs, [name], name=name, **how))
        return name

    def convolution(self, name, x, weight, bias, strides=(1, 1), padding=(0, 0), groups=1):
        return self.add("Conv", name, x, self.constant(f"{name}.w", weight), self.constant(f"{name}.b", bias),
                        kernel_shape=weight.shape[2:], strides=strides, pads=2 * padding, group=groups)

    def hard_sigmoid(self, name, x):
        return self.add("HardSigmoid", name, x, alpha=1 / 6, beta=0.5)

    def swish(self, name, x):
        return self.add("Mul", f"{name}.swish", x, self.add("Sigmoid", f"{name}.sigmoid", x))

    def shifted(self, name, x, offset, channels):
        """x + offset. As a normalisation: the runtime keeps its blocked layout there, at a plain sum it does not."""
        values = zip("sbmv", (1, offset, 0, 1))
        held = [self.constant(f"{name}.{part}", np.full(channels, value)) for part, value in values]
        return self.add("BatchNormalization", name, x, *held, epsilon=0.0)

    def dense(self, name, x, weight, bias):
        product = self.add("MatMul", f"{name}.product", x, self.constant(f"{name}.w", weight))
        return self.add("Add", name, product, self.constant(f"{name}.b", bias))

    def reshaped(self, name, x, first, rest):
        """x with sides first, a tensor, and rest."""
        rest = self.constant(f"{name}.rest", rest, np.int64)
        return self.add("Reshape", name, x, self.add("Concat", f"{name}.shape", first, rest, axis=0))

    def columns(self, name, x, width):
        """N x T x C, or the like, to NT x 1 x C."""
        return self.add("Reshape", name, x, self.constant("columns.shape", [-1, 1, width], np.int64))

    def turned(self, name, x):
        """N x C x 1 x T to N x T x C."""
        flat = self.add("Squeeze", f"{name}.flat", x, self.constant("height", [2], np.int64))
        return self.add("Transpose", name, flat, perm=[0, 2, 1])


def _backbone(writer, weights, blocks):
    """Name of N x C x 1 x T. On the way a true value is gain * x + offset: both go into the next convolution's weights.

    Not the offset before padding: the network was trained with a border that is true zero.
    """
    x = writer.convolution("stem", "x", weights["stem.w"], weights["stem.b"], (2, 2), (1, 1))
    gain, offset = 1.0, 0.0
    for number, block in enumerate(blocks):
        weight, bias = weights[f"{number}.w"], weights[f"{number}.b"]
        if any(block.padding) and offset:
            x = writer.shifted(f"{number}.before", x, offset / gain, weight.shape[1] * block.groups)
        else:
            bias = bias + offset * weight.sum((1, 2, 3))
        x = writer.convolution(f"{number}", x, weight * gain, bias, block.strides, block.padding, block.groups)
        x = writer.add("Mul", f"{number}.active", x, writer.hard_sigmoid(f"{number}.hard", x))
        gain, offset = float(weights[f"{number}.a"]), float(weights[f"{number}.c"])
        if block.gated:
            x, offset = _gated(writer, weights, f"{number}", x, gain, offset), 0.0
    x = writer.add("AveragePool", "pool", x, kernel_shape=[3, 2], strides=[3, 2])
    x = writer.add("Mul", "pool.scaled", x, writer.constant("pool.a", gain))
    return writer.add("Add", "features", x, writer.constant("pool.c", offset))


def _gated(writer, weights, name, x, gain, offset):
    first = weights[f"{name}.se1.w"]
    gate = writer.add("GlobalAveragePool", f"{name}.mean", x)
    gate = writer.convolution(f"{name}.se1", gate, first * gain,
                              weights[f"{name}.se1.b"] + offset * first.sum((1, 2, 3)))
    gate = writer.add("Relu", f"{name}.relu", gate)
    gate = writer.convolution(f"{name}.se2", gate, weights[f"{name}.se2.w"], weights[f"{name}.se2.b"])
    x = writer.shifted(f"{name}.shifted", x, offset / gain, first.shape[1])
    return writer.add("Mul", f"{name}.gated", x, writer.hard_sigmoid(f"{name}.gate", gate))


def _attention(writer, weights, number, x, lines):
    """One of the two layers that look along the whole line; x, which is given, too: name of NT x 1 x C, lines: that of
    N and T."""
    queries = f"fc{4 * number}"
    width = len(weights[f"{queries}.w"])
    scale = np.repeat([weights["scale"], 1], [width, 2 * width]).astype(np.float32)
    y = _dense(writer, weights, 4 * number, _normal(writer, weights, 2 * number, x), 2 * number, scale)
    name = f"attention{number}"
    y = writer.reshaped(f"{name}.split", y, lines, [3, published.HEADS, width // published.HEADS])
    y = writer.add("Transpose", f"{name}.parts", y, perm=[2, 0, 3, 1, 4])
    first = {part: writer.constant(f"part{i}", i, np.int64) for i, part in enumerate("qkv")}
    q, k, v = (writer.add("Gather", f"{name}.{part}", y, first[part], axis=0) for part in "qkv")
    k = writer.add("Transpose", f"{name}.turned", k, perm=[0, 1, 3, 2])
    share = writer.add("Softmax", f"{name}.share", writer.add("MatMul", f"{name}.scores", q, k), axis=-1)
    y = writer.add("Transpose", f"{name}.together", writer.add("MatMul", f"{name}.seen", share, v), perm=[0, 2, 1, 3])
    y = writer.columns(f"{name}.joined", y, width)
    x = writer.add("Add", f"{name}.sum", x, _dense(writer, weights, 4 * number + 1, y))
    y = _dense(writer, weights, 4 * number + 2, _normal(writer, weights, 2 * number + 1, x), 2 * number + 1)
    y = _dense(writer, weights, 4 * number + 3, writer.swish(f"fc{4 * number + 2}", y))
    return writer.add("Add", f"{name}.out", x, y)


def _dense(writer, weights, number, x, normal=None, scale=1.0):
    """normal: the number of the normalisation that gave x and left its gains and offsets to this; scale: of outputs."""
    weight, bias = weights[f"fc{number}.w"], weights[f"fc{number}.b"]
    if normal is not None:
        weight, bias = weight * weights[f"ln{normal}.w"][:, None], bias + weights[f"ln{normal}.b"] @ weight
    return writer.dense(f"fc{number}", x, weight * scale, bias * scale)


def _normal(writer, weights, number, x):
    """Over the channels of each column, as an instance of one channel: the runtime takes a fifth of the time that its
    operation of that name takes. Gains and offsets are left to what follows."""
    held = [writer.constant(f"normal.{part}", [value]) for part, value in (("w", 1), ("b", 0))]
    return writer.add("InstanceNormalization", f"ln{number}", x, *held, epsilon=float(weights["epsilon"]))


def recogniser(weights, blocks):
    """The whole recogniser: "x", N x 3 x 48 x W, any N and any W that 8 divides, to probabilities N x W/8 x classes."""
    writer = _Writer()
    # The last normalisation leaves its gains and offsets to the convolution after it.
    weights = dict(weights)
    weights["neck.2.b"] = weights["neck.2.b"] + weights["neck.2.w"][:, :, 0, 0] @ weights["ln4.b"]
    weights["neck.2.w"] = weights["neck.2.w"] * weights["ln4.w"][:, None, None]
    features = _backbone(writer, weights, blocks)

    def layer(number, x):
        weight = weights[f"neck.{number}.w"]
        padding = (0, weight.shape[3] // 2)
        return writer.swish(f"neck.{number}", writer.convolution(f"neck.{number}", x, weight,
                                                                 weights[f"neck.{number}.b"], padding=padding))

    x = writer.turned("line", layer(1, layer(0, features)))
    lines, width = writer.add("Shape", "lines", x, end=2), len(weights["ln4.w"])
    x = writer.columns("line.columns", x, width)
    for number in (0, 1):
        x = _attention(writer, weights, number, x, lines)
    x = writer.reshaped("line.whole", _normal(writer, weights, 4, x), lines, [width])
    x = writer.add("Transpose", "line.back", x, perm=[0, 2, 1])
    x = layer(2, writer.add("Unsqueeze", "line.maps", x, writer.constant("height", [2], np.int64)))
    x = layer(4, layer(3, writer.add("Concat", "both", features, x, axis=1)))
    x = writer.dense("fc8", writer.turned("columns", x), weights["fc8.w"], weights["fc8.b"])
    writer.add("Softmax", "probabilities", x, axis=-1)
    shape, out = ["lines", 3, HEIGHT, "width"], ["lines", "columns", len(weights["fc8.b"])]
    return _model(writer.nodes, writer.constants, helper.make_tensor_value_info("x", TensorProto.FLOAT, shape),
                  helper.make_tensor_value_info("probabilities", TensorProto.FLOAT, out))


def _model(nodes, constants, taken, given):
    held = [numpy_helper.from_array(values, name) for name, values in constants.items()]
    model = helper.make_model(helper.make_graph(nodes, "text", [taken], [given], held), producer_name="kestrelid",
                              doc_string=_NOTICE, opset_imports=[helper.make_opsetid("", 17)])
    model.ir_version = 8
    onnx.checker.check_model(model)
    return model


def simplified(path):
    """An equal model of the detector's or the direction classifier's file, with the same input and output names."""
    graph = published.load(path).graph
    network = folding.folded(graph)
    if network.takes_one:
        graph.input[0].type.tensor_type.shape.dim[0].dim_value = 1
    return _model(network.nodes, network.constants, graph.input[0], graph.output[0])


def halved(model):
    """The same with its weights in 16-bit floats, which the runtime makes 32-bit ones of as it loads them.

    Weights alone, of two dimensions and more: the rest is small, and sums of many values need the accuracy.
    """
    half = onnx.ModelProto()
    half.CopyFrom(model)
    graph, casts = half.graph, []
    for held in graph.initializer:
        if held.data_type == TensorProto.FLOAT and len(held.dims) > 1:
            name, short = held.name, f"{held.name}.half"
            held.CopyFrom(numpy_helper.from_array(numpy_helper.to_array(held).astype(np.float16), short))
            casts.append(helper.make_node("Cast", [short], [name], name=f"{name}.float", to=TensorProto.FLOAT))
    nodes = [*casts, *graph.node]
    del graph.node[:]
    graph.node.extend(nodes)
    onnx.checker.check_model(half)
    return half


def save(model, path):
    try:
        onnx.save(model, str(path))
    except OSError as error:
        raise SystemExit(f"{path}: {error.strerror}") from error
