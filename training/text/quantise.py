"""Makes the recogniser's wide 1 x 1 convolutions count in 8 bits: python3 -m text.quantise MODEL OUT BACKGROUNDS.

Each gets whole numbers of 8 bits for what goes in and comes out, by the range that drawn training lines need, and of
7 bits for its weights, one scale an output channel: where a processor has no instruction for such products (VNNI), the
runtime sums two of them in 16 bits, which hold 2 x 255 x 63. So does the hard-swish after each. All other
weights are stored in 16 bits. Then compares with MODEL on drawn held-out lines; OUT is written only if that pays.
"""

import argparse
import math
import tempfile
from collections import defaultdict
from dataclasses import dataclass, field

import cv2
import numpy as np
import onnx
from onnx import helper, numpy_helper

from . import graph, measure, published
from .reading import Reader
from .runtime import Session
from .seen import alone

_WIDE = 48  # channels, in and out: with fewer the way to whole numbers and back takes as long as it saves
_WEIGHT, _LEVELS = 63, 255  # largest whole number of a weight; steps of an activation's range
_HARD_SWISH_LEAST = -0.375  # that it gives
_SMALLER = 0.2  # of a step: how much all together may be smaller, so that another one fits in
_PLACES, _VALUES = 300, 4000  # of a tensor that are kept of each line
PERCENTILES = (100, 99.99)  # ranges that are tried: all values, all but the rarest
_MOST_ERRORS, _LEAST_SPEED = 1.1, 1.2  # against MODEL's, for which it pays
_CALIBRATION, _CHOICE, _JUDGED = 150, 300, 1000  # lines
_SEED = 90003  # no shard's
_DOMAIN = "com.microsoft"  # of the runtime's own operations
_PLACES_FIRST, _CHANNELS_FIRST = (0, 2, 3, 1), (0, 3, 1, 2)  # from one to the other


def floats(model):
    """A copy of model whose 16-bit weights are floats again."""
    model = onnx.ModelProto.FromString(model.SerializeToString())
    stored = {i.name: i for i in model.graph.initializer}
    for node in [n for n in model.graph.node if n.op_type == "Cast" and n.input[0] in stored]:
        halves = stored[node.input[0]]
        whole = numpy_helper.from_array(numpy_helper.to_array(halves).astype(np.float32), node.output[0])
        model.graph.initializer.append(whole)
        model.graph.initializer.remove(halves)
        model.graph.node.remove(node)
    return model


def _readers(model):
    # The nodes that take a tensor, by its name.
    readers = defaultdict(list)
    for node in model.graph.node:
        for name in node.input:
            readers[name].append(node)
    return readers


def wide(model):
    """The convolutions that pay: 1 x 1, at least _WIDE channels in and out, hard-swish after them (gates have none)."""
    shapes, readers = {i.name: tuple(i.dims) for i in model.graph.initializer}, _readers(model)
    return [n for n in model.graph.node
            if n.op_type == "Conv" and sorted(r.op_type for r in readers[n.output[0]]) == ["HardSigmoid", "Mul"]
            and shapes.get(n.input[1], ())[2:] == (1, 1) and min(shapes[n.input[1]][:2]) >= _WIDE]


@dataclass
class Seen:
    """What a tensor held: some values, extremes of each line; products of its channels summed over some places."""

    values: list = field(default_factory=list)
    extremes: list = field(default_factory=list)
    products: np.ndarray | float = 0.0

    def add(self, rng, maps):
        channels = maps[0].reshape(maps.shape[1], -1)
        some = channels[:, rng.integers(0, channels.shape[1], _PLACES)]
        self.values.append(rng.choice(some.ravel(), _VALUES))
        self.extremes += [maps.min(), maps.max()]
        self.products = self.products + some.astype(np.float64) @ some.T

    def range(self, percentile):
        """From low to high, 0 between them; percentile 100: of all values."""
        low, high = ((min(self.extremes), max(self.extremes)) if percentile == 100
                     else np.percentile(np.concatenate(self.values), [100 - percentile, percentile]))
        return min(low, 0.0), max(high, 1e-3)


def watched(model, pictures):
    """What goes into and comes out of the wide convolutions on pictures: Seen by tensor."""
    names = list(dict.fromkeys(name for n in wide(model) for name in (n.input[0], n.output[0])))
    told = onnx.ModelProto.FromString(model.SerializeToString())
    told.graph.output.extend(helper.make_empty_tensor_value_info(name) for name in names)
    rng, seen = np.random.default_rng(_SEED), {name: Seen() for name in names}
    with tempfile.TemporaryDirectory() as folder:
        graph.save(told, f"{folder}/told.onnx")
        session = Session(f"{folder}/told.onnx")
        for picture in pictures:
            answers = dict(zip(session.outputs, session.run(alone(picture))))
            for name in names:
                seen[name].add(rng, answers[name])
    return seen


def rounded(weight, steps, products):
    """Whole numbers for weight (outputs x inputs) in steps for each output; products: Seen's, of the inputs.

    What rounding one input's weights changes is made up for by those of the inputs after it (arXiv:2210.17323).
    """
    damped = products + np.eye(len(products)) * (0.01 * np.trace(products) / len(products) + 1e-9)
    follow = np.linalg.cholesky(np.linalg.inv(damped)).T
    left, whole = weight.astype(np.float64), np.empty(weight.shape, np.int8)
    for i in range(len(products)):
        whole[:, i] = np.clip(np.round(left[:, i] / steps), -_WEIGHT, _WEIGHT)
        left[:, i + 1:] -= np.outer((left[:, i] - whole[:, i] * steps) / follow[i, i], follow[i, i + 1:])
    return whole


def _scale(low, high):
    # The step of whole numbers for values from low to high, and the number that stands for 0.
    step = (high - low) / _LEVELS
    return step, min(_LEVELS, max(0, round(-low / step)))


class _Surgery:
    # The nodes of a graph, anew, with the runtime's own operations on whole numbers. From a convolution to the end of
    # its hard-swish a place's channels lie beside one another, as the runtime multiplies them. The turns before and
    # after cost nothing where a blocked layout ends or begins anyhow.

    def __init__(self, model, seen, percentile):
        self._arrays = {i.name: numpy_helper.to_array(i) for i in model.graph.initializer}
        self._makers = {name: node for node in model.graph.node for name in node.output}
        self._seen, self._percentile, self._entered = seen, percentile, set()
        self.nodes, self.constants = [], []

    def _add(self, operation, inputs, out, **how):
        self.nodes.append(helper.make_node(operation, inputs, [out], name=out, **how))
        return out

    def _counted(self, operation, inputs, out, **how):
        return self._add(operation, inputs, out, domain=_DOMAIN, **how)

    def _constant(self, name, array):
        self.constants.append(numpy_helper.from_array(array, name))
        return name

    def _kind(self, name, step, zero, kind=np.uint8):
        # Constants: the step of whole numbers, the one that stands for 0.
        return [self._constant(f"{name}.step", np.asarray(step, np.float32)),
                self._constant(f"{name}.zero", np.full(np.shape(step), zero, kind))]

    def _range(self, name):
        return self._seen[name].range(self._percentile)

    def _turned(self, source):
        # Places by channels. A product with gates is taken there: turning it would cost more.
        node = self._makers.get(source)
        gates = self._makers.get(node.input[-1]) if node and node.op_type == "Mul" else None
        if gates and gates.op_type == "HardSigmoid" and gates.input[0] != node.input[0]:
            self.nodes.remove(node)
            return self._add("Mul", [self._turned(factor) for factor in node.input], f"{source}.turned")
        return self._add("Transpose", [source], f"{source}.turned", perm=_PLACES_FIRST)

    def _entering(self, source):
        # Source in whole numbers, their kind, the step.
        out, (step, zero) = f"{source}.whole", _scale(*self._range(source))
        if source not in self._entered:
            self._entered.add(source)
            self._add("QuantizeLinear", [self._turned(source), *self._kind(out, step, zero)], out)
        return [out, f"{out}.step", f"{out}.zero"], step

    def _three(self, leaving):
        # The whole number that stands for 0 in what a convolution gives; 0 stands for -3, where hard-swish begins.
        return int(3 * _LEVELS / (self._range(leaving)[1] + 3))

    def convolution(self, node):
        """Node in whole numbers. What it gives can only be read by its hard-swish."""
        (source, *held), (leaving,) = node.input, node.output
        weight, bias = (self._arrays[name] for name in held)
        entering, step = self._entering(source)
        steps = np.maximum(np.abs(weight).max((1, 2, 3)) / _WEIGHT, 1e-5).astype(np.float32)
        whole = rounded(weight[:, :, 0, 0], steps, self._seen[source].products).reshape(weight.shape)
        out, three = f"{leaving}.whole", self._three(leaving)
        self._counted("QLinearConv", [*entering, self._constant(f"{held[0]}.whole", whole),
                                      *self._kind(held[0], steps, 0, np.int8), *self._kind(out, 3 / three, three),
                                      self._constant(f"{held[1]}.whole", np.int32(np.round(bias / (steps * step))))],
                      out, channels_last=1, kernel_shape=(1, 1))

    def hard_swish(self, source, result, shifted=None, offset=0.0):
        """Of what the convolution source gave. Gives result, or shifted, which is offset more; says which.

        Six times as much is source times source + 3 from 0 to 6. Source + 3 are the same numbers with another zero.
        """
        high, three = self._range(source)[1], self._three(source)
        whole, held = f"{source}.whole", f"{source}.held"
        self._add("Min", [whole, self._constant(f"{held}.most", np.uint8(min(2 * three, _LEVELS)))], held)
        step, zero = _scale(_HARD_SWISH_LEAST, high * min(high + 3, 6) / 6)
        given, read = result, zero
        # Whole steps, so that reading it from another zero shifts it; a little smaller ones, if that makes a step more.
        if moved := int(offset / step + math.copysign(_SMALLER, offset)):
            wider = offset / moved
            other = round(-_HARD_SWISH_LEAST / wider)
            if 0 <= other - moved <= _LEVELS:
                given, step, zero, read = shifted, wider, other, other - moved
        product = f"{given}.product"
        self._counted("QLinearMul", [whole, f"{whole}.step", f"{whole}.zero", held, *self._kind(held, 3 / three, 0),
                                     *self._kind(product, 6 * step, zero)], product)
        turned = self._add("DequantizeLinear", [product, *self._kind(given, step, read)], f"{given}.turned")
        return self._add("Transpose", [turned], given, perm=_CHANNELS_FIRST)


def _shift(nodes, arrays):
    # The name and the offset of what graph.shifted makes, where nodes are nothing but that.
    if [node.op_type for node in nodes] != ["BatchNormalization"]:
        return None, 0.0
    return nodes[0].output[0], float(arrays[nodes[0].input[2]][0])


def quantised(model, seen, percentile=100):
    """A copy of model (floats) whose wide convolutions count in 8 bits; seen: what watched() gives."""
    surgery, chosen = _Surgery(model, seen, percentile), {n.output[0] for n in wide(model)}
    arrays, readers = {i.name: numpy_helper.to_array(i) for i in model.graph.initializer}, _readers(model)
    given = set()  # what needs no node of its own any more
    for node in model.graph.node:
        out, source = node.output[0], node.input[0]
        if out in chosen:
            surgery.convolution(node)
        elif source in chosen and node.op_type == "Mul":
            given.add(surgery.hard_swish(source, out, *_shift(readers[out], arrays)))
        elif source not in chosen and out not in given:
            surgery.nodes.append(node)
    used = {name for node in surgery.nodes for name in node.input}
    kept = [i for i in model.graph.initializer if i.name in used] + surgery.constants
    made = helper.make_graph(surgery.nodes, model.graph.name, model.graph.input, model.graph.output, kept)
    return helper.make_model(made, opset_imports=[*model.opset_import, helper.make_opsetid(_DOMAIN, 1)], ir_version=model.ir_version,
                             producer_name=model.producer_name, doc_string=model.doc_string)


def _misread(readers, pictures, wanted):
    # Percent of the characters by reader: of all lines, of those of zones.
    found = [[reader.read(picture)[0] for picture in pictures] for reader in readers]
    zones = [i for i, text in enumerate(wanted) if measure.is_zone(text)]
    return [(measure.tally(said, wanted)[0], measure.tally([said[i] for i in zones], [wanted[i] for i in zones])[0])
            for said in found]


def main(source, out, backgrounds):
    model = floats(published.load(source))
    if not wide(model):
        raise SystemExit(f"{source}: has no wide convolution of the clean graph (text.rewrite makes that)")
    known, held_out = (measure.grounds(backgrounds, which) for which in (False, True))
    seen = watched(model, measure.drawn(_CALIBRATION, False, known, _SEED)[0])
    with tempfile.TemporaryDirectory() as folder:
        made = [graph.halved(quantised(model, seen, percentile)) for percentile in PERCENTILES]
        readers = [Reader(source)]
        for number, candidate in enumerate(made):
            graph.save(candidate, f"{folder}/{number}.onnx")
            readers.append(Reader(f"{folder}/{number}.onnx"))
        misread = _misread(readers, *measure.drawn(_CHOICE, False, known, _SEED + 1))
        for name, (errors, _) in zip(["as it is"] + [f"range of {p}% of the values" for p in PERCENTILES], misread):
            print(f"training fonts, {name}: {errors:.2f}% of the characters misread", flush=True)
        best = 1 + int(np.argmin(misread[1:], 0)[0])
        compared = [readers[0], readers[best]]
        (before, zones_before), (after, zones_after) = _misread(compared, *measure.drawn(_JUDGED, True, held_out))
        taken = np.sum([measure.seconds([reader.session for reader in compared], w) for w in measure.WIDTHS], 0)
    speed = taken[0] / taken[1]
    print(f"held-out fonts: {before:.2f}% misread (zones {zones_before:.2f}%), with {len(wide(model))} convolutions in "
          f"8 bits {after:.2f}% ({zones_after:.2f}%), {speed:.2f} times as fast")
    if after <= before * _MOST_ERRORS and speed >= _LEAST_SPEED:
        graph.save(made[best - 1], out)
    else:
        print(f"{out}: not written, as it does not pay: at most {_MOST_ERRORS} times the errors, at least "
              f"{_LEAST_SPEED} times as fast are wanted")


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("model", help="recogniser of text.rewrite or text.train")
    parser.add_argument("out", help="file to write, if it pays")
    parser.add_argument("backgrounds", help="folder that backgrounds.py filled")
    options = parser.parse_args()
    cv2.setNumThreads(1)
    main(options.model, options.out, options.backgrounds)
