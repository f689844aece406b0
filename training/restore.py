"""The trained network out of its ONNX file, so that training can go on from it."""

import numpy as np
import torch
from torch import nn

from net import OutlineNet


def _stored(path):
    # What export.py wrote, by name; needs the Debian package python3-onnx.
    import onnx.numpy_helper
    from google.protobuf.message import DecodeError
    try:
        graph = onnx.load(path).graph
    except OSError as error:
        raise SystemExit(f"{path}: {error.strerror}") from error
    except DecodeError as error:
        raise SystemExit(f"{path}: not an ONNX file") from error
    arrays = {value.name: onnx.numpy_helper.to_array(value) for value in graph.initializer}
    return {name: torch.from_numpy(array.astype(np.float32)) for name, array in arrays.items()}


def network(path):
    """The OutlineNet in an ONNX file of 8-bit weights; in evaluation it answers as the file does.

    What was batch normalisation is in its weights: the layers' own only add the bias, until settle().
    """
    stored, net = _stored(path), OutlineNet()
    layers = dict(net.named_modules())
    try:
        with torch.no_grad():
            for name, layer in layers.items():
                if not isinstance(layer, (nn.Conv2d, nn.Linear)):
                    continue
                layer.weight.copy_(stored[f"{name}.whole"] * stored[f"{name}.scale"])
                norm = layers.get(name[:-1] + "1")
                if isinstance(norm, nn.BatchNorm2d):
                    norm.running_var.fill_(1 - norm.eps)
                    layer = norm
                layer.bias.copy_(stored[f"{name}.bias"])
    except (KeyError, RuntimeError) as error:
        raise SystemExit(f"{path}: not a network that export.py wrote in 8 bits") from error
    return net.eval()


def settle(net, batches):
    """Gives a network() back what its layers normalise by, as pictures (N x 3 x side x side) of batches show it.

    It answers as before. Without this the first step of training, which normalises by its own batch, would
    undo what the weights know of scale.
    """
    norms = [module for module in net.modules() if isinstance(module, nn.BatchNorm2d)]
    seen = {norm: [] for norm in norms}

    def look(norm, inputs):
        values = inputs[0].double()
        seen[norm].append(torch.stack([values.mean((0, 2, 3)), values.square().mean((0, 2, 3))]))

    hooks = [norm.register_forward_pre_hook(look) for norm in norms]
    with torch.no_grad():
        for pictures in batches:
            net(pictures)
        for norm, hook in zip(norms, hooks):
            hook.remove()
            mean, square = torch.stack(seen[norm]).mean(0)
            norm.running_mean.copy_(mean)
            norm.running_var.copy_(square - mean * mean)
            norm.weight.copy_((norm.running_var + norm.eps).sqrt())
            norm.bias.add_(norm.running_mean)
    return net
