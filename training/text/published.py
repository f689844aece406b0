"""The published recogniser, PP-OCRv4 mobile (Apache-2.0): its weights by their role, its classes.

The file holds what an exporter made of the network: normalisations beside their convolutions, seven operations an
activation. Here those become what they compute; graph.py makes a clean graph of them, net.py a network to train.
"""

from dataclasses import dataclass, replace

import numpy as np
import onnx
from google.protobuf.message import DecodeError
from onnx import helper, numpy_helper

from .alphabet import ALPHABET

RECOGNISER, DETECTOR = "ch_PP-OCRv4_rec_infer.onnx", "ch_PP-OCRv4_det_infer.onnx"
DIRECTION, DICTIONARY = "ch_ppocr_mobile_v2.0_cls_infer.onnx", "ppocr_keys_v1.txt"
HEADS = 8  # of each attention


@dataclass(frozen=True)
class Block:
    """A convolution of the backbone, then hard-swish, scale and shift; gated ones weigh their channels after that."""

    kernel: tuple
    strides: tuple
    padding: tuple  # rows above and below, columns left and right
    groups: int
    gated: bool = False


def load(path):
    """The model in a file."""
    try:
        return onnx.load(str(path))
    except OSError as error:
        raise SystemExit(f"{path}: {error.strerror}") from error
    except DecodeError as error:
        raise SystemExit(f"{path}: not an ONNX file") from error


def constants(graph):
    """All constant arrays of a graph, by name."""
    found = {n.output[0]: numpy_helper.to_array(n.attribute[0].t) for n in graph.node if n.op_type == "Constant"}
    return {**found, **{i.name: numpy_helper.to_array(i) for i in graph.initializer}}


def attributes(node):
    return {a.name: helper.get_attribute_value(a) for a in node.attribute}


def normalised(weight, node, known):
    """Weight and bias of a convolution without one, and the BatchNormalization after it, in one."""
    gain, offset, mean, variance = (known[name] for name in node.input[1:5])
    gain = gain / np.sqrt(variance + attributes(node)["epsilon"])
    return weight * gain.reshape(-1, 1, 1, 1), offset - mean * gain


class _Reader:
    """Sorts the weights of the published graph, whose nodes stand in the order of the network's layers."""

    def __init__(self, graph):
        self.known = constants(graph)
        self.users = {}
        for node in graph.node:
            for name in node.input:
                self.users.setdefault(name, []).append(node)
        self.weights, self.blocks, self.neck = {}, [], 0

    def convolution(self, node):
        weight, follower = self.known[node.input[1]], self.users[node.output[0]][0]
        last = f"{len(self.blocks) - 1}"
        if follower.op_type == "BatchNormalization":
            role = f"neck.{self.neck}" if self.blocks else "stem"
            self.neck += bool(self.blocks)
            self._keep(role, *normalised(weight, follower, self.known))
        elif follower.op_type == "Mul":
            self._block(node, follower)
        elif follower.op_type == "Relu":
            self.blocks[-1] = replace(self.blocks[-1], gated=True)
            self._keep(f"{last}.se1", weight, self.known[node.input[2]])
        else:
            self._keep(f"{last}.se2", weight, self.known[node.input[2]])

    def _block(self, node, scale):
        shift, how, role = self.users[scale.output[0]][0], attributes(node), f"{len(self.blocks)}"
        gain, offset = self.known[scale.input[0]], self.known[shift.input[1]]
        self._keep(role, self.known[node.input[1]] * gain, self.known[node.input[2]] * gain + offset)
        # The activation's own scale and shift stand after its last operation, the only division on the way.
        after = self.users[shift.output[0]]
        while after[0].op_type != "Div":
            after = self.users[after[0].output[0]]
        scale = self.users[after[0].output[0]][0]
        self.weights[f"{role}.a"] = self.known[scale.input[0]]
        self.weights[f"{role}.c"] = self.known[self.users[scale.output[0]][0].input[1]]
        self.blocks.append(Block(tuple(how["kernel_shape"]), tuple(how["strides"]), tuple(how["pads"][:2]),
                                 how["group"]))

    def line(self, node):
        """Layers that look along the line: a layer's constant, and then the bias that is added."""
        for operation, role in (("Mul", "ln"), ("MatMul", "fc")):
            weight = next((self.known[name] for name in node.input if name in self.known), None)
            if node.op_type == operation and weight is not None and weight.size > 1:
                bias = next(self.known[n] for n in self.users[node.output[0]][0].input if n in self.known)
                self._keep(f"{role}{sum(name.startswith(role) for name in self.weights) // 2}", weight, bias)

    def _keep(self, role, weight, bias):
        self.weights[f"{role}.w"], self.weights[f"{role}.b"] = weight, bias


def recogniser(path):
    """Weights by role (float32), and the backbone's blocks.

    "stem": the first convolution; "N": block N, with .a and .c the scale and shift after its activation, .se1 and .se2
    the two layers of its gate; "neck.N": convolutions before and after the attention; "lnN", "fcN": its normalisations
    and layers (inputs x outputs), the last fc being the classes; "epsilon" of the normalisations, "scale" of queries.
    """
    graph = load(path).graph
    reader = _Reader(graph)
    try:
        for node in graph.node:
            if node.op_type == "Conv":
                reader.convolution(node)
            elif node.op_type in ("Mul", "MatMul"):
                reader.line(node)
        weights = reader.weights
        width = weights["fc0.w"].shape[0]
        # The last normalisation was made with a tenth of it, which changes nothing that can be measured.
        weights["epsilon"] = next(reader.known[n.input[1]] for n in graph.node
                                  if n.op_type == "Add" and reader.users[n.output[0]][0].op_type == "Sqrt").reshape(())
        weights["fc8.w"], weights["neck.4.w"]
    except (KeyError, IndexError, StopIteration) as error:
        raise SystemExit(f"{path}: not the recogniser of PP-OCRv4 mobile") from error
    weights["scale"] = np.array((width // HEADS) ** -0.5)
    return {name: np.array(value, np.float32, order="C") for name, value in weights.items()}, reader.blocks


def characters(dictionary):
    """The published classes in order: CTC's blank, the characters of the file, the space."""
    try:
        with open(dictionary, encoding="utf-8", newline="\n") as file:
            listed = file.read().split("\n")
    except OSError as error:
        raise SystemExit(f"{dictionary}: {error.strerror}") from error
    if listed[-1] == "":
        listed.pop()
    return ["", *(line.rstrip("\r") for line in listed), " "]


def kept(classes):
    """Places of ALPHABET's classes among the published ones."""
    return [0, *map(classes.index, ALPHABET)]


def reduced(weights, classes):
    """The weights with the classes of ALPHABET alone; classes: the published ones."""
    if len(classes) != len(weights["fc8.b"]):
        raise SystemExit(f"the dictionary has {len(classes)} classes, the recogniser {len(weights['fc8.b'])}")
    places = kept(classes)
    return {**weights, "fc8.w": weights["fc8.w"][:, places], "fc8.b": weights["fc8.b"][places]}
