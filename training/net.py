"""The outline network: a small encoder, a light decoder, three maps at a quarter of the input."""

import torch
from torch import nn
from torch.nn import functional

SIDE = 192  # pixels: the whole picture, stretched to a square
MAPS = ("page", "core", "corner")


class _Convolution(nn.Sequential):
    def __init__(self, inputs, outputs, kernel=3, stride=1, relu=True):
        layers = [nn.Conv2d(inputs, outputs, kernel, stride, kernel // 2, bias=False),
                  nn.BatchNorm2d(outputs)]
        super().__init__(*layers, *([nn.ReLU(inplace=True)] if relu else []))


class _Bottleneck(nn.Module):
    def __init__(self, channels, dilation=1):
        super().__init__()
        half = channels // 2
        self.narrow = _Convolution(channels, half, 1)
        self.look = _Convolution(half, half, 3)
        if dilation > 1:
            self.look[0] = nn.Conv2d(half, half, 3, 1, dilation, dilation, bias=False)
        self.widen = _Convolution(half, channels, 1, relu=False)

    def forward(self, x):
        return functional.relu(x + self.widen(self.look(self.narrow(x))))


class _Everywhere(nn.Module):
    """Adds what the whole picture looks like to every place."""

    def __init__(self, channels):
        super().__init__()
        self.mix = nn.Linear(channels, channels)

    def forward(self, x):
        return x + functional.relu(self.mix(x.mean((2, 3))))[:, :, None, None]


class OutlineNet(nn.Module):
    """Takes N x 3 x SIDE x SIDE, red, green, blue, 0..255; gives N x 3 x SIDE/4 x SIDE/4.

    page: inside a document, hidden parts included; core: its middle, which neighbours do not
    share; corner: near a corner. forward gives logits, and probabilities once exported.
    """

    def __init__(self):
        super().__init__()
        self.probabilities = False
        self.to4 = nn.Sequential(_Convolution(3, 16, 3, 2), _Convolution(16, 32, 3, 2))
        self.to8 = nn.Sequential(_Convolution(32, 64, 3, 2), _Bottleneck(64), _Bottleneck(64))
        self.to16 = nn.Sequential(_Convolution(64, 96, 3, 2), _Bottleneck(96), _Bottleneck(96),
                                  _Bottleneck(96))
        self.to32 = nn.Sequential(_Convolution(96, 128, 3, 2), _Bottleneck(128),
                                  _Bottleneck(128, 2), _Everywhere(128), _Bottleneck(128))
        self.up16, self.side16 = _Convolution(128, 64, 1), _Convolution(96, 64, 1)
        self.join16 = _Convolution(64, 64, 3)
        self.up8, self.side8 = _Convolution(64, 48, 1), _Convolution(64, 48, 1)
        self.join8 = _Convolution(48, 48, 3)
        self.up4, self.side4 = _Convolution(48, 24, 1), _Convolution(32, 24, 1)
        self.join4 = _Convolution(24, 24, 3)
        self.head = nn.Conv2d(24, len(MAPS), 1)

    @staticmethod
    def _enlarged(x):
        return functional.interpolate(x, scale_factor=2.0, mode="nearest")

    def forward(self, picture):
        mean = picture.mean((1, 2, 3), keepdim=True)
        centred = picture - mean
        # Dim pictures look like bright ones, but noise alone is not raised to a scene.
        deviation = (centred * centred).mean((1, 2, 3), keepdim=True).sqrt()
        a = self.to4(centred / (deviation + 6.0))
        b = self.to8(a)
        c = self.to16(b)
        d = self.to32(c)
        x = self.join16(self._enlarged(self.up16(d)) + self.side16(c))
        x = self.join8(self._enlarged(self.up8(x)) + self.side8(b))
        x = self.join4(self._enlarged(self.up4(x)) + self.side4(a))
        maps = self.head(x)
        return torch.sigmoid(maps) if self.probabilities else maps
