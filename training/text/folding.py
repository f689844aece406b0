"""Rewrites a convolutional network's graph into an equal one that is faster and smaller.

The published files spell hard-swish out in four operations, and keep scales, shifts and normalisations beside the
convolutions that could hold them.
"""

import math

import numpy as np
from onnx import helper

from . import published, pyramid

_CONVOLUTIONS = ("Conv", "ConvTranspose")


class Network:
    """The nodes of a graph in order, its constant arrays by name; changed in place."""

    def __init__(self, graph):
        self.constants = published.constants(graph)
        self.nodes = [node for node in graph.node if node.op_type != "Constant"]
        self.takes_one = False  # picture at a time

    def maker(self, name):
        return next((node for node in self.nodes if name in node.output), None)

    def users(self, name):
        return [node for node in self.nodes if name in node.input]

    def only_user(self, name, operation):
        """The node that alone takes the value, where it is of that operation."""
        users = self.users(name)
        return users[0] if len(users) == 1 and users[0].op_type == operation else None

    def constant(self, name, values):
        self.constants[name] = np.array(values, np.float32, order="C")
        return name

    def whole_numbers(self, name, numbers):
        self.constants[name] = np.array(numbers, np.int64)
        return name

    def replaced(self, old, *new):
        """Puts new nodes where the last of the old ones stood."""
        place = self.nodes.index(old[-1])
        self.nodes[place:place + 1] = new
        for node in old[:-1]:
            self.nodes.remove(node)

    def affine(self, node):
        """The value that node takes, with gain and offset of each channel (or of all): None if it is no such node."""
        if node.op_type == "BatchNormalization":
            gain, offset, mean, variance = (self.constants[name] for name in node.input[1:])
            gain = gain / np.sqrt(variance + published.attributes(node)["epsilon"])
            return node.input[0], gain, offset - mean * gain
        if node.op_type not in ("Mul", "Add") or not any(name in self.constants for name in node.input):
            return None
        taken, held = sorted(node.input, key=lambda name: name in self.constants)
        values = self.constants[held]
        if values.size > 1 and values.shape[:1] + values.shape[2:] != (1, 1, 1):
            return None
        values = values.reshape(-1)
        return (taken, values, np.zeros(1)) if node.op_type == "Mul" else (taken, np.ones(1), values)

    def weights(self, node):
        """Weight and bias of a convolution."""
        weight = self.constants[node.input[1]]
        if len(node.input) > 2:
            return weight, self.constants[node.input[2]]
        groups = published.attributes(node).get("group", 1)
        return weight, np.zeros(weight.shape[0] if node.op_type == "Conv" else weight.shape[1] * groups)

    def set_weights(self, node, weight, bias):
        name = node.name = node.name or node.output[0]
        node.input[1:] = [self.constant(f"{name}.w", weight), self.constant(f"{name}.b", bias)]

    def channels(self, name):
        """How many a value has, told from the convolution it comes from."""
        node = self.maker(name)
        while node.op_type != "Conv":
            node = self.maker(node.input[0])
        return len(self.constants[node.input[1]])


def _padded(node):
    return any(published.attributes(node).get("pads", ()))


def hard_swish(network):
    """x * clip(x + 3, 0, 6) / 6: two operations for four."""
    for clip in [node for node in network.nodes if node.op_type == "Clip"]:
        add, product = network.maker(clip.input[0]), network.only_user(clip.output[0], "Mul")
        part = product and network.only_user(product.output[0], "Div")
        if not part or add.op_type != "Add":
            continue
        x, _, three = network.affine(add)
        limits = published.attributes(clip) or {"min": network.constants[clip.input[1]],
                                                "max": network.constants[clip.input[2]]}
        if x not in product.input or (three, limits["min"], limits["max"], network.constants[part.input[1]]) \
                != (3, 0, 6, 6):
            continue
        gate = f"{part.output[0]}.hard"
        network.replaced((add, clip, product, part),
                         helper.make_node("HardSigmoid", [x], [gate], alpha=1 / 6, beta=0.5),
                         helper.make_node("Mul", [x, gate], [part.output[0]]))


def affine_after(network):
    """A gain and offset after a convolution goes into it."""
    for node in [node for node in network.nodes if network.affine(node)]:
        x, gain, offset = network.affine(node)
        maker = network.maker(x)
        if maker is None or maker.op_type not in _CONVOLUTIONS or len(network.users(x)) > 1:
            continue
        weight, bias = network.weights(maker)
        axis = (-1, 1, 1, 1) if maker.op_type == "Conv" else (1, -1, 1, 1)
        maker.output[0] = node.output[0]
        network.set_weights(maker, weight * gain.reshape(axis), bias * gain + offset)
        network.nodes.remove(node)


def affine_before(network):
    """A scale and shift before convolutions without padding goes into them, else the two become a normalisation.

    Never the shift before padding: the border that the network was trained with is true zero. As a normalisation,
    since the runtime keeps its blocked layout there, at plain sums it does not.
    """
    for scale in [node for node in network.nodes if node.op_type == "Mul" and network.affine(node)]:
        shift = network.only_user(scale.output[0], "Add")
        if not shift or not network.affine(shift):
            continue
        (x, gain, _), (_, _, offset), y = network.affine(scale), network.affine(shift), shift.output[0]
        users = network.users(y)
        if all(user.op_type == "Conv" and not _padded(user) for user in users):
            for user in users:
                weight, bias = network.weights(user)
                user.input[0] = x
                network.set_weights(user, weight * gain, bias + offset * weight.sum((1, 2, 3)))
            network.nodes.remove(scale)
            network.nodes.remove(shift)
        else:
            values = zip("sbmv", (gain, offset, 0, 1))
            held = [network.constant(f"{y}.{part}", np.full(network.channels(x), value)) for part, value in values]
            network.replaced((scale, shift), helper.make_node("BatchNormalization", [x, *held], [y], epsilon=0.0))


def gates(network):
    """x + x * gate is x * (gate + 1): the sum is then over a value a channel."""
    for node in [node for node in network.nodes if node.op_type == "Add"]:
        for x, weighed in (node.input, node.input[::-1]):
            product = network.maker(weighed)
            if product is None or product.op_type != "Mul" or x not in product.input or len(network.users(weighed)) > 1:
                continue
            gate = next(name for name in product.input if name != x)
            more = f"{gate}.more"
            network.replaced((product, node), helper.make_node("Add", [gate, network.constant("one", [1])], [more]),
                             helper.make_node("Mul", [x, more], [node.output[0]]))
            break


def pairs(network):
    """Two plain 1 x 1 convolutions in a row become one, where that has fewer weights."""
    for first in [node for node in network.nodes if node.op_type == "Conv"]:
        second = network.only_user(first.output[0], "Conv")
        if second is None:
            continue
        if any(node.input[1] not in network.constants for node in (first, second)):
            continue
        (weight, bias), (over, more) = network.weights(first), network.weights(second)
        if weight.shape[2:] != (1, 1) or over.shape[2:] != (1, 1) or any(
                _padded(node) or published.attributes(node).get("group", 1) != 1
                or set(published.attributes(node).get("strides", [1])) != {1} for node in (first, second)):
            continue
        merged = over[:, :, 0, 0] @ weight[:, :, 0, 0]
        if merged.size < weight.size + over.size:
            second.input[0] = first.input[0]
            network.set_weights(second, merged[:, :, None, None], over[:, :, 0, 0] @ bias + more)
            network.nodes.remove(first)


def _doubles(network, node):
    how = published.attributes(node)
    return (node.op_type == "ConvTranspose" and how.get("group", 1) == 1 and not _padded(node)
            and network.constants[node.input[1]].shape[2:] == tuple(how["strides"]) == (2, 2))


def enlarged(network):
    """Two transposed convolutions that each double a map, with what each value goes through alone, work on the small map.

    The 4 and 16 places that a pixel becomes are channels there, of 1 x 1 convolutions; the last ones are put in place
    at the end. So no map of twice the size has all channels, and the runtime keeps its blocked layout.
    """
    for first in [node for node in network.nodes if _doubles(network, node)]:
        active = network.only_user(first.output[0], "Relu")
        second = active and network.only_user(active.output[0], "ConvTranspose")
        last = second and network.only_user(second.output[0], "Sigmoid")
        if not last or not _doubles(network, second):
            continue
        (weight, bias), (over, more) = network.weights(first), network.weights(second)
        (taken, between), given = weight.shape[:2], over.shape[1]
        four = weight.transpose(2, 3, 1, 0).reshape(4 * between, taken, 1, 1)
        # By row and column of the place, each the first's, then the second's; by what comes out; by what goes in.
        sixteen = np.zeros((2, 2, 2, 2, given, 2, 2, between))
        for i, j in np.ndindex(2, 2):
            sixteen[i, :, j, :, :, i, j] = over.transpose(2, 3, 1, 0)
        sixteen = sixteen.reshape(16 * given, 4 * between, 1, 1)
        y = last.output[0]
        rows = ((f"{y}.four", first.input[0], four, np.tile(bias, 4), "Relu"),
                (f"{y}.sixteen", f"{y}.four.active", sixteen, np.tile(more, 16), "Sigmoid"))
        nodes = []
        for name, x, values, added, activation in rows:
            held = [network.constant(f"{name}.w", values), network.constant(f"{name}.b", added)]
            nodes += [helper.make_node("Conv", [x, *held], [name], name=name, kernel_shape=[1, 1]),
                      helper.make_node(activation, [name], [f"{name}.active"])]
        nodes.append(helper.make_node("DepthToSpace", [f"{y}.sixteen.active"], [y], blocksize=4))
        network.replaced((first, active, second, last), *nodes)


def flattened(network):
    """N x C x 1 x 1 to N x C, which is spelt with seven operations on the shape."""
    for node in [node for node in network.nodes if node.op_type == "Reshape"]:
        if network.maker(node.input[0]).op_type == "GlobalAveragePool":
            network.replaced((node,), helper.make_node("Flatten", node.input[:1], node.output, axis=1))


def unused(network, outputs):
    """Drops nodes that nothing takes, and constants."""
    before = math.inf
    while len(network.nodes) < before:
        before = len(network.nodes)
        taken = {name for node in network.nodes for name in node.input} | outputs
        network.nodes = [node for node in network.nodes if taken.intersection(node.output)]
    network.constants = {name: values for name, values in network.constants.items() if name in taken}


def folded(graph):
    """The graph's network, rewritten."""
    network = Network(graph)
    hard_swish(network)
    affine_after(network)
    affine_before(network)
    gates(network)
    pyramid.rows(network)
    pyramid.sums(network)
    pairs(network)
    enlarged(network)
    flattened(network)
    unused(network, {output.name for output in graph.output})
    return network
