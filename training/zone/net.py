"""The zone network: a strip of one line in, what stands in every fourth column out."""

from torch import nn

from .texts import ALPHABET

CLASSES = 1 + len(ALPHABET)  # 0: no character (the blank of CTC)
COLUMNS = 4  # pixels of the strip for each column of scores


def _convolution(inputs, outputs, kernel=(3, 3), stride=1, padding=(1, 1), dilation=1):
    return nn.Sequential(nn.Conv2d(inputs, outputs, kernel, stride, padding, dilation, bias=False),
                         nn.BatchNorm2d(outputs), nn.ReLU(inplace=True))


class _Along(nn.Module):
    """Looks left and right along the line, dilation columns far."""

    def __init__(self, channels, dilation):
        super().__init__()
        self.look = _convolution(channels, channels, (1, 3), 1, (0, dilation), (1, dilation))

    def forward(self, x):
        return x + self.look(x)


class ZoneNet(nn.Module):
    """Takes N x 1 x 32 x W (W a multiple of COLUMNS), normalised; gives N x CLASSES x W/COLUMNS scores."""

    def __init__(self):
        super().__init__()
        self.shapes = nn.Sequential(
            _convolution(1, 24, stride=2), _convolution(24, 40, stride=(2, 1)), _convolution(40, 64, stride=(1, 2)),
            _convolution(64, 64), _convolution(64, 96, stride=(2, 1)), _convolution(96, 128, (4, 3), 1, (0, 1)))
        self.line = nn.Sequential(*(_Along(128, dilation) for dilation in (1, 2, 4, 1)))
        self.head = nn.Conv2d(128, CLASSES, 1)

    def forward(self, lines):
        return self.head(self.line(self.shapes(lines))).squeeze(2)
