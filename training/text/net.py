"""The recogniser to train: the same weights by role as in published.py, the same values as graph.py's graph."""

import torch
from torch import nn
from torch.nn import functional

from .published import HEADS

_FIXED = ("epsilon", "scale")


class _Depthwise(torch.autograd.Function):
    """A convolution of each channel by itself, wider than three. For a whole 5 x 5 kernel the library's gradient of the
    weights takes eight times as long as for its five columns, and was more than half of a training step."""

    @staticmethod
    def forward(context, x, weight, bias, strides, padding):
        context.save_for_backward(x, weight)
        context.strides, context.padding = strides, padding
        return functional.conv2d(x, weight, bias, strides, padding, groups=len(weight))

    @staticmethod
    def backward(context, slope):
        x, weight = context.saved_tensors
        channels, strides, padding = len(weight), context.strides, context.padding
        slope = slope.contiguous(memory_format=torch.channels_last)

        def gradient(which, x, weight, padding):
            wanted = [which == position for position in range(3)]
            return torch.ops.aten.convolution_backward(slope, x, weight, None, strides, padding, (1, 1), False, (0, 0),
                                                       channels, wanted)[which]

        padded = functional.pad(x, (padding[1], padding[1], padding[0], padding[0]))
        reach = padded.shape[3] - weight.shape[3] + 1
        columns = [gradient(1, padded[..., at:at + reach].contiguous(memory_format=torch.channels_last),
                            weight[..., at:at + 1], (0, 0)) for at in range(weight.shape[3])]
        return gradient(0, x, weight, padding), torch.cat(columns, 3), slope.sum((0, 2, 3)), None, None


class Recogniser(nn.Module):
    """Takes N x 3 x 48 x W (8 divides W, 64 at least); gives N x W/8 x classes of scores, before the softmax.

    Under autocast to bfloat16 the maps are in halves, what is added up along the line and the scores in floats.
    """

    def __init__(self, weights, blocks):
        super().__init__()
        self.blocks = blocks
        self.fixed = {role: float(weights[role]) for role in _FIXED}
        self._names = {role: role.replace(".", "_") for role in weights if role not in _FIXED}
        self.learned = nn.ParameterDict({name: nn.Parameter(torch.tensor(weights[role]))
                                         for role, name in self._names.items()})

    def role(self, role):
        return self.learned[self._names[role]]

    def neck(self):
        """What read() uses: the weights that are trained on frozen features."""
        return [self.role(role) for role in self._names if role.startswith(("neck", "ln", "fc"))]

    def weights(self):
        """By role, as published.recogniser gives them."""
        fixed = {role: torch.tensor(value) for role, value in self.fixed.items()}
        learned = {role: self.role(role).detach().clone() for role in self._names}
        return {role: values.numpy() for role, values in {**learned, **fixed}.items()}

    def features(self, lines, seen=None):
        """N x W/8 x channels. Gains and offsets after activations go into the next weights, as in graph.py.

        seen: told the number of each block and what it gives, if wanted.
        """
        x = lines.contiguous(memory_format=torch.channels_last)
        x = functional.conv2d(x, self.role("stem.w"), self.role("stem.b"), stride=2, padding=1)
        gain, offset = 1.0, None
        for number, block in enumerate(self.blocks):
            weight, bias = self.role(f"{number}.w"), self.role(f"{number}.b")
            if offset is not None and any(block.padding):
                x = x.add_((offset / gain).to(x.dtype))
            elif offset is not None:
                bias = bias + offset * weight.sum((1, 2, 3))
            x = functional.hardswish(_convolved(x, weight * gain, bias, block))
            gain, offset = self.role(f"{number}.a"), self.role(f"{number}.c")
            if block.gated:
                x, offset = self._gated(f"{number}", x, gain, offset), None
            if seen:
                seen(number, x * gain if offset is None else x * gain + offset)
        x = functional.avg_pool2d(x, (3, 2))[:, :, 0].transpose(1, 2).float() * gain
        return x if offset is None else x + offset

    def _gated(self, name, x, gain, offset):
        gate = x.mean((2, 3), keepdim=True, dtype=torch.float32) * gain + offset
        gate = functional.relu(functional.conv2d(gate, self.role(f"{name}.se1.w"), self.role(f"{name}.se1.b")))
        gate = functional.conv2d(gate, self.role(f"{name}.se2.w"), self.role(f"{name}.se2.b"))
        return (x + (offset / gain).to(x.dtype)) * functional.hardsigmoid(gate).to(x.dtype)

    def read(self, features, columns=None, dropout=0.0):
        """Scores. columns: how many of each line are its own (N); those after them are as if they were not there."""
        if columns is None:
            own = torch.ones(features.shape[:2], dtype=torch.bool)
        else:
            own = torch.arange(features.shape[1]) < columns[:, None]
        features = features * own[..., None]
        x = self._mixed(1, self._mixed(0, features)).float()
        hidden = torch.zeros(own.shape).masked_fill(~own, -1e4)[:, None, None]
        for number in (0, 1):
            x = self._attention(number, x, hidden)
        x = torch.cat([features, self._mixed(2, self._normal(4, x)).float()], 2) * own[..., None]
        x = self._mixed(4, self._mixed(3, x))
        return self._dense(8, functional.dropout(x, dropout, self.training)).float()

    def forward(self, lines):
        return self.read(self.features(lines))

    def _mixed(self, number, x):
        """A convolution of three columns or one, and its swish; N x T x channels in and out."""
        weight = self.role(f"neck.{number}.w")[:, :, 0]
        wide = weight.shape[2] // 2
        if wide:  # as a product of matrices, which is faster than the convolution
            around = functional.pad(x, (0, 0, wide, wide))
            x = torch.cat([around[:, at:at + x.shape[1]] for at in range(2 * wide + 1)], 2)
        x = functional.linear(x, weight.transpose(1, 2).flatten(1), self.role(f"neck.{number}.b"))
        return functional.silu(x)

    def _attention(self, number, x, hidden):
        lines, columns, width = x.shape
        parts = self._dense(4 * number, self._normal(2 * number, x)).view(lines, columns, 3, HEADS, width // HEADS)
        queries, keys, values = parts.permute(2, 0, 3, 1, 4)
        share = torch.softmax(queries @ keys.transpose(2, 3) * self.fixed["scale"] + hidden, 3)
        x = x + self._dense(4 * number + 1, (share.to(values.dtype) @ values).transpose(1, 2).flatten(2))
        return x + self._dense(4 * number + 3,
                               functional.silu(self._dense(4 * number + 2, self._normal(2 * number + 1, x))))

    def _normal(self, number, x):
        return functional.layer_norm(x, x.shape[2:], self.role(f"ln{number}.w"), self.role(f"ln{number}.b"),
                                     self.fixed["epsilon"])

    def _dense(self, number, x):
        return functional.linear(x, self.role(f"fc{number}.w").t(), self.role(f"fc{number}.b"))


def _convolved(x, weight, bias, block):
    if block.groups > 1 and block.kernel[1] > 3:
        kind = x.dtype  # that of the convolution before it
        return _Depthwise.apply(x, weight.to(kind), bias.to(kind), block.strides, block.padding)
    return functional.conv2d(x, weight, bias, block.strides, block.padding, groups=block.groups)
