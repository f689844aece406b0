"""Makes the recogniser's wide 1 x 1 convolutions count in 8 bits: python3 -m text.quantise MODEL OUT BACKGROUNDS.

Each gets whole numbers of 8 bits for what goes in and comes out, by the range that drawn training lines need, and of
7 bits for its weights, one scale an output channel: where a processor has no instruction for such products (VNNI), the
runtime sums two of them in 16 bits, which hold 2 x 255 x 63. So does the hard-swish after each. All other
weights are stored in 16 bits. Then compares with MODEL on drawn held-out lines; OUT is written only if that pays.
"""

import argparse
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
_HARD_SWISH_ZERO, _HARD_SWISH_LEAST = -3.0, -0.375  # at and below the first it gives nothing; what it gives at least
_PLACES, _VALUES = 300, 4000  # of a tensor that are kept of each line
PERCENTILES = (100, 99.99)  # ranges that are tried: all values, all but the rarest
_MOST_ERRORS, _LEAST_SPEED = 1.1, 1.2  # against MODEL's, for which it pays
_CALIBRATION, _CHOICE, _JUDGED = 150, 300, 1000  # lines
_SEED = 90003  # no shard's


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
    # The nodes of a graph, anew, with QuantizeLinear and DequantizeLinear around what counts in whole numbers: the
    # runtime makes one operation of what stands between them.

    def __init__(self, model, seen, percentile):
        self._arrays = {i.name: numpy_helper.to_array(i) for i in model.graph.initializer}
        self._seen, self._percentile, self._steps = seen, percentile, {}  # steps: scale of what is in whole numbers
        self.nodes, self.constants = [], []

    def _constant(self, name, array):
        self.constants.append(numpy_helper.from_array(array, name))
        return name

    def _kind(self, name, step, zero):
        return [self._constant(f"{name}.step", np.array(step, np.float32)),
                self._constant(f"{name}.zero", np.array(zero, np.uint8))]

    def _whole(self, source, name, written, read=None):
        # Rounds tensor source; what is read on is called name. written, read: step and zero, None: read as written.
        kind = self._kind(f"{name}.written", *written)
        self.nodes.append(helper.make_node("QuantizeLinear", [source, *kind], [f"{name}.whole"]))
        kind = self._kind(f"{name}.read", *read) if read else kind
        self.nodes.append(helper.make_node("DequantizeLinear", [f"{name}.whole", *kind], [name]))
        self._steps[name] = np.float32((read or written)[0])

    def _stored(self, name, numbers, steps):
        # A constant as whole numbers, steps for each of its first axis.
        parts = [self._constant(f"{name}.{part}", value) for part, value in
                 (("whole", numbers), ("step", steps), ("zero", np.zeros(len(steps), numbers.dtype)))]
        self.nodes.append(helper.make_node("DequantizeLinear", parts, [f"{name}.rounded"], axis=0))
        return f"{name}.rounded"

    def convolution(self, node):
        """Gives node.output[0].exact; its hard-swish rounds it."""
        (source, *held), (leaving,) = node.input, node.output
        weight, bias = (self._arrays[name] for name in held)
        entering = f"{source}.rounded"
        if entering not in self._steps:
            self._whole(source, entering, _scale(*self._seen[source].range(self._percentile)))
        steps = np.maximum(np.abs(weight).max((1, 2, 3)) / _WEIGHT, 1e-5).astype(np.float32)
        whole = rounded(weight[:, :, 0, 0], steps, self._seen[source].products).reshape(weight.shape)
        both = steps * self._steps[entering]
        inputs = [entering, self._stored(held[0], whole, steps),
                  self._stored(held[1], np.round(bias / both).astype(np.int32), both)]
        self.nodes.append(helper.make_node("Conv", inputs, [f"{leaving}.exact"], name=node.name))
        self.nodes[-1].attribute.extend(node.attribute)

    def hard_swish(self, source, result, shifted=None, offset=0.0):
        """Of what the convolution source gave. Gives result, or shifted, which is offset more; says which.

        Six times as much is source times source + 3 as far as 8 bits hold that from 0 to 6.
        """
        low, high = self._seen[source].range(self._percentile)
        self._whole(f"{source}.exact", f"{source}.rounded", _scale(max(low, _HARD_SWISH_ZERO), high))
        three = [self._constant(f"{source}.three", np.array(_LEVELS, np.uint8)),
                 *self._kind(f"{source}.three", 3 / _LEVELS, 0)]
        self.nodes += [helper.make_node("DequantizeLinear", three, [f"{source}.3"]),
                       helper.make_node("Add", [f"{source}.rounded", f"{source}.3"], [f"{source}.plus3"])]
        self._whole(f"{source}.plus3", f"{source}.held", (6 / _LEVELS, 0))
        self.nodes.append(helper.make_node("Mul", [f"{source}.rounded", f"{source}.held"], [f"{result}.exact"]))
        step, zero = _scale(_HARD_SWISH_LEAST, high * min(high + 3, 6) / 6)
        given, read = result, zero
        if moved := int(offset / step):  # whole steps, so that reading it from another zero shifts it
            wider = offset / moved
            other = round(-_HARD_SWISH_LEAST / wider)
            if 0 <= other - moved <= _LEVELS:
                given, step, zero, read = shifted, wider, other, other - moved
        self._whole(f"{result}.exact", given, (6 * step, zero), (step, read))
        return given


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
    return helper.make_model(made, opset_imports=model.opset_import, ir_version=model.ir_version,
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
