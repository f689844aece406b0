#!/usr/bin/python3
"""Writes the trained network as ONNX.

Batch normalisation is folded into the convolutions. Weights are kept as 8-bit whole numbers with a
scale for each output channel, and become floats again as the runtime loads them; --floats keeps
them as they are.
"""

import argparse
import pickle
import warnings

import torch
from torch import nn
from torch.nn import functional

from net import SIDE, OutlineNet


class _Packed(nn.Module):
    """A convolution or linear layer whose weights are 8-bit, one scale an output channel."""

    def __init__(self, layer):
        super().__init__()
        weight = layer.weight.detach()
        shape = (-1,) + (1,) * (weight.dim() - 1)
        scale = weight.abs().flatten(1).max(1).values.clamp(min=1e-8) / 127
        self.register_buffer("scale", scale.reshape(shape))
        self.register_buffer("whole", torch.round(weight / self.scale).to(torch.int8))
        self.register_buffer("bias", layer.bias.detach().clone())
        self.convolution = isinstance(layer, nn.Conv2d)
        if self.convolution:
            self.how = (layer.stride, layer.padding, layer.dilation)

    def forward(self, x):
        weight = self.whole.to(torch.float32) * self.scale
        if self.convolution:
            return functional.conv2d(x, weight, self.bias, *self.how)
        return functional.linear(x, weight, self.bias)


def _fold(convolution, norm):
    gain = norm.weight / torch.sqrt(norm.running_var + norm.eps)
    folded = nn.Conv2d(convolution.in_channels, convolution.out_channels,
                       convolution.kernel_size, convolution.stride, convolution.padding,
                       convolution.dilation)
    with torch.no_grad():
        folded.weight.copy_(convolution.weight * gain.reshape(-1, 1, 1, 1))
        folded.bias.copy_(norm.bias - norm.running_mean * gain)
    return folded


def folded(module):
    """module (changed in place) without batch normalisation."""
    if isinstance(module, nn.Sequential) and len(module) > 1 and isinstance(module[1], nn.BatchNorm2d):
        return nn.Sequential(_fold(module[0], module[1]), *list(module)[2:])
    for name, child in module.named_children():
        setattr(module, name, folded(child))
    return module


def packed(module):
    """module (changed in place) with 8-bit weights."""
    for name, child in module.named_children():
        setattr(module, name, _Packed(child) if isinstance(child, (nn.Conv2d, nn.Linear)) else packed(child))
    return module


def exported(net, path, floats=False):
    """Writes net to path; returns the module as written."""
    net = folded(net.eval())
    net.probabilities = True
    if not floats:
        net = packed(net)
    # The runtime makes floats of the weights while loading; the exporter would do it in the file.
    with warnings.catch_warnings():
        # Of constants whose shape the exporter cannot tell; it needs none of them.
        warnings.simplefilter("ignore", UserWarning)
        torch.onnx.export(net, torch.zeros(1, 3, SIDE, SIDE), str(path), opset_version=13,
                          input_names=["picture"], output_names=["maps"],
                          do_constant_folding=floats)
    return net


def load(checkpoint):
    """The network of a checkpoint, its running mean of weights."""
    net = OutlineNet()
    try:
        net.load_state_dict(torch.load(checkpoint)["mean"])
    except OSError as error:
        raise SystemExit(f"{checkpoint}: {error.strerror}") from error
    except (pickle.UnpicklingError, EOFError, KeyError, TypeError, RuntimeError) as error:
        raise SystemExit(f"{checkpoint}: not a checkpoint of train.py") from error
    return net.eval()


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("checkpoint", help="last.pt of train.py")
    parser.add_argument("model", help="file to write")
    parser.add_argument("--floats", action="store_true", help="weights as they are, not 8-bit")
    options = parser.parse_args()
    try:
        exported(load(options.checkpoint), options.model, options.floats)
    except OSError as error:
        raise SystemExit(f"{options.model}: {error.strerror}") from error
